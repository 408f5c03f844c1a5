/* A person in a process of their own: waits for the dialog whose title the first argument names, takes the
   first row of its list and agrees; with a second argument cancels instead. Returns 0 when that is done. */
#include <windows.h>

int main(int count, char **arguments)
{
    const DWORD patience_ms = 60000;
    const DWORD begin = GetTickCount();
    if (count < 2) return 2;
    while (GetTickCount() - begin < patience_ms) {
        HWND dialog = FindWindowA("#32770", arguments[1]);
        HWND list =
            dialog != NULL && IsWindowVisible(dialog) ? FindWindowExA(dialog, NULL, "ListBox", NULL) : NULL;
        if (list != NULL && SendMessageA(list, LB_SETCURSEL, 0, 0) == 0)
            return PostMessageA(GetDlgItem(dialog, count > 2 ? IDCANCEL : IDOK), BM_CLICK, 0, 0) ? 0 : 1;
        Sleep(10);
    }
    return 1;
}
