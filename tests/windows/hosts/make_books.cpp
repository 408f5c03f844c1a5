// Makes books that a host can post into, in $VARK_TEST_DIR, leaves them behind and prints where they are.
// With that directory as its argument it prints the texts of the postings there instead; with "loosen" and a
// directory of years it makes a table there anew, whose key has duplicates, which no layout has it do.
#include "record-manager/include/btrcall.h"
#include "tests/support/books.h"

#include <cstring>
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

int Loosen(const std::string &directory)
{
    constexpr uint32_t recordLength = 146;
    struct {
        BtrFileHeader File;
        BtrKeyEntry Key;
    } definition = {};
    definition.File.RecordLength = recordLength;
    definition.File.PageSize = 4096;
    definition.File.KeyCount = 1;
    definition.Key = {1, 4, BtrKeyExtendedType | BtrKeyDuplicates, 0, BtrTypeInteger, 0, 0, 0, 0};
    char block[128] = {};
    char key[255] = {};
    (directory + "\\zahlziel.btr").copy(key, sizeof key - 1);
    uint32_t length = sizeof definition;
    int status = BTRCALL(BtrOpCreate, block, &definition, &length, key, sizeof key, 0);
    if (status != BtrStatusOk) return status;
    length = 0;
    status = BTRCALL(BtrOpOpen, block, nullptr, &length, key, sizeof key, BtrModeNormal);
    for (int32_t number = 1; status == BtrStatusOk && number <= 3; ++number) {
        char record[recordLength] = {};
        std::memcpy(record, &number, sizeof number);
        length = sizeof record;
        status = BTRCALL(BtrOpInsert, block, record, &length, key, sizeof key, 0);
    }
    length = 0;
    BTRCALL(BtrOpClose, block, nullptr, &length, key, sizeof key, 0);
    return status;
}

} // namespace

int main(int count, char **arguments)
{
    if (count == 3) return Loosen(arguments[2]);
    if (count == 2) return Show(arguments[1]);
    Make();
    return 0;
}
