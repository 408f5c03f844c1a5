// One description of every table of the books: its keys, and the fields of its records under their names.
// Creating, checking, showing, saving and loading books are all built on it.
#pragma once

#include "src/model/tables.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

// How the bytes of a field are read.
enum class Form : uint8_t {
    Text,      // Windows-1252, NUL-terminated inside its width
    Digits,    // a text of digits only, may be empty
    Konto,     // account number, right-justified with blanks to seven characters; may be empty
    Amount,    // AmountText; empty reads as zero
    Rate,      // RateText; may be empty
    Share,     // "100,00", or one leading digit and a RateText
    PackedDay, // PackedDate of the Mandant's fiscal calendar; may be empty
    SortDay,   // SortDate; may be empty
    Calendar,  // day, calendar month, calendar year from 1980; may be empty
    Year,      // four digits; may be empty
    DayNumber, // SortDate, running number of four digits, NUL
    I16,
    I32,
    U8,
    U16,
    U32,
    Bytes, // kept as they are, and without a meaning here
};

// What a field's value must be found in, where it is not empty (or 0).
enum class Reference : uint8_t {
    None,
    Sachkonto,
    Personenkonto, // debi or kred
    Debitor,
    Kreditor,
    Konto,        // sako, debi or kred
    Kostenobjekt, // kore
    Zahlungsziel,
    Kostenschablone,
    Stapel,
    Benutzer,
    Knoten,   // a node of the same table
    Buchung,  // bat
    Teil,     // split
    Final,    // bube, by its Buchungsnummer
    Waehrung, // kurse, or the Mandant's own
};

struct FieldLayout {
    std::string Name; // "Kuerzel", "Umsaetze.Monat[0].Soll"
    uint16_t Offset;
    uint16_t Width;
    Form Type;
    Reference Target;
    std::string Meaning;   // German
    bool IsNeeded = false; // what it refers to, that is: the field may not be empty (or 0)
};

enum class KeyType : uint8_t { String = 0, Integer = 1, Unsigned = 14, Autoincrement = 15 };

struct KeySegment {
    uint16_t Offset; // from 0
    uint16_t Length;
    KeyType Type;
};

struct KeyLayout {
    bool Duplicates;
    bool Modifiable;
    std::vector<KeySegment> Segments;

    uint16_t Length() const;
};

struct TableLayout {
    vark::TableId Id;
    std::string Stem;
    uint16_t RecordLength;
    std::string Content; // German, what a record is
    std::vector<KeyLayout> Keys;
    std::vector<FieldLayout> Fields; // in the order of their offsets, without the gaps between them

    std::string FileName() const { return Stem + ".btr"; }
};

// All tables in the order of their numbers: 0 to 4 and 6 to 27.
const std::vector<TableLayout> &Tables();

// The layout of a table.
const TableLayout &LayoutOf(vark::TableId id);

// By file stem, without regard to case; null for none.
const TableLayout *FindLayout(std::string_view stem);

// The tables of a year directory: all but fista, which lies in the data path.
bool IsYearTable(const TableLayout &table);

// All bytes of a record: its fields, and what lies between them as "Reserved" and its offset.
std::vector<FieldLayout> FieldsAndGaps(const TableLayout &table);

// The field that a segment of a key lies on; null where it lies on none.
const FieldLayout *FieldOf(const TableLayout &table, const KeySegment &segment);

// In German: how a field is written, and the tables in which its value must be found (empty for none).
std::string_view FormName(Form form);
std::string_view ReferenceName(Reference reference);

} // namespace tools
