// An installation as this program makes one: the data path, the ini files that name it, the report templates.
#pragma once

#include "tools/common/table_file.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace books {

// Below an installation. Two letters, as the library's rules for paths derived from the data path want it.
inline constexpr const char *dataDirectory = "DB";
inline constexpr const char *reportDirectory = "reports";

// The path as it is kept: absolute, without a separator at its end.
std::filesystem::path TargetPath(const std::filesystem::path &directory);

// Throws where an installation must not be made: the path is too long for the ini files, other things lie
// there, or books, unless they may be replaced.
void CheckTarget(const std::filesystem::path &directory, bool replace);

// Throws where what is made of books would lie among them, as if it were one of their years.
void RefuseAmong(const std::filesystem::path &data, const std::filesystem::path &target);

// Keeps everybody else out of books while they are replaced: those who are in refuse it, and whoever comes
// is refused. Books that cannot be opened at all need no keeping.
struct HeldBooks {
    explicit HeldBooks(const std::filesystem::path &data);                 // all there are
    HeldBooks(const std::filesystem::path &data, const std::string &year); // one directory

    // Right before they are moved: Windows moves no directory in which a file is open, so there they are let
    // go, and whoever comes in between makes the move fail.
    void AllowMove();

private:
    std::vector<std::unique_ptr<tools::TableFile>> tables;
};

// Ini files in `place` for an installation that will stand at `target`.
void WriteIniFiles(const std::filesystem::path &place, const std::filesystem::path &target);

// The report templates that lie beside this program, into `target`. False when there are none; an
// installation without them has no reports.
bool CopyTemplates(const std::filesystem::path &target);

} // namespace books
