// A booking, or a part of one, as a person writes it, and its way into the library's forms.
#pragma once

#include "tools/vark/csv_task.h"

#include <span>
#include <string>

namespace cli {

// UTF-8, and nothing judged yet.
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
    std::string Kennzeichen; // of split bookings
};

// The columns of a file of bookings; the last one, Kennzeichen, is of split bookings alone.
std::span<const CsvColumn<BookingText>> BookingColumns();
std::span<const CsvColumn<BookingText>> SplitColumns();

// The same in Windows-1252 and numbers. Kinds that were not given are 0.
struct PreparedBooking {
    int Mandant, Stapel, SollArt, HabenArt, Kostenschablone, Zahlungsziel, Kennzeichen;
    std::string Datum, Beleg, Text, Soll, Haben, Betrag, Satz, Steuer;

    // The library will cut Beleg or Text.
    bool IsCut() const;
    // Replaces kinds that were not given by those of the accounts.
    void FindKinds();
};

// The first fault that the library cannot see, since it gets numbers or would cut; German. Empty for none.
std::string PrepareBooking(const BookingText &text, PreparedBooking &out);

} // namespace cli
