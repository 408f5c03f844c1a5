/* w32mkde.exe: writes down how it was started, into engine.log beside itself, and does what engine.mode there
   says: "write" sets a value in its settings and stays, "stay" only stays, "window" shows the engine's window
   and stays until the file is gone; without the file it ends at once. */
#include <stdio.h>
#include <string.h>
#include <windows.h>

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

static void WriteSetting(void)
{
    HKEY key;
    const DWORD files = 20;
    if (RegCreateKeyA(HKEY_LOCAL_MACHINE, SETTINGS, &key) != ERROR_SUCCESS) return;
    RegSetValueExA(key, "Max Files", 0, REG_DWORD, (const BYTE *)&files, sizeof files);
    RegCloseKey(key);
}

static void ShowEngineWindow(HINSTANCE instance)
{
    WNDCLASSA made;
    memset(&made, 0, sizeof made);
    made.lpfnWndProc = DefWindowProcA;
    made.hInstance = instance;
    made.lpszClassName = "BTI-MKDE";
    RegisterClassA(&made);
    CreateWindowExA(0, "BTI-MKDE", "", WS_OVERLAPPED, 0, 0, 10, 10, NULL, NULL, instance, NULL);
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

int WINAPI WinMain(HINSTANCE instance, HINSTANCE before, LPSTR arguments, int show)
{
    char mode[20] = "";
    STARTUPINFOA startup;
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
    GetStartupInfoA(&startup);
    file = OpenBeside("engine.log", "ab");
    if (file != NULL) {
        const int hidden = (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 && startup.wShowWindow == SW_HIDE;
        fprintf(file, "start [%s] %s\n", arguments, hidden ? "hidden" : "shown");
        fclose(file);
    }
    if (strcmp(mode, "write") == 0 && arguments[0] != 0) {
        WriteSetting();
        Sleep(STAY_MS);
    } else if (strcmp(mode, "stay") == 0 && arguments[0] != 0) {
        Sleep(STAY_MS);
    } else if (strcmp(mode, "window") == 0) {
        ShowEngineWindow(instance);
        file = OpenBeside("engine.window", "w");
        if (file != NULL) fclose(file);
        StayWhileWanted();
        return 0;
    } else {
        return 0;
    }
    /* Whoever stays is ended from outside; this line tells that nobody did. */
    file = OpenBeside("engine.log", "ab");
    if (file != NULL) {
        fprintf(file, "end\n");
        fclose(file);
    }
    return 0;
}
