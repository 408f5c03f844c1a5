#include "tools/vark/record_managers.h"

#include <array>
#include <cstring>
#include <windows.h>

#include <psapi.h>

namespace cli {

bool SharesRecordManager()
{
    std::array<HMODULE, 256> modules{};
    DWORD size = 0;
    if (!K32EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof modules, &size)) return false;
    int count = 0;
    for (size_t i = 0; i < modules.size() && i < size / sizeof modules[0]; ++i) {
        char path[MAX_PATH] = "";
        GetModuleFileNameA(modules[i], path, sizeof path);
        const char *const separator = std::strrchr(path, '\\');
        if (separator != nullptr && lstrcmpiA(separator + 1, "WBTRV32.DLL") == 0) ++count;
    }
    return count == 1 && size <= sizeof modules;
}

} // namespace cli
