// Makes books that a host can post into, in $VARK_TEST_DIR, leaves them behind and prints where they are.
// With that directory as its argument it prints the texts of the postings there instead.
#include "record-manager/include/btrcall.h"
#include "tests/support/books.h"

#include <iostream>

using namespace vark;
using namespace vark::test;

namespace {

void Make()
{
    auto *books = new Books; // not destroyed, so that they stay
    books->AddMandant(1);
    for (const char *konto : {"1840", "2010", "8010"}) {
        books->Insert(1, TableSako, MakeSako(konto, ZuordnungGuv));
    }
    books->Insert(1, TableStapel, MakeStapel(16));
    std::cout << books->Directory() << '\n';
}

int Show(const std::string &directory)
{
    char block[128] = {};
    char key[255] = {};
    BatRecord record{};
    uint32_t none = 0;
    (directory + "\\DB\\1998\\bat.btr").copy(key, sizeof key - 1);
    int status = BTRCALL(BtrOpOpen, block, nullptr, &none, key, sizeof key, BtrModeNormal);
    if (status != BtrStatusOk) return status;
    auto next = uint16_t{BtrOpGetFirst};
    for (;;) {
        uint32_t length = sizeof record;
        status = BTRCALL(next, block, &record, &length, key, sizeof key, 0);
        if (status != BtrStatusOk) break;
        std::cout << TextOf(record.Teil.Text) << '\n';
        next = BtrOpGetNext;
    }
    BTRCALL(BtrOpClose, block, nullptr, &none, key, sizeof key, 0);
    return status == BtrStatusEndOfFile ? 0 : status;
}

} // namespace

int main(int count, char **arguments)
{
    if (count == 2) return Show(arguments[1]);
    Make();
    return 0;
}
