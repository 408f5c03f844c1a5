// What the library offers the loader is what the header declares: no name less, none more.
#include <cctype>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace {

std::set<std::string> DeclaredNames()
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

std::set<std::string> ExportedNames()
{
    std::string output;
    FILE *pipe = popen("nm -D --defined-only '" VARK_LIBRARY "'", "r");
    if (pipe == nullptr) return {};
    char buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    pclose(pipe);
    std::istringstream lines(output);
    std::set<std::string> names;
    std::string address;
    std::string kind;
    std::string name;
    while (lines >> address >> kind >> name) {
        names.insert(name);
    }
    return names;
}

} // namespace

TEST(Exports, HeaderDeclares47) { EXPECT_EQ(47u, DeclaredNames().size()); }

TEST(Exports, LibraryOffersExactlyWhatTheHeaderDeclares) { EXPECT_EQ(DeclaredNames(), ExportedNames()); }
