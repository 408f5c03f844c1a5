#include "part_state.h"

#include <windows.h>

void NoteState(const char *variable)
{
    typedef int(__stdcall * StatusCall)(void);
    const HMODULE library = GetModuleHandleA("VARK40.dll");
    const FARPROC status = library != NULL ? GetProcAddress(library, "VARK_Status") : NULL;
    char text[20];
    if (status == NULL) return;
    wsprintfA(text, "%d", ((StatusCall)(void *)status)());
    SetEnvironmentVariableA(variable, text);
}
