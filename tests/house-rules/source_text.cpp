#include "source_text.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace house {

namespace {

enum class Kind { Code, Comment, Text, Character };

bool IsWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

// Where the literal or comment that begins at `at` ends (one past its last character).
size_t EndOfQuoted(std::string_view text, size_t at)
{
    const char quote = text[at];
    for (size_t i = at + 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == quote) {
            return i + 1;
        } else if (text[i] == '\n') {
            return i;
        }
    }
    return text.size();
}

size_t EndOfRaw(std::string_view text, size_t at)
{
    const size_t open = text.find('(', at);
    if (open == std::string_view::npos) return text.size();
    const std::string close = ")" + std::string(text.substr(at + 1, open - at - 1)) + "\"";
    const size_t end = text.find(close, open);
    return end == std::string_view::npos ? text.size() : end + close.size();
}

// Calls piece(kind, begin, end) for every stretch of the text.
template <class Piece> void Split(std::string_view text, Piece piece)
{
    size_t codeBegin = 0;
    size_t at = 0;
    const auto Take = [&](Kind kind, size_t end) {
        if (codeBegin < at) piece(Kind::Code, codeBegin, at);
        piece(kind, at, end);
        at = end;
        codeBegin = end;
    };
    while (at < text.size()) {
        const char character = text[at];
        const char next = at + 1 < text.size() ? text[at + 1] : '\0';
        if (character == '/' && next == '/') {
            const size_t end = text.find('\n', at);
            Take(Kind::Comment, end == std::string_view::npos ? text.size() : end);
        } else if (character == '/' && next == '*') {
            const size_t end = text.find("*/", at + 2);
            Take(Kind::Comment, end == std::string_view::npos ? text.size() : end + 2);
        } else if (character == '"') {
            const bool raw = at > 0 && text[at - 1] == 'R';
            Take(Kind::Text, raw ? EndOfRaw(text, at) : EndOfQuoted(text, at));
        } else if (character == '\'' && (at == 0 || !IsWordCharacter(text[at - 1]))) {
            Take(Kind::Character, EndOfQuoted(text, at)); // a quote behind a digit only groups digits
        } else {
            ++at;
        }
    }
    if (codeBegin < at) piece(Kind::Code, codeBegin, at);
}

} // namespace

std::vector<SourceFile> ReadTree(const std::string &root)
{
    namespace fs = std::filesystem;
    std::vector<SourceFile> files;
    for (auto entry = fs::recursive_directory_iterator(root); entry != fs::recursive_directory_iterator();
         ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry.depth() == 0 && (name == "build" || name == ".git")) {
            entry.disable_recursion_pending();
            continue;
        }
        if (!entry->is_regular_file()) continue;
        std::ifstream stream(entry->path(), std::ios::binary);
        files.push_back({fs::relative(entry->path(), root).generic_string(),
                         {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()}});
    }
    return files;
}

bool IsHeader(std::string_view path)
{
    return path.ends_with(".h") || path.ends_with(".inc") || path.ends_with(".def");
}

bool IsCOrCpp(std::string_view path)
{
    return IsHeader(path) || path.ends_with(".cpp") || path.ends_with(".c");
}

bool LiesIn(std::string_view path, std::string_view folder)
{
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

std::vector<std::string> Lines(std::string_view text)
{
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < text.size();) {
        size_t end = text.find('\n', begin);
        if (end == std::string_view::npos) end = text.size();
        lines.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

std::string CodeOf(std::string_view text)
{
    std::string code(text);
    Split(text, [&](Kind kind, size_t begin, size_t end) {
        if (kind == Kind::Code) return;
        for (size_t i = begin; i < end; ++i) {
            const bool quote = kind != Kind::Comment && (i == begin || i + 1 == end);
            if (code[i] != '\n' && !quote) code[i] = ' ';
        }
    });
    return code;
}

std::string ProseOf(std::string_view text)
{
    std::string prose(text);
    Split(text, [&](Kind kind, size_t begin, size_t end) {
        for (size_t i = begin; kind == Kind::Code && i < end; ++i) {
            if (prose[i] != '\n') prose[i] = ' ';
        }
    });
    return prose;
}

std::vector<Include> IncludesOf(std::string_view text)
{
    std::vector<Include> includes;
    const std::vector<std::string> code = Lines(CodeOf(text));
    const std::vector<std::string> lines = Lines(text);
    for (size_t i = 0; i < lines.size(); ++i) {
        const size_t hash = code[i].find_first_not_of(" \t");
        if (hash == std::string::npos || code[i][hash] != '#') continue;
        const size_t word = code[i].find_first_not_of(" \t", hash + 1);
        if (word == std::string::npos || code[i].compare(word, 7, "include") != 0) continue;
        const size_t open = lines[i].find_first_of("\"<", word);
        if (open == std::string::npos) continue;
        const size_t close = lines[i].find_first_of("\">", open + 1);
        if (close == std::string::npos) continue;
        includes.push_back(
            {static_cast<int>(i) + 1, lines[i][open] == '"', lines[i].substr(open + 1, close - open - 1)});
    }
    return includes;
}

std::vector<Literal> LiteralsOf(std::string_view text)
{
    std::vector<Literal> literals;
    int line = 1;
    bool joins = false;  // only blanks since the last literal
    bool inLine = false; // the line is an #include or #error, whose quotes hold no text
    Split(text, [&](Kind kind, size_t begin, size_t end) {
        const std::string_view piece = text.substr(begin, end - begin);
        if (kind == Kind::Text) {
            if (!inLine) {
                const std::string inside(piece.size() >= 2 ? piece.substr(1, piece.size() - 2) : "");
                if (joins) {
                    literals.back().Text += inside;
                } else {
                    literals.push_back({line, inside, ""});
                }
                joins = true;
            }
        } else if (kind == Kind::Code) {
            size_t at = 0;
            if (joins) {
                std::string suffix;
                while (at < piece.size() && IsWordCharacter(piece[at])) {
                    suffix += piece[at++];
                }
                if (!suffix.empty()) literals.back().Suffix = suffix;
            }
            if (piece.find_first_not_of(" \t\r\n", at) != std::string_view::npos) joins = false;
            const size_t lineBegin = piece.rfind('\n');
            const std::string_view lastLine =
                lineBegin == std::string_view::npos ? piece : piece.substr(lineBegin + 1);
            if (lineBegin != std::string_view::npos) inLine = false;
            if (lastLine.find("#include") != std::string_view::npos) inLine = true;
        }
        for (const char character : piece) {
            if (character == '\n') ++line;
        }
    });
    return literals;
}

} // namespace house
