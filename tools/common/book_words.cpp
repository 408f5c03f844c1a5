#include "tools/common/book_words.h"

#include "src/model/accounts.h"
#include "tools/common/installation.h"
#include "tools/common/table_file.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <optional>

namespace tools {

namespace {

std::optional<Mandant> MandantOf(const BooksOf &books)
{
    if (books.Data.empty()) return std::nullopt;
    if (books.Mandant != 0) return FindMandant(books.Data, books.Mandant);
    std::vector<Mandant> all = ReadMandanten(books.Data);
    return all.empty() ? std::nullopt : std::optional(std::move(all.front()));
}

template <typename Record, typename Visit>
void ForEachRecord(const BooksOf &books, vark::TableId id, Visit visit)
{
    const auto mandant = MandantOf(books);
    if (!mandant) return;
    TableFile table(LayoutOf(id), books.Data / mandant->Directory(mandant->UpperYear), OpenMode::ReadOnly);
    Record record{};
    for (bool found = table.First(&record, 0); found; found = table.Next(&record, 0)) {
        visit(record);
    }
}

// Hands number, Kürzel and name of each to `visit`.
template <typename Visit> void ForEachAccount(const BooksOf &books, unsigned kinds, Visit visit)
{
    for (const vark::AccountKind &kind : vark::accountKinds) {
        if ((kinds & static_cast<unsigned>(kind.Art)) == 0) continue;
        ForEachRecord<vark::AnyAccount>(books, kind.Table, [&](const vark::AnyAccount &account) {
            visit(std::string(Trimmed(FieldText(account.Head.Konto))), FieldText(account.Head.Kuerzel),
                  FieldText(account.Bytes + kind.NameOffset, kind.NameWidth));
        });
    }
}

} // namespace

std::vector<Suggestion> MandantWords(const std::filesystem::path &data)
{
    std::vector<Suggestion> words;
    if (data.empty()) return words;
    for (const Mandant &mandant : ReadMandanten(data)) {
        words.push_back({std::to_string(mandant.Number), mandant.Name});
    }
    return words;
}

std::vector<Suggestion> YearWords(const BooksOf &books)
{
    std::vector<Suggestion> words;
    const auto mandant = MandantOf(books);
    if (!mandant) return words;
    for (int year = 1980; year < 2080; ++year) {
        const std::string name = std::to_string(year);
        if (std::filesystem::is_directory(books.Data / mandant->Directory(name))) words.push_back({name, ""});
    }
    return words;
}

std::vector<Suggestion> StapelWords(const BooksOf &books)
{
    std::vector<Suggestion> words;
    ForEachRecord<vark::StapelRecord>(books, vark::TableStapel, [&](const vark::StapelRecord &stapel) {
        words.push_back({std::to_string(stapel.Nummer), FieldText(stapel.Name)});
    });
    return words;
}

std::vector<Suggestion> ZahlungszielWords(const BooksOf &books)
{
    std::vector<Suggestion> words;
    ForEachRecord<vark::ZahlzielRecord>(books, vark::TableZahlziel, [&](const vark::ZahlzielRecord &ziel) {
        words.push_back({std::to_string(ziel.Nummer), FieldText(ziel.Text)});
    });
    return words;
}

std::vector<Suggestion> SchablonenWords(const BooksOf &books)
{
    std::vector<Suggestion> words;
    ForEachRecord<vark::KoschaRecord>(books, vark::TableKoscha, [&](const vark::KoschaRecord &schablone) {
        words.push_back({std::to_string(schablone.Nummer), FieldText(schablone.Name)});
    });
    return words;
}

std::vector<Suggestion> WaehrungWords(const BooksOf &books)
{
    std::vector<Suggestion> words; // those of one Währung follow each other
    ForEachRecord<vark::KurseRecord>(books, vark::TableKurse, [&](const vark::KurseRecord &kurs) {
        const std::string waehrung = FieldText(kurs.Waehrung);
        if (words.empty() || words.back().Value != waehrung) words.push_back({waehrung, ""});
    });
    return words;
}

std::vector<Suggestion> KuerzelWords(const BooksOf &books, unsigned kinds)
{
    std::vector<Suggestion> words;
    ForEachAccount(books, kinds,
                   [&](const std::string &number, const std::string &kuerzel, const std::string &name) {
                       words.push_back({kuerzel, number + " " + name});
                   });
    return words;
}

std::vector<Suggestion> AccountWords(const BooksOf &books, unsigned kinds, const std::string &begun)
{
    const bool byNumber = begun.empty() || (begun[0] >= '0' && begun[0] <= '9');
    if (!byNumber) return KuerzelWords(books, kinds);
    std::vector<Suggestion> words;
    ForEachAccount(books, kinds,
                   [&](const std::string &number, const std::string &, const std::string &name) {
                       words.push_back({number, name});
                   });
    return words;
}

std::vector<Suggestion> TableWords()
{
    std::vector<Suggestion> words;
    for (const TableLayout &table : Tables()) {
        words.push_back({table.Stem, table.Content});
    }
    return words;
}

std::vector<Suggestion> KeyWords(const std::string &table)
{
    std::vector<Suggestion> words;
    const TableLayout *const layout = FindLayout(table);
    if (layout == nullptr) return words;
    for (const KeyLayout &key : layout->Keys) {
        std::string fields;
        for (const KeySegment &segment : key.Segments) {
            const FieldLayout *const field = FieldOf(*layout, segment);
            if (field != nullptr) fields += (fields.empty() ? "" : ", ") + field->Name;
        }
        words.push_back({std::to_string(words.size()), fields});
    }
    return words;
}

std::vector<Suggestion> FieldWords(const std::string &table)
{
    std::vector<Suggestion> words;
    const TableLayout *const layout = FindLayout(table);
    if (layout == nullptr) return words;
    for (const FieldLayout &field : layout->Fields) {
        words.push_back({field.Name, field.Meaning});
    }
    return words;
}

} // namespace tools
