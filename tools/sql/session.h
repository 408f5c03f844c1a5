// The books that a connection of SQLite has open, and the moment at which a statement sees them.
#pragma once

#include "tools/common/table_file.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sql {

// A directory of books: that of a Mandant's year, or the data path with its fista (Year and Mandant 0).
struct YearPlace {
    std::string Name; // "1998", "19981"; empty for the data path
    int Year = 0;
    int Mandant = 0;
};

// False for a name that no year directory has.
bool ParseYearPlace(const std::string &name, YearPlace &place);

// One data path. From the first of its cursors to the last, which is as long as a statement runs, every
// directory is seen as it stood when it was first used.
struct Session {
    explicit Session(std::filesystem::path data) : Data(std::move(data)) {}

    void AddCursor();
    void RemoveCursor() noexcept;

    // Opened in the statement's snapshot. Nothing where a year has no such table.
    std::unique_ptr<tools::TableFile> Open(const tools::TableLayout &layout, const YearPlace &place);

    // The year directories there are, by name.
    const std::vector<YearPlace> &Years();
    // The calendar month in which the Mandant's fiscal year begins; 1 where nobody tells.
    int FirstMonthOf(int mandant);

    std::filesystem::path Data;
    int64_t RecordsRead = 0;

private:
    void Hold();

    tools::EngineClient client;
    int cursors = 0;
    bool holds = false;
    std::optional<std::vector<YearPlace>> years; // of this statement, as the months
    std::optional<std::map<int, int>> firstMonths;
};

// Uses the books for as long as it lives.
struct SessionUse {
    explicit SessionUse(Session &books) : Books(books) { Books.AddCursor(); }
    ~SessionUse() { Books.RemoveCursor(); }
    SessionUse(const SessionUse &) = delete;
    SessionUse &operator=(const SessionUse &) = delete;

    Session &Books;
};

// What a connection shares: its books by their data path.
struct Connection {
    Session &At(const std::filesystem::path &data);

    std::map<std::string, std::unique_ptr<Session>> Sessions;
};

} // namespace sql
