/* A host that knows the bare DLL alone: loads VARK40.dll, asks for its state, and lets it go.
   Prints how long the load took, the state, and whether a record manager is loaded meanwhile and
   afterwards. */
#include <stdio.h>
#include <windows.h>

typedef int(__stdcall *StatusCall)(void);

static int HasManager(void) { return GetModuleHandleA("WBTRV32.DLL") != NULL; }

static DWORD WINAPI Ask(LPVOID call) { return (DWORD)((StatusCall)call)(); }

int main(void)
{
    const DWORD begin = GetTickCount();
    HMODULE library = LoadLibraryA("VARK40.dll");
    const DWORD end = GetTickCount();
    DWORD threadState = 0;
    HANDLE thread;
    FARPROC found;
    StatusCall status;
    if (library == NULL) {
        puts("not loaded");
        return 1;
    }
    found = GetProcAddress(library, "VARK_Status");
    status = (StatusCall)(void *)found;
    printf("ms %lu\n", end - begin);
    printf("state %d\n", status());
    printf("manager %d\n", HasManager());
    thread = CreateThread(NULL, 0, Ask, (LPVOID)(void *)found, 0, NULL);
    WaitForSingleObject(thread, INFINITE);
    GetExitCodeThread(thread, &threadState);
    printf("thread %d\n", (int)threadState);
    printf("freed %d\n", FreeLibrary(library));
    printf("kept %d\n", HasManager());
    return 0;
}
