#include "tools/vark/report_range.h"

#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/accounts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/reasons.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace cli {

using namespace tools;

namespace {

// Fields of ReportParams that are given.
constexpr uint32_t VARK_PARAM_KONTOART = 0x08;
constexpr uint32_t VARK_PARAM_KONTEN = 0x10;
constexpr uint32_t givenSingle = 0x20;

using Limit = char[8];

struct Limits {
    Limit &Von;
    Limit &Bis;
};

Limits LimitsOf(ReportParams &params)
{
    switch (params.KontoArt) {
    case ArtKreditor: return {params.KreditorVon, params.KreditorBis};
    case ArtDebitor: return {params.DebitorVon, params.DebitorBis};
    case ArtKostenstelle: return {params.KostenstelleVon, params.KostenstelleBis};
    default: return {params.SachkontoVon, params.SachkontoBis};
    }
}

bool IsNumber(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

void PutLimit(Limit &field, const std::string &text, const std::string &option, int mandant, int art)
{
    std::string limit = FromUtf8(Trimmed(text));
    if (!IsNumber(limit)) {
        ReasonCatcher catcher;
        const auto found = FindAccount(mandant, art, text);
        catcher.Take();
        if (found) limit = found->Konto;
    }
    // The dialog takes the beginning of a Kürzel as well.
    if (limit.size() > kontoDigits)
        throw UsageError(option + ": „" + text +
                         "“ ist keine Kontonummer von bis zu 7 Zeichen und kein Kürzel.");
    std::memcpy(field, limit.c_str(), limit.size() + 1);
}

// The account that is meant, among the kinds that the report has.
Account FindSingle(const std::string &text, const ReportRow &report, int mandant, int art)
{
    ReasonCatcher catcher;
    for (const int kind : {ArtSachkonto, ArtDebitor, ArtKreditor, ArtKostenstelle}) {
        const bool isMeant = art != 0 ? kind == art : (report.Kontoarten & static_cast<unsigned>(kind)) != 0;
        const auto found = isMeant ? FindAccount(mandant, kind, text) : std::nullopt;
        catcher.Take();
        if (found) return *found;
    }
    throw Refusal("--konto: Ein Konto „" + text + "“ gibt es nicht.");
}

// Whether a report's dialog finds this account for its number: no kind that it looks through before has it.
bool IsFirstOfItsNumber(const Account &account, int mandant)
{
    ReasonCatcher catcher;
    bool isFirst = true;
    for (const int kind : {ArtSachkonto, ArtKreditor, ArtDebitor, ArtKostenstelle}) {
        if (kind == account.Art) break;
        if (FindAccount(mandant, kind, account.Konto)) isFirst = false;
    }
    catcher.Take();
    return isFirst;
}

} // namespace

void PutRange(const RangeText &text, const ReportRow &report, int mandant, ReportParams &params)
{
    if (report.Kontoarten == 0) return;
    int art = 0;
    if (!text.Art.empty()) {
        const auto read = ReadKontoart(text.Art);
        if (!read || (report.Kontoarten & static_cast<unsigned>(*read)) == 0)
            throw UsageError("--art: „" + text.Art + "“ statt " + KindNames(report.Kontoarten) + ".");
        art = *read;
    }
    params.ParamFlags |= VARK_PARAM_KONTOART | VARK_PARAM_KONTEN;
    if (!text.Konto.empty()) {
        if (!text.Von.empty() || !text.Bis.empty())
            throw UsageError("Diese Angaben passen nicht zusammen: --konto und " +
                             std::string(text.Von.empty() ? "--bis." : "--von."));
        const Account account = FindSingle(text.Konto, report, mandant, art);
        params.KontoArt = account.Art;
        // As a range as well: a single account is looked for among all kinds, and found in the first.
        std::memcpy(LimitsOf(params).Von, account.Konto, sizeof account.Konto);
        std::memcpy(LimitsOf(params).Bis, account.Konto, sizeof account.Konto);
        if (IsFirstOfItsNumber(account, mandant)) params.ParamFlags |= givenSingle;
        return;
    }
    const unsigned first = report.Kontoarten & -report.Kontoarten;
    params.KontoArt = art != 0 ? art : static_cast<int>(first);
    const Limits limits = LimitsOf(params);
    PutLimit(limits.Von, text.Von, "--von", mandant, params.KontoArt);
    PutLimit(limits.Bis, text.Bis, "--bis", mandant, params.KontoArt);
    const bool isOrdered = *limits.Bis == 0 || !IsNumber(limits.Von) || !IsNumber(limits.Bis) ||
                           Right(limits.Von, kontoDigits) <= Right(limits.Bis, kontoDigits);
    if (!isOrdered) throw UsageError("--von liegt hinter --bis: Der Bereich ist leer.");
}

std::string TellEmptyRange(int mandant, const ReportParams &params)
{
    ReportParams read = params;
    const Limits limits = LimitsOf(read);
    const std::string to =
        *limits.Bis == 0 ? std::string(kontoDigits, '\xFF') : Right(limits.Bis, kontoDigits);
    bool isEmpty = true;
    ReasonCatcher catcher;
    WalkAccounts(mandant, params.KontoArt, limits.Von, [&](const Account &account) {
        isEmpty = Right(account.Konto, kontoDigits) > to;
        return false;
    });
    catcher.Take();
    if (!isEmpty) return {};
    return std::string("Im Bereich liegt keine Kontonummer (Art ") + KindName(params.KontoArt) + ").";
}

} // namespace cli
