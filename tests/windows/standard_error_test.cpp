// What the library and its record manager tell on standard error reaches whoever reads there, and holds
// nobody up where none does.
#include "tests/windows/wine.h"

using namespace tests;
namespace fs = std::filesystem;

struct StandardError : OnWindows {};

TEST_F(StandardError, IsWrittenToWithoutALongWait)
{
    for (const char *file : {"stand_ins/tell.exe", "WBTRV32.dll"}) {
        fs::copy_file(Built(file), Directory / fs::path(file).filename());
    }
    fs::create_directory(Directory / "server");
    PutText(Directory / "server/books.server", "host=nowhere\nbooks\n");
    const Ended ended = RunToEnd((Directory / "tell.exe").string(), "", "");
    EXPECT_EQ(0, ended.Code);
    EXPECT_EQ("MERIDA: interner Fehler\n", ended.Errors);
    // 20 is the status of books that no record manager is there for.
    EXPECT_EQ("read 1 at once\n"
              "none 0 at once\n"
              "full 0 after a while\n"
              "refused 20 after a while\n"
              "closed 0 at once\n",
              ended.Output);
}
