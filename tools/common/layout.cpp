#include "tools/common/layout.h"

#include "tools/common/table_rows.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace tools {

using namespace vark;

namespace {

// Where fields lie, and what goes before their names and meanings.
struct Place {
    std::string Prefix; // "Umsaetze."
    size_t Offset = 0;
    std::string Of; // "erste Teilbuchung"
    Reference Personal = Reference::None;
};

void AddField(std::vector<FieldLayout> &fields, const FieldRow &row, const Place &place,
              const std::string &name, size_t offset, std::string meaning)
{
    const bool isPersonal = row.Target == Reference::Personenkonto && place.Personal != Reference::None;
    if (!place.Of.empty()) meaning = place.Of + ": " + meaning;
    fields.push_back({place.Prefix + name, static_cast<uint16_t>(place.Offset + offset),
                      static_cast<uint16_t>(row.Width), row.Type, isPersonal ? place.Personal : row.Target,
                      std::move(meaning), row.IsNeeded});
}

void AddSums(std::vector<FieldLayout> &fields, const Place &place)
{
    const auto addPair = [&](const std::string &name, size_t offset, const std::string &of) {
        for (const FieldRow &row : SumFields()) {
            AddField(fields, row, {place.Prefix + name + ".", place.Offset + offset, of}, row.Name,
                     row.Offset, row.Meaning);
        }
    };
    addPair("Vortrag", offsetof(AccountSums, Vortrag), "Vortrag");
    addPair("Slot0", offsetof(AccountSums, Slot0), "Jahresende");
    for (size_t month = 0; month < 12; ++month) {
        addPair("Monat[" + std::to_string(month) + "]",
                offsetof(AccountSums, Monat) + month * sizeof(SollHaben),
                "Geschäftsmonat " + std::to_string(month + 1));
    }
}

void AddRows(std::vector<FieldLayout> &fields, std::span<const FieldRow> rows, const Place &place)
{
    for (const FieldRow &row : rows) {
        const Place inside = {place.Prefix + row.Name + ".", place.Offset + row.Offset, row.Meaning};
        if (row.Inside == Nest::Part) {
            AddRows(fields, PartFields(), inside);
        } else if (row.Inside == Nest::Sums) {
            AddSums(fields, inside);
            AddRows(fields, CountFields(), inside);
        } else if (row.Count == 0) {
            AddField(fields, row, place, row.Name, row.Offset, row.Meaning);
        }
        for (size_t i = 0; i < row.Count; ++i) {
            AddField(fields, row, place, row.Name + ("[" + std::to_string(i) + "]"),
                     row.Offset + i * row.Width, row.Meaning + (" " + std::to_string(i + 1)));
        }
    }
}

TableLayout LayoutFrom(const TableRow &row)
{
    TableLayout layout{row.Id, row.Stem, static_cast<uint16_t>(row.RecordLength), row.Content, {}, {}};
    for (const KeyRow &key : row.Keys) {
        KeyLayout &made = layout.Keys.emplace_back(KeyLayout{key.Duplicates, key.Modifiable, {}});
        for (const KeySegment &segment : key.Segments) {
            if (segment.Length > 0) made.Segments.push_back(segment);
        }
    }
    AddRows(layout.Fields, row.Fields, {"", 0, "", row.Personal});
    return layout;
}

std::vector<TableLayout> MakeTables()
{
    std::vector<TableLayout> tables;
    for (const TableRow &row : TableRows()) {
        tables.push_back(LayoutFrom(row));
    }
    return tables;
}

} // namespace

uint16_t KeyLayout::Length() const
{
    uint16_t length = 0;
    for (const KeySegment &segment : Segments) {
        length = static_cast<uint16_t>(length + segment.Length);
    }
    return length;
}

const std::vector<TableLayout> &Tables()
{
    static const std::vector<TableLayout> tables = MakeTables();
    return tables;
}

const TableLayout &LayoutOf(TableId id)
{
    for (const TableLayout &table : Tables()) {
        if (table.Id == id) return table;
    }
    throw std::logic_error("no such table");
}

const TableLayout *FindLayout(std::string_view stem)
{
    const auto equal = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    for (const TableLayout &table : Tables()) {
        if (std::equal(stem.begin(), stem.end(), table.Stem.begin(), table.Stem.end(), equal)) return &table;
    }
    return nullptr;
}

bool IsYearTable(const TableLayout &table) { return table.Id != TableFista; }

std::vector<FieldLayout> FieldsAndGaps(const TableLayout &table)
{
    std::vector<FieldLayout> all;
    uint16_t end = 0;
    const auto fill = [&](uint16_t upTo) {
        if (upTo == end) return;
        all.push_back({"Reserved" + std::to_string(end), end, static_cast<uint16_t>(upTo - end), Form::Bytes,
                       Reference::None, "bleibt, wie es ist"});
    };
    for (const FieldLayout &field : table.Fields) {
        fill(field.Offset);
        all.push_back(field);
        end = static_cast<uint16_t>(field.Offset + field.Width);
    }
    fill(table.RecordLength);
    return all;
}

std::string_view FormName(Form form)
{
    switch (form) {
    case Form::Text: return "Text";
    case Form::Digits: return "Ziffern";
    case Form::Konto: return "Kontonummer";
    case Form::Amount: return "Betrag";
    case Form::Rate: return "Prozentsatz";
    case Form::Share: return "Anteil";
    case Form::PackedDay: return "Tag TTMMJJ";
    case Form::SortDay: return "Tag JJMMTT";
    case Form::Calendar: return "Kalendertag TTMMJJ";
    case Form::Year: return "Jahr";
    case Form::DayNumber: return "Tag und Nummer";
    case Form::I16: return "i16";
    case Form::I32: return "i32";
    case Form::U8: return "u8";
    case Form::U16: return "u16";
    case Form::U32: return "u32";
    case Form::Bytes: return "Bytes";
    }
    return {};
}

std::string_view ReferenceName(Reference reference)
{
    switch (reference) {
    case Reference::None: return {};
    case Reference::Sachkonto: return "sako";
    case Reference::Personenkonto: return "debi, kred";
    case Reference::Debitor: return "debi";
    case Reference::Kreditor: return "kred";
    case Reference::Konto: return "sako, debi, kred";
    case Reference::Kostenobjekt: return "kore";
    case Reference::Zahlungsziel: return "zahlziel";
    case Reference::Kostenschablone: return "koscha";
    case Reference::Stapel: return "stapel";
    case Reference::Benutzer: return "user";
    case Reference::Knoten: return "dieselbe Tabelle";
    case Reference::Buchung: return "bat";
    case Reference::Teil: return "split";
    case Reference::Final: return "bube";
    case Reference::Waehrung: return "kurse";
    }
    return {};
}

const FieldLayout *FieldOf(const TableLayout &table, const KeySegment &segment)
{
    for (const FieldLayout &field : table.Fields) {
        if (field.Offset == segment.Offset) return &field;
    }
    return nullptr;
}

} // namespace tools
