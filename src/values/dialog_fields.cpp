#include "src/values/dialog_fields.h"

#include "src/frame/messages.h"
#include "src/values/amount_texts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

namespace vark {

namespace {

template <size_t Width> bool ReadNumber(HWND dialog, int id, char (&out)[Width])
{
    char text[longestAmountInput + 1] = {};
    GetDlgItemTextA(dialog, id, text, sizeof text);
    const int fault = CheckAmountField(text, sizeof text, static_cast<int>(Width - 1));
    if (fault != 0) {
        ShowMessage(fault, static_cast<uint16_t>(id), nullptr, -1);
        return false;
    }
    text::CopyText(out, text);
    return true;
}

} // namespace

bool ReadAmountField(HWND dialog, int id, AmountText &out) { return ReadNumber(dialog, id, out); }

bool ReadAmountField(HWND dialog, int id, RateText &out) { return ReadNumber(dialog, id, out); }

bool ReadDateField(const ThreadContext &context, HWND dialog, int id, PackedDate &out)
{
    char text[longestDateInput + 1] = {};
    GetDlgItemTextA(dialog, id, text, sizeof text);
    const int fault = CheckDateField(context, text, sizeof text);
    if (fault != 0) {
        ShowMessage(fault, static_cast<uint16_t>(id), nullptr, -1);
        return false;
    }
    text::CopyText(out, text);
    return true;
}

} // namespace vark
