/* A host that knows the bare DLL alone: loads VARK40.dll, asks for its state, and lets it go. Prints how
   long the load took, what the parts saw of the state while they were loaded, the state and whether a
   record manager is loaded meanwhile and afterwards. With the argument "watch" it has a low priority and
   something to inherit, and tells how the first process of the record manager has ended. */
#include <stdio.h>
#include <windows.h>

#include <tlhelp32.h>

#include "watched.h"

typedef int(__stdcall *StatusCall)(void);

static int HasManager(void) { return GetModuleHandleA("WBTRV32.DLL") != NULL; }

static DWORD WINAPI Ask(LPVOID call) { return (DWORD)((StatusCall)call)(); }

static void TellVariable(const char *what, const char *name)
{
    char text[20];
    if (GetEnvironmentVariableA(name, text, sizeof text) > 0) printf("%s %s\n", what, text);
}

static HANDLE FindEngine(void)
{
    PROCESSENTRY32 entry;
    HANDLE engine = NULL;
    HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    BOOL found;
    entry.dwSize = sizeof entry;
    for (found = Process32First(all, &entry); found && engine == NULL; found = Process32Next(all, &entry)) {
        if (entry.th32ParentProcessID == GetCurrentProcessId())
            engine = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, entry.th32ProcessID);
    }
    CloseHandle(all);
    return engine;
}

static HANDLE watching;

/* The engine is the only process that this one starts. It is seen before the library is loaded, or not at
   all. */
static DWORD WINAPI Watch(LPVOID loaded)
{
    const DWORD step_ms = 20;
    const DWORD patience_ms = 10000;
    DWORD code = (DWORD)-1;
    HANDLE engine = NULL;
    SetEvent(watching);
    while (engine == NULL && WaitForSingleObject(loaded, step_ms) == WAIT_TIMEOUT) {
        engine = FindEngine();
    }
    if (engine == NULL) return code;
    WaitForSingleObject(loaded, INFINITE);
    if (WaitForSingleObject(engine, patience_ms) == WAIT_OBJECT_0) GetExitCodeProcess(engine, &code);
    CloseHandle(engine);
    return code;
}

static void OfferSomethingToInherit(void)
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, NULL, TRUE};
    HANDLE shared =
        CreateFileMappingA(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0, sizeof WATCHED_TEXT, NULL);
    char *text = MapViewOfFile(shared, FILE_MAP_WRITE, 0, 0, sizeof WATCHED_TEXT);
    char number[20];
    if (text == NULL) return;
    memcpy(text, WATCHED_TEXT, sizeof WATCHED_TEXT);
    UnmapViewOfFile(text);
    wsprintfA(number, "%u", (unsigned)(UINT_PTR)shared);
    SetEnvironmentVariableA(WATCHED_HANDLE, number);
}

static DWORD CodeOf(HANDLE thread)
{
    DWORD code = 0;
    WaitForSingleObject(thread, INFINITE);
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    return code;
}

int main(int count, char **arguments)
{
    const int watches = count > 1 && lstrcmpA(arguments[1], "watch") == 0;
    HANDLE loaded = CreateEventA(NULL, TRUE, FALSE, NULL);
    HANDLE watcher = NULL;
    DWORD begin;
    DWORD end;
    HMODULE library;
    FARPROC found;
    StatusCall status;
    if (watches) {
        SetPriorityClass(GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);
        OfferSomethingToInherit();
        watching = CreateEventA(NULL, TRUE, FALSE, NULL);
        watcher = CreateThread(NULL, 0, Watch, loaded, 0, NULL);
        WaitForSingleObject(watching, INFINITE); /* no thread begins while a library is loaded */
    }
    begin = GetTickCount();
    library = LoadLibraryA("VARK40.dll");
    end = GetTickCount();
    SetEvent(loaded);
    if (library == NULL) {
        puts("not loaded");
        return 1;
    }
    found = GetProcAddress(library, "VARK_Status");
    status = (StatusCall)(void *)found;
    printf("ms %lu\n", end - begin);
    if (watches) printf("ended %d\n", (int)CodeOf(watcher));
    TellVariable("before records", "VARK_STATE_BEFORE_RECORDS");
    TellVariable("before reports", "VARK_STATE_BEFORE_REPORTS");
    printf("state %d\n", status());
    printf("manager %d\n", HasManager());
    printf("thread %d\n", (int)CodeOf(CreateThread(NULL, 0, Ask, (LPVOID)(void *)found, 0, NULL)));
    printf("freed %d\n", FreeLibrary(library));
    printf("kept %d\n", HasManager());
    return 0;
}
