#include "src/platform/window_support.h"

namespace vark {

HINSTANCE LibraryModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&LibraryModule), &module);
    return module;
}

void PrepareControls()
{
    const INITCOMMONCONTROLSEX wanted = {sizeof wanted, ICC_TAB_CLASSES};
    static const bool ready = InitCommonControlsEx(&wanted) != 0;
    (void)ready;
}

} // namespace vark
