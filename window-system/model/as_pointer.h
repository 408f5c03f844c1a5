// Messages carry addresses and handles as numbers; these turn a number back into its pointer.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

template <typename Pointer> Pointer AsPointer(LPARAM number)
{
    return reinterpret_cast<Pointer>(number); // NOLINT(performance-no-int-to-ptr)
}

template <typename Pointer> Pointer AsPointer(WPARAM number)
{
    return reinterpret_cast<Pointer>(number); // NOLINT(performance-no-int-to-ptr)
}

} // namespace varkui
