/* w32mkde.exe: writes down how it was started, into engine.log beside itself, and does what engine.mode there
   says: "write" sets a value in its settings and stays, "below" sets one in a key of them and stays, "stay"
   only stays, "window" shows the engine's window and stays until the file is gone, with engine.window beside
   it for as long; without the file it ends at once. Where a host watches it, the log says more. */
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include "watched.h"

#define SETTINGS "SOFTWARE\\Btrieve Technologies\\Microkernel Workstation Engine\\Version  6.15\\Settings"
#define STAY_MS  90000

static char directory[MAX_PATH];

static FILE *OpenBeside(const char *name, const char *mode)
{
    char path[MAX_PATH + 20];
    lstrcpyA(path, directory);
    lstrcatA(path, "\\");
    lstrcatA(path, name);
    return fopen(path, mode);
}

static void WriteSetting(const char *name)
{
    HKEY key;
    const DWORD files = 20;
    if (RegCreateKeyA(HKEY_LOCAL_MACHINE, name, &key) != ERROR_SUCCESS) return;
    RegSetValueExA(key, "Max Files", 0, REG_DWORD, (const BYTE *)&files, sizeof files);
    RegCloseKey(key);
}

static HWND ShowEngineWindow(HINSTANCE instance)
{
    WNDCLASSA made;
    memset(&made, 0, sizeof made);
    made.lpfnWndProc = DefWindowProcA;
    made.hInstance = instance;
    made.lpszClassName = "BTI-MKDE";
    RegisterClassA(&made);
    return CreateWindowExA(0, "BTI-MKDE", "", WS_OVERLAPPED, 0, 0, 10, 10, NULL, NULL, instance, NULL);
}

static void StayWhileWanted(void)
{
    const DWORD begin = GetTickCount();
    FILE *file;
    while (GetTickCount() - begin < STAY_MS && (file = OpenBeside("engine.mode", "r")) != NULL) {
        fclose(file);
        Sleep(50);
    }
}

/* Whether this process has the file that the host keeps for it. */
static int HasInherited(HANDLE shared)
{
    const char *text = MapViewOfFile(shared, FILE_MAP_READ, 0, 0, sizeof WATCHED_TEXT);
    const int has = text != NULL && memcmp(text, WATCHED_TEXT, sizeof WATCHED_TEXT) == 0;
    if (text != NULL) UnmapViewOfFile(text);
    return has;
}

static void TellOfStart(const char *arguments)
{
    STARTUPINFOA startup;
    char number[20] = "";
    FILE *file = OpenBeside("engine.log", "ab");
    GetStartupInfoA(&startup);
    if (file == NULL) return;
    fprintf(file, "start [%s] %s", arguments,
            (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 && startup.wShowWindow == SW_HIDE ? "hidden"
                                                                                            : "shown");
    if (GetEnvironmentVariableA(WATCHED_HANDLE, number, sizeof number) > 0) {
        UINT_PTR shared = 0;
        const char *digit;
        for (digit = number; *digit != 0; ++digit) {
            shared = shared * 10 + (UINT_PTR)(*digit - '0');
        }
        fprintf(file, " priority %lu %s", GetPriorityClass(GetCurrentProcess()),
                HasInherited((HANDLE)shared) ? "inherits" : "apart");
    }
    fprintf(file, "\n");
    fclose(file);
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE before, LPSTR arguments, int show)
{
    char mode[20] = "";
    FILE *file;
    (void)before;
    (void)show;
    GetModuleFileNameA(NULL, directory, sizeof directory);
    *strrchr(directory, '\\') = 0;
    file = OpenBeside("engine.mode", "r");
    if (file != NULL) {
        mode[fread(mode, 1, sizeof mode - 1, file)] = 0;
        fclose(file);
    }
    TellOfStart(arguments);
    if (strcmp(mode, "write") == 0 && arguments[0] != 0) {
        WriteSetting(SETTINGS);
        Sleep(STAY_MS);
    } else if (strcmp(mode, "below") == 0 && arguments[0] != 0) {
        WriteSetting(SETTINGS "\\Below");
        Sleep(STAY_MS);
    } else if (strcmp(mode, "stay") == 0 && arguments[0] != 0) {
        Sleep(STAY_MS);
    } else if (strcmp(mode, "window") == 0) {
        HWND window = ShowEngineWindow(instance);
        char path[MAX_PATH + 20];
        file = OpenBeside("engine.window", "w");
        if (file != NULL) fclose(file);
        StayWhileWanted();
        DestroyWindow(window);
        wsprintfA(path, "%s\\engine.window", directory);
        DeleteFileA(path);
        return ENDED_BY_ITSELF;
    } else {
        return ENDED_BY_ITSELF;
    }
    /* Whoever stays is ended from outside; this line tells that nobody did. */
    file = OpenBeside("engine.log", "ab");
    if (file != NULL) {
        fprintf(file, "end\n");
        fclose(file);
    }
    return ENDED_BY_ITSELF;
}
