#include "tools/books/suggestions.h"

#include "tools/books/place.h"
#include "tools/common/book_words.h"
#include "tools/common/installation.h"

#include <charconv>

namespace books {

using namespace tools;

namespace {

BooksOf BooksTyped(const Typed &typed)
{
    const std::string directory = typed.At("VERZEICHNIS");
    BooksOf books{directory.empty() ? ConfiguredDataPath() : DataPathOf(directory), 0};
    const std::string mandant = typed.At("--mandant");
    std::from_chars(mandant.data(), mandant.data() + mandant.size(), books.Mandant);
    return books;
}

std::string TableTyped(const Typed &typed)
{
    const std::string table = typed.At("TABELLE");
    return table.empty() ? typed.At("--tabelle") : table;
}

} // namespace

Suggest OfferMandanten()
{
    return [](const Typed &typed) { return MandantWords(BooksTyped(typed).Data); };
}

Suggest OfferYears()
{
    return [](const Typed &typed) { return YearWords(BooksTyped(typed)); };
}

Suggest OfferTables()
{
    return [](const Typed &) { return TableWords(); };
}

Suggest OfferKeys()
{
    return [](const Typed &typed) { return KeyWords(TableTyped(typed)); };
}

Suggest OfferFields()
{
    return [](const Typed &typed) { return FieldWords(TableTyped(typed)); };
}

} // namespace books
