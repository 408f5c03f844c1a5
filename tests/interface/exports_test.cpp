// What the library offers the loader is what the header declares: no name less, none more.
#include "tests/interface/names.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

using namespace tests;

namespace {

std::set<std::string> ExportedNames()
{
    std::istringstream lines(OutputOf("nm -D --defined-only '" VARK_LIBRARY "'"));
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
