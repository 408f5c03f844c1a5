#include "tools/vark/suggestions.h"

#include "tools/common/book_words.h"
#include "tools/common/installation.h"
#include "tools/vark/kontoart.h"

#include <charconv>

namespace cli {

using namespace tools;

namespace {

BooksOf BooksTyped(const Typed &typed)
{
    const std::string configuration = typed.At("--config");
    if (!configuration.empty()) UseConfiguration(configuration);
    BooksOf books{ConfiguredDataPath(), 0};
    const std::string mandant = typed.At("--mandant");
    if (mandant.empty()) {
        if (MandantWords(books.Data).size() != 1) return {};
        return books;
    }
    const char *const end = mandant.data() + mandant.size();
    if (std::from_chars(mandant.data(), end, books.Mandant).ptr != end || books.Mandant == 0) return {};
    return books;
}

template <auto Of> Suggest OfBooks()
{
    return [](const Typed &typed) { return Of(BooksTyped(typed)); };
}

} // namespace

Suggest OfferMandanten()
{
    return [](const Typed &typed) {
        const std::string configuration = typed.At("--config");
        if (!configuration.empty()) UseConfiguration(configuration);
        return MandantWords(ConfiguredDataPath());
    };
}

Suggest OfferStapel() { return OfBooks<StapelWords>(); }

Suggest OfferZahlungsziele() { return OfBooks<ZahlungszielWords>(); }

Suggest OfferKostenschablonen() { return OfBooks<SchablonenWords>(); }

Suggest OfferWaehrungen() { return OfBooks<WaehrungWords>(); }

Suggest OfferJahre() { return OfBooks<YearWords>(); }

Suggest OfferKonten(unsigned kinds, const char *kindOption)
{
    return [kinds, kindOption](const Typed &typed) {
        const auto art = ReadKontoart(typed.At(kindOption));
        return AccountWords(BooksTyped(typed), art ? static_cast<unsigned>(*art) : kinds, typed.Begun);
    };
}

Suggest OfferKuerzel(unsigned kinds)
{
    return [kinds](const Typed &typed) {
        const auto art = ReadKontoart(typed.At("--art"));
        return KuerzelWords(BooksTyped(typed), art ? static_cast<unsigned>(*art) : kinds);
    };
}

Suggest OfferKontoarten(unsigned kinds)
{
    return [kinds](const Typed &) {
        std::vector<Suggestion> words;
        for (const int art : {ArtSachkonto, ArtKreditor, ArtDebitor, ArtKostenstelle}) {
            if ((kinds & static_cast<unsigned>(art)) != 0) words.push_back({KindName(art), ""});
        }
        return words;
    };
}

Suggest OfferWords(std::vector<std::string> words)
{
    return [words = std::move(words)](const Typed &) {
        std::vector<Suggestion> suggestions;
        for (const std::string &word : words) {
            suggestions.push_back({word, ""});
        }
        return suggestions;
    };
}

} // namespace cli
