// The German text of a header's manual page, and whether it tells all that the header declares. The text
// itself says at its top what form it has.
#pragma once

#include "tools/manual/header.h"

namespace manual {

// A paragraph, a word and what it means, lines that stay as they are, or a heading.
struct Piece {
    enum class Kind { Paragraph, Item, Example, Heading };
    Kind Form;
    std::string Word;    // of an item
    std::string Text;    // what the item means; else the text
    bool IsFirst = true; // of the items of a list
};

// The text on declarations that share one.
struct Told {
    std::vector<std::string> Names;
    std::vector<Piece> Pieces;
};

struct ToldSection {
    std::string HeadingInHeader;
    std::string Heading;
    std::vector<Piece> Pieces;
    std::vector<Told> Declarations;
};

std::vector<ToldSection> TranslationOf(const Lines &text);

// Throws with the first thing that the text lacks: a section or declaration in its place, a parameter, field
// or value, a number of the contract; likewise a number that the contract lacks.
void CheckTranslation(const std::vector<Section> &header, const std::vector<ToldSection> &translation);

} // namespace manual
