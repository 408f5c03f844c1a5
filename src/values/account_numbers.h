// The two forms of an account number: right-justified as keys hold it, and without blanks as people read it.
#pragma once

#include "src/model/text_forms.h"
#include "src/values/amount_texts.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

// "1200" to "   1200"; an empty number becomes seven blanks. `text` is a field or a terminated text.
template <typename Text> void JustifyNumber(AccountNumber &out, const Text &text)
{
    text::CopyText(out, text);
    RightJustify(out, accountDigits);
}

// The limit of a range, an empty one of which stays empty.
template <typename Text> void JustifyLimit(AccountNumber &out, const Text &text)
{
    text::CopyText(out, text);
    if (out[0] != 0) RightJustify(out, accountDigits);
}

// "   1200" to "1200", NUL behind its end.
inline void StripNumber(AccountNumber &out, const AccountNumber &number)
{
    text::CopyText(out, number);
    TrimLeft(out, sizeof out);
}

// Whether a number lies before or behind a limit, both right-justified. An empty limit has nothing beyond it.
inline bool IsBeforeLimit(const AccountNumber &number, const AccountNumber &von)
{
    return von[0] != 0 && std::memcmp(number, von, accountDigits) < 0;
}

inline bool IsBehindLimit(const AccountNumber &number, const AccountNumber &bis)
{
    return bis[0] != 0 && std::memcmp(number, bis, accountDigits) > 0;
}

} // namespace vark
