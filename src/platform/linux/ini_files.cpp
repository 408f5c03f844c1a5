#include "host/ini_files.h"

#include "src/platform/platform.h"

namespace vark {

size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName)
{
    return host::ReadProfileText(section, key, out, size, fileName);
}

bool IsProfileUnreadable(const char *fileName) { return host::IsProfileUnreadable(fileName); }

bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName)
{
    return host::WriteProfileText(section, key, value, fileName);
}

} // namespace vark
