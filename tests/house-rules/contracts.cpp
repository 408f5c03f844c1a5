// Reads the declarations of functions in headers, and which of them carry a contract.
#include "rules.h"

#include <algorithm>
#include <cctype>
#include <regex>

namespace house {

namespace {

// The code without the preprocessor's lines; line breaks stay.
std::string WithoutDirectives(std::string code)
{
    bool isDirective = false;
    for (size_t begin = 0; begin < code.size();) {
        const size_t end = std::min(code.find('\n', begin), code.size());
        const size_t first = code.find_first_not_of(" \t", begin);
        isDirective = isDirective || (first < end && code[first] == '#');
        const bool goesOn = isDirective && end > begin && code[end - 1] == '\\';
        if (isDirective)
            std::fill(code.begin() + static_cast<std::ptrdiff_t>(begin),
                      code.begin() + static_cast<std::ptrdiff_t>(end), ' ');
        isDirective = goesOn;
        begin = end + 1;
    }
    return code;
}

// One past the bracket that closes the one at `at`.
size_t EndOfBrackets(const std::string &code, size_t at)
{
    int depth = 0;
    for (; at < code.size(); ++at) {
        if (code[at] == '(' || code[at] == '{') ++depth;
        if (code[at] == ')' || code[at] == '}') --depth;
        if (depth == 0) return at + 1;
    }
    return code.size();
}

// A stretch of code at the level of namespaces: a declaration, or a definition up to its body.
struct Statement {
    size_t Begin;
    size_t End; // of the text before the body, or before the semicolon
};

std::vector<Statement> StatementsOf(const std::string &code)
{
    static const std::regex scope("^(inline )?namespace\\b[^(]*$|^extern \" *\"\\s*$");
    std::vector<Statement> statements;
    size_t begin = std::string::npos;
    for (size_t at = 0; at < code.size();) {
        const char character = code[at];
        const bool isBlank = std::isspace(static_cast<unsigned char>(character)) != 0;
        if (begin == std::string::npos && !isBlank) begin = at;
        if (character == '(') {
            at = EndOfBrackets(code, at);
            continue;
        }
        if (character == '{') {
            const std::string head = code.substr(begin, at - begin);
            const bool isScope = std::regex_search(head, scope);
            const bool isValue = head.find(" = ") != std::string::npos && head.find('(') == std::string::npos;
            if (!isScope && !isValue) statements.push_back({begin, at});
            if (!isValue) begin = std::string::npos;
            at = isScope ? at + 1 : EndOfBrackets(code, at);
            continue;
        }
        if (character == ';' || character == '}') {
            if (character == ';') statements.push_back({begin, at});
            begin = std::string::npos;
        }
        ++at;
    }
    return statements;
}

// The name of the function that a statement declares; empty where it declares something else.
std::string FunctionOf(const std::string &statement)
{
    static const std::regex other("^(using|typedef|static_assert|friend)\\b");
    static const std::regex attribute(
        "__attribute__\\s*\\(\\([^)]*\\)\\)|\\[\\[[^\\]]*\\]\\]|\\balignas\\([^)]*\\)");
    static const std::regex function(
        "^[^=(]*[\\w>*&\\]]\\s+[*&]*((\\w+::)*(operator\\W{1,3}|\\w+))\\s*\\([^*]");
    const std::string text = std::regex_replace(statement, attribute, "") + " ";
    if (std::regex_search(text, other)) return "";
    std::smatch match;
    return std::regex_search(text, match, function) ? match[1].str() : "";
}

size_t LineAt(const std::string &code, size_t at)
{
    return static_cast<size_t>(
               std::count(code.begin(), code.begin() + static_cast<std::ptrdiff_t>(at), '\n')) +
           1;
}

} // namespace

Declarations ReadDeclarations(const Files &files)
{
    Declarations found{};
    for (const SourceFile &file : files) {
        static const std::regex product(
            "^(include|text|host|src|record-manager|window-system|report-engine|tools)/");
        if (!IsHeader(file.Path) || !std::regex_search(file.Path, product)) continue;
        const std::string code = WithoutDirectives(CodeOf(file.Text));
        const std::string prose = ProseOf(file.Text);
        const std::vector<std::string> comments = Lines(prose);
        const std::vector<std::string> lines = Lines(code);
        const auto isTold = [&](size_t line) { // from 1
            return comments[line - 1].find("//") != std::string::npos ||
                   comments[line - 1].find("*/") != std::string::npos;
        };
        const auto isCommentAlone = [&](size_t line) {
            return lines[line - 1].find_first_not_of(" \t") == std::string::npos && isTold(line);
        };
        // What the head of a header says is the contract of its only group.
        const bool isHeadTold = isCommentAlone(1);
        size_t groups = 0;
        size_t lastEnd = 0;
        bool isGroupTold = false;
        Breaches untold;
        for (const Statement &statement : StatementsOf(code)) {
            const std::string name =
                FunctionOf(code.substr(statement.Begin, statement.End - statement.Begin));
            if (name.empty()) continue;
            const size_t first = LineAt(code, statement.Begin);
            const size_t last = LineAt(code, statement.End);
            const bool goesOn = first == lastEnd + 1;
            if (!goesOn) ++groups;
            isGroupTold = (goesOn && isGroupTold) || (first > 1 && isCommentAlone(first - 1));
            lastEnd = last;
            bool isBeside = false;
            for (size_t line = first; line <= last; ++line) {
                isBeside = isBeside || isTold(line);
            }
            ++found.Functions;
            if (!isGroupTold && !isBeside)
                untold.push_back({file.Path, static_cast<int>(first), name + " has no contract"});
        }
        if (groups > 1 || !isHeadTold) found.Untold.insert(found.Untold.end(), untold.begin(), untold.end());
    }
    return found;
}

Breaches Contracts(const Files &files)
{
    const Declarations read = ReadDeclarations(files);
    if (read.Untold.size() * 10 <= read.Functions) return {};
    return read.Untold;
}

} // namespace house
