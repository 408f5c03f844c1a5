#include "tools/common/help.h"

#include "tools/common/texts.h"

namespace tools {

namespace {

constexpr size_t leftWidth = 34; // columns before a description

// Columns are counted in characters; what does not fit in front has its description below.
std::string Line(const std::string &name, const std::string &description)
{
    const std::string left = "  " + name;
    const bool fits = Columns(left) < leftWidth;
    return (fits ? Left(left, leftWidth) : left + "\n" + std::string(leftWidth, ' ')) + description + "\n";
}

std::string ExitCodeLine(const Tool &tool)
{
    std::string line;
    for (const auto &[code, meaning] : tool.ExitCodes) {
        line += (line.empty() ? "Rückgabe: " : ", ") + std::to_string(code) + " " + meaning;
    }
    return line + "\n";
}

} // namespace

std::string HelpText(const Tool &tool, const Command &command, const std::string &path)
{
    const bool isRoot = &command == &tool.Root;
    std::string places;
    std::string options;
    for (const auto &[name, help] : CommonOptions(isRoot)) {
        options += Line(name, help);
    }
    for (const Option &option : command.Options) {
        if (IsPlace(option)) {
            places += Line(option.Name, FullHelp(command, option));
        } else {
            const std::string value = ValueWord(option);
            options += Line(option.Name + (value.empty() ? "" : " " + value), FullHelp(command, option));
        }
    }
    std::string text = command.Description + "\nAufruf: " + path + " " + UsageOf(command) + "\n";
    if (!places.empty()) text += "\nAngaben:\n" + places;
    text += "\nOptionen:\n" + options;
    if (!command.Commands.empty()) text += "\nBefehle:\n";
    for (const Command &sub : command.Commands) {
        text += Line(sub.Name, sub.Description);
    }
    if (!command.Examples.empty()) text += command.Examples.size() == 1 ? "\nBeispiel:\n" : "\nBeispiele:\n";
    for (const std::string &example : command.Examples) {
        text += "  " + example + "\n";
    }
    if (!command.Notes.empty()) text += "\n" + command.Notes + "\n";
    if (isRoot) {
        for (const Topic &topic : tool.Topics) {
            text += "\n" + topic.Title + ":\n";
            for (const auto &[name, meaning] : topic.Entries) {
                text += Line(name, meaning);
            }
        }
    }
    return text + "\n" + ExitCodeLine(tool);
}

} // namespace tools
