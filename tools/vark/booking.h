// Bookings through the exported functions: one from options, or many from a CSV file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace cli {

// One booking as a person writes it; UTF-8.
struct BookingText {
    std::string Mandant;
    std::string Stapel;
    std::string Datum;
    std::string Beleg;
    std::string Text;
    std::string Sollkonto;
    std::string Sollart; // empty: found by the number
    std::string Habenkonto;
    std::string Habenart;
    std::string Betrag;
    std::string Steuersatz;
    std::string Steuerbetrag;
    std::string Kostenschablone;
    std::string Zahlungsziel;
};

struct BookingOptions {
    BookingText Defaults;             // the one booking; with a file, what its columns leave empty
    std::filesystem::path File;       // empty: one booking; "-": standard input
    std::filesystem::path Rejections; // where refused lines go as CSV, empty for nowhere
    bool IsJson = false;
    bool IsQuiet = false; // no summary
};

// Books and reports. Returns the exit code: 0 all booked, 1 some refused, 2 the file is no list of bookings,
// 3 the books cannot be used.
int Book(const BookingOptions &options);

} // namespace cli
