#include "tests/pickers/pick_books.h"

#include "src/platform/platform.h"

#include <sstream>
#include <stdexcept>

namespace vark::test {

namespace {

Lines InstructionsOf(const std::string &script)
{
    std::istringstream text(script);
    Lines instructions;
    for (std::string line; std::getline(text, line);) {
        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        instructions.push_back(line.substr(first, line.find_last_not_of(" \t") + 1 - first));
    }
    return instructions;
}

} // namespace

PickBooks::PickBooks(const std::string &script) : Books(script), instructions(InstructionsOf(script)) {}

std::string PickBooks::Trouble()
{
    size_t done = 0;
    for (const std::string &line : TakeLog()) {
        if (line.rfind("script:", 0) == 0) return line;
        if (done < instructions.size() && line == instructions[done]) ++done;
    }
    return done < instructions.size() ? "not done: " + instructions[done] : "";
}

std::string PickBooks::Remembered(const std::string &key) const
{
    char value[64];
    const size_t length = ReadProfileText("VARK", key.c_str(), value, sizeof value, "vark.ini");
    return length > 0 ? value : "-";
}

void PickBooks::Remember(const std::string &key, const std::string &value) const
{
    if (!WriteProfileText("VARK", key.c_str(), value.c_str(), "vark.ini"))
        throw std::runtime_error("vark.ini");
}

} // namespace vark::test
