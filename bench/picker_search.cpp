// Typing in a search field above a long list, as the account pick dialog has it: from a letter that comes
// from the screen until the next one, the row that begins with the text selected and told to the screen.
//   picker_search ROWS   prints the mean seconds of a letter
// Needs a display with a window manager, and bench/screen_keys in the current directory.
#include "bench/peers/peer.h"
#include "window-system/include/dialog_table.h"

#include <string>
#include <thread>

namespace {

constexpr int field = 10;
constexpr int list = 20;
constexpr int letters = 7;

struct Search {
    int Rows;
    int Seen;
    Stopwatch Begun;
    double Seconds; // from the first letter to the key behind the last
};

constexpr varkui::DialogControl controls[] = {
    {varkui::DialogControlKind::Text, -1, "&Suche:", 7, 9, 32, 8, 0, 0},
    {varkui::DialogControlKind::Edit, field, "", 40, 7, 60, 14, 0, 0},
    {varkui::DialogControlKind::ListBox, list, "", 7, 38, 220, 140, 0, 0},
    {varkui::DialogControlKind::DefaultButton, IDOK, "OK", 234, 38, 55, 14, 0, 0},
};
constexpr varkui::DialogTable table = {1, "Suche", 296, 185, controls, 4, 0};

void Fill(HWND dialog, int rows)
{
    for (int i = 0; i < rows; ++i) {
        const std::string row = std::to_string(1000000 + i) + "\tM" + std::to_string(i) + "\tKunde";
        SendDlgItemMessageA(dialog, list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.c_str()));
    }
    SendDlgItemMessageA(dialog, list, LB_SETCURSEL, 0, 0);
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        Fill(dialog, reinterpret_cast<Search *>(lParam)->Rows);
        return TRUE;
    }
    auto *search = reinterpret_cast<Search *>(GetWindowLongPtrA(dialog, DWLP_USER));
    if (message != WM_COMMAND) return FALSE;
    if (LOWORD(wParam) == field && HIWORD(wParam) == EN_CHANGE) {
        if (search->Seen++ == 0) search->Begun = Stopwatch();
        char typed[16];
        GetDlgItemTextA(dialog, field, typed, sizeof typed);
        SendDlgItemMessageA(dialog, list, LB_SELECTSTRING, static_cast<WPARAM>(-1),
                            reinterpret_cast<LPARAM>(typed));
    }
    if (LOWORD(wParam) == IDOK) {
        search->Seconds = search->Begun.Seconds();
        EndDialog(dialog, IDOK);
    }
    return TRUE;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 2) return 2;
    Search search = {0, 0, {}, 0};
    std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), search.Rows);
    setenv("VARK_UI", "gtk", 1);
    // The last row, so that every one before it is looked at.
    const std::string last = std::to_string(1000000 + search.Rows - 1);
    std::string keys = "bench/screen_keys Suche alt+s";
    for (const char digit : last) {
        keys += std::string(" ") + digit;
    }
    std::thread person([&keys] {
        if (std::system((keys + " Return >/dev/null").c_str()) != 0) std::_Exit(1);
    });
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    const INT_PTR result =
        DialogBoxIndirectParamA(nullptr, made, nullptr, Procedure, reinterpret_cast<LPARAM>(&search));
    varkui::FreeDialogTemplate(made);
    person.join();
    if (result != IDOK || search.Seen < letters) {
        std::fprintf(stderr, "%d letters seen\n", search.Seen);
        return 1;
    }
    std::printf("%.6f\n", search.Seconds / search.Seen);
    return 0;
}
