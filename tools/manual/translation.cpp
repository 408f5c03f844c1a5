#include "tools/manual/translation.h"

#include "tools/common/texts.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace manual {

namespace {

std::vector<std::string> PartedByComma(const std::string &text)
{
    std::vector<std::string> parts;
    std::istringstream words(text);
    for (std::string part; std::getline(words >> std::ws, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

// Adds a line to what stands there; a blank one has ended the piece before.
void AddLine(std::vector<Piece> &pieces, const std::string &line, bool isNew)
{
    const bool isBehindItem = !isNew && !pieces.empty() && pieces.back().Form == Piece::Kind::Item;
    const size_t indent = line.find_first_not_of(' ');
    const std::string text = line.substr(indent);
    if (indent == 2) {
        const size_t end = std::min(text.find("  "), text.size());
        const size_t meaning = std::min(text.find_first_not_of(' ', end), text.size());
        // A list of words may go on in the next line.
        if (isBehindItem && pieces.back().Text.empty() && pieces.back().Word.ends_with(',')) {
            pieces.back().Word += " " + text.substr(0, end);
            pieces.back().Text = text.substr(meaning);
            return;
        }
        const bool isFirst = isNew || pieces.back().Form != Piece::Kind::Item;
        pieces.push_back({Piece::Kind::Item, text.substr(0, end), text.substr(meaning), isFirst});
    } else if (indent > 2 && isBehindItem) {
        pieces.back().Text += (pieces.back().Text.empty() ? "" : "\n") + text;
    } else if (indent >= 4) {
        const bool goesOn = !isNew && pieces.back().Form == Piece::Kind::Example;
        if (!goesOn) pieces.push_back({Piece::Kind::Example, "", ""});
        pieces.back().Text += line.substr(4) + "\n";
    } else if (line.starts_with("* ")) {
        pieces.push_back({Piece::Kind::Heading, "", line.substr(2)});
    } else {
        const bool goesOn = !isNew && pieces.back().Form == Piece::Kind::Paragraph;
        if (!goesOn) pieces.push_back({Piece::Kind::Paragraph, "", ""});
        pieces.back().Text += line + "\n";
    }
}

bool IsNumber(std::string_view word)
{
    if (word.starts_with('-')) word.remove_prefix(1);
    const bool isHexadecimal = word.starts_with("0x");
    if (isHexadecimal) word.remove_prefix(2);
    const auto isDigit = [isHexadecimal](unsigned char character) {
        return (isHexadecimal ? std::isxdigit(character) : std::isdigit(character)) != 0;
    };
    return !word.empty() && std::all_of(word.begin(), word.end(), isDigit);
}

// The numbers in a text, with their signs: "1..12", "-3", "0x40", but none in names such as Windows-1252.
std::set<std::string> NumbersIn(const std::string &text)
{
    const auto isOfWord = [](char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
    };
    std::set<std::string> numbers;
    for (size_t i = 0; i < text.size();) {
        size_t end = i;
        while (end < text.size() && (isOfWord(text[end]) || text[end] == '-')) {
            ++end;
        }
        const std::string word = text.substr(i, end - i);
        if (IsNumber(word)) numbers.insert(word);
        i = end + 1;
    }
    return numbers;
}

std::string TextOf(const std::vector<Piece> &pieces)
{
    std::string text;
    for (const Piece &piece : pieces) {
        text += piece.Word + " " + piece.Text + "\n";
    }
    return text;
}

[[noreturn]] void Refuse(const std::string &what, const std::string &why)
{
    throw std::runtime_error(what + ": " + why);
}

void CheckNumbers(const std::string &what, const std::string &contract, const std::vector<Piece> &pieces)
{
    const std::set<std::string> wanted = NumbersIn(contract);
    const std::set<std::string> told = NumbersIn(TextOf(pieces));
    for (const std::string &number : wanted) {
        if (!told.contains(number)) Refuse(what, "the German text lacks " + number);
    }
    for (const std::string &number : told) {
        if (!wanted.contains(number)) Refuse(what, "the German text has " + number + ", the header has not");
    }
}

std::set<std::string> WordsOf(const std::vector<Piece> &pieces)
{
    std::set<std::string> words;
    for (const Piece &piece : pieces) {
        if (piece.Form != Piece::Kind::Item) continue;
        for (const std::string &word : PartedByComma(piece.Word)) {
            words.insert(word);
        }
    }
    return words;
}

void CheckSection(const Section &section, const ToldSection &told)
{
    if (section.Heading != told.HeadingInHeader)
        throw std::runtime_error("the section \"" + section.Heading + "\" has no German one in its place");
    CheckNumbers(told.Heading, section.Contract, told.Pieces);
    std::set<std::string> names;
    for (const Told &text : told.Declarations) {
        names.insert(text.Names.begin(), text.Names.end());
    }
    for (const Declaration &declared : section.Declarations) {
        if (!names.contains(declared.Name)) Refuse(declared.Name, "no German text");
    }
    const std::set<std::string> ofAll = WordsOf(told.Pieces);
    size_t at = 0;
    for (const Told &text : told.Declarations) {
        std::string contract;
        const std::set<std::string> words = WordsOf(text.Pieces);
        for (const std::string &name : text.Names) {
            if (at == section.Declarations.size() || section.Declarations[at].Name != name)
                Refuse(name, "the header does not declare it in this place");
            const Declaration &declared = section.Declarations[at++];
            contract += declared.Contract;
            for (const std::string &part : declared.Parts) {
                if (!words.contains(part) && !ofAll.contains(part))
                    Refuse(name, "the German text lacks " + part);
            }
        }
        if (text.Pieces.empty() || text.Pieces.front().Form != Piece::Kind::Paragraph)
            Refuse(text.Names.front(), "the German text does not say what it is for");
        CheckNumbers(text.Names.front(), contract, text.Pieces);
    }
}

} // namespace

std::vector<ToldSection> TranslationOf(const Lines &text)
{
    std::vector<ToldSection> sections;
    bool isNew = true;
    for (const std::string &line : text) {
        const size_t second = line.starts_with("= ") ? line.find("= ", 2) : std::string::npos;
        if (second != std::string::npos) {
            const std::string ofHeader(tools::Trimmed(line.substr(2, second - 2)));
            sections.push_back({ofHeader, line.substr(second + 2), {}, {}});
        } else if (sections.empty()) {
            continue; // the lines at the top tell of the form
        } else if (line.starts_with("- ")) {
            sections.back().Declarations.push_back({PartedByComma(line.substr(2)), {}});
            isNew = true;
            continue;
        } else if (!line.empty()) {
            ToldSection &section = sections.back();
            AddLine(section.Declarations.empty() ? section.Pieces : section.Declarations.back().Pieces, line,
                    isNew);
        }
        isNew = line.empty();
    }
    return sections;
}

void CheckTranslation(const std::vector<Section> &header, const std::vector<ToldSection> &translation)
{
    for (size_t i = 0; i < header.size(); ++i) {
        if (i == translation.size())
            throw std::runtime_error("the section \"" + header[i].Heading + "\" has no German one");
        CheckSection(header[i], translation[i]);
    }
    if (translation.size() > header.size())
        Refuse(translation[header.size()].Heading, "the header has no such section");
}

} // namespace manual
