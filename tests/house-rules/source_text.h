// Reading the tree: its files, and what of a C or C++ text is code, comment or literal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace house {

struct SourceFile {
    std::string Path; // from the root of the tree, with slashes
    std::string Text;
};

struct Include {
    int Line;
    bool Quoted; // "…", else <…>
    std::string Target;
};

// Adjacent literals count as one, as they do for the compiler.
struct Literal {
    int Line;
    std::string Text;   // as it stands between the quotes, escapes not resolved
    std::string Suffix; // "_w", or empty
};

// Every file of the tree that people write; build results and the version control's own files are left out.
std::vector<SourceFile> ReadTree(const std::string &root);

bool IsCOrCpp(std::string_view path);
bool IsHeader(std::string_view path);
bool LiesIn(std::string_view path, std::string_view folder);

std::vector<std::string> Lines(std::string_view text);

// The text with comments and the insides of literals blanked out; line breaks stay where they are.
std::string CodeOf(std::string_view text);

// What is left when the code is blanked out: comments and literals.
std::string ProseOf(std::string_view text);

std::vector<Include> IncludesOf(std::string_view text);
std::vector<Literal> LiteralsOf(std::string_view text);

} // namespace house
