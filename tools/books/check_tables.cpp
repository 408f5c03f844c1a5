#include "tools/books/check_tables.h"

#include "src/values/amounts.h"
#include "tools/common/calendar.h"
#include "tools/common/texts.h"

#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

namespace {

bool SameKey(const KeyLayout &a, const KeyLayout &b)
{
    if (a.Duplicates != b.Duplicates || a.Modifiable != b.Modifiable ||
        a.Segments.size() != b.Segments.size()) {
        return false;
    }
    for (size_t i = 0; i < a.Segments.size(); ++i) {
        if (a.Segments[i].Offset != b.Segments[i].Offset || a.Segments[i].Length != b.Segments[i].Length ||
            a.Segments[i].Type != b.Segments[i].Type) {
            return false;
        }
    }
    return true;
}

// Whether the table is made as it should be; false when its records cannot be read as such.
bool CheckDefinition(Findings &findings, const TableLayout &layout, const TableDefinition &definition)
{
    if (definition.RecordLength != layout.RecordLength) {
        findings.Tell("definition", layout.Stem, "", "",
                      "die Sätze sind " + std::to_string(definition.RecordLength) + " statt " +
                          std::to_string(layout.RecordLength) + " Bytes lang");
        return false;
    }
    for (size_t i = 0; i < std::max(layout.Keys.size(), definition.Keys.size()); ++i) {
        const std::string name = "Schlüssel " + std::to_string(i);
        if (i >= definition.Keys.size()) {
            findings.Tell("definition", layout.Stem, "", name, "der Schlüssel fehlt");
        } else if (i >= layout.Keys.size()) {
            findings.Tell("definition", layout.Stem, "", name, "der Schlüssel gehört nicht dazu");
        } else if (!SameKey(layout.Keys[i], definition.Keys[i])) {
            findings.Tell("definition", layout.Stem, "", name,
                          DescribeKey(definition.Keys[i]) + " statt " + DescribeKey(layout.Keys[i]));
        }
    }
    return layout.Keys.size() <= definition.Keys.size();
}

// An index must lead to every record once, in its own order.
void CheckIndex(Findings &findings, TableFile &table, int number, int64_t records)
{
    const TableLayout &layout = table.Layout;
    const KeyLayout &key = layout.Keys[static_cast<size_t>(number)];
    const std::string name = "Schlüssel " + std::to_string(number);
    std::string previous(layout.RecordLength, '\0');
    std::string record(layout.RecordLength, '\0');
    int64_t count = 0;
    for (bool found = table.First(record.data(), number); found; found = table.Next(record.data(), number)) {
        if (count > 0) {
            const int order = CompareKeys(key, previous.data(), record.data());
            if (order > 0) {
                findings.Tell("index", layout.Stem, KeyText(layout, record.data()), name,
                              "der Satz steht im Index hinter einem größeren");
            } else if (order == 0 && !key.Duplicates) {
                findings.Tell("index", layout.Stem, KeyText(layout, record.data()), name,
                              "der Schlüssel kommt mehrfach vor");
            }
        }
        std::swap(previous, record);
        if (++count > records + 1) break; // it leads in a circle
    }
    if (count != records) {
        findings.Tell("index", layout.Stem, "", name,
                      "der Index führt zu " + std::to_string(count) + " von " + std::to_string(records) +
                          " Sätzen");
    }
}

void CheckForms(Findings &findings, const TableLayout &layout, const char *record, int firstMonth)
{
    const auto quoted = [&](const std::string &what, const FieldLayout &field) {
        return what + ": „" + FieldValue(field, record, firstMonth) + "“";
    };
    for (const FieldLayout &field : layout.Fields) {
        if (const std::string fault = FaultOfForm(field, record, firstMonth); !fault.empty()) {
            findings.Tell("form", layout.Stem, KeyText(layout, record), field.Name, quoted(fault, field));
        } else if (const std::string remark = RemarkOnForm(field, record); !remark.empty()) {
            findings.Remark("form", layout.Stem, KeyText(layout, record), field.Name, quoted(remark, field));
        }
    }
}

} // namespace

bool IsCircumstance(int status)
{
    switch (status) {
    case BtrStatusNoEngine:
    case BtrStatusDeadlock:
    case BtrStatusRecordLocked:
    case BtrStatusFileLocked:
    case BtrStatusFileTableFull:
    case BtrStatusHandleTableFull:
    case BtrStatusIncompatibleMode:
    case BtrStatusPermission: return true;
    default: return false;
    }
}

bool CheckTable(Findings &findings, const TableLayout &layout, const std::filesystem::path &directory,
                int firstMonth, const std::function<void(const char *record)> &visit)
{
    findings.Reading(layout.Stem);
    try {
        TableFile table(layout, directory, OpenMode::ReadOnly);
        const TableDefinition definition = table.Definition();
        if (!CheckDefinition(findings, layout, definition)) return false;

        std::string record(layout.RecordLength, '\0');
        int64_t records = 0;
        for (bool found = table.StepFirst(record.data()); found; found = table.StepNext(record.data())) {
            ++records;
            CheckForms(findings, layout, record.data(), firstMonth);
            if (visit) visit(record.data());
        }
        findings.Count(records);
        if (records != definition.Records) {
            findings.Tell("satzzahl", layout.Stem, "", "",
                          "gezählt sind " + std::to_string(definition.Records) + " Sätze, es gibt " +
                              std::to_string(records));
        }
        for (size_t key = 0; key < layout.Keys.size(); ++key) {
            try {
                CheckIndex(findings, table, static_cast<int>(key), records);
            } catch (const EngineError &error) {
                if (IsCircumstance(error.Status)) throw;
                findings.Tell("index", layout.Stem, "", "Schlüssel " + std::to_string(key), error.what());
            }
        }
        return true;
    } catch (const EngineError &error) {
        if (IsCircumstance(error.Status)) throw;
        findings.Tell("lesbar", layout.Stem, "", "", error.what());
        return false;
    }
}

} // namespace books
