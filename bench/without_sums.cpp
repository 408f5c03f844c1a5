// Makes of books what they would be from before there were sums of pages: such books are read and written
// without them, and so are the peer of their cost.
//   without_sums DIRECTORY   of all books in it and below
#include "tests/support/page_sums.h"

#include <cstdio>
#include <filesystem>

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2) return 2;
    int count = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(arguments[1])) {
        if (entry.path().filename() != "books.mdb") continue;
        testsupport::TakeSums(entry.path());
        if (testsupport::CountSums(entry.path()) != 0) return 1;
        ++count;
    }
    std::printf("%d\n", count);
    return count > 0 ? 0 : 1;
}
