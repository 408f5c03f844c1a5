// What a person pastes.
#include "window-system/model/memory.h"
#include "window-system/model/model.h"

#include <cstring>

using namespace varkui;

BOOL VarkUiCopyText(LPCSTR text, LPCSTR html)
{
    if (text == nullptr) text = "";
    if (html == nullptr) html = "";
    char *copied = varkui::CopyText(text, strlen(text));
    char *table = varkui::CopyText(html, strlen(html));
    if (copied == nullptr || table == nullptr) {
        varkui::Release(copied);
        varkui::Release(table);
        return FALSE;
    }
    const varkui::Locked locked;
    varkui::Release(varkui::model.Copied);
    varkui::Release(varkui::model.CopiedHtml);
    varkui::model.Copied = copied;
    varkui::model.CopiedHtml = table;
    ++varkui::model.CopiedSerial;
    return TRUE;
}

namespace {

int Give(const char *copied, LPSTR text, int size)
{
    if (copied == nullptr) copied = "";
    if (text != nullptr && size > 0) {
        const size_t length = strnlen(copied, static_cast<size_t>(size) - 1);
        memcpy(text, copied, length);
        text[length] = 0;
    }
    return static_cast<int>(strlen(copied));
}

} // namespace

int VarkUiCopiedText(LPSTR text, int size)
{
    const varkui::Locked locked;
    return Give(varkui::model.Copied, text, size);
}

int VarkUiCopiedHtml(LPSTR html, int size)
{
    const varkui::Locked locked;
    return Give(varkui::model.CopiedHtml, html, size);
}
