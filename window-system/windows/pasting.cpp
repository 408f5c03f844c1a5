// The text for pasting.
#include "window-system/model/memory.h"
#include "window-system/model/model.h"

#include <cstring>

using namespace varkui;

BOOL VarkUiCopyText(LPCSTR text)
{
    if (text == nullptr) text = "";
    char *copied = varkui::CopyText(text, strlen(text));
    if (copied == nullptr) return FALSE;
    const varkui::Locked locked;
    varkui::Release(varkui::model.Copied);
    varkui::model.Copied = copied;
    ++varkui::model.CopiedSerial;
    return TRUE;
}

int VarkUiCopiedText(LPSTR text, int size)
{
    const varkui::Locked locked;
    const char *copied = varkui::model.Copied != nullptr ? varkui::model.Copied : "";
    if (text != nullptr && size > 0) {
        const size_t length = strnlen(copied, static_cast<size_t>(size) - 1);
        memcpy(text, copied, length);
        text[length] = 0;
    }
    return static_cast<int>(strlen(copied));
}
