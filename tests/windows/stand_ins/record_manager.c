/* WBTRV32.DLL: answers every operation with a status of its own. */
#include "part_state.h"

#include <stdint.h>
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    (void)module, (void)reserved;
    if (reason == DLL_PROCESS_ATTACH) NoteState("VARK_STATE_BEFORE_RECORDS");
    return TRUE;
}

int16_t __stdcall BTRCALL(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                          void *key, uint8_t keyLength, int8_t keyNumber)
{
    (void)operation, (void)positionBlock, (void)data, (void)dataLength, (void)key, (void)keyLength,
        (void)keyNumber;
    return 4711;
}
