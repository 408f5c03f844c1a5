// Input fields of dialogs that hold an amount, a percentage or a date: read, checked, and refused with the
// message and the focus on the field.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/text_forms.h"
#include "src/platform/window_api.h"

namespace vark {

inline constexpr size_t longestAmountInput = 15;
inline constexpr size_t longestDateInput = 10;

// Reads the field `id` of the dialog into its fixed form. False after message 1439 for an empty field, 1001
// (an amount) or 1000 (a percentage) for what is none; `out` then stays as it was.
bool ReadAmountField(HWND dialog, int id, AmountText &out);
bool ReadAmountField(HWND dialog, int id, RateText &out);

// Reads the date in the field `id` of the dialog. False after message 1439 for an empty field, 1440 to 1442
// for a bad day, month or year; `out` then stays as it was. Whether the year can be posted to is another
// question.
bool ReadDateField(const ThreadContext &context, HWND dialog, int id, PackedDate &out);

} // namespace vark
