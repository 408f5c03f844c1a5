#include "tools/books/show.h"

#include "tools/books/place.h"
#include "tools/common/exit_codes.h"
#include "tools/common/fields.h"
#include "tools/common/json.h"
#include "tools/common/key_value.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace books {

using namespace tools;

namespace {

std::vector<FieldLayout> WantedFields(const TableLayout &layout, const ShowOptions &options)
{
    std::vector<FieldLayout> all = options.WithGaps ? FieldsAndGaps(layout) : layout.Fields;
    if (options.Fields.empty()) return all;
    std::vector<FieldLayout> wanted;
    for (const std::string &name : options.Fields) {
        const size_t before = wanted.size();
        for (const FieldLayout &field : all) {
            if (field.Name == name || field.Name.starts_with(name + ".") ||
                field.Name.starts_with(name + "[")) {
                wanted.push_back(field);
            }
        }
        if (wanted.size() == before) {
            throw UsageError("Ein Feld " + name + " hat " + layout.Stem +
                             " nicht. Die Felder zeigt: books aufbau " + layout.Stem);
        }
    }
    return wanted;
}

// Columns that the longest value of a field takes.
size_t WidthOf(const FieldLayout &field)
{
    switch (field.Type) {
    case Form::PackedDay:
    case Form::SortDay:
    case Form::Calendar: return 10;
    case Form::Amount: return 15;
    case Form::I16: return 6;
    case Form::I32: return 11;
    case Form::U8: return 3;
    case Form::U16: return 5;
    case Form::U32: return 10;
    case Form::Bytes: return size_t{2} * field.Width;
    default: return field.Width - size_t{1};
    }
}

bool StandsRight(const FieldLayout &field)
{
    return IsNumber(field.Type) || field.Type == Form::Amount || field.Type == Form::Konto ||
           field.Type == Form::Rate || field.Type == Form::Share;
}

// Goes through the records of the range; false from `show` ends it.
template <typename Show>
void ForEach(const TableLayout &layout, const TablePlace &place, const ShowOptions &options, Show show)
{
    if (options.Key < 0 || static_cast<size_t>(options.Key) >= layout.Keys.size()) {
        throw UsageError("Einen Schlüssel " + std::to_string(options.Key) + " hat " + layout.Stem +
                         " nicht; die Schlüssel gehen von 0 bis " + std::to_string(layout.Keys.size() - 1) +
                         ".");
    }
    const KeyLayout &key = layout.Keys[static_cast<size_t>(options.Key)];
    const auto parse = [&](const std::string &first, const std::string &second) {
        const std::string &text = first.empty() ? second : first;
        return text.empty() ? std::nullopt : std::optional(ParseKey(layout, key, text, place.FirstMonth));
    };
    const std::optional<KeyValue> from = parse(options.Equal, options.From);
    const std::optional<KeyValue> to = parse(options.Equal, options.To);

    TableFile table(layout, place.Directory, OpenMode::ReadOnly);
    if (table.Definition().RecordLength != layout.RecordLength) {
        throw std::runtime_error(table.Path.string() + ": die Sätze sind nicht " +
                                 std::to_string(layout.RecordLength) + " Bytes lang.");
    }
    std::string record(layout.RecordLength, '\0');
    int64_t left = options.Most > 0 ? options.Most : INT64_MAX;
    for (bool found = from ? table.GreaterEqual(record.data(), from->Bytes.data(), options.Key)
                           : table.First(record.data(), options.Key);
         found && left > 0; found = table.Next(record.data(), options.Key), --left) {
        if (to && CompareWith(key, record.data(), *to) > 0) break;
        show(record.data());
    }
}

std::vector<RowColumn> ColumnsOf(const std::vector<FieldLayout> &fields)
{
    std::vector<RowColumn> columns;
    columns.reserve(fields.size());
    for (const FieldLayout &field : fields) {
        columns.push_back({field.Name.c_str(), field.Name.c_str(),
                           std::max(WidthOf(field), Columns(field.Name)),
                           StandsRight(field) ? Align::Right : Align::Left});
    }
    return columns;
}

void ShowJson(const TableLayout &layout, const TablePlace &place, const ShowOptions &options,
              const std::vector<FieldLayout> &fields)
{
    rapidjson::OStreamWrapper stream(std::cout);
    JsonWriter json(stream);
    json.StartArray();
    ForEach(layout, place, options, [&](const char *record) {
        json.StartObject();
        for (const FieldLayout &field : fields) {
            const std::string value = PlainValue(field, record, place.FirstMonth);
            Put(json, field.Name.c_str());
            if (IsNumber(field.Type)) {
                json.RawValue(value.data(), value.size(), rapidjson::kNumberType);
            } else {
                json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
            }
        }
        json.EndObject();
    });
    json.EndArray();
    std::cout << '\n' << std::flush;
}

void ShowRows(const TableLayout &layout, const TablePlace &place, const ShowOptions &options,
              const std::vector<FieldLayout> &fields)
{
    RowWriter rows(ColumnsOf(fields), options.As);
    ForEach(layout, place, options, [&](const char *record) {
        for (const FieldLayout &field : fields) {
            rows.PutUtf8(options.As == Output::Csv ? PlainValue(field, record, place.FirstMonth)
                                                   : Printable(FieldValue(field, record, place.FirstMonth)));
        }
        rows.EndRow();
    });
    rows.End();
}

// All fields of a record side by side would be wider than any terminal: they stand below each other.
void ShowBlocks(const TableLayout &layout, const TablePlace &place, const ShowOptions &options,
                const std::vector<FieldLayout> &fields)
{
    size_t names = 0;
    for (const FieldLayout &field : fields) {
        names = std::max(names, Columns(field.Name));
    }
    int64_t count = 0;
    ForEach(layout, place, options, [&](const char *record) {
        if (count++ > 0) std::cout << '\n';
        std::cout << place.Name << " [" << Printable(KeyText(layout, record)) << "]\n";
        for (const FieldLayout &field : fields) {
            const std::string value = Printable(FieldValue(field, record, place.FirstMonth));
            std::cout << "  ";
            if (value.empty()) {
                std::cout << field.Name << '\n';
            } else {
                std::cout << Left(field.Name, names) << "  " << value << '\n';
            }
        }
    });
    if (count > 0) std::cout << '\n';
    std::cout << Grouped(count) << (count == 1 ? " Satz" : " Sätze") << " aus " << place.Name << " ("
              << layout.Content << ")\n"
              << std::flush;
}

} // namespace

int ShowTable(const ShowOptions &options)
{
    const TableLayout &layout = NamedTable(options.Table);
    const std::filesystem::path data =
        options.Directory.empty() ? ConfiguredDataPath() : DataPathOf(options.Directory);
    if (data.empty()) {
        throw UsageError("In keiner Ini-Datei steht, wo die Bücher liegen. Geben Sie das Verzeichnis an.");
    }
    const std::vector<FieldLayout> fields = WantedFields(layout, options);
    const TablePlace place = PlaceOf(layout, data, options.Mandant, options.Year);
    if (options.As == Output::Json) {
        ShowJson(layout, place, options, fields);
    } else if (options.As == Output::Csv || !options.Fields.empty()) {
        ShowRows(layout, place, options, fields);
    } else {
        ShowBlocks(layout, place, options, fields);
    }
    return ExitGood;
}

} // namespace books
