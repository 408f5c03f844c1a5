#include "tools/vark/kontoart.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"

namespace cli {

namespace {

struct Kind {
    Kontoart Art;
    const char *Letter;
    const char *Name;
    const char *Names[4]; // in lower case
};

constexpr Kind kinds[] = {
    {ArtSachkonto, "S", "Sachkonto", {"sachkonto", "sachkonten", "s", "1"}},
    {ArtKreditor, "K", "Kreditor", {"kreditor", "kreditoren", "k", "2"}},
    {ArtDebitor, "D", "Debitor", {"debitor", "debitoren", "d", "4"}},
    {ArtKostenstelle, "KSt", "Kostenstelle", {"kostenstelle", "kostenstellen", "kst", "8"}},
};

} // namespace

std::optional<int> ReadKontoart(const std::string &text)
{
    const std::string lower = tools::Lower(text);
    for (const Kind &kind : kinds) {
        for (const char *name : kind.Names) {
            if (lower == name) return kind.Art;
        }
    }
    return std::nullopt;
}

int KontoartOf(const std::string &text)
{
    const auto art = ReadKontoart(text);
    if (art) return *art;
    throw tools::UsageError("Die Kontoart „" + text +
                            "“ gibt es nicht (Sachkonto, Kreditor, Debitor, Kostenstelle).");
}

const char *KindLetter(int art)
{
    for (const Kind &kind : kinds) {
        if (kind.Art == art) return kind.Letter;
    }
    return "";
}

const char *KindName(int art)
{
    for (const Kind &kind : kinds) {
        if (kind.Art == art) return kind.Name;
    }
    return "";
}

std::string KindNames(unsigned set)
{
    std::string text;
    for (const Kind &kind : kinds) {
        if ((set & kind.Art) == 0) continue;
        if (!text.empty()) text += set >= 2U * kind.Art ? ", " : " oder ";
        text += kind.Name;
    }
    return text;
}

int FindKind(int mandant, const std::string &konto)
{
    for (const int art : {ArtSachkonto, ArtDebitor, ArtKreditor, ArtKostenstelle}) {
        const int found = VARK_ExistiertKonto(mandant, konto.c_str(), art);
        if (found == 1) return art;
        if (found < 0) break;
    }
    return ArtSachkonto;
}

} // namespace cli
