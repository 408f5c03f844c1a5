// Command lines in German over CLI11. Included by one source of each tool, since CLI11 is heavy.
#pragma once

#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tools {

// Lines of the help: columns counted in characters, what an option takes behind its name, what it needs or
// excludes behind its description.
struct GermanFormatter : CLI::Formatter {
    std::string make_option(const CLI::Option *option, bool isPositional) const override
    {
        const std::string &own = option->get_option_text();
        std::string name = make_option_name(option, isPositional);
        if (!own.empty()) {
            name += " " + own;
        } else if (!isPositional && option->get_type_size() != 0 && option->get_expected_max() > 0) {
            const bool isNumber = option->get_type_name().find("INT") != std::string::npos;
            const std::string value = isNumber ? "N" : "WERT";
            name += option->get_expected_min() == 0 ? " [" + value + "]" : " " + value;
        }
        std::string description = option->get_description();
        const auto add = [&](const char *word, const std::set<CLI::Option *> &others) {
            for (const CLI::Option *other : others) {
                description += (other == *others.begin() ? std::string("; ") + word : std::string(",")) +
                               " " + other->get_name();
            }
        };
        if (option->get_required()) description += "; nötig";
        add("nur mit", option->get_needs());
        add("nicht mit", option->get_excludes());
        return Line(name, description);
    }
    std::string make_subcommand(const CLI::App *command) const override
    {
        return Line(command->get_display_name(true), command->get_description());
    }

private:
    [[nodiscard]] std::string Line(const std::string &name, const std::string &description) const
    {
        const std::string left = "  " + name;
        const bool fits = Columns(left) < get_column_width();
        return (fits ? Left(left, get_column_width()) : left + "\n" + std::string(get_column_width(), ' ')) +
               description + "\n";
    }
};

// The same look for each tool: German headings and "--hilfe" everywhere.
inline void MakeGerman(CLI::App &app)
{
    app.set_help_flag("--hilfe,-h", "Diese Hilfe anzeigen")->group("Optionen");
    app.option_defaults()->group("Optionen");
    const auto formatter = std::make_shared<GermanFormatter>();
    app.formatter(formatter);
    formatter->label("Usage", "Aufruf");
    formatter->label("OPTIONS", "OPTIONEN");
    formatter->label("SUBCOMMAND", "BEFEHL");
    formatter->label("SUBCOMMANDS", "BEFEHL");
    formatter->label("Positionals", "Angaben");
    formatter->label("REQUIRED", "nötig");
    formatter->column_width(34);
}

// Refuses a number outside of `low` to `high`, both good themselves.
inline CLI::Validator NumberFrom(int64_t low, int64_t high)
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
inline CLI::Validator OneOf(std::vector<std::string> words)
{
    return CLI::Validator(
        [words = std::move(words)](const std::string &text) -> std::string {
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

// A command with the look of its program, which must have been made German before.
inline CLI::App *AddCommand(CLI::App &app, const char *name, const char *description)
{
    CLI::App *command = app.add_subcommand(name, description);
    command->group("Befehle");
    command->set_help_flag("--hilfe,-h", "Diese Hilfe anzeigen")->group("Optionen");
    return command;
}

// The command that the arguments name, as it is typed: "vark bericht susa".
inline std::string CommandPath(const CLI::App &app)
{
    std::string path = app.get_name();
    for (const CLI::App *command = &app; !command->get_subcommands().empty();) {
        command = command->get_subcommands().back();
        path += " " + command->get_name();
    }
    return path;
}

// How many characters have to be changed, put in or taken out.
inline size_t Distance(const std::string &a, const std::string &b)
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
inline std::string UnknownArgument(const CLI::App &app, const std::string &argument)
{
    const CLI::App *command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().back();
    }
    std::string nearest;
    size_t least = 3; // more are another word
    const auto consider = [&](const std::string &name) {
        const size_t distance = Distance(argument, name);
        if (distance >= least || distance >= name.size()) return;
        least = distance;
        nearest = name;
    };
    const auto considerAll = [&](const CLI::App &of) {
        for (const CLI::Option *option : of.get_options()) {
            for (const std::string &name : option->get_lnames()) {
                consider("--" + name);
            }
        }
        for (const CLI::App *sub : of.get_subcommands([](const CLI::App *) { return true; })) {
            consider(sub->get_name());
        }
    };
    considerAll(*command);
    if (nearest.empty()) considerAll(app);
    const std::string meant = nearest.empty() ? "" : " (meinten Sie „" + nearest + "“?)";
    return "Unbekannte Angabe: " + argument + meant;
}

// What is wrong with a command line, in German.
inline std::string GermanReason(const CLI::App &app, const CLI::ParseError &error)
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
        return UnknownArgument(app, extras.empty() ? behindColon() : extras.front());
    }
    if (is(static_cast<const CLI::RequiredError *>(nullptr))) {
        if (!app.remaining(true).empty()) return UnknownArgument(app, app.remaining(true).front());
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

// Parses. Returns -1 to go on, else the exit code: help was shown, or what is wrong.
inline int ParseGerman(CLI::App &app, int argc, char **argv)
{
    try {
        // The last argument comes first, as CLI11 takes a list.
        std::vector<std::string> arguments;
        for (int i = argc - 1; i > 0; --i) {
            const std::string argument = argv[i];
            arguments.push_back(argument == "--help" ? "--hilfe" : argument);
        }
        app.parse(std::move(arguments));
        return -1;
    } catch (const CLI::CallForHelp &) {
        std::cout << app.help() << std::flush;
        return ExitGood;
    } catch (const CLI::CallForVersion &version) {
        std::cout << version.what() << '\n' << std::flush;
        return ExitGood;
    } catch (const CLI::ParseError &error) {
        std::cerr << app.get_name() << ": " << GermanReason(app, error) << "\nMehr dazu: " << CommandPath(app)
                  << " --hilfe\n";
        return ExitUsage;
    }
}

} // namespace tools
