// What the libraries of 32-bit Windows offer their hosts and what they ask of the machine, read from their
// tables.
#include "tests/interface/names.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>

using namespace tests;

namespace {

std::string TablesOf(const std::string &library)
{
    return OutputOf(("i686-w64-mingw32-objdump -p '" WINDOWS_BUILD "/" + library + "'").c_str());
}

// "	[   0] VARK_BeendeHolen" in the table of names.
std::set<std::string> ExportsOf(const std::string &library)
{
    const std::string tables = TablesOf(library);
    const size_t begin = tables.find("[Ordinal/Name Pointer] Table");
    if (begin == std::string::npos) return {};
    std::istringstream lines(tables.substr(begin));
    std::set<std::string> names;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && line.find(']') != std::string::npos) {
        names.insert(line.substr(line.find(']') + 2));
    }
    return names;
}

// In capitals: the system takes the names in either.
std::set<std::string> LibrariesNeededBy(const std::string &library)
{
    std::istringstream lines(TablesOf(library));
    std::set<std::string> names;
    std::string line;
    const std::string mark = "DLL Name: ";
    while (std::getline(lines, line)) {
        const size_t at = line.find(mark);
        if (at == std::string::npos) continue;
        std::string name = line.substr(at + mark.size());
        for (char &letter : name) {
            letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        }
        names.insert(name);
    }
    return names;
}

// The functions that a host links by, with the bytes of their arguments: "_VARK_Status@0".
std::map<std::string, int> FunctionsIn(const std::string &importLibrary)
{
    std::istringstream lines(
        OutputOf(("i686-w64-mingw32-nm '" WINDOWS_BUILD "/" + importLibrary + "' 2>&1").c_str()));
    std::map<std::string, int> functions;
    std::string line;
    while (std::getline(lines, line)) {
        const size_t name = line.find(" T _");
        const size_t at = line.find('@');
        if (name == std::string::npos || at == std::string::npos) continue;
        functions[line.substr(name + 4, at - name - 4)] = std::stoi(line.substr(at + 1));
    }
    return functions;
}

} // namespace

TEST(WindowsTables, LibraryOffersExactlyWhatTheHeaderDeclares)
{
    EXPECT_EQ(DeclaredNames(), ExportsOf("VARK40.dll"));
}

// What else it is made of it brings with it. Common controls have to be among them: on Windows nobody else
// loads them for a dialog with tabs.
TEST(WindowsTables, LibraryNeedsNothingButTheSystem)
{
    const std::set<std::string> expected = {"ADVAPI32.DLL", "COMCTL32.DLL", "GDI32.DLL",
                                            "KERNEL32.DLL", "MSVCRT.DLL",   "USER32.DLL"};
    EXPECT_EQ(expected, LibrariesNeededBy("VARK40.dll"));
}

TEST(WindowsTables, CommonControlsAreMadeReadyByTheLibraryItself)
{
    EXPECT_NE(std::string::npos, TablesOf("VARK40.dll").find("InitCommonControlsEx"));
}

TEST(WindowsTables, ImportLibraryHasEachExportWithTheBytesOfItsArguments)
{
    const std::map<std::string, int> functions = FunctionsIn("src/libvark40.a");
    std::set<std::string> names;
    for (const auto &[name, bytes] : functions) {
        names.insert(name);
    }
    EXPECT_EQ(DeclaredNames(), names);
    EXPECT_EQ(0, functions.at("VARK_Status"));
    EXPECT_EQ(13 * 4, functions.at("VARK_BuchungEinfuegenDirekt"));
    EXPECT_EQ(4, functions.at("VARK_IsMessage"));
}

TEST(WindowsTables, RecordManagerOffersItsCallsAndNeedsNothingButTheSystem)
{
    const std::set<std::string> calls = {"BTRCALL", "BtrCallOf", "BtrEndClient", "BtrMakeClient"};
    EXPECT_EQ(calls, ExportsOf("WBTRV32.dll"));
    const std::set<std::string> expected = {"ADVAPI32.DLL", "KERNEL32.DLL", "MSVCRT.DLL", "NTDLL.DLL"};
    EXPECT_EQ(expected, LibrariesNeededBy("WBTRV32.dll"));
}

TEST(WindowsTables, RecordManagersImportLibraryHasEachCallWithTheBytesOfItsArguments)
{
    const std::map<std::string, int> expected = {
        {"BTRCALL", 7 * 4}, {"BtrCallOf", 8 * 4}, {"BtrEndClient", 4}, {"BtrMakeClient", 0}};
    EXPECT_EQ(expected, FunctionsIn("record-manager/libwbtrv32.a"));
}
