#include "tools/common/command_line.h"

#include "tools/common/completion.h"
#include "tools/common/exit_codes.h"
#include "tools/common/help.h"
#include "tools/common/manual.h"
#include "tools/common/system.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

namespace tools {

namespace {

// Refuses a number outside of `low` to `high`, both good themselves.
CLI::Validator NumberFrom(int64_t low, int64_t high)
{
    return CLI::Validator(
        [low, high](const std::string &text) -> std::string {
            int64_t number = 0;
            if (CLI::detail::lexical_cast(text, number) && number >= low && number <= high) return {};
            const std::string from = std::to_string(low);
            return "„" + text + "“ ist keine Zahl " +
                   (high == INT64_MAX ? "ab " + from : "von " + from + " bis " + std::to_string(high));
        },
        "");
}

// Refuses what is none of `words`.
CLI::Validator OneOf(const std::vector<std::string> &words)
{
    return CLI::Validator(
        [words](const std::string &text) -> std::string {
            std::string known;
            for (const std::string &word : words) {
                if (word == text) return {};
                if (!known.empty()) known += &word == &words.back() ? " oder " : ", ";
                known += word;
            }
            return "„" + text + "“ statt " + known;
        },
        "");
}

// One for each kind of target. Values come as texts and are converted here: what the parser's own templates
// make of each type takes long to compile.
struct Adding {
    CLI::App &To;
    const Option &From;

    CLI::Option *operator()(bool *target) const { return To.add_flag(From.Name, *target); }
    CLI::Option *operator()(const std::function<void()> &target) const
    {
        return To.add_flag_callback(From.Name, target);
    }
    CLI::Option *operator()(const std::function<void(const std::string &)> &target) const
    {
        return To.add_option(From.Name, CLI::callback_t([target](const CLI::results_t &texts) {
                                 target(texts[0]);
                                 return true;
                             }));
    }
    CLI::Option *operator()(std::string *target) const
    {
        return (*this)([target](const std::string &text) { *target = text; });
    }
    CLI::Option *operator()(std::filesystem::path *target) const
    {
        return (*this)([target](const std::string &text) { *target = PathOfText(text); });
    }
    CLI::Option *operator()(std::vector<std::string> *target) const
    {
        CLI::Option *option = To.add_option(From.Name, CLI::callback_t([target](const CLI::results_t &texts) {
                                                *target = texts;
                                                return true;
                                            }));
        option->expected(CLI::detail::expected_max_vector_size);
        if (From.Separator != 0) return option->delimiter(From.Separator);
        if (IsPlace(From)) return option;
        return option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }
    template <typename Number> CLI::Option *operator()(Number *target) const
    {
        return To.add_option(From.Name, CLI::callback_t([target](const CLI::results_t &texts) {
                                 return CLI::detail::lexical_cast(texts[0], *target);
                             }));
    }
};

// The commands as the parser knows them, beside those of the tool.
struct ParserCommand {
    const Command *Of;
    CLI::App *App;
};

void AddCommand(CLI::App &app, const Command &command, std::vector<ParserCommand> &all)
{
    all.push_back({&command, &app});
    app.set_help_flag("--hilfe,-h");
    for (const Option &option : command.Options) {
        CLI::Option *added = std::visit(Adding{app, option}, option.To);
        if (option.IsRequired) added->required();
        if (option.IsValueOptional) added->expected(0, 1);
        if (option.Lowest != INT64_MIN || option.Highest != INT64_MAX)
            added->check(NumberFrom(option.Lowest, option.Highest));
        if (!option.Words.empty()) added->check(OneOf(option.Words));
    }
    for (const Option &option : command.Options) {
        CLI::Option *added = app.get_option(option.Name);
        for (const std::string &other : option.Needs) {
            added->needs(app.get_option(other));
        }
        for (const std::string &other : option.Excludes) {
            added->excludes(app.get_option(other));
        }
    }
    for (const Command &sub : command.Commands) {
        AddCommand(*app.add_subcommand(sub.Name), sub, all);
    }
    if (!command.Commands.empty()) app.require_subcommand(1);
}

// The command that the arguments name, as it is typed: "vark bericht susa".
std::string CommandPath(const CLI::App &app)
{
    std::string path = app.get_name();
    for (const CLI::App *command = &app; !command->get_subcommands().empty();) {
        command = command->get_subcommands().back();
        path += " " + command->get_name();
    }
    return path;
}

const Command *ChosenCommand(const CLI::App &app, const std::vector<ParserCommand> &all)
{
    const CLI::App *command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().back();
    }
    return std::find_if(all.begin(), all.end(),
                        [command](const ParserCommand &one) { return one.App == command; })
        ->Of;
}

// How many characters have to be changed, put in or taken out.
size_t Distance(const std::string &a, const std::string &b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t before = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = before + (a[i - 1] == b[j - 1] ? 0 : 1);
            before = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

// What is said of an argument that nobody knows, with the one that may have been meant.
std::string UnknownArgument(const Command &root, const Command &command, const std::string &argument)
{
    std::string nearest;
    size_t least = 3; // more are another word
    const auto consider = [&](const std::string &name) {
        const size_t distance = Distance(argument, name);
        if (distance >= least || distance >= name.size()) return;
        least = distance;
        nearest = name;
    };
    const auto considerAll = [&](const Command &of) {
        for (const Option &option : of.Options) {
            if (!IsPlace(option)) consider(option.Name);
        }
        consider("--hilfe");
        for (const Command &sub : of.Commands) {
            consider(sub.Name);
        }
    };
    considerAll(command);
    // Of what the program itself offers only the options may stand behind a command.
    for (const Option &option : root.Options) {
        if (nearest.empty() && !IsPlace(option)) consider(option.Name);
    }
    const std::string meant = nearest.empty() ? "" : " (meinten Sie „" + nearest + "“?)";
    return "Unbekannte Angabe: " + argument + meant;
}

// What is wrong with a command line, in German.
std::string GermanReason(const CLI::App &app, const Command &root, const Command &command,
                         const CLI::ParseError &error)
{
    // CLI11 puts the argument before a colon or at the end of its English sentence.
    const std::string english = error.what();
    const auto behindColon = [&english]() {
        const size_t colon = english.find(": ");
        return colon == std::string::npos ? english : english.substr(colon + 2);
    };
    const auto is = [&error](const auto *kind) { return dynamic_cast<decltype(kind)>(&error) != nullptr; };
    if (is(static_cast<const CLI::ExtrasError *>(nullptr))) {
        const std::vector<std::string> extras = app.remaining(true);
        return UnknownArgument(root, command, extras.empty() ? behindColon() : extras.front());
    }
    if (is(static_cast<const CLI::RequiredError *>(nullptr))) {
        if (!app.remaining(true).empty()) return UnknownArgument(root, command, app.remaining(true).front());
        const std::string what = english.substr(0, english.find(' ')); // "A subcommand is required"
        return what == "A" ? "Es fehlt der Befehl." : "Es fehlt die Angabe " + what + ".";
    }
    if (is(static_cast<const CLI::ArgumentMismatch *>(nullptr))) {
        return "Zu " + english.substr(0, english.find_first_of(": ")) +
               " fehlt ein Wert, oder er ist zu viel.";
    }
    if (is(static_cast<const CLI::ConversionError *>(nullptr))) return "Unzulässiger Wert: " + behindColon();
    if (is(static_cast<const CLI::ValidationError *>(nullptr))) return "Unzulässiger Wert: " + english;
    // "--kurs requires --neu", "--json excludes --csv"
    const std::string first = english.substr(0, english.find(' '));
    const std::string second = english.substr(english.rfind(' ') + 1);
    if (is(static_cast<const CLI::RequiresError *>(nullptr)))
        return "Die Angabe " + first + " gibt es nur mit " + second + ".";
    if (is(static_cast<const CLI::ExcludesError *>(nullptr)))
        return "Diese Angaben passen nicht zusammen: " + first + " und " + second + ".";
    return "Die Angaben sind nicht zu verstehen: " + english;
}

int WriteManual(const Tool &tool, const std::filesystem::path &directory, const std::string &date)
{
    for (const ManualPage &page : ManualPages(tool, date)) {
        std::ofstream file(directory / page.Name, std::ios::binary);
        file << page.Text << std::flush;
        if (file) continue;
        std::cerr << tool.Root.Name << ": " << (directory / page.Name).string()
                  << " läßt sich nicht schreiben.\n";
        return ExitFailure;
    }
    return ExitGood;
}

// The words that stand first and are no command; nothing for any other.
std::optional<int> DoWordOfBuild(const Tool &tool, const std::vector<std::string> &words)
{
    if (words.empty()) return std::nullopt;
    if (words[0] == "--vervollstaendigen") {
        std::cout << CompletionLines(CompletionOf(tool, {words.begin() + 1, words.end()})) << std::flush;
        return ExitGood;
    }
    if (words[0] == "--handbuchseiten" && words.size() == 3) return WriteManual(tool, words[1], words[2]);
    return std::nullopt;
}

} // namespace

Parsed ParseCommandLine(const Tool &tool, int argc, const char *const *argv)
{
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (const auto ended = DoWordOfBuild(tool, words)) return {nullptr, tool.Root.Name, *ended};
    CLI::App app("", tool.Root.Name);
    app.allow_windows_style_options(false); // a value may begin with a slash
    std::vector<ParserCommand> all;
    AddCommand(app, tool.Root, all);
    app.set_version_flag("--version", tool.Root.Name + " " + tool.Version);
    try {
        // The last argument comes first, as CLI11 takes a list.
        std::vector<std::string> arguments(words.rbegin(), words.rend());
        std::replace(arguments.begin(), arguments.end(), std::string("--help"), std::string("--hilfe"));
        app.parse(std::move(arguments));
        return {ChosenCommand(app, all), CommandPath(app), ExitGood};
    } catch (const CLI::CallForHelp &) {
        std::cout << HelpText(tool, *ChosenCommand(app, all), CommandPath(app)) << std::flush;
        return {nullptr, CommandPath(app), ExitGood};
    } catch (const CLI::CallForVersion &version) {
        std::cout << version.what() << '\n' << std::flush;
        return {nullptr, CommandPath(app), ExitGood};
    } catch (const CLI::ParseError &error) {
        std::cerr << tool.Root.Name << ": " << GermanReason(app, tool.Root, *ChosenCommand(app, all), error)
                  << "\nMehr dazu: " << CommandPath(app) << " --hilfe\n";
        return {nullptr, CommandPath(app), ExitUsage};
    }
}

} // namespace tools
