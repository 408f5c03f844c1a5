#include "tools/vark/typed_text.h"

#include "tools/common/texts.h"

#include <algorithm>

namespace cli {

std::string FaultOfText(const std::string &utf8)
{
    const std::string kept = tools::FromUtf8(utf8);
    if (tools::ToUtf8(kept) != utf8) return "Der Text enthält Zeichen, die es in den Büchern nicht gibt.";
    const auto steers = [](unsigned char each) { return each < 0x20 || each == 0x7F; };
    if (std::any_of(kept.begin(), kept.end(), steers)) return "Der Text enthält Steuerzeichen.";
    return {};
}

std::string CurrencyOf(const std::string &typed)
{
    std::string currency = typed;
    for (char &letter : currency) {
        if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    }
    return currency;
}

} // namespace cli
