/* A host with a window and a message loop of its own, which shows a report inside its window.
 *
 *   cc -I. -Iinclude examples/berichte.c build/libvark40.so build/libvarkui.so -o berichte
 */
#include <stdio.h>
#include <string.h>

#include <vark40.h>

#include "window-system/include/varkui.h"

enum { BUTTON_REPORT = 1001, BUTTON_CLOSE = 1002, BAR_HEIGHT = 40 };

static HWND frame;
static HWND area; /* what the frame has below its buttons; a report's view fills it */
static HWND view;
static ReportParams remembered; /* what was chosen last; the dialog offers it again */

/* The view takes what room there is. */
static void Arrange(void)
{
    RECT inside;
    GetClientRect(frame, &inside);
    MoveWindow(area, 0, BAR_HEIGHT, inside.right, inside.bottom - BAR_HEIGHT, TRUE);
    if (IsWindow(view)) MoveWindow(view, 0, 0, inside.right, inside.bottom - BAR_HEIGHT, TRUE);
}

static void ShowReport(void)
{
    VarkWindow made = VARK_SummenSaldenListe(1, area, &remembered);
    if (made == NULL) {
        puts(remembered.ViewResult == 1 ? "gedruckt" : "nicht erstellt");
    } else {
        if (IsWindow(view)) DestroyWindow(view);
        view = made;
        printf("erstellt per %s\n", remembered.BisDatum);
        Arrange();
    }
    fflush(stdout);
}

static LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_COMMAND:
        if (LOWORD(wParam) == BUTTON_REPORT) ShowReport();
        if (LOWORD(wParam) == BUTTON_CLOSE) DestroyWindow(window);
        return 0;
    case WM_SIZE: Arrange(); return 0;
    case WM_DESTROY: PostQuitMessage(0); return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

static HWND Button(const char *text, int id, int left)
{
    return CreateWindowExA(0, "Button", text, WS_CHILD | WS_VISIBLE | WS_TABSTOP, left, 6, 190, 28, frame,
                           (HMENU)(INT_PTR)id, NULL, NULL);
}

static int Open(void)
{
    WNDCLASSA windowClass;
    memset(&windowClass, 0, sizeof windowClass);
    windowClass.lpszClassName = "Wirt";
    windowClass.lpfnWndProc = FrameProcedure;
    RegisterClassA(&windowClass);
    windowClass.lpszClassName = "Flaeche";
    windowClass.lpfnWndProc = DefWindowProcA;
    RegisterClassA(&windowClass);
    frame = CreateWindowExA(0, "Wirt", "Wirt", WS_OVERLAPPEDWINDOW, 40, 40, 900, 700, NULL, NULL, NULL, NULL);
    if (frame == NULL) return 0;
    SetFocus(Button("&Summen- und Saldenliste", BUTTON_REPORT, 6));
    Button("&Beenden", BUTTON_CLOSE, 202);
    /* Tab leads on through what lies in it. */
    area = CreateWindowExA(WS_EX_CONTROLPARENT, "Flaeche", "", WS_CHILD | WS_VISIBLE, 0, BAR_HEIGHT, 100, 100,
                           frame, NULL, NULL, NULL);
    if (area == NULL) return 0;
    Arrange();
    ShowWindow(frame, SW_SHOW);
    return VARK_InitReports(WS_CHILD | WS_VISIBLE, 0, "Summen- und Saldenliste", frame);
}

int main(void)
{
    MSG message;
    if (VARK_Status() != 1 || !Open()) {
        fputs("VARK40 ist nicht bereit.\n", stderr);
        return 1;
    }
    /* The library's windows take what is theirs, then the frame takes the keys of its buttons. */
    while (GetMessageA(&message, NULL, 0, 0) > 0) {
        if (VARK_IsMessage((VarkMessage *)&message)) continue;
        if (IsDialogMessageA(frame, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 0;
}
