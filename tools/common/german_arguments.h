// Command lines in German over CLI11. Included by one source of each tool, since CLI11 is heavy.
#pragma once

#include "tools/common/exit_codes.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

namespace tools {

// The same look for each tool: German headings and "--hilfe" everywhere.
inline void MakeGerman(CLI::App &app)
{
    app.set_help_flag("--hilfe,-h", "Diese Hilfe anzeigen")->group("Optionen");
    app.option_defaults()->group("Optionen");
    const auto formatter = app.get_formatter();
    formatter->label("Usage", "Aufruf");
    formatter->label("OPTIONS", "OPTIONEN");
    formatter->label("SUBCOMMAND", "BEFEHL");
    formatter->label("SUBCOMMANDS", "BEFEHL");
    formatter->label("Positionals", "Angaben");
    formatter->label("REQUIRED", "nötig");
    for (const char *kind : {"TEXT", "INT", "UINT", "FLOAT"}) {
        formatter->label(kind, "");
    }
    formatter->label("Needs", "nur mit");
    formatter->label("Excludes", "nicht mit");
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
    if (is(static_cast<const CLI::ExtrasError *>(nullptr))) return "Unbekannte Angabe: " + behindColon();
    if (is(static_cast<const CLI::RequiredError *>(nullptr))) {
        if (!app.remaining().empty()) return "Unbekannte Angabe: " + app.remaining().front();
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
        std::cerr << app.get_name() << ": " << GermanReason(app, error) << "\nMehr dazu: " << app.get_name()
                  << " --hilfe\n";
        return ExitUsage;
    }
}

} // namespace tools
