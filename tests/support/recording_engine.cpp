#include "tests/support/recording_engine.h"

#include "src/frame/report_engine.h"
#include "tests/support/books.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

namespace vark::test {

namespace {

RecordingEngine *recording;
std::map<int32_t, std::string> reportIds; // by handle

enum class Form : uint8_t { Text, Unsigned };

struct RecordField {
    const char *Name;
    size_t Offset;
    size_t Width;
    Form As = Form::Text;
};

// The records of a report id as their templates know them.
std::vector<RecordField> FieldsOf(const std::string &id, int32_t kind)
{
    if (id == "tervoSUSALIST0.0" && kind == 0) {
        return {{"Mandant", 0, 41},
                {"BisDatum", 41, 7},
                {"Monat", 48, 20},
                {"Kontoart", 68, 30},
                {"Bereich", 98, 30}};
    }
    if (id == "tervoSUSALIST0.0" && kind == 1) {
        return {{"Konto", 0, 8},         {"Kuerzel", 8, 9},          {"Name", 17, 41},
                {"VortragSoll", 58, 13}, {"VortragHaben", 71, 13},   {"MonatSoll", 84, 13},
                {"MonatHaben", 97, 13},  {"KumuliertSoll", 110, 13}, {"KumuliertHaben", 123, 13},
                {"SummeSoll", 136, 13},  {"SummeHaben", 149, 13},    {"Bewegt", 162, 4, Form::Unsigned}};
    }
    const bool isKontenplan = id == "tervoKTOPLAN0.0" || id == "tervoSAKTOPLAN0.0";
    if (isKontenplan && kind == 0) return {{"Mandant", 0, 41}, {"Kontoart", 41, 30}, {"Bereich", 71, 30}};
    if (id == "tervoSAKTOPLAN0.0" && kind == 1) {
        return {{"Konto", 0, 8},
                {"Kuerzel", 8, 9},
                {"Zustand", 17, 4, Form::Unsigned},
                {"Datum", 21, 7},
                {"Name", 28, 41},
                {"Liste", 69, 30},
                {"Gruppe", 99, 26},
                {"Steuertext", 125, 40},
                {"Steuersatz", 165, 6},
                {"FesterSatz", 171, 4, Form::Unsigned},
                {"Kontenplanflag", 175, 4, Form::Unsigned},
                {"Kennzahl", 179, 4, Form::Unsigned},
                {"Kosten", 183, 4, Form::Unsigned}};
    }
    if (id == "tervoKTOPLAN0.0" && kind == 1) {
        return {{"Konto", 0, 8},
                {"Kuerzel", 8, 9},
                {"Zustand", 17, 4, Form::Unsigned},
                {"Datum", 21, 7},
                {"Name1", 28, 26},
                {"Name2", 54, 26},
                {"Adresse1", 80, 31},
                {"Plz", 111, 7},
                {"Land", 118, 4},
                {"Adresse2", 122, 31},
                {"Gegenkonto", 153, 8},
                {"Blz", 161, 9},
                {"Bankkonto", 170, 11},
                {"Bank", 181, 28},
                {"Wert1", 209, 4, Form::Unsigned},
                {"Wert2", 213, 4, Form::Unsigned},
                {"Skonto", 217, 6},
                {"Mahnkennziffer", 223, 4, Form::Unsigned},
                {"Freitext", 227, 16},
                {"Waehrung", 243, 5},
                {"Kennzeichen", 248, 4, Form::Unsigned},
                {"Text", 252, 28}};
    }
    return {};
}

std::string Shown(const void *record, const RecordField &field)
{
    const char *bytes = static_cast<const char *>(record) + field.Offset;
    if (field.As == Form::Text) return TextOf(bytes, field.Width);
    uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return std::to_string(value);
}

void Note(const std::string &call) { recording->Calls.push_back(call); }

const char *Named(RSWindow window) { return window != nullptr ? "window" : "none"; }

std::string Rectangle(int32_t left, int32_t top, int32_t width, int32_t height)
{
    return std::to_string(left) + "," + std::to_string(top) + " " + std::to_string(width) + "x" +
           std::to_string(height);
}

std::string Hex(uint32_t value)
{
    char text[12];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

int32_t Open(const char *path, const char *id, int32_t reserved)
{
    Note("open " + std::filesystem::path(path).filename().string() + " " + id + " " +
         std::to_string(reserved));
    reportIds[recording->OpenResult & 0xFFFF] = id;
    return recording->OpenResult;
}

int32_t Copy(int32_t report, const char *id, int32_t reserved)
{
    Note("copy " + std::to_string(report) + " " + id + " " + std::to_string(reserved));
    reportIds[recording->CopyResult & 0xFFFF] = id;
    return recording->CopyResult;
}

void Close(int32_t report) { Note("close " + std::to_string(report)); }

int32_t Add(int32_t report, int32_t kind, const void *record)
{
    if (recording->RecordsUntilRefusal == 0) return 0;
    if (recording->RecordsUntilRefusal > 0) --recording->RecordsUntilRefusal;
    std::string call = std::to_string(kind);
    for (const RecordField &field : FieldsOf(reportIds[report & 0xFFFF], kind)) {
        call += std::string(" | ") + field.Name + "=" + Shown(record, field);
    }
    Note(call);
    return 1;
}

RSWindow View(int32_t report, const char *title, const char *page, RSWindow parent, int32_t left, int32_t top,
              int32_t width, int32_t height, uint32_t style, uint32_t exStyle, uint32_t first,
              uint32_t second, RSWindow frame)
{
    Note("view " + std::to_string(report) + " '" + TextOf(title, std::strlen(title) + 1) + "' " + page +
         " parent=" + Named(parent) + " " + Rectangle(left, top, width, height) + " style=" + Hex(style) +
         " ex=" + Hex(exStyle) + " " + std::to_string(first) + " " + std::to_string(second) +
         " frame=" + Named(frame));
    return recording->ViewResult;
}

RSWindow CopyView(int32_t report, RSWindow view, int32_t third, int32_t left, int32_t top, int32_t width,
                  int32_t height, uint32_t style, uint32_t exStyle, int32_t reserved)
{
    Note("copyview " + std::to_string(report) + " view=" + Named(view) + " " + std::to_string(third) + " " +
         Rectangle(left, top, width, height) + " style=" + Hex(style) + " ex=" + Hex(exStyle) + " " +
         std::to_string(reserved));
    return recording->CopiedView;
}

int32_t Print(RSWindow, int32_t reserved)
{
    Note("print " + std::to_string(reserved));
    return recording->PrintResult;
}

bool IsRecord(const std::string &call) { return call[0] >= '0' && call[0] <= '8'; }

} // namespace

void RecordingEngine::Install()
{
    recording = this;
    reportEngine.ReportEngineBound = 1;
    reportEngine.OpenReport = Open;
    reportEngine.CopyReport = Copy;
    reportEngine.CloseReport = Close;
    reportEngine.AddData = Add;
    reportEngine.OpenView = View;
    reportEngine.CopyView = CopyView;
    reportEngine.PrintView = Print;
}

std::vector<std::string> RecordingEngine::Records(int kind) const
{
    std::vector<std::string> records;
    for (const std::string &call : Calls) {
        if (IsRecord(call) && call[0] - '0' == kind)
            records.push_back(call.substr(std::min(call.size(), size_t{4})));
    }
    return records;
}

std::vector<std::string> RecordingEngine::OtherCalls() const
{
    std::vector<std::string> others;
    for (const std::string &call : Calls) {
        if (!IsRecord(call)) others.push_back(call);
    }
    return others;
}

} // namespace vark::test
