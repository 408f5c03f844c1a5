// The table catalogue: number, file stem and record length of every table of the books.
#pragma once

#include "src/model/account_records.h"
#include "src/model/company_records.h"
#include "src/model/posting_records.h"
#include "src/model/structure_records.h"

namespace vark {

// Number of a table. Slots 29 and 30 have no table of their own: any table may be opened under them.
enum TableId : uint8_t {
    TableSako = 0,
    TableBube = 1,
    TableKred = 2,
    TableDebi = 3,
    TableSteke = 4,
    TableUnused = 5,
    TableFista = 6,
    TableGuvauf = 7,
    TableBilaktau = 8,
    TableBilpasau = 9,
    TableKore = 10,
    TableKobu = 11,
    TableBat = 12,
    TableBank = 13,
    TableUeberw = 14,
    TableOpkred = 15,
    TableOpdebi = 16,
    TableStapel = 17,
    TableKurse = 18,
    TableButext = 19,
    TableBuscha = 20,
    TableUser = 21,
    TableSplit = 22,
    TableKoscha = 23,
    TableKoschaze = 24,
    TableZahlziel = 25,
    TableBumak = 26,
    TableMahntext = 27,
    TablePreviousSako = 28, // sako of the year before the working year
    SlotFree29 = 29,
    SlotFree30 = 30,
};

inline constexpr int slotCount = 31;

struct TableEntry {
    const char *Stem;      // file name without ".btr"; empty where there is no table
    uint16_t RecordLength; // bytes; 0 where there is no table
};

// In the order of TableId, with the two free slots at the end.
inline constexpr TableEntry tableCatalogue[slotCount] = {
    {"sako", sizeof(SakoRecord)},
    {"bube", sizeof(BubeRecord)},
    {"kred", sizeof(PersonalRecord)},
    {"debi", sizeof(PersonalRecord)},
    {"steke", sizeof(StekeRecord)},
    {"", 0},
    {"fista", sizeof(FistaRecord)},
    {"guvauf", sizeof(StructureRecord)},
    {"bilaktau", sizeof(StructureRecord)},
    {"bilpasau", sizeof(StructureRecord)},
    {"kore", sizeof(KoreRecord)},
    {"kobu", sizeof(KobuRecord)},
    {"bat", sizeof(BatRecord)},
    {"bank", sizeof(BankRecord)},
    {"ueberw", sizeof(UeberwRecord)},
    {"opkred", sizeof(OpenItemRecord)},
    {"opdebi", sizeof(OpenItemRecord)},
    {"stapel", sizeof(StapelRecord)},
    {"kurse", sizeof(KurseRecord)},
    {"butext", sizeof(ButextRecord)},
    {"buscha", sizeof(BuschaRecord)},
    {"user", sizeof(UserRecord)},
    {"split", sizeof(SplitRecord)},
    {"koscha", sizeof(KoschaRecord)},
    {"koschaze", sizeof(KoschazeRecord)},
    {"zahlziel", sizeof(ZahlzielRecord)},
    {"bumak", sizeof(BumakRecord)},
    {"mahntext", sizeof(MahntextRecord)},
    {"sako", sizeof(SakoRecord)},
    {"", 0},
    {"", 0},
};

// A table (or a free slot) and the number of one of its keys (0 to 7, for tables 0 to 7 also 8) in one byte:
// key number * 31 + number of the table. The bare TableId is the code of its key 0.
using TableKeyCode = uint8_t;

constexpr TableKeyCode KeyCode(unsigned table, unsigned key)
{
    return static_cast<TableKeyCode>(key * unsigned{slotCount} + table);
}

constexpr TableId TableOf(TableKeyCode code) { return static_cast<TableId>(code % slotCount); }

constexpr unsigned KeyOf(TableKeyCode code) { return code / unsigned{slotCount}; }

static_assert(KeyCode(TableSteke, 2) == 66 && KeyCode(TableSteke, 1) == 35);
static_assert(TableOf(66) == TableSteke && KeyOf(66) == 2);

} // namespace vark
