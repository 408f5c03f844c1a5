#include "tools/sql/table.h"

#include "tools/common/texts.h"
#include "tools/sql/failures.h"
#include "tools/sql/plan.h"

#include <new>

namespace sql {

using namespace tools;

namespace {

struct Table : sqlite3_vtab {
    std::shared_ptr<Connection> Of;
    Session *Books;
    const TableLayout *Layout;
    std::vector<SqlColumn> Columns;
    std::optional<YearPlace> Only; // the one directory; none: all there are
};

struct Cursor : sqlite3_vtab_cursor {
    Table *In;
    int Key = asTheyLie;
    std::string Roles;
    std::vector<Value> Values;
    std::vector<YearPlace> Places;
    size_t Place = 0; // the one that is read
    RecordPlace Here = {};
    std::unique_ptr<TableFile> File;
    std::vector<KeyRange> Ranges; // of this place
    size_t Range = 0;
    bool IsAtEnd = true;
    std::string Record;
};

Table &TableOf(sqlite3_vtab *table) { return *static_cast<Table *>(table); }
Cursor &CursorOf(sqlite3_vtab_cursor *cursor) { return *static_cast<Cursor *>(cursor); }

// Does `work`; what it throws becomes the table's message.
template <typename Work> int Guarded(sqlite3_vtab *table, Work work)
{
    std::string why;
    const int code = Try(why, work);
    if (code == SQLITE_OK || code == SQLITE_NOMEM) return code;
    sqlite3_free(table->zErrMsg);
    table->zErrMsg = sqlite3_mprintf("%s", why.c_str());
    return code;
}

// ---- Connecting ----

// An argument of CREATE VIRTUAL TABLE without the quotes around it.
std::string Unquoted(const char *argument)
{
    std::string text(Trimmed(argument));
    if (text.size() < 2 || (text[0] != '\'' && text[0] != '"') || text.back() != text[0]) return text;
    std::string plain;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        plain += text[i];
        if (text[i] == text[0]) ++i; // doubled
    }
    return plain;
}

constexpr int argumentsBefore = 3; // the module, the schema, the table's name

std::unique_ptr<Table> MakeTable(const std::shared_ptr<Connection> &connection, int count,
                                 const char *const *arguments)
{
    if (count != argumentsBefore + 2 && count != argumentsBefore + 3) {
        throw std::runtime_error("buecher('DATENPFAD', 'TABELLE') oder buecher('DATENPFAD', 'TABELLE', "
                                 "'1998')");
    }
    const std::string name = Unquoted(arguments[argumentsBefore + 1]);
    const TableLayout *layout = FindLayout(name);
    if (layout == nullptr) {
        throw std::runtime_error("Eine Tabelle " + name + " haben Bücher nicht. Welche, zeigt: books aufbau");
    }
    auto table = std::make_unique<Table>();
    table->Of = connection;
    table->Books = &connection->At(Unquoted(arguments[argumentsBefore]));
    table->Layout = layout;
    table->Columns = ColumnsOf(*layout);
    if (!IsYearTable(*layout)) table->Only = YearPlace{};
    if (count == argumentsBefore + 3) {
        const std::string year = Unquoted(arguments[argumentsBefore + 2]);
        YearPlace place;
        if (!IsYearTable(*layout) || !ParseYearPlace(year, place)) {
            throw std::runtime_error("Ein Jahresverzeichnis " + year + " mit " + layout->Stem +
                                     " gibt es nicht.");
        }
        table->Only = place;
    }
    return table;
}

int Connect(sqlite3 *database, void *data, int count, const char *const *arguments, sqlite3_vtab **out,
            char **message)
{
    std::unique_ptr<Table> table;
    std::string why;
    const int made = Try(why, [&] {
        table = MakeTable(*static_cast<std::shared_ptr<Connection> *>(data), count, arguments);
        const int declared = sqlite3_declare_vtab(database, Declaration(table->Columns).c_str());
        // Books are not read from a schema that somebody else has written.
        if (declared == SQLITE_OK) sqlite3_vtab_config(database, SQLITE_VTAB_DIRECTONLY);
        return declared;
    });
    if (made != SQLITE_OK) {
        *message = sqlite3_mprintf("%s", why.c_str());
        return made;
    }
    *out = table.release();
    return SQLITE_OK;
}

int Disconnect(sqlite3_vtab *table)
{
    delete &TableOf(table);
    return SQLITE_OK;
}

int BestIndex(sqlite3_vtab *base, sqlite3_index_info *info)
{
    return Guarded(base, [&] {
        const Table &table = TableOf(base);
        return Plan({*table.Layout, table.Columns, table.Only.has_value()}, info);
    });
}

// ---- Reading ----

int Open(sqlite3_vtab *base, sqlite3_vtab_cursor **out)
{
    return Guarded(base, [&] {
        auto cursor = std::make_unique<Cursor>();
        cursor->In = &TableOf(base);
        cursor->Record.resize(cursor->In->Layout->RecordLength);
        cursor->In->Books->AddCursor();
        *out = cursor.release();
        return SQLITE_OK;
    });
}

int Close(sqlite3_vtab_cursor *base)
{
    const std::unique_ptr<Cursor> cursor(&CursorOf(base));
    cursor->File.reset();
    cursor->In->Books->RemoveCursor();
    return SQLITE_OK;
}

const Value *Argument(const Cursor &cursor, Role role)
{
    const size_t at = cursor.Roles.find(static_cast<char>(role));
    return at != std::string::npos ? &cursor.Values[at] : nullptr;
}

// Whether a number may stand so to the argument of the role, if there is one. A text is left to SQLite, which
// may see a number in it.
bool MayFit(const Cursor &cursor, Role role, int number)
{
    const Value *value = Argument(cursor, role);
    if (value == nullptr || value->Type == SQLITE_TEXT || value->Type == SQLITE_BLOB) return true;
    if (value->Type == SQLITE_NULL) return false;
    switch (role) {
    case RoleYearFrom: return number >= value->Integer;
    case RoleYearAfter: return number > value->Integer;
    case RoleYearTo: return number <= value->Integer;
    case RoleYearBefore: return number < value->Integer || (number == value->Integer && !value->IsWhole);
    default: return number == value->Integer;
    }
}

void FindPlaces(Cursor &cursor)
{
    const Table &table = *cursor.In;
    cursor.Places.clear();
    if (table.Only) {
        cursor.Places.push_back(*table.Only);
        return;
    }
    for (const YearPlace &place : table.Books->Years()) {
        const bool isMandant = MayFit(cursor, RoleMandant, place.Mandant);
        const auto mayBe = [&](Role role) { return MayFit(cursor, role, place.Year); };
        if (isMandant && mayBe(RoleYear) && mayBe(RoleYearFrom) && mayBe(RoleYearAfter) &&
            mayBe(RoleYearTo) && mayBe(RoleYearBefore)) {
            cursor.Places.push_back(place);
        }
    }
}

bool NeedsMonth(const Cursor &cursor)
{
    return NeedsFirstMonth(*cursor.In->Layout, cursor.Key, cursor.Roles);
}

// Opens the place that is to be read. False where it has no such table.
bool OpenPlace(Cursor &cursor)
{
    Table &table = *cursor.In;
    const YearPlace &place = cursor.Places[cursor.Place];
    cursor.Here = {place.Mandant, place.Year, 0};
    cursor.File = table.Books->Open(*table.Layout, place);
    if (cursor.File == nullptr) {
        if (!table.Only) return false;
        throw EngineError("Öffnen", BtrStatusFileNotFound,
                          table.Books->Data / place.Name / table.Layout->FileName());
    }
    if (NeedsMonth(cursor)) cursor.Here.FirstMonth = table.Books->FirstMonthOf(place.Mandant);
    cursor.Ranges = RangesOf(*table.Layout, cursor.Key, cursor.Roles, cursor.Values, cursor.Here.FirstMonth);
    cursor.Range = 0;
    return true;
}

// The first record of the range that is to be read, or the next one of it.
bool ReadInRange(Cursor &cursor, bool isFirst)
{
    const KeyRange &range = cursor.Ranges[cursor.Range];
    if (range.IsOne && !isFirst) return false;
    TableFile &file = *cursor.File;
    char *const record = cursor.Record.data();
    bool found = false;
    if (cursor.Key == asTheyLie) {
        found = isFirst ? file.StepFirst(record) : file.StepNext(record);
    } else if (!isFirst) {
        found = file.Next(record, cursor.Key);
    } else {
        found = range.From ? file.GreaterEqual(record, range.From->Bytes.data(), cursor.Key)
                           : file.First(record, cursor.Key);
    }
    if (!found) return false;
    ++cursor.In->Books->RecordsRead;
    if (!range.To) return true;
    const KeyLayout &key = cursor.In->Layout->Keys[static_cast<size_t>(cursor.Key)];
    return CompareWith(key, record, *range.To) <= 0;
}

// Goes on to the next record, over ranges and places.
void Read(Cursor &cursor, bool isFirst)
{
    for (;;) {
        if (cursor.File == nullptr) {
            if (cursor.Place == cursor.Places.size()) {
                cursor.IsAtEnd = true;
                return;
            }
            if (!OpenPlace(cursor)) {
                ++cursor.Place;
                continue;
            }
            isFirst = true;
        }
        for (; cursor.Range < cursor.Ranges.size(); ++cursor.Range, isFirst = true) {
            if (ReadInRange(cursor, isFirst)) return;
        }
        cursor.File.reset();
        ++cursor.Place;
    }
}

int Filter(sqlite3_vtab_cursor *base, int key, const char *roles, int count, sqlite3_value **values)
{
    return Guarded(base->pVtab, [&] {
        Cursor &cursor = CursorOf(base);
        cursor.Key = key;
        cursor.Roles = roles != nullptr ? roles : "";
        cursor.Values.clear();
        for (int i = 0; i < count; ++i) {
            cursor.Values.push_back(ValueOf(values[i]));
        }
        cursor.File.reset();
        cursor.Place = 0;
        cursor.IsAtEnd = false;
        FindPlaces(cursor);
        Read(cursor, true);
        return SQLITE_OK;
    });
}

int Next(sqlite3_vtab_cursor *base)
{
    return Guarded(base->pVtab, [&] {
        Read(CursorOf(base), false);
        return SQLITE_OK;
    });
}

int Eof(sqlite3_vtab_cursor *base) { return CursorOf(base).IsAtEnd ? 1 : 0; }

int Column(sqlite3_vtab_cursor *base, sqlite3_context *out, int number)
{
    return Guarded(base->pVtab, [&] {
        Cursor &cursor = CursorOf(base);
        const SqlColumn &column = cursor.In->Columns[static_cast<size_t>(number)];
        if (cursor.Here.FirstMonth == 0 && NeedsFirstMonth(column)) {
            cursor.Here.FirstMonth = cursor.In->Books->FirstMonthOf(cursor.Here.Mandant);
        }
        PutValue(out, column, cursor.Record.data(), cursor.Here);
        return SQLITE_OK;
    });
}

// The record's own number behind that of its directory: the same as long as the record is there.
int RowId(sqlite3_vtab_cursor *base, sqlite3_int64 *row)
{
    return Guarded(base->pVtab, [&] {
        Cursor &cursor = CursorOf(base);
        const int64_t place = int64_t{cursor.Here.Year} * 10001 + cursor.Here.Mandant;
        *row = place << 32 | cursor.File->RecordNumber();
        return SQLITE_OK;
    });
}

constexpr sqlite3_module MakeModule()
{
    sqlite3_module module{};
    module.iVersion = 2;
    module.xCreate = Connect;
    module.xConnect = Connect;
    module.xBestIndex = BestIndex;
    module.xDisconnect = Disconnect;
    module.xDestroy = Disconnect;
    module.xOpen = Open;
    module.xClose = Close;
    module.xFilter = Filter;
    module.xNext = Next;
    module.xEof = Eof;
    module.xColumn = Column;
    module.xRowid = RowId;
    return module;
}

constexpr sqlite3_module tableModule = MakeModule();

} // namespace

int RegisterTables(sqlite3 *database, const std::shared_ptr<Connection> &connection)
{
    auto *data = new (std::nothrow) std::shared_ptr<Connection>(connection);
    if (data == nullptr) return SQLITE_NOMEM;
    return sqlite3_create_module_v2(database, moduleName, &tableModule, data, [](void *held) {
        delete static_cast<std::shared_ptr<Connection> *>(held);
    });
}

} // namespace sql
