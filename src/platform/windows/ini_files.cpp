#include "src/platform/platform.h"

#include <windows.h>

namespace vark {

size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName)
{
    return GetPrivateProfileStringA(section, key, "", out, static_cast<DWORD>(size), fileName);
}

// The system does not tell one from a file that is not there.
bool IsProfileUnreadable(const char * /*fileName*/) { return false; }

bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName)
{
    return WritePrivateProfileStringA(section, key, value, fileName) != 0;
}

} // namespace vark
