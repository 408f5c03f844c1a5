#include "rules.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <deque>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace house {

const std::vector<std::string> layersLowestFirst = {
    "text",      "host",        "src/model",   "src/platform", "src/frame",         "src/values",
    "src/walks", "src/pickers", "src/booking", "src/cursors",  "src/reports/frame",
};

const std::vector<std::string> siblings = {"src/reports/financial", "src/reports/tax", "src/reports/cost"};

const std::vector<std::string> windowLayersLowestFirst = {
    "window-system/model",   "window-system/windows",    "window-system/controls",
    "window-system/dialogs", "window-system/front-ends",
};

namespace {

const std::vector<std::string> parts = {"record-manager", "window-system", "report-engine"};

// What the library, the tools and one part may see of another part.
bool IsPublicHeaderOfAPart(std::string_view path)
{
    static const std::set<std::string_view> known = {
        "record-manager/include/book_server.h", "record-manager/include/btrcall.h",
        "window-system/include/varkui.h",       "window-system/include/dialog_table.h",
        "window-system/include/calls.def", // the list of the window calls, from which forwarders are made
        "report-engine/include/rs.h",
    };
    return known.contains(path);
}

// What the library and its parts run inside of a host. The program that shows windows is none of them: it is
// a process of its own, and the window system goes on without it when it ends.
bool IsInLibraryOrPart(std::string_view path)
{
    if (LiesIn(path, "window-system/ui")) return false;
    return LiesIn(path, "src") || LiesIn(path, "host") ||
           std::any_of(parts.begin(), parts.end(),
                       [&](const std::string &part) { return LiesIn(path, part); });
}

bool IsWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

int LineOf(std::string_view text, size_t at)
{
    return static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n')) +
           1;
}

// Positions at which `word` stands by itself.
std::vector<size_t> Find(std::string_view text, std::string_view word)
{
    std::vector<size_t> found;
    for (size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const size_t end = at + word.size();
        const bool begins = at == 0 || !IsWordCharacter(text[at - 1]) || !IsWordCharacter(word.front());
        const bool ends = end >= text.size() || !IsWordCharacter(text[end]) || !IsWordCharacter(word.back());
        if (begins && ends) found.push_back(at);
    }
    return found;
}

char FirstAfter(std::string_view text, size_t at)
{
    const size_t next = text.find_first_not_of(" \t\n", at);
    return next == std::string_view::npos ? '\0' : text[next];
}

// Rank of a path in the layers; siblings share the rank above the last, and a source right in src/ stands
// above all; -1 for a path outside.
int RankOf(std::string_view path)
{
    if (LiesIn(path, "src") && path.rfind('/') == 3) return static_cast<int>(layersLowestFirst.size()) + 1;
    for (size_t i = 0; i < layersLowestFirst.size(); ++i) {
        if (LiesIn(path, layersLowestFirst[i])) return static_cast<int>(i);
    }
    for (const std::string &folder : siblings) {
        if (LiesIn(path, folder)) return static_cast<int>(layersLowestFirst.size());
    }
    return -1;
}

std::string SiblingOf(std::string_view path)
{
    for (const std::string &folder : siblings) {
        if (LiesIn(path, folder)) return folder;
    }
    return "";
}

// The path from the root that a quoted include means; empty when there is no such file.
std::string Resolve(const std::set<std::string> &paths, const std::string &from, const std::string &target)
{
    std::string beside =
        (std::filesystem::path(from).parent_path() / target).lexically_normal().generic_string();
    if (paths.contains(beside)) return beside;
    return paths.contains(target) ? target : "";
}

std::set<std::string> PathsOf(const Files &files)
{
    std::set<std::string> paths;
    for (const SourceFile &file : files) {
        paths.insert(file.Path);
    }
    return paths;
}

// Why a source of the window system must not include another; empty when it may.
std::string WhyNotInWindows(const std::string &from, const std::string &to)
{
    if (LiesIn(from, "window-system/ui")) {
        const bool isShared = to == "window-system/front-ends/protocol.h";
        return isShared || LiesIn(to, "window-system/ui") ? "" : "the program shares the protocol alone";
    }
    const auto rankOf = [](const std::string &path) {
        const auto &folders = windowLayersLowestFirst;
        const auto found = std::find_if(folders.begin(), folders.end(),
                                        [&](const std::string &folder) { return LiesIn(path, folder); });
        return found - folders.begin();
    };
    if (IsPublicHeaderOfAPart(to) || rankOf(to) <= rankOf(from)) return "";
    return "the arrow points upwards";
}

// Why `from` must not include `to`; empty when it may.
std::string WhyNot(const std::string &from, const std::string &to)
{
    const int fromRank = RankOf(from);
    const int toRank = RankOf(to);
    if (LiesIn(from, "src") && fromRank < 0) return from + " lies in no layer";
    if (fromRank >= 0) {
        if (to == "include/vark40.h") {
            return fromRank >= RankOf("src/platform/x")
                       ? ""
                       : "the exported interface is known from src/platform up";
        }
        if (IsPublicHeaderOfAPart(to) && LiesIn(from, "src") && !LiesIn(from, "src/model")) return "";
        if (toRank < 0) return "the library sees of a part its public header alone";
        if (toRank > fromRank) return "the arrow points upwards";
        if (LiesIn(from, "src/model") && !LiesIn(to, "src/model"))
            return "the model knows nothing but itself";
        if (toRank == fromRank && SiblingOf(from) != SiblingOf(to))
            return "no report includes another group's";
        return "";
    }
    for (const std::string &part : parts) {
        if (!LiesIn(from, part)) continue;
        if (part == "window-system" && LiesIn(to, part)) return WhyNotInWindows(from, to);
        if (LiesIn(to, part) || LiesIn(to, "text") || LiesIn(to, "host")) return "";
        // The report engine opens its views in the window system.
        if (part == "report-engine" && LiesIn(to, "window-system") && IsPublicHeaderOfAPart(to)) return "";
        return "a part includes nothing but its own headers, host/ and text/";
    }
    if (LiesIn(from, "examples")) {
        // A host with a message loop of its own takes its calls from the window system, one that writes views
        // as files from the report engine.
        const bool isExported = to == "include/vark40.h" || to == "window-system/include/varkui.h" ||
                                to == "report-engine/include/rs.h";
        return isExported ? "" : "hosts use the exported interface";
    }
    // The dialog of the rates has no export, and the posting that would bring it up would stay in the books:
    // a program of its own, linked with the library's objects, opens it.
    if (from == "tools/vark/rate_dialog.cpp" && (LiesIn(to, "src/pickers") || LiesIn(to, "src/frame")))
        return "";
    if (LiesIn(from, "tools")) {
        // Where no export exists tools read and write records themselves, with the library's own amounts and
        // ini files; how a booking is made they leave to the exports.
        for (const char *folder :
             {"tools", "text", "host", "include", "src/model", "src/values", "src/platform"}) {
            if (LiesIn(to, folder)) return "";
        }
        return IsPublicHeaderOfAPart(to) ? "" : "tools use the exported interface";
    }
    if (LiesIn(from, "include")) return "the exported header stands alone";
    return ""; // tests and benchmarks look at what they like
}

} // namespace

Breaches Layers(const Files &files)
{
    Breaches breaches;
    const std::set<std::string> paths = PathsOf(files);
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path)) continue;
        for (const Include &include : IncludesOf(file.Text)) {
            if (!include.Quoted) {
                if (LiesIn(file.Path, "src/model") && include.Target != "cstdint" &&
                    include.Target != "cstddef") {
                    breaches.push_back(
                        {file.Path, include.Line, "the model includes <cstdint> and <cstddef> alone"});
                }
                continue;
            }
            const std::string target = Resolve(paths, file.Path, include.Target);
            if (target.empty()) {
                breaches.push_back({file.Path, include.Line, "there is no " + include.Target});
                continue;
            }
            const std::string why = WhyNot(file.Path, target);
            if (why.empty()) continue;
            breaches.push_back({file.Path, include.Line, "includes "});
            breaches.back().Why.append(target).append(": ").append(why);
        }
    }
    return breaches;
}

Breaches PlatformStaysBelow(const Files &files)
{
    static const std::set<std::string> allowed = {
        "src/platform/window_api.h", // chooses between user32 and the window system
    };
    Breaches breaches;
    for (const SourceFile &file : files) {
        const bool below =
            LiesIn(file.Path, "src/platform/linux") || LiesIn(file.Path, "src/platform/windows");
        if (!IsCOrCpp(file.Path) || below || allowed.contains(file.Path)) continue;
        if (!LiesIn(file.Path, "src") && !LiesIn(file.Path, "text")) continue;
        for (const Include &include : IncludesOf(file.Text)) {
            if (!include.Quoted && include.Target.find('.') != std::string::npos) {
                breaches.push_back({file.Path, include.Line,
                                    "<" + include.Target + "> belongs into src/platform/linux or windows"});
            }
        }
        const std::string code = CodeOf(file.Text);
        for (const char *word : {"_WIN32", "_WIN64", "__linux__", "__unix__", "__gnu_linux__"}) {
            for (const size_t at : Find(code, word)) {
                breaches.push_back(
                    {file.Path, LineOf(code, at), std::string(word) + " stays in src/platform"});
            }
        }
    }
    return breaches;
}

Breaches BannedCalls(const Files &files)
{
    const char *const bounded = "text::CopyText and its like (text/fixed_text.h), which know the width";
    const char *const number = "std::from_chars: it follows no locale and tells a bad text from 0";
    const char *const written = "std::to_chars and the bounded helpers: they follow no locale";
    const char *const letters = "a comparison of the byte itself: the locale is the host's";
    const char *const failure = "a result: the host goes on whatever happens here";
    const struct {
        const char *Call;
        const char *Instead;
        bool LibraryOnly; // tests and tools may
    } rules[] = {
        {"strcpy", bounded, false},
        {"strcat", bounded, false},
        {"strncpy", bounded, false},
        {"strncat", bounded, false},
        {"stpcpy", bounded, false},
        {"gets", bounded, false},
        {"sprintf", written, false},
        {"vsprintf", written, false},
        {"to_string", written, true},
        {"atof", number, false},
        {"atoi", number, false},
        {"atol", number, false},
        {"atoll", number, false},
        {"strtod", number, false},
        {"strtof", number, false},
        {"strtold", number, false},
        {"strtol", number, false},
        {"strtoul", number, false},
        {"strtoll", number, false},
        {"strtoull", number, false},
        {"sscanf", number, false},
        {"fscanf", number, false},
        {"scanf", number, false},
        {"stod", number, false},
        {"stoi", number, true},
        {"setlocale", letters, true},
        {"tolower", letters, true},
        {"toupper", letters, true},
        {"isalpha", letters, true},
        {"isalnum", letters, true},
        {"isdigit", letters, true},
        {"isspace", letters, true},
        {"isupper", letters, true},
        {"islower", letters, true},
        {"isprint", letters, true},
        {"strcasecmp", letters, true},
        {"strncasecmp", letters, true},
        {"strcoll", letters, false},
        {"localtime", "localtime_r", false},
        {"gmtime", "gmtime_r", false},
        {"strtok", "a pointer that moves", false},
        {"abort", failure, true},
        {"exit", failure, true},
        {"quick_exit", failure, true},
        {"terminate", failure, true},
        {"make_unique", "new (std::nothrow), whose null is handled", true},
        {"make_shared", "new (std::nothrow), whose null is handled", true},
    };
    // The loop that an amount's speed is measured against is written as people write it.
    const std::set<std::pair<std::string, std::string>> allowed = {{"bench/values_bench.cpp", "sscanf"}};

    Breaches breaches;
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path)) continue;
        const std::string code = CodeOf(file.Text);
        for (const auto &rule : rules) {
            if (rule.LibraryOnly && !IsInLibraryOrPart(file.Path)) continue;
            if (allowed.contains({file.Path, rule.Call})) continue;
            for (const size_t at : Find(code, rule.Call)) {
                if (FirstAfter(code, at + std::string_view(rule.Call).size()) != '(') continue;
                breaches.push_back({file.Path, LineOf(code, at),
                                    std::string(rule.Call) + " is banned; use " + rule.Instead});
            }
        }
        for (const Literal &literal : LiteralsOf(file.Text)) {
            for (size_t at = literal.Text.find('%'); at != std::string::npos;
                 at = literal.Text.find('%', at + 1)) {
                const size_t letter = literal.Text.find_first_not_of("0123456789.*+-#l", at + 1);
                if (letter == std::string::npos) break;
                const bool ends =
                    letter + 1 >= literal.Text.size() || !IsWordCharacter(literal.Text[letter + 1]);
                if (ends && std::string_view("fFeEgG").find(literal.Text[letter]) != std::string_view::npos &&
                    IsInLibraryOrPart(file.Path)) {
                    breaches.push_back({file.Path, literal.Line, "%f follows the locale; use std::to_chars"});
                }
                at = letter - 1;
            }
        }
        if (!IsInLibraryOrPart(file.Path)) continue;
        for (const size_t at : Find(code, "new")) {
            const size_t next = code.find_first_not_of(" \t\n", at + 3);
            if (next == std::string::npos || code.compare(next, 14, "(std::nothrow)") == 0) continue;
            if (at >= 8 && code.compare(at - 9, 9, "operator ") == 0) continue;
            breaches.push_back(
                {file.Path, LineOf(code, at), "new without std::nothrow ends the host for lack of memory"});
        }
    }
    return breaches;
}

Breaches PlainCode(const Files &files)
{
    const char *const throwing[] = {
        "string",        "vector",    "map",     "set",     "deque",  "list",  "unordered_map",
        "unordered_set", "iostream",  "sstream", "fstream", "locale", "regex", "functional",
        "any",           "stdexcept", "format",  "iomanip", "queue",  "stack", "forward_list",
    };
    const char *const words[] = {"virtual",      "throw",  "try",    "catch",
                                 "dynamic_cast", "typeid", "friend", "mutable"};
    Breaches breaches;
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path) || !IsInLibraryOrPart(file.Path)) continue;
        for (const Include &include : IncludesOf(file.Text)) {
            for (const char *header : throwing) {
                if (!include.Quoted && include.Target == header) {
                    breaches.push_back(
                        {file.Path, include.Line, "<" + include.Target + "> throws for lack of memory"});
                }
            }
        }
        const std::string code = CodeOf(file.Text);
        for (const char *word : words) {
            for (const size_t at : Find(code, word)) {
                breaches.push_back(
                    {file.Path, LineOf(code, at), std::string(word) + ": plain structures and functions"});
            }
        }
        for (const size_t at : Find(code, "class")) {
            const size_t before = code.find_last_not_of(" \t\n", at == 0 ? 0 : at - 1);
            const bool parameter =
                at > 0 && before != std::string::npos && (code[before] == '<' || code[before] == ',');
            const bool enumeration = at >= 5 && code.compare(at - 5, 5, "enum ") == 0;
            if (parameter || enumeration) continue;
            breaches.push_back({file.Path, LineOf(code, at), "class: plain structures and functions"});
        }
    }
    return breaches;
}

Breaches LineWidth(const Files &files)
{
    constexpr size_t widest = 110;
    Breaches breaches;
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path)) continue;
        const std::vector<std::string> lines = Lines(file.Text);
        for (size_t i = 0; i < lines.size(); ++i) {
            const auto characters =
                static_cast<size_t>(std::count_if(lines[i].begin(), lines[i].end(), [](char byte) {
                    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
                }));
            if (characters > widest) {
                breaches.push_back(
                    {file.Path, static_cast<int>(i) + 1, std::to_string(characters) + " characters"});
            }
        }
    }
    return breaches;
}

Breaches Orphans(const Files &files)
{
    const std::set<std::string> paths = PathsOf(files);
    std::set<std::string> included;
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path)) continue;
        for (const Include &include : IncludesOf(file.Text)) {
            if (include.Quoted) included.insert(Resolve(paths, file.Path, include.Target));
        }
    }
    Breaches breaches;
    for (const SourceFile &file : files) {
        if (IsHeader(file.Path) && !included.contains(file.Path)) {
            breaches.push_back({file.Path, 1, "nothing includes it"});
        }
        const std::filesystem::path path(file.Path);
        if (!LiesIn(file.Path, "tests") || !file.Path.ends_with("_test.cpp")) continue;
        const std::string list = (path.parent_path() / "CMakeLists.txt").generic_string();
        const auto found = std::find_if(files.begin(), files.end(),
                                        [&](const SourceFile &other) { return other.Path == list; });
        const bool isListed = found != files.end() && (!Find(found->Text, path.filename().string()).empty() ||
                                                       found->Text.find(" *.cpp)") != std::string::npos);
        if (!isListed) {
            breaches.push_back({file.Path, 1, "no list of sources in its folder names it, so it never runs"});
        }
    }
    return breaches;
}

namespace {

// The folder that answers for a file in the README: src/… by layer, everything else by its first folder.
std::string ListedFolderOf(const std::string &path)
{
    for (const std::string &folder : layersLowestFirst) {
        if (LiesIn(path, folder)) return folder;
    }
    const std::string sibling = SiblingOf(path);
    return sibling.empty() ? path.substr(0, path.find('/')) : sibling;
}

} // namespace

Breaches ReadmeIsTrue(const Files &files)
{
    Breaches breaches;
    std::string readme;
    std::string program;
    std::set<std::string> folders; // that must be listed
    std::set<std::string> others;  // that may be
    for (const SourceFile &file : files) {
        if (file.Path == "README.md") readme = file.Text;
        if (file.Path == "examples/buchen.c") program = file.Text;
        if (file.Path.find('/') == std::string::npos) continue;
        (IsCOrCpp(file.Path) ? folders : others).insert(ListedFolderOf(file.Path));
    }
    folders.erase("src"); // what lies right in it belongs to no folder

    std::set<std::string> listed;
    int lowest = 1000;
    const std::vector<std::string> lines = Lines(readme);
    for (size_t i = 0; i < lines.size(); ++i) {
        const int line = static_cast<int>(i) + 1;
        if (!lines[i].starts_with("| `")) continue;
        const size_t end = lines[i].find("/` |");
        if (end == std::string::npos) continue;
        const std::string folder = lines[i].substr(3, end - 3);
        listed.insert(folder);
        if (!folders.contains(folder) && !others.contains(folder))
            breaches.push_back({"README.md", line, folder + "/ is not there"});
        const int rank = RankOf(folder + "/x");
        if (rank < 0) continue;
        if (rank > lowest)
            breaches.push_back({"README.md", line, folder + "/ stands below what it includes"});
        lowest = rank;
    }
    const std::set<std::string> paths = PathsOf(files);
    for (size_t i = 0; i < lines.size(); ++i) {
        for (size_t open = lines[i].find('`'); open != std::string::npos;) {
            const size_t close = lines[i].find('`', open + 1);
            if (close == std::string::npos) break;
            const std::string quoted = lines[i].substr(open + 1, close - open - 1);
            const bool ours = folders.contains(ListedFolderOf(quoted)) || quoted.starts_with("src/");
            if (ours && quoted.find('.') != std::string::npos && !paths.contains(quoted)) {
                breaches.push_back({"README.md", static_cast<int>(i) + 1, quoted + " is not there"});
            }
            open = lines[i].find('`', close + 1);
        }
    }
    for (const std::string &folder : folders) {
        if (!listed.contains(folder)) breaches.push_back({"README.md", 0, "says nothing of " + folder + "/"});
    }
    if (program.empty() || readme.find("```c\n" + program + "```\n") == std::string::npos) {
        breaches.push_back({"README.md", 0, "its program is not examples/buchen.c"});
    }
    return breaches;
}

Breaches TextsAreTurnedOver(const Files &files)
{
    Breaches breaches;
    for (const SourceFile &file : files) {
        if (!IsCOrCpp(file.Path) || !LiesIn(file.Path, "src")) continue;
        for (const Literal &literal : LiteralsOf(file.Text)) {
            if (literal.Suffix == "_w") continue;
            bool outside = false;
            for (size_t i = 0; i < literal.Text.size(); ++i) {
                const auto byte = static_cast<unsigned char>(literal.Text[i]);
                if (byte >= 0x80) outside = true;
                if (byte == '\\' && i + 2 < literal.Text.size()) {
                    const char kind = literal.Text[i + 1];
                    const char digit = literal.Text[i + 2];
                    if (kind == 'x' &&
                        std::string_view("89abcdefABCDEF").find(digit) != std::string_view::npos) {
                        outside = true;
                    }
                    if ((kind == '2' || kind == '3') && digit >= '0' && digit <= '7') outside = true;
                    ++i;
                }
            }
            if (outside) {
                breaches.push_back(
                    {file.Path, literal.Line, "a text beyond ASCII without _w is not Windows-1252"});
            }
        }
    }
    return breaches;
}

Breaches MessagesAreNamed(const Files &files)
{
    // The ranges of numbers in which nothing else lies that the library counts.
    static const std::regex number("\\b(14[0-5][0-9]|1460|180[0-3])\\b");
    static const std::regex call("\\b(ShowMessage\\(|Report\\([^,();]*,) *[0-9]");
    static const std::regex code(
        "\\bReport\\([^,();]*,[^,();]*, *-[0-9]|\\breturn -([2-9]|1[0-9])|[!=]= -([2-9]|[1-9][0-9])\\b");
    const struct {
        const std::regex &Pattern;
        const char *Why;
    } rules[] = {
        {number, "a message's number: its name stands in src/frame/messages.def"},
        {call, "a message's number: its name stands in src/frame/messages.def"},
        {code, "a result's number: its name stands in include/vark40.h"},
    };
    Breaches breaches;
    for (const SourceFile &file : files) {
        const bool isList = file.Path == "src/frame/messages.def";
        if (!IsCOrCpp(file.Path) || !LiesIn(file.Path, "src") || isList) continue;
        const std::string text = CodeOf(file.Text);
        for (const auto &rule : rules) {
            for (std::sregex_iterator at(text.begin(), text.end(), rule.Pattern), end; at != end; ++at) {
                breaches.push_back({file.Path, LineOf(text, static_cast<size_t>(at->position())), rule.Why});
            }
        }
    }
    return breaches;
}

Breaches Beliefs(const Files &files)
{
    struct Floor {
        std::string Places; // a pattern: a folder, or sources by the beginnings of their paths
        int Hundredths;     // of a belief a function
    };
    static const Floor floors[] = {
        {"src/booking/", 200},
        {"src/frame/(engine_calls|held_reports|open_tables|record_store|transactions)", 200},
        {"src/values/amount", 200}};
    // Holds(…) and the checks that are made of it; a function begins with a brace in the first column, or
    // stands in one line.
    static const std::regex belief("\\b\\w*Holds\\(");
    static const std::regex function("(^|\n)(\\{|[A-Za-z][^\n]*\\) \\{ [^\n]* \\})(?=\n)");
    const auto count = [](const std::string &text, const std::regex &pattern) {
        return std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator());
    };
    Breaches breaches;
    for (const Floor &floor : floors) {
        const std::regex places("^" + floor.Places);
        std::ptrdiff_t beliefs = 0;
        std::ptrdiff_t functions = 0;
        for (const SourceFile &file : files) {
            if (!std::regex_search(file.Path, places) || IsHeader(file.Path)) continue;
            const std::string code = CodeOf(file.Text);
            beliefs += count(code, belief);
            functions += count(code, function);
        }
        if (beliefs * 100 >= functions * floor.Hundredths) continue;
        breaches.push_back({floor.Places, 0,
                            std::to_string(beliefs) + " beliefs in " + std::to_string(functions) +
                                " functions are too few"});
    }
    return breaches;
}

Breaches BytesAreFields(const Files &files)
{
    // A copy into one variable or out of one; runs of bytes are copied as such.
    static const std::regex field("\\bmemcpy\\((&|[^;]*,\\s*&[^,;]*,\\s*sizeof\\b)");
    static const std::regex cast("\\*reinterpret_cast<(const )?(u?int(16|32|64)_t|float|double)\\b");
    Breaches breaches;
    for (const SourceFile &file : files) {
        const bool isPair = file.Path == "record-manager/fields.h";
        if (!IsCOrCpp(file.Path) || !LiesIn(file.Path, "record-manager") || isPair) continue;
        const std::string code = CodeOf(file.Text);
        for (const std::regex *pattern : {&field, &cast}) {
            for (std::sregex_iterator at(code.begin(), code.end(), *pattern), end; at != end; ++at) {
                breaches.push_back({file.Path, LineOf(code, static_cast<size_t>(at->position())),
                                    "GetField and PutField of record-manager/fields.h do it"});
            }
        }
    }
    return breaches;
}

Breaches Words(const Files &files)
{
    // In halves, so that this list does not find itself.
    const struct {
        std::string Word;
        const char *Why;
    } rules[] = {
        {"TO"
         "DO",
         "do it, or open an issue"},
        {"FIX"
         "ME",
         "do it, or open an issue"},
        {"XX"
         "X",
         "do it, or open an issue"},
        {"HA"
         "CK",
         "do it well, or say why it is well"},
        {"<<<<<"
         "<<",
         "a merge was left half done"},
        {">>>>>"
         ">>",
         "a merge was left half done"},
        {"spe"
         "c",
         "a comment carries its reason itself; the reader has no other paper"},
        {"spe"
         "cs",
         "a comment carries its reason itself; the reader has no other paper"},
        {"specif"
         "ication",
         "a comment carries its reason itself; the reader has no other paper"},
        {"specif"
         "ied",
         "a comment carries its reason itself; the reader has no other paper"},
        {"specif"
         "ier",
         "a comment carries its reason itself; the reader has no other paper"},
        {"as docu"
         "mented in",
         "a comment carries its reason itself; the reader has no other paper"},
    };
    const std::string chapter = "Par"
                                "t ";
    Breaches breaches;
    for (const SourceFile &file : files) {
        for (const auto &rule : rules) {
            std::string text = IsCOrCpp(file.Path) ? ProseOf(file.Text) : file.Text;
            const bool exact = std::isupper(static_cast<unsigned char>(rule.Word[0])) != 0;
            if (!exact) {
                std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
                    return static_cast<char>(std::tolower(character));
                });
            }
            for (const size_t at : Find(text, rule.Word)) {
                breaches.push_back({file.Path, LineOf(text, at), rule.Word + ": " + rule.Why});
            }
        }
        for (size_t at = file.Text.find(chapter); at != std::string::npos;
             at = file.Text.find(chapter, at + 1)) {
            const char next = at + 5 < file.Text.size() ? file.Text[at + 5] : '\0';
            if (next >= '0' && next <= '9') {
                breaches.push_back(
                    {file.Path, LineOf(file.Text, at), "a numbered chapter: say the reason itself"});
            }
        }
    }
    return breaches;
}

namespace {

// What the objects of a target need of each other, by their places in its list.
struct Needs {
    std::vector<std::map<size_t, std::string>> Of; // a place, and a symbol that is needed from there
    size_t Definitions;
};

std::string Readable(const std::string &symbol)
{
    int status = 0;
    char *name = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
    std::string readable = status == 0 ? name : symbol;
    std::free(name);
    return readable.substr(0, readable.find('('));
}

Needs ReadNeeds(const std::vector<std::string> &objects)
{
    std::map<std::string, size_t> places;
    std::string command = "nm -A -P";
    for (const std::string &object : objects) {
        places.emplace(object, places.size());
        command.append(" '").append(object).append("'");
    }
    Needs needs;
    needs.Of.resize(objects.size());
    std::map<std::string, size_t> definedIn;
    std::vector<std::set<std::string>> wanted(objects.size());
    for (const std::string &line : Lines(OutputOf(command))) {
        std::istringstream words(line);
        std::string object;
        std::string symbol;
        char type = '?';
        words >> object >> symbol >> type;
        const auto place = places.find(object.substr(0, object.rfind(':')));
        if (place == places.end()) continue;
        if (type == 'U') wanted[place->second].insert(symbol);
        // What is weak or local stands in every source that uses it.
        if (std::string("TDBRSGC").find(type) != std::string::npos) definedIn[symbol] = place->second;
    }
    needs.Definitions = definedIn.size();
    for (size_t i = 0; i < objects.size(); ++i) {
        for (const std::string &symbol : wanted[i]) {
            const auto found = definedIn.find(symbol);
            if (found != definedIn.end() && found->second != i) needs.Of[i].emplace(found->second, symbol);
        }
    }
    return needs;
}

// The shortest way from a place back to itself; empty when there is none.
std::vector<size_t> CircleAround(const Needs &needs, size_t start)
{
    std::map<size_t, size_t> reachedFrom;
    std::deque<size_t> next = {start};
    while (!next.empty()) {
        const size_t at = next.front();
        next.pop_front();
        for (const auto &[to, symbol] : needs.Of[at]) {
            if (to == start) {
                std::vector<size_t> circle;
                for (size_t each = at; each != start; each = reachedFrom[each]) {
                    circle.insert(circle.begin(), each);
                }
                circle.insert(circle.begin(), start);
                return circle;
            }
            if (reachedFrom.emplace(to, at).second) next.push_back(to);
        }
    }
    return {};
}

} // namespace

Breaches Circles(const std::string &target, const std::vector<std::string> &objects)
{
    if (objects.empty()) return {{target, 0, "has no objects"}};
    const Needs needs = ReadNeeds(objects);
    if (needs.Definitions == 0) return {{target, 0, "its objects define nothing"}};
    Breaches breaches;
    std::set<size_t> told;
    for (size_t i = 0; i < objects.size(); ++i) {
        const std::vector<size_t> circle = told.contains(i) ? std::vector<size_t>() : CircleAround(needs, i);
        if (circle.empty()) continue;
        const auto nameOf = [&](size_t place) {
            return std::filesystem::path(objects[place]).filename().replace_extension("").string();
        };
        std::string why;
        for (size_t j = 0; j < circle.size(); ++j) {
            const size_t to = circle[(j + 1) % circle.size()];
            why += nameOf(circle[j]) + " needs " + Readable(needs.Of[circle[j]].at(to)) + " of " +
                   nameOf(to) + "; ";
            told.insert(circle[j]);
        }
        breaches.push_back({target, 0, why});
    }
    return breaches;
}

std::map<std::string, std::vector<std::string>> ReadObjectLists(const std::string &path)
{
    std::map<std::string, std::vector<std::string>> lists;
    std::ifstream stream(path);
    std::string target;
    for (std::string line; std::getline(stream, line);) {
        if (line.find('/') == std::string::npos) {
            target = line;
        } else {
            lists[target].push_back(line);
        }
    }
    return lists;
}

std::string OutputOf(const std::string &command)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "cannot run " + command;
    char buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    pclose(pipe);
    return output;
}

std::vector<std::string> HeadersToCompile(const Files &files)
{
    const std::set<std::string> paths = PathsOf(files);
    std::set<std::string> proved;
    for (const SourceFile &file : files) {
        if (!file.Path.ends_with(".cpp") || LiesIn(file.Path, "src/platform/windows")) continue;
        const std::vector<Include> includes = IncludesOf(file.Text);
        if (!includes.empty() && includes[0].Quoted)
            proved.insert(Resolve(paths, file.Path, includes[0].Target));
    }
    std::vector<std::string> headers;
    for (const SourceFile &file : files) {
        // Only the compiler of Windows knows what these include.
        if (LiesIn(file.Path, "tests/support/windows") || LiesIn(file.Path, "tests/record-manager/windows"))
            continue;
        if (file.Path.ends_with(".h") && !proved.contains(file.Path)) headers.push_back(file.Path);
    }
    return headers;
}

Breaches HeadersCompileAlone(const std::string &root, const std::vector<std::string> &headers)
{
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "vark-headers-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) return {{pattern, 0, "cannot be made"}};
    const fs::path folder(pattern);
    // One compiler run a processor over its share of the headers. A source's number leads back to its header.
    const std::string compiler =
        VARK_CXX " -std=c++20 -fsyntax-only -Wall -Wextra -Werror " VARK_HEADER_FLAGS " -I'" + root + "'";
    for (size_t i = 0; i < headers.size(); ++i) {
        std::ofstream(folder / ("header" + std::to_string(i) + ".cpp"))
            << "#include \"" << headers[i] << "\"\n";
    }
    const std::string output =
        OutputOf("ls '" + pattern + "' | sed 's|^|" + pattern + "/|' | xargs -P 2 -n 16 " + compiler);
    Breaches breaches;
    for (size_t i = 0; i < headers.size(); ++i) {
        const std::string name = "/header" + std::to_string(i) + ".cpp:";
        // The compiler names the source it came from above every complaint about a header.
        const size_t at = output.find(name);
        if (at != std::string::npos)
            breaches.push_back(
                {headers[i], 1,
                 "does not compile alone:\n" + output.substr(output.rfind('\n', at) + 1, 600)});
    }
    if (breaches.empty() && !output.empty()) breaches.push_back({root, 0, output});
    fs::remove_all(folder);
    return breaches;
}

Breaches DynamicNeeds(const std::string &library)
{
    static const std::set<std::string> runtime = {
        "libc.so.6",
        "libm.so.6",
        "libstdc++.so.6",
        "libgcc_s.so.1",
        "ld-linux-x86-64.so.2",
        // under the sanitizers
        "libasan.so.8",
        "libubsan.so.1",
        "libtsan.so.2",
    };
    Breaches breaches;
    const std::vector<std::string> lines = Lines(OutputOf("readelf -dW '" + library + "'"));
    bool isLibrary = false;
    for (const std::string &line : lines) {
        if (line.find("(SONAME)") != std::string::npos) isLibrary = true;
        if (line.find("(NEEDED)") == std::string::npos) continue;
        const size_t open = line.find('[');
        const size_t close = line.find(']');
        const std::string needed = line.substr(open + 1, close - open - 1);
        if (!runtime.contains(needed)) breaches.push_back({library, 0, "needs " + needed});
    }
    if (!isLibrary) breaches.push_back({library, 0, "is no shared library"});
    return breaches;
}

} // namespace house
