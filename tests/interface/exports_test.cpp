// What the library offers the loader is what the header declares: no name less, none more.
#include "tests/interface/names.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

using namespace tests;

namespace {

std::set<std::string> ExportedNames(const std::string &library)
{
    std::istringstream lines(OutputOf(("nm -D --defined-only '" + library + "'").c_str()));
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

TEST(Exports, LibraryOffersExactlyWhatTheHeaderDeclares)
{
    EXPECT_EQ(DeclaredNames(), ExportedNames(VARK_LIBRARY));
}

TEST(Exports, ReportEngineOffersExactlyWhatItsHeaderDeclares)
{
    std::istringstream lines(OutputOf("grep -o '^RS_API .*(' '" RS_HEADER "'"));
    std::set<std::string> declared;
    for (std::string line; std::getline(lines, line);) {
        const size_t name = line.rfind(' ', line.size() - 2) + 1;
        declared.insert(line.substr(name, line.size() - 1 - name));
    }
    EXPECT_EQ(13U, declared.size());
    EXPECT_EQ(declared, ExportedNames(RS_LIBRARY));
}
