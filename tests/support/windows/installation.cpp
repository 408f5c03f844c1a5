#include "tests/support/installation.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <windows.h>

namespace vark::test {

std::string MakeDirectory()
{
    // Under Wine the first of them is a drive of the machine's memory.
    const char *const places[] = {std::getenv("VARK_TEST_DIR"), "Z:\\dev\\shm", std::getenv("TEMP")};
    for (const char *place : places) {
        if (place == nullptr) continue;
        std::string name = std::string(place) + "\\vark-XXXXXX";
        if (mkdtemp(name.data()) != nullptr) return name;
    }
    throw std::runtime_error("no directory for the test");
}

void NameParts(const std::string &directory)
{
    char program[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::ofstream(directory + "/vark.ini")
        << "[VARK]\nDLLPfad=" << std::filesystem::path(program).parent_path().string() << "\n";
}

} // namespace vark::test
