// What a tool understands, as data: its commands, their options and what they bring about. Parsing, help,
// manual pages and completion are all made from this one description. Texts are German, UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tools {

struct Suggestion {
    std::string Value;
    std::string Help; // may be empty
};

// A command line that is being typed.
struct Typed {
    std::map<std::string, std::string> Values; // by the names of options, the last one of each: "--mandant"
    std::string Begun;                         // of the value that is wanted; may be empty

    // Empty for what has not been typed.
    [[nodiscard]] std::string At(const std::string &name) const;
};

// What the value of an option may be, from the books. What does not begin as typed is left out by the caller.
using Suggest = std::function<std::vector<Suggestion>(const Typed &typed)>;

// Where the value of an option goes. A function without a value, and a bool, stand for options without one; a
// vector for a value that may be given more than once.
using Target =
    std::variant<bool *, int *, int64_t *, uint64_t *, std::string *, std::filesystem::path *,
                 std::vector<std::string> *, std::function<void()>, std::function<void(const std::string &)>>;

enum class Named : uint8_t { Nothing, File, Directory };

struct Option {
    std::string Name; // "--mandant"; without dashes it is known by its place: "KONTO"
    std::string Help; // a line
    Target To;
    bool IsRequired = false;
    bool IsValueOptional = false;           // its name alone will do
    Named Names = Named::Nothing;           // what its value is the path of
    char Separator = 0;                     // between the values of a vector; 0: one for each name
    std::vector<std::string> Words = {};    // the only good values; none: any
    int64_t Lowest = INT64_MIN;             // of a number
    int64_t Highest = INT64_MAX;            // likewise
    std::vector<std::string> Needs = {};    // other options, by name
    std::vector<std::string> Excludes = {}; // likewise, also the other way round
    Suggest Suggestions = {};
};

struct Command {
    std::string Name;
    std::string Description; // a line
    std::vector<Option> Options = {};
    std::vector<Command> Commands = {};     // one of which is to be given
    std::vector<std::string> Examples = {}; // command lines
    std::string Notes = {};                 // paragraphs, at most 100 characters a line
    std::function<int()> Run = {};          // returns the exit code; none where a command has to follow
};

// Names with what they mean: "DATEIEN", "UMGEBUNG".
struct Topic {
    std::string Title;
    std::vector<std::pair<std::string, std::string>> Entries;
};

struct Tool {
    Command Root;
    std::string Version;
    std::vector<std::pair<int, std::string>> ExitCodes;
    std::vector<Topic> Topics;
    std::vector<std::string> SeeAlso; // manual pages: "vark40(3)"
};

bool IsPlace(const Option &option);
bool TakesValue(const Option &option);

// What stands for the value in help and manual: "N", "WERT", "[DATEI]"; empty for an option without one.
std::string ValueWord(const Option &option);

// What is said of an option: its help, what it needs, what it does not go with.
std::string FullHelp(const Command &command, const Option &option);

// "[OPTIONEN] KONTO... [VERZEICHNIS]": what follows the command's own name.
std::string UsageOf(const Command &command);

// The options of each command that the tools write by themselves: help, and of a tool its version.
std::vector<std::pair<std::string, std::string>> CommonOptions(bool isRoot);

} // namespace tools
