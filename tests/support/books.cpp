#include "tests/support/books.h"

#include "record-manager/include/btrcall.h"
#include "tests/support/installation.h"
#include "text/windows1252.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vark::test {

namespace {

namespace fs = std::filesystem;

// ---- The record manager ----

constexpr uint16_t dup = BtrKeyDuplicates;
constexpr uint16_t mod = BtrKeyModifiable;
constexpr uint16_t changing = dup | mod;

enum class Kind : uint8_t { Text = 0, Integer = 1, Unsigned = 14, Auto = 15 };

struct Segment {
    uint16_t Offset;
    uint16_t Length;
    Kind Type;
};

struct Key {
    uint16_t Flags;
    std::vector<Segment> Segments;
};

constexpr Kind S = Kind::Text;
constexpr Kind I = Kind::Integer;
constexpr Kind U = Kind::Unsigned;

std::vector<Key> KeysOf(TableId table)
{
    switch (table) {
    case TableSako:
    case TableKred:
    case TableDebi:
    case TableKore:
    case TablePreviousSako: return {{0, {{0, 8, S}}}, {changing, {{8, 10, S}}}};
    case TableBube:
        return {{0, {{0, 18, S}}},
                {changing, {{18, 8, S}, {0, 18, S}}},
                {changing, {{26, 8, S}, {0, 18, S}}},
                {changing, {{34, 8, S}, {0, 18, S}}},
                {changing, {{47, 9, S}}},
                {0, {{168, 4, I}}},
                {changing, {{179, 8, S}}},
                {changing, {{172, 7, S}}}};
    case TableSteke: return {{dup, {{0, 2, U}}}, {changing, {{17, 8, S}}}, {0, {{0, 2, U}, {2, 2, U}}}};
    case TableFista: return {{0, {{0, 2, I}}}};
    case TableGuvauf:
    case TableBilaktau:
    case TableBilpasau: return {{changing, {{0, 4, I}}}, {changing, {{16, 48, S}}}};
    case TableKobu:
        return {{changing, {{0, 4, I}}},
                {changing, {{4, 4, I}}},
                {changing, {{8, 4, I}}},
                {changing, {{12, 7, S}}},
                {changing, {{19, 8, S}, {12, 7, S}}},
                {changing, {{27, 8, S}, {12, 7, S}}}};
    case TableBat: return {{0, {{4, 4, Kind::Auto}}}, {changing, {{0, 4, I}}}};
    case TableSplit: return {{changing, {{0, 4, I}}}, {0, {{4, 4, Kind::Auto}}}};
    case TableStapel: return {{0, {{0, 4, Kind::Auto}}}};
    case TableOpkred:
    case TableOpdebi:
        return {
            {0, {{0, 4, U}}}, {changing, {{4, 8, S}}}, {changing, {{48, 7, S}}}, {changing, {{40, 7, S}}}};
    case TableKurse: return {{0, {{0, 5, S}, {5, 7, S}}}};
    case TableKoschaze: return {{dup, {{0, 4, I}}}};
    case TableUser: return {{0, {{0, 4, S}}}};
    default: return {{0, {{0, 4, I}}}};
    }
}

[[noreturn]] void Refused(const char *what, const std::string &path, int status)
{
    throw std::runtime_error(std::string(what) + " " + path + ": status " + std::to_string(status));
}

void CreateTable(const std::string &path, TableId table)
{
    const std::vector<Key> keys = KeysOf(table);
    std::string definition(16, 0);
    const auto put = [&definition](size_t at, unsigned value) {
        definition[at] = static_cast<char>(value & 0xFF);
        definition[at + 1] = static_cast<char>(value >> 8);
    };
    put(0, tableCatalogue[table].RecordLength);
    put(2, 4096);
    definition[4] = static_cast<char>(keys.size());
    for (const Key &key : keys) {
        for (size_t i = 0; i < key.Segments.size(); ++i) {
            const size_t at = definition.size();
            definition.resize(at + 16);
            const bool more = i + 1 < key.Segments.size();
            put(at, key.Segments[i].Offset + 1u);
            put(at + 2, key.Segments[i].Length);
            put(at + 4, static_cast<unsigned>(key.Flags | BtrKeyExtendedType | (more ? BtrKeySegmented : 0)));
            definition[at + 10] = static_cast<char>(key.Segments[i].Type);
        }
    }
    char block[128] = {};
    char name[255] = {};
    path.copy(name, sizeof name - 1);
    auto length = static_cast<uint32_t>(definition.size());
    const int status = BTRCALL(BtrOpCreate, block, definition.data(), &length, name, 255, 0);
    if (status != 0) Refused("create", path, status);
}

// An open file; closed at the end of its scope.
struct File {
    explicit File(const std::string &file) : path(file)
    {
        char name[255] = {};
        path.copy(name, sizeof name - 1);
        uint32_t none = 0;
        const int status = BTRCALL(BtrOpOpen, block, data, &none, name, 255, BtrModeNormal);
        if (status != 0) Refused("open", path, status);
    }
    ~File()
    {
        uint32_t none = 0;
        BTRCALL(BtrOpClose, block, data, &none, key, 255, 0);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    int Call(uint16_t operation, int keyNumber)
    {
        length = sizeof data;
        return BTRCALL(operation, block, data, &length, key, 255, static_cast<int8_t>(keyNumber));
    }

    std::string path;
    char block[128] = {};
    char data[1400] = {};
    char key[255] = {};
    uint32_t length = 0;
};

TableId TableOfPath(const std::string &path)
{
    const std::string stem = fs::path(path).stem().string();
    for (int table = 0; table < TablePreviousSako; ++table) {
        if (stem == tableCatalogue[table].Stem) return static_cast<TableId>(table);
    }
    throw std::logic_error("no table " + path);
}

// ---- The installation ----

// A path with the separators of this system, as the library puts it into messages.
std::string Native(const std::string &path) { return fs::path(path).make_preferred().string(); }

void WriteFile(const std::string &path, const std::string &content)
{
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

template <size_t Width> void SetAmount(char (&field)[Width]) { SetText(field, "000000000,00"); }

void SetSums(AccountSums &sums)
{
    for (SollHaben *pair : {&sums.Vortrag, &sums.Slot0}) {
        SetAmount(pair->Soll);
        SetAmount(pair->Haben);
    }
    for (SollHaben &pair : sums.Monat) {
        SetAmount(pair.Soll);
        SetAmount(pair.Haben);
    }
}

bool booksExist;

} // namespace

Books::Books(const std::string &script) : directory(MakeDirectory()), upperYears(100)
{
    if (booksExist) throw std::logic_error("one installation in a process: run the tests with ctest");
    booksExist = true;
    fs::create_directory(directory + "/DB");
    WriteFile(directory + "/tolka.ini", "[TOLKA]\nPfad32=" + Native(directory + "/DB") + "\n");
    NameParts(directory);
    WriteFile(directory + "/ui.log", "");
    std::string ui = "headless";
    if (!script.empty()) {
        WriteFile(directory + "/ui.script", script);
        ui = "script:" + directory + "/ui.script";
    }
    setenv("VARK_CONFIG_DIR", directory.c_str(), 1);
    setenv("VARK_UI", ui.c_str(), 1);
    setenv("VARK_UI_LOG", (directory + "/ui.log").c_str(), 1);
    setenv("VARK_HEUTE", "15.06.1998", 1);
    CreateTable(FistaPath(), TableFista);
}

Books::~Books()
{
    std::error_code ignored;
    fs::remove_all(directory, ignored);
}

std::string Books::FistaPath() const { return Native(directory + "/DB/fista.btr"); }

void Books::AddMandant(int mandant, const MandantOptions &options)
{
    FistaRecord record{};
    record.Nummer = static_cast<int16_t>(mandant);
    SetText(record.Name, "Mandant " + std::to_string(mandant));
    SetText(record.LowerYear, options.LowerYear);
    SetText(record.UpperYear, options.UpperYear);
    record.FirstFiscalMonth = options.FirstFiscalMonth;
    SetText(record.UstId, options.UstId);
    SetText(record.Land, options.Land);
    SetText(record.Waehrung, options.Waehrung);
    record.Kostenrechnung = options.Kostenrechnung ? 1 : 0;
    record.KostenPflicht = options.KostenPflicht ? 1 : 0;
    InsertBytes(FistaPath(), &record, sizeof record);
    upperYears.at(static_cast<size_t>(mandant)) = options.UpperYear;

    const int last = std::stoi(options.UpperYear);
    const int first = options.LowerYear.empty() ? last : std::stoi(options.LowerYear);
    for (int year = first; year <= last; ++year) {
        const std::string place = YearDirectory(mandant, std::to_string(year));
        fs::create_directory(place);
        for (int table = 0; table < TablePreviousSako; ++table) {
            if (table == TableUnused || table == TableFista) continue;
            const auto id = static_cast<TableId>(table);
            if (std::find(options.Without.begin(), options.Without.end(), id) != options.Without.end())
                continue;
            CreateTable(place + "/" + tableCatalogue[table].Stem + ".btr", id);
        }
    }
}

std::string Books::YearDirectory(int mandant, const std::string &year) const
{
    const std::string &name = year.empty() ? upperYears.at(static_cast<size_t>(mandant)) : year;
    return Native(directory + "/DB/" + name + (mandant == 1 ? "" : std::to_string(mandant - 1)));
}

std::string Books::TablePath(int mandant, TableId table, const std::string &year) const
{
    if (table == TableFista) return FistaPath();
    return Native(YearDirectory(mandant, year) + "/" + tableCatalogue[table].Stem + ".btr");
}

FistaRecord Books::Mandant(int mandant) const
{
    for (const FistaRecord &record : Read<FistaRecord>(mandant, TableFista)) {
        if (record.Nummer == mandant) return record;
    }
    throw std::logic_error("no such Mandant");
}

void Books::EmptyTable(int mandant, TableId table, const std::string &year)
{
    CreateTable(TablePath(mandant, table, year), table);
}

void Books::InsertBytes(const std::string &path, void *record, size_t size)
{
    File file(path);
    std::memcpy(file.data, record, size);
    auto length = static_cast<uint32_t>(size);
    const int status = BTRCALL(BtrOpInsert, file.block, file.data, &length, file.key, 255, 0);
    if (status != 0) Refused("insert into", path, status);
    std::memcpy(record, file.data, size);
}

void Books::ReplaceBytes(const std::string &path, const void *record, size_t size)
{
    File file(path);
    const auto *bytes = static_cast<const char *>(record);
    size_t at = 0;
    const std::vector<Key> keys = KeysOf(TableOfPath(path));
    for (const Segment &segment : keys.at(0).Segments) {
        std::memcpy(file.key + at, bytes + segment.Offset, segment.Length);
        at += segment.Length;
    }
    int status = file.Call(BtrOpGetEqual, 0);
    if (status != 0) Refused("find in", path, status);
    std::memcpy(file.data, record, size);
    auto length = static_cast<uint32_t>(size);
    status = BTRCALL(BtrOpUpdate, file.block, file.data, &length, file.key, 255, 0);
    if (status != 0) Refused("update", path, status);
}

std::vector<std::string> Books::ReadBytes(const std::string &path, int key)
{
    File file(path);
    std::vector<std::string> records;
    int status = file.Call(BtrOpGetFirst, key);
    while (status == 0) {
        records.emplace_back(file.data, file.length);
        status = file.Call(BtrOpGetNext, key);
    }
    if (status != BtrStatusEndOfFile) Refused("read", path, status);
    return records;
}

Lines Books::TakeLog()
{
    std::ifstream file(directory + "/ui.log", std::ios::binary);
    file.seekg(static_cast<std::streamoff>(logRead));
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        logRead += line.size() + 1;
        lines.push_back(line);
    }
    return lines;
}

Lines Books::TakeBoxes()
{
    Lines boxes;
    for (const std::string &line : TakeLog()) {
        if (line.rfind("box ", 0) == 0) boxes.push_back(line.substr(4));
    }
    return boxes;
}

std::string TextOf(const char *field, size_t width)
{
    const std::string bytes(field, strnlen(field, width));
    std::string utf8(bytes.size() * 3 + 1, 0);
    utf8.resize(text::ToUtf8(bytes.c_str(), utf8.data(), utf8.size()));
    return utf8;
}

void SetText(char *field, size_t width, const std::string &utf8)
{
    if (text::FromUtf8(utf8.c_str(), field, width) >= width) throw std::logic_error("too long: " + utf8);
    const size_t length = std::strlen(field);
    std::memset(field + length, 0, width - length);
}

std::string Justified(const std::string &konto)
{
    return konto.size() < 7 ? std::string(7 - konto.size(), ' ') + konto : konto;
}

SakoRecord MakeSako(const std::string &konto, int16_t zuordnung, uint8_t steuerflags)
{
    SakoRecord record{};
    SetText(record.Konto, Justified(konto));
    SetText(record.Kuerzel, "K" + konto);
    record.Zuordnung = zuordnung;
    record.Zustand = 1;
    SetText(record.Name, "Sachkonto " + konto);
    record.Steuerflags = steuerflags;
    SetText(record.Steuersatz, "00,00");
    SetSums(record.Umsaetze);
    return record;
}

PersonalRecord MakePersonal(const std::string &konto)
{
    PersonalRecord record{};
    SetText(record.Konto, Justified(konto));
    SetText(record.Kuerzel, "K" + konto);
    record.Zustand = 1;
    for (AmountText &amount : record.ReservedAmounts27) {
        SetAmount(amount);
    }
    record.ReservedOne66 = 1;
    SetText(record.Name1, "Konto " + konto);
    SetText(record.Skonto, "00,00");
    SetSums(record.Umsaetze);
    for (AmountText &amount : record.ReservedAmounts709) {
        SetAmount(amount);
    }
    return record;
}

KoreRecord MakeKore(const std::string &nummer)
{
    KoreRecord record{};
    SetText(record.Nummer, Justified(nummer));
    SetText(record.Kuerzel, "K" + nummer);
    SetText(record.Name, "Kostenstelle " + nummer);
    for (AmountText &amount : record.Monat) {
        SetAmount(amount);
    }
    return record;
}

StekeRecord MakeSteke(uint16_t code, uint16_t folge, const std::string &gueltigAb, const std::string &satz,
                      const std::string &umsatzsteuerkonto, const std::string &vorsteuerkonto)
{
    StekeRecord record{};
    record.Code = code;
    record.Folge = folge;
    SetText(record.GueltigAb, gueltigAb);
    SetText(record.Satz, satz);
    SetText(record.Umsatzsteuerkonto, Justified(umsatzsteuerkonto));
    SetText(record.Vorsteuerkonto, Justified(vorsteuerkonto));
    return record;
}

StapelRecord MakeStapel(int32_t nummer, const std::string &name)
{
    StapelRecord record{};
    record.Nummer = nummer;
    SetText(record.Name, name);
    return record;
}

ZahlzielRecord MakeZahlziel(int32_t nummer)
{
    ZahlzielRecord record{};
    record.Nummer = nummer;
    SetText(record.Text, "Zahlungsziel " + std::to_string(nummer));
    return record;
}

KoschaRecord MakeKoscha(int32_t nummer, int16_t zeilen)
{
    KoschaRecord record{};
    record.Nummer = nummer;
    SetText(record.Name, "Schablone " + std::to_string(nummer));
    record.Zeilen = zeilen;
    return record;
}

KoschazeRecord MakeKoschaze(int32_t nummer, const std::string &objekt1, const std::string &objekt2,
                            uint8_t flag, const std::string &anteil, const std::string &zeilentext)
{
    KoschazeRecord record{};
    record.Nummer = nummer;
    SetText(record.Kostenobjekt1, objekt1.empty() ? "" : Justified(objekt1));
    SetText(record.Kostenobjekt2, objekt2.empty() ? "" : Justified(objekt2));
    record.Flag = flag;
    SetText(record.Anteil, anteil);
    SetText(record.Text, zeilentext);
    return record;
}

BubeRecord MakeBube(int32_t nummer, const std::string &datum, const std::string &sollkonto,
                    const std::string &habenkonto, const std::string &betrag)
{
    BubeRecord record{};
    const std::string sortDate = datum.substr(4, 2) + datum.substr(2, 2) + datum.substr(0, 2);
    SetText(record.Schluessel.Folge, sortDate + std::to_string(10000 + nummer).substr(1));
    SetText(record.Schluessel.Belegdatum, datum);
    SetText(record.Sollkonto, Justified(sollkonto));
    SetText(record.Habenkonto, Justified(habenkonto));
    SetText(record.Beleg, "B" + std::to_string(nummer));
    SetText(record.Datum, datum);
    SetText(record.Soll, betrag);
    SetText(record.Haben, betrag);
    SetAmount(record.Steuer);
    SetText(record.Text, "Buchung " + std::to_string(nummer));
    record.Buchungsnummer = nummer;
    SetText(record.Buchungsdatum, sortDate);
    SetAmount(record.Grundbetrag);
    SetText(record.Steuersatz, "00,00");
    return record;
}

OpenItemRecord MakeOpenItem(uint32_t nummer, const std::string &konto, const std::string &datum,
                            const std::string &betrag)
{
    OpenItemRecord record{};
    record.Nummer = nummer;
    SetText(record.Konto, Justified(konto));
    SetText(record.Datum1, datum);
    SetText(record.Termin, datum);
    SetText(record.Skontodatum, datum);
    SetText(record.Betrag1, betrag);
    SetText(record.Betrag2, betrag);
    return record;
}

KurseRecord MakeKurs(const std::string &waehrung, const std::string &sortDate, const std::string &kurs,
                     int16_t einheit, bool durchschnitt)
{
    KurseRecord record{};
    SetText(record.Waehrung, waehrung);
    SetText(record.Datum, sortDate);
    SetText(record.Kurs, kurs);
    record.Durchschnitt = durchschnitt ? 1 : 0;
    record.Einheit = einheit;
    return record;
}

} // namespace vark::test
