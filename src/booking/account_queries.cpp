#include "src/booking/account_queries.h"

#include "include/vark40.h"
#include "src/frame/beliefs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/model/accounts.h"
#include "src/values/account_numbers.h"
#include "src/values/digits.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

static_assert(int{KontoartSachkonto} == VARK_SACHKONTO && int{KontoartKreditor} == VARK_KREDITOR &&
              int{KontoartDebitor} == VARK_DEBITOR && int{KontoartKostenstelle} == VARK_KOSTENSTELLE &&
              int{KontoartKeine} == VARK_OHNE_KONTO);

constexpr int32_t numbersUsedUp = VARK_FEHLER_NUMMERN_AUFGEBRAUCHT;

// An account number without its leading blanks.
using NumberText = char[sizeof(AccountNumber)];

bool FindPersonal(ThreadContext &context, const KeyBuffer &key, bool &found, bool &hasUstId, TableId table)
{
    Holds(table == TableDebi || table == TableKred);
    PersonalRecord record{};
    if (!GetEqual(context, &record, key, found, table)) return false;
    if (found) hasUstId = record.UstId[0] != 0;
    return true;
}

// What the search for a free number counts up: a number as a whole, or the digits behind a prefix.
struct NumberSeries {
    int64_t Base; // 0: there is a prefix
    int64_t Tail;
    NumberText Prefix;
};

NumberSeries SeriesAfter(const NumberText &last)
{
    const size_t length = std::strlen(last);
    size_t digits = 0;
    while (digits < length && IsDigit(last[length - 1 - digits])) {
        ++digits;
    }
    int64_t value = 0;
    Holds(length < sizeof(NumberText));
    std::from_chars(last + length - digits, last + length, value);
    Holds(value >= 0); // seven digits at most
    NumberSeries series{};
    if (digits == length) {
        series.Base = value;
    } else {
        series.Tail = value;
        CopyText(series.Prefix, sizeof series.Prefix, last, length - digits);
    }
    Holds(std::strlen(series.Prefix) == length - digits);
    return series;
}

// The candidate of the present tail. False when seven characters do not hold it.
bool Candidate(const NumberSeries &series, NumberText &out)
{
    constexpr size_t width = accountDigits;
    char digits[24] = {};
    Holds(series.Base >= 0);
    Holds(series.Tail >= 0);
    const int64_t number = series.Base != 0 ? series.Base + series.Tail + 1 : series.Tail;
    if (number != 0) std::to_chars(digits, digits + sizeof digits, number);
    const size_t count = std::strlen(digits);
    if (count > width) return false;
    size_t position = std::strlen(series.Prefix);
    if (position + count > width) position = width - count;
    CopyText(out, sizeof out, series.Prefix, position);
    if (!Holds(position + count <= width)) return false;
    std::memcpy(out + position, digits, count);
    return true;
}

int32_t FreeNumberAfter(ThreadContext &context, const NumberText &last, NumberText &out)
{
    Holds(last[0] != ' ');
    NumberSeries series = SeriesAfter(last);
    int32_t kind;
    do {
        if (!Candidate(series, out)) return numbersUsedUp;
        AccountNumber konto;
        JustifyNumber(konto, out);
        SakoRecord sako;
        bool hasUstId = false;
        kind = FindAccount(context, konto, sako, hasUstId);
        if (kind == 0) return engineFailure;
        ++series.Tail;
    } while (kind != KontoartKeine);
    Holds(out[0] != ' ');
    Holds(std::strlen(out) <= accountDigits);
    return 1;
}

bool LastNumber(ThreadContext &context, TableId table, bool &found, NumberText &last)
{
    Holds(table == TableDebi || table == TableKred);
    if (!OpenTable(context, table)) return false;
    PersonalRecord record{};
    const bool read = GetLast(context, &record, found, table);
    CloseTable(context, table);
    StripNumber(last, record.Konto);
    Holds(last[0] != ' ');
    return read;
}

} // namespace

int32_t FindAccount(ThreadContext &context, const AccountNumber &konto, SakoRecord &sako, bool &hasUstId)
{
    hasUstId = false;
    Holds(konto[sizeof konto - 1] == 0);
    const KeyBuffer key = KeyOfText(konto, sizeof konto);
    bool found = false;
    if (!GetEqual(context, &sako, key, found, TableSako)) return 0;
    if (found) return KontoartSachkonto;
    if (!FindPersonal(context, key, found, hasUstId, TableDebi)) return 0;
    if (found) return KontoartDebitor;
    if (!FindPersonal(context, key, found, hasUstId, TableKred)) return 0;
    if (found) return KontoartKreditor;
    return KontoartKeine;
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_ExistiertKonto(int32_t mandant, const char *konto, int32_t art)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    FistaRecord fista;
    const int32_t selected = SelectMandant(*context, mandant, fista);
    if (selected < 1) return selected;
    const AccountKind *const kind = FindKind(art);
    if (kind == nullptr) return VARK_FEHLER_KONTOART;
    AccountNumber number;
    JustifyNumber(number, konto);
    bool found = false;
    Holds(std::strlen(number) == accountDigits);
    if (!Exists(*context, KeyOfText(number, sizeof number), found, kind->Table)) return engineFailure;
    AtRestHolds(*context);
    return found ? 1 : 0;
}

int32_t VARK_CALL VARK_HoleFreieKontonr(int32_t mandant, int32_t art, char *out)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    const AccountKind *const kind = FindPersonalKind(art);
    if (kind == nullptr) return VARK_FEHLER_KONTOART;
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;
    bool found = false;
    NumberText last;
    if (!LastNumber(*context, kind->Table, found, last)) return engineFailure;
    NumberText free;
    int32_t result = 1;
    if (found) {
        result = FreeNumberAfter(*context, last, free);
    } else {
        CopyText(free, kind->FirstNumber);
    }
    AtRestHolds(*context);
    if (result == 1 && out != nullptr) std::memcpy(out, free, std::strlen(free) + 1);
    return result;
}
