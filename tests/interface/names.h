// The names that the header declares, and what a program about a library prints.
#pragma once

#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace tests {

inline std::set<std::string> DeclaredNames()
{
    std::ifstream stream(VARK_HEADER);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const std::string mark = "VARK_CALL VARK_";
    std::set<std::string> names;
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        size_t end = at + mark.size();
        while (std::isalnum(static_cast<unsigned char>(text[end])) != 0) {
            ++end;
        }
        names.insert(text.substr(at + 10, end - at - 10));
    }
    return names;
}

inline std::string OutputOf(const char *command)
{
    std::string output;
    FILE *pipe = popen(command, "r");
    if (pipe == nullptr) return {};
    char buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    pclose(pipe);
    return output;
}

} // namespace tests
