#include "src/frame/messages.h"

#include "src/frame/engine_calls.h"
#include "text/windows1252.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace vark {

namespace {

using namespace text;

constexpr char caption[] = "MERIDA";
constexpr size_t longestText = 400;  // of the table, with its NUL
constexpr size_t longestShown = 900; // with the Teilbuchung in front and a path filled in

// Box styles by group of 200 numbers from 1000; the statuses of the record manager are warnings.
constexpr UINT boxStyles[6] = {
    MB_OK | MB_ICONINFORMATION,       // 1000: information
    MB_OKCANCEL | MB_ICONINFORMATION, // 1200
    MB_OK | MB_ICONWARNING,           // 1400: warnings
    MB_OKCANCEL | MB_ICONWARNING,     // 1600
    MB_YESNO | MB_ICONQUESTION,       // 1800: questions
    MB_YESNOCANCEL | MB_ICONQUESTION, // 2000
};
constexpr int warningGroup = 2;

// Puts `text` in the place of the first "%s"; what does not fit is cut.
void FillIn(const char *message, const char *text, char *out, size_t size)
{
    const char *const place = std::strstr(message, "%s");
    if (place == nullptr) {
        std::snprintf(out, size, "%s", message);
        return;
    }
    std::snprintf(out, size, "%.*s%s%s", static_cast<int>(place - message), message, text, place + 2);
}

uint32_t ShowBox(int32_t number, const char *text, int32_t partIndex)
{
    const char *const message = MessageText(number);
    if (message == nullptr) {
        return MessageBoxA(GetActiveWindow(), "Speicher voll."_w, caption, MB_SYSTEMMODAL) == IDOK ? 0 : 1;
    }
    char numbered[longestText + 32];
    if (partIndex >= 0) {
        std::snprintf(numbered, sizeof numbered, "Teilbuchung %lld: %s",
                      static_cast<long long>(partIndex) + 1, message);
    } else {
        std::snprintf(numbered, sizeof numbered, "%s", message);
    }
    char filled[longestShown];
    if (text != nullptr) FillIn(numbered, text, filled, sizeof filled);

    const UINT style = BoxStyle(number);
    const int answer = MessageBoxA(GetActiveWindow(), text != nullptr ? filled : numbered, caption, style);
    const bool withoutCancel = (style & 3) == 0;
    if (withoutCancel) return answer == IDOK || answer == IDYES ? 1 : 0;
    return static_cast<uint32_t>(answer);
}

} // namespace

UINT BoxStyle(int32_t number)
{
    const int32_t group = (number - 1000) / 200; // those of the statuses lie behind all groups
    return boxStyles[group >= 0 && group < 6 ? group : warningGroup];
}

uint32_t ShowMessage(int32_t number, uint16_t focusControl, const char *text, int32_t partIndex)
{
    HCURSOR cursor = SetCursor(nullptr);
    const uint32_t result = ShowBox(number, text, partIndex);
    SetCursor(cursor);
    if (focusControl != 0) {
        if (HWND control = FocusControl(GetActiveWindow(), focusControl); control != nullptr)
            FocusAndSelect(control);
    }
    return result;
}

int32_t Report(const ThreadContext &context, int32_t number, int32_t code, const char *text,
               int32_t partIndex)
{
    if (context.ShowMessages != 0) ShowMessage(number, 0, text, partIndex);
    return code;
}

void ReportStatus(int16_t status, const char *text)
{
    const int32_t base = status < 100 ? 3100 : status < 2000 ? 2200 : 1220;
    ShowMessage(base + status, 0, text, -1);
}

bool ReportLocked(int16_t status)
{
    if (status != statusRecordLocked && status != statusFileLocked) return false;
    ShowMessage(Message::DatensatzBenutzt, 0, nullptr, -1);
    return true;
}

HWND FocusControl(HWND window, uint16_t id)
{
    if (HWND control = GetDlgItem(window, id); control != nullptr) return control;
    // Of pages with the same controls the one in view counts.
    for (const bool visible : {true, false}) {
        for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            if ((IsWindowVisible(child) != FALSE) != visible) continue;
            if (HWND control = FocusControl(child, id); control != nullptr) return control;
        }
    }
    return nullptr;
}

void FocusAndSelect(HWND control)
{
    SetFocus(control);
    if (GetFocus() != control) return;
    const LRESULT answer = SendMessageA(control, WM_GETDLGCODE, 0, 0);
    if ((answer & DLGC_HASSETSEL) != 0) SendMessageA(control, EM_SETSEL, 0, -1);
}

} // namespace vark
