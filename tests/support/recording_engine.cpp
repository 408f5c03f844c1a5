#include "tests/support/recording_engine.h"

#include "src/frame/report_engine.h"
#include "tests/support/books.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace vark::test {

namespace {

RecordingEngine *recording;
std::map<int32_t, std::string> reportIds; // by handle

struct RecordField {
    std::string Name;
    size_t Offset;
    size_t Width;
    std::string Form; // "text", "u32", "i32", "box"
};

// The records of a report id as its template knows them, by kind. They lie in report_records/ID.txt: a kind
// on a line of its own, below it a field a line: name, offset, and its width or "u32" or "i32", or "box" for
// an amount that is left out while it is zero. "#" begins a comment.
using RecordKinds = std::map<int32_t, std::vector<RecordField>>;

RecordKinds ReadKinds(const std::string &id)
{
    RecordKinds kinds;
    std::ifstream file(REPORT_RECORDS_DIRECTORY "/" + id + ".txt");
    int32_t kind = -1;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string name;
        std::string form;
        size_t offset = 0;
        if (!(words >> name)) continue;
        if (!(words >> offset >> form)) {
            kind = std::stoi(name);
            kinds[kind];
            continue;
        }
        const bool isText = std::isdigit(static_cast<unsigned char>(form[0])) != 0;
        const size_t width = isText ? std::stoul(form) : form == "box" ? 13 : 4;
        kinds[kind].push_back({name, offset, width, isText ? "text" : form});
    }
    return kinds;
}

const std::vector<RecordField> &FieldsOf(const std::string &id, int32_t kind)
{
    static std::map<std::string, RecordKinds> known;
    const auto found = known.find(id);
    RecordKinds &kinds = found != known.end() ? found->second : known[id] = ReadKinds(id);
    return kinds[kind];
}

std::string Shown(const void *record, const RecordField &field)
{
    const char *bytes = static_cast<const char *>(record) + field.Offset;
    if (field.Form == "text" || field.Form == "box") return TextOf(bytes, field.Width);
    uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return field.Form == "i32" ? std::to_string(static_cast<int32_t>(value)) : std::to_string(value);
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
        const std::string value = Shown(record, field);
        if (field.Form == "box" && value == "000000000,00") continue;
        call += " | " + field.Name + "=" + value;
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

int32_t OpenVirtual(int32_t report)
{
    Note("count " + std::to_string(report));
    return recording->CountingResult;
}

int32_t AddVirtual(int32_t counting, int32_t kind, int32_t number)
{
    if (recording->CountsUntilRefusal == 0) return 0;
    if (recording->CountsUntilRefusal > 0) --recording->CountsUntilRefusal;
    Note("counted " + std::to_string(counting) + " " + std::to_string(kind) + " " + std::to_string(number));
    return 1;
}

int32_t VirtualPages(int32_t counting)
{
    Note("pages " + std::to_string(counting));
    return recording->PagesResult;
}

void CloseVirtual(int32_t counting) { Note("endcount " + std::to_string(counting)); }

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
    reportEngine.OpenVirtualReport = OpenVirtual;
    reportEngine.AddVirtualData = AddVirtual;
    reportEngine.GetVirtualPages = VirtualPages;
    reportEngine.CloseVirtualReport = CloseVirtual;
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
