/* A person in a process of their own: waits for the dialog whose title the argument names and agrees to it.
   Returns 0 when that is done. */
#include <windows.h>

int main(int count, char **arguments)
{
    const DWORD patience_ms = 60000;
    const DWORD begin = GetTickCount();
    if (count != 2) return 2;
    while (GetTickCount() - begin < patience_ms) {
        HWND dialog = FindWindowA("#32770", arguments[1]);
        HWND button = dialog != NULL && IsWindowVisible(dialog) ? GetDlgItem(dialog, IDOK) : NULL;
        if (button != NULL && IsWindowVisible(button)) return PostMessageA(button, BM_CLICK, 0, 0) ? 0 : 1;
        Sleep(10);
    }
    return 1;
}
