/* rs.dll with all entries of a report engine, in the convention CONVENTION: it takes every record, and its
   views are plain windows. */
#include "part_state.h"

#include <stdint.h>
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    (void)module, (void)reserved;
    if (reason == DLL_PROCESS_ATTACH) NoteState("VARK_STATE_BEFORE_REPORTS");
    return TRUE;
}

int32_t CONVENTION RSOpenReport(const char *path, const char *id, int32_t reserved)
{
    (void)path, (void)id, (void)reserved;
    return 7;
}

int32_t CONVENTION RSCopyReport(int32_t report, const char *id, int32_t reserved)
{
    (void)report, (void)id, (void)reserved;
    return 8;
}

void CONVENTION RSCloseReport(int32_t report) { (void)report; }

int32_t CONVENTION RSAddData(int32_t report, int32_t kind, const void *record)
{
    (void)kind;
    return report != 0 && record != NULL;
}

int32_t CONVENTION RSOpenVirtualReport(int32_t report) { return report; }

void CONVENTION RSCloseVirtualReport(int32_t counting) { (void)counting; }

int32_t CONVENTION RSAddVirtualData(int32_t counting, int32_t kind, int32_t number)
{
    (void)counting, (void)kind, (void)number;
    return 1;
}

int32_t CONVENTION RSGetVirtualPages(int32_t counting)
{
    (void)counting;
    return 1;
}

void *CONVENTION RSOpenView(int32_t report, const char *title, const char *page, void *parent, int32_t left,
                            int32_t top, int32_t width, int32_t height, uint32_t style, uint32_t exStyle,
                            uint32_t first, uint32_t second, void *frame)
{
    (void)report, (void)page, (void)parent, (void)left, (void)top, (void)width, (void)height, (void)style,
        (void)exStyle, (void)frame;
    if (first != 65535 || second != 65535) return NULL;
    return CreateWindowExA(0, "Static", title, WS_POPUP, 0, 0, 100, 100, NULL, NULL, NULL, NULL);
}

void *CONVENTION RSCopyView(int32_t report, void *view, int32_t third, int32_t left, int32_t top,
                            int32_t width, int32_t height, uint32_t style, uint32_t exStyle, int32_t reserved)
{
    (void)report, (void)view, (void)third, (void)left, (void)top, (void)width, (void)height, (void)style,
        (void)exStyle;
    return reserved == 0 ? CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 1, 1, NULL, NULL, NULL, NULL)
                         : NULL;
}

int32_t CONVENTION RSPrintView(void *view, int32_t reserved) { return view != NULL && reserved == 0; }
