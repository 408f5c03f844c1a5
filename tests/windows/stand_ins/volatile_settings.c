/* Makes the key above the engine's settings one that lasts until the system ends, in which no lasting key
   can be made: the settings cannot be opened then. Returns 0 when it is there. */
#include <windows.h>

int main(void)
{
    HKEY key;
    DWORD made = 0;
    if (RegCreateKeyExA(HKEY_LOCAL_MACHINE,
                        "SOFTWARE\\Btrieve Technologies\\Microkernel Workstation Engine\\Version  6.15", 0,
                        NULL, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, NULL, &key, &made) != ERROR_SUCCESS)
        return 2;
    RegCloseKey(key);
    return made == REG_CREATED_NEW_KEY ? 0 : 1;
}
