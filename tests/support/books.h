// A temporary installation of the books for tests: ini files, data directory, tables with their keys, and the
// records that a test puts there. It talks to the real record manager under the library's back.
//
//   Books books;                       // before the first call of the library
//   books.AddMandant(1);
//   books.Insert(1, TableSako, MakeSako("1200", ZuordnungAktiva));
//   EXPECT_EQ(-9, VARK_BuchungEinfuegenDirekt(1, …));
//   EXPECT_EQ(Lines{"Die Habenkontonummer ist unzulässig!"}, books.TakeBoxes());
//   EXPECT_TRUE(books.Read<BatRecord>(1, TableBat).empty());
//
// The library reads its configuration once in a process, so there is one Books in a process, and every test
// case is a process of its own (ctest sees to that).
#pragma once

#include "src/model/tables.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace vark::test {

using Lines = std::vector<std::string>;

// What a Mandant's record says. Directories are made for the years from LowerYear to UpperYear.
struct MandantOptions {
    std::string LowerYear = "1997"; // empty: only UpperYear is postable
    std::string UpperYear = "1998";
    int16_t FirstFiscalMonth = 1;
    std::string UstId = {};
    std::string Land = "D";
    std::string Waehrung = "DEM";
    bool Kostenrechnung = false;
    bool KostenPflicht = false;
    std::vector<TableId> Without = {}; // tables that are not there
};

class Books {
public:
    // Today is 15 June 1998 for the library. Without a script every box is answered by its safest button;
    // with one, its lines are the instructions of VARK_UI=script.
    explicit Books(const std::string &script = "");
    ~Books();
    Books(const Books &) = delete;
    Books &operator=(const Books &) = delete;

    // Root of the installation; the data path is its subdirectory "DB".
    const std::string &Directory() const { return directory; }

    // A record in fista, and all year tables, empty.
    void AddMandant(int mandant, const MandantOptions &options = {});

    // The directory of a Mandant's year; an empty year is the one of AddMandant's UpperYear.
    std::string YearDirectory(int mandant, const std::string &year = "") const;
    std::string TablePath(int mandant, TableId table, const std::string &year = "") const;

    // Adds a record; an autoincrement field of 0 gets the next number, which is in the record afterwards.
    // Throws when the record manager refuses.
    template <typename Record>
    void Insert(int mandant, TableId table, Record &record, const std::string &year = "")
    {
        InsertBytes(TablePath(mandant, table, year), &record, sizeof record);
    }
    template <typename Record>
    void Insert(int mandant, TableId table, const Record &record, const std::string &year = "")
    {
        Record copy = record;
        Insert(mandant, table, copy, year);
    }

    // The same for the bytes of a record.
    void InsertRecord(int mandant, TableId table, std::vector<char> bytes, const std::string &year = "")
    {
        InsertBytes(TablePath(mandant, table, year), bytes.data(), bytes.size());
    }

    // All records of a table in the order of one of its keys.
    template <typename Record>
    std::vector<Record> Read(int mandant, TableId table, const std::string &year = "", int key = 0) const
    {
        std::vector<Record> records;
        for (const std::string &bytes : ReadBytes(TablePath(mandant, table, year), key)) {
            if (bytes.size() != sizeof(Record)) throw std::logic_error("record of another length");
            std::memcpy(&records.emplace_back(), bytes.data(), sizeof(Record));
        }
        return records;
    }

    // Replaces the record that has the same value in key 0.
    template <typename Record>
    void Replace(int mandant, TableId table, const Record &record, const std::string &year = "")
    {
        ReplaceBytes(TablePath(mandant, table, year), &record, sizeof record);
    }
    // The same for the record of a Mandant in fista.
    template <typename Change> void ChangeMandant(int mandant, Change change)
    {
        FistaRecord record = Mandant(mandant);
        change(record);
        ReplaceBytes(FistaPath(), &record, sizeof record);
    }
    FistaRecord Mandant(int mandant) const;

    size_t Count(int mandant, TableId table, const std::string &year = "") const
    {
        return ReadBytes(TablePath(mandant, table, year), 0).size();
    }

    // Makes a table again without records. It must not be open: VARK_SchliesseDB first.
    void EmptyTable(int mandant, TableId table, const std::string &year = "");

    // The texts of the message boxes shown since the last call of this, in UTF-8.
    Lines TakeBoxes();
    // All new lines of the window system's log as they stand: boxes, dialogs, instructions, refusals.
    Lines TakeLog();

private:
    std::string FistaPath() const;
    static void InsertBytes(const std::string &path, void *record, size_t size);
    static void ReplaceBytes(const std::string &path, const void *record, size_t size);
    static std::vector<std::string> ReadBytes(const std::string &path, int key);

    std::string directory;
    size_t logRead = 0;
    std::vector<std::string> upperYears; // by Mandant number
};

// Text of a fixed-width field in UTF-8, and a UTF-8 text into such a field (throws when it does not fit).
std::string TextOf(const char *field, size_t width);
void SetText(char *field, size_t width, const std::string &utf8);
template <size_t Width> std::string TextOf(const char (&field)[Width]) { return TextOf(field, Width); }
template <size_t Width> void SetText(char (&field)[Width], const std::string &utf8)
{
    SetText(field, Width, utf8);
}

// "   1200"
std::string Justified(const std::string &konto);

// All bytes of a record in hexadecimal, for comparisons that show where they differ: "0012ff…".
template <typename Record> std::string HexOf(const Record &record)
{
    std::string hex;
    const auto *bytes = reinterpret_cast<const unsigned char *>(&record);
    for (size_t i = 0; i < sizeof record; ++i) {
        constexpr char digits[] = "0123456789abcdef";
        hex += digits[bytes[i] >> 4];
        hex += digits[bytes[i] & 15];
    }
    return hex;
}

// Records with the fields that matter; the rest is zero, amounts are "000000000,00". Numbers of accounts are
// justified here. A Kürzel is made from the number ("K1200").
SakoRecord MakeSako(const std::string &konto, int16_t zuordnung = ZuordnungKeine, uint8_t steuerflags = 0);
PersonalRecord MakePersonal(const std::string &konto);
KoreRecord MakeKore(const std::string &nummer);
StekeRecord MakeSteke(uint16_t code, uint16_t folge, const std::string &gueltigAb, const std::string &satz,
                      const std::string &umsatzsteuerkonto, const std::string &vorsteuerkonto);
StapelRecord MakeStapel(int32_t nummer, const std::string &name = "Stapel");
ZahlzielRecord MakeZahlziel(int32_t nummer);
KoschaRecord MakeKoscha(int32_t nummer, int16_t zeilen);
KoschazeRecord MakeKoschaze(int32_t nummer, const std::string &objekt1, const std::string &objekt2,
                            uint8_t flag, const std::string &anteil, const std::string &zeilentext = "");
// A final posting of the PackedDate `datum`; `nummer` is its running number (to 9999) and Buchungsnummer, and
// the amount stands on both sides.
BubeRecord MakeBube(int32_t nummer, const std::string &datum, const std::string &sollkonto,
                    const std::string &habenkonto, const std::string &betrag);
// An open item with the same amount in both fields, dated the SortDate `datum` three times.
OpenItemRecord MakeOpenItem(uint32_t nummer, const std::string &konto, const std::string &datum,
                            const std::string &betrag);
KurseRecord MakeKurs(const std::string &waehrung, const std::string &sortDate, const std::string &kurs,
                     int16_t einheit = 1, bool durchschnitt = false);

} // namespace vark::test
