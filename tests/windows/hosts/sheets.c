/* A host that has an account sheet made, agrees to its dialog itself, and lets the library go. It tells of
   the sheet's window, of its class, and of what the library leaves behind. With an argument it asks for no
   sheet. */
#include "include/vark40.h"

#include <stdio.h>
#include <string.h>

#define PATIENCE_MS 60000

typedef VarkWindow(VARK_CALL *SheetFunction)(int32_t, int32_t, VarkWindow, ReportParams *);
typedef int32_t(VARK_CALL *StatusFunction)(void);

/* Whoever waits for a dialog that does not come ends the program. */
static DWORD WINAPI Agree(LPVOID title)
{
    const DWORD begin = GetTickCount();
    while (GetTickCount() - begin < PATIENCE_MS) {
        HWND dialog = FindWindowA("#32770", (const char *)title);
        HWND button = dialog != NULL && IsWindowVisible(dialog) ? GetDlgItem(dialog, IDOK) : NULL;
        if (button != NULL) return (DWORD)PostMessageA(button, BM_CLICK, 0, 0);
        Sleep(10);
    }
    ExitProcess(3);
    return 0;
}

static int HasClass(HMODULE library)
{
    WNDCLASSA known;
    return GetClassInfoA(library, "tervoKontenblatt", &known) != 0;
}

int main(int count, char **arguments)
{
    char title[] = "Kontenblatt";
    char name[40] = "";
    ReportParams params;
    WNDCLASSA known;
    HANDLE person;
    HWND window;
    HMODULE library = LoadLibraryA("VARK40.dll");
    (void)arguments;
    if (library == NULL) return 2;
    printf("status %d\n", (int)((StatusFunction)(void *)GetProcAddress(library, "VARK_Status"))());
    printf("engine %d\n", GetModuleHandleA("rs.dll") != NULL);

    if (count > 1) return 0;
    memset(&params, 0, sizeof params);
    params.ParamFlags = 0x01 | 0x04 | 0x08 | 0x10 | 0x20;
    params.Zeitraum = 3;
    params.JahrIndex = 18;
    params.KontoArt = 1;
    lstrcpyA(params.SachkontoVon, "1840");
    person = CreateThread(NULL, 0, Agree, title, 0, NULL);
    window = ((SheetFunction)(void *)GetProcAddress(library, "VARK_Kontenblatt"))(1, 0, NULL, &params);
    WaitForSingleObject(person, INFINITE);
    GetClassNameA(window, name, sizeof name);
    printf("sheet %s\n", name);
    printf("class %d\n", HasClass(library));
    if (GetClassInfoA(library, name, &known)) {
        printf("style %u extra %d brush %d menu %d\n", known.style, known.cbWndExtra,
               (int)(INT_PTR)known.hbrBackground, known.lpszMenuName != NULL);
        printf("own %d %d %d\n", known.hInstance == library,
               known.hIcon == LoadIconA(library, MAKEINTRESOURCEA(114)),
               known.hCursor == LoadCursorA(NULL, IDC_ARROW));
    }
    DestroyWindow(window);
    FreeLibrary(library);
    printf("left %d %d\n", HasClass(library), GetModuleHandleA("rs.dll") != NULL);
    return 0;
}
