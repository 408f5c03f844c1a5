#include "src/platform/platform.h"

#include <cstdio>
#include <cstring>
#include <windows.h>

namespace vark {

namespace {

constexpr char settingsKey[] =
    "SOFTWARE\\Btrieve Technologies\\Microkernel Workstation Engine\\Version  6.15\\Settings";
constexpr DWORD leastFiles = 40;
constexpr DWORD handles = 120;
constexpr DWORD longestRegistration_ms = 30000; // an engine that writes nothing is not waited for for ever
constexpr DWORD registrationRest_ms = 3000; // the engine goes on writing for a while after its first value

bool StartProcess(const char *file, char *arguments, WORD showWindow, bool inherit,
                  PROCESS_INFORMATION &process)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = showWindow;
    return CreateProcessA(file, arguments, nullptr, nullptr, inherit, NORMAL_PRIORITY_CLASS, nullptr, nullptr,
                          &startup, &process) != 0;
}

void CloseProcess(const PROCESS_INFORMATION &process)
{
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
}

bool OpenSettings(HKEY &key, bool &created)
{
    DWORD disposition = 0;
    const bool opened = RegCreateKeyExA(HKEY_LOCAL_MACHINE, settingsKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                        nullptr, &key, &disposition) == ERROR_SUCCESS;
    created = disposition == REG_CREATED_NEW_KEY;
    return opened;
}

// Waits until the engine has written into its settings, or has ended without. True when it has written.
bool WaitForSettings(HANDLE written, HANDLE engine)
{
    const HANDLE either[] = {written, engine};
    return WaitForMultipleObjects(2, either, FALSE, longestRegistration_ms) == WAIT_OBJECT_0;
}

// Has a newly installed engine write its settings, and waits until it has.
void RegisterEngine(const char *engine, HKEY key)
{
    HANDLE written = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (written == nullptr) return;
    // Asked for before the engine runs, else its first value could be missed.
    const bool notified =
        RegNotifyChangeKeyValue(key, TRUE, REG_NOTIFY_CHANGE_LAST_SET, written, TRUE) == ERROR_SUCCESS;
    char arguments[] = " -reginstall";
    PROCESS_INFORMATION process{};
    if (notified && StartProcess(engine, arguments, SW_SHOWNORMAL, true, process)) {
        if (WaitForSettings(written, process.hProcess)) Sleep(registrationRest_ms);
        TerminateProcess(process.hProcess, 0);
        CloseProcess(process);
    }
    CloseHandle(written);
}

void SetNumber(HKEY key, const char *name, DWORD number)
{
    RegSetValueExA(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&number), sizeof number);
}

// The engine needs room for all tables of several threads, and shows no start picture.
void PrepareSettings(const char *engine)
{
    HKEY key = nullptr;
    bool created = false;
    if (!OpenSettings(key, created)) return;
    if (created) {
        RegisterEngine(engine, key);
        RegCloseKey(key);
        bool createdAgain = false;
        if (!OpenSettings(key, createdAgain)) return;
    }
    DWORD files = 0;
    DWORD size = sizeof files;
    const bool read = RegQueryValueExA(key, "Max Files", nullptr, nullptr, reinterpret_cast<BYTE *>(&files),
                                       &size) == ERROR_SUCCESS;
    if (created || (read && files < leastFiles)) {
        SetNumber(key, "Max Files", leastFiles);
        SetNumber(key, "Max Handles", handles);
    }
    RegSetValueExA(key, "Startup Logo", 0, REG_SZ, reinterpret_cast<const BYTE *>("0"), 2);
    RegCloseKey(key);
}

} // namespace

void StartEngine(const char *dataPath)
{
    if (FindWindowA("BTI-MKDE", nullptr) != nullptr) return; // it runs
    char engine[maxPath];
    const size_t length = std::strlen(dataPath);
    const int written = std::snprintf(engine, sizeof engine, "%.*sw32mkde.exe",
                                      static_cast<int>(length > 2 ? length - 2 : 0), dataPath);
    if (written < 0 || static_cast<size_t>(written) >= sizeof engine) return;
    PrepareSettings(engine);
    PROCESS_INFORMATION process{};
    if (StartProcess(engine, nullptr, SW_HIDE, false, process)) CloseProcess(process);
}

} // namespace vark
