// vark_sql.so: the books as tables of SQLite, for any program that loads extensions. `SELECT
// buecher_oeffnen('VERZEICHNIS')` makes the tables and views of live books.
#include "tools/sql/failures.h"
#include "tools/sql/opening.h"
#include "tools/sql/table.h"

#include <cstdlib>
#include <memory>

namespace {

using sql::Connection;
using Held = std::shared_ptr<Connection>;

Connection &ConnectionOf(sqlite3_context *context)
{
    return **static_cast<Held *>(sqlite3_user_data(context));
}

void BuecherOeffnen(sqlite3_context *context, int count, sqlite3_value **values)
{
    std::string why;
    const int code = sql::Try(why, [&] {
        std::string place;
        if (count == 1) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(values[0]));
            if (text == nullptr) throw std::runtime_error("Das Verzeichnis der Bücher fehlt.");
            place = text;
            // An empty path names no books; without an argument the configured ones are meant.
            if (place.empty()) throw std::runtime_error("Das Verzeichnis der Bücher fehlt.");
        }
        const std::string data =
            sql::OpenBooks(sqlite3_context_db_handle(context), ConnectionOf(context), place).string();
        sqlite3_result_text(context, data.c_str(), -1, SQLITE_TRANSIENT);
        return SQLITE_OK;
    });
    if (code == SQLITE_NOMEM) sqlite3_result_error_nomem(context);
    if (code == SQLITE_ERROR) sqlite3_result_error(context, why.c_str(), -1);
}

// How many records the connection has read so far.
void SaetzeGelesen(sqlite3_context *context, int, sqlite3_value **)
{
    int64_t records = 0;
    for (const auto &[path, session] : ConnectionOf(context).Sessions) {
        records += session->RecordsRead;
    }
    sqlite3_result_int64(context, records);
}

// Pfennig as text, with marks between thousands for people; NULL of what is no whole number.
void PutAmount(sqlite3_context *context, sqlite3_value *value, char comma, bool isGrouped)
{
    if (sqlite3_value_numeric_type(value) != SQLITE_INTEGER) return;
    const int64_t pfennig = sqlite3_value_int64(value);
    uint64_t magnitude =
        pfennig < 0 ? uint64_t{0} - static_cast<uint64_t>(pfennig) : static_cast<uint64_t>(pfennig);
    char text[40];
    char *const end = text + sizeof text;
    char *at = end;
    for (int digits = 0; digits < 3 || magnitude > 0; ++digits, magnitude /= 10) {
        if (digits == 2) *--at = comma;
        if (isGrouped && digits > 2 && (digits - 2) % 3 == 0) *--at = '.';
        *--at = static_cast<char>('0' + magnitude % 10);
    }
    if (pfennig < 0) *--at = '-';
    sqlite3_result_text(context, at, static_cast<int>(end - at), SQLITE_TRANSIENT);
}

void Betrag(sqlite3_context *context, int, sqlite3_value **values)
{
    PutAmount(context, values[0], ',', true);
}

void Dezimal(sqlite3_context *context, int, sqlite3_value **values)
{
    PutAmount(context, values[0], '.', false);
}

using Function = void (*)(sqlite3_context *, int, sqlite3_value **);

int AddFunction(sqlite3 *database, const char *name, int arguments, unsigned flags, Function function,
                const Held &connection)
{
    auto *held = new (std::nothrow) Held(connection);
    if (held == nullptr) return SQLITE_NOMEM;
    return sqlite3_create_function_v2(database, name, arguments, static_cast<int>(SQLITE_UTF8 | flags), held,
                                      function, nullptr, nullptr,
                                      [](void *user) { delete static_cast<Held *>(user); });
}

int Register(sqlite3 *database)
{
    const auto connection = std::make_shared<Connection>();
    constexpr unsigned onlyDirectly = SQLITE_DIRECTONLY;
    constexpr unsigned pure = SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    int code = sql::RegisterTables(database, connection);
    const auto add = [&](const char *name, int arguments, unsigned flags, Function function) {
        if (code == SQLITE_OK) code = AddFunction(database, name, arguments, flags, function, connection);
    };
    add("buecher_oeffnen", 0, onlyDirectly, BuecherOeffnen);
    add("buecher_oeffnen", 1, onlyDirectly, BuecherOeffnen);
    add("saetze_gelesen", 0, onlyDirectly, SaetzeGelesen);
    add("betrag", 1, pure, Betrag);
    add("dezimal", 1, pure, Dezimal);
    return code;
}

} // namespace

// The name that SQLite makes of the file's.
extern "C" __attribute__((visibility("default"))) int sqlite3_varksql_init(sqlite3 *database, char **message,
                                                                           const sqlite3_api_routines *api)
{
    SQLITE_EXTENSION_INIT2(api);
    constexpr int oldest = 3038000; // in which the planner tells what it compares
    if (sqlite3_libversion_number() < oldest) {
        *message = sqlite3_mprintf("SQLite %s ist zu alt; gebraucht wird 3.38.", sqlite3_libversion());
        return SQLITE_ERROR;
    }
    std::string why;
    const int code = sql::Try(why, [&] { return Register(database); });
    if (code == SQLITE_ERROR) *message = sqlite3_mprintf("%s", why.c_str());
    return code;
}
