#include "tools/common/command_tree.h"

#include <algorithm>

namespace tools {

std::string Typed::At(const std::string &name) const
{
    const auto found = Values.find(name);
    return found != Values.end() ? found->second : std::string();
}

bool IsPlace(const Option &option) { return !option.Name.starts_with('-'); }

bool TakesValue(const Option &option)
{
    return !std::holds_alternative<bool *>(option.To) &&
           !std::holds_alternative<std::function<void()>>(option.To);
}

std::string ValueWord(const Option &option)
{
    if (!TakesValue(option)) return {};
    const bool isNumber = std::holds_alternative<int *>(option.To) ||
                          std::holds_alternative<int64_t *>(option.To) ||
                          std::holds_alternative<uint64_t *>(option.To);
    const std::string word = option.Names == Named::File        ? "DATEI"
                             : option.Names == Named::Directory ? "VERZEICHNIS"
                             : isNumber                         ? "N"
                                                                : "WERT";
    return option.IsValueOptional ? "[" + word + "]" : word;
}

std::string FullHelp(const Command &command, const Option &option)
{
    const auto has = [](const std::vector<std::string> &names, const std::string &name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    std::string text = option.Help;
    if (option.IsRequired) text += "; nötig";
    for (size_t i = 0; i < option.Needs.size(); ++i) {
        text += (i == 0 ? "; nur mit " : ", ") + option.Needs[i];
    }
    bool isFirst = true;
    for (const Option &other : command.Options) {
        if (!has(option.Excludes, other.Name) && !has(other.Excludes, option.Name)) continue;
        text += (isFirst ? "; nicht mit " : ", ") + other.Name;
        isFirst = false;
    }
    return text;
}

std::string UsageOf(const Command &command)
{
    std::string text = "[OPTIONEN]";
    for (const Option &option : command.Options) {
        if (!IsPlace(option)) continue;
        const bool isMany = std::holds_alternative<std::vector<std::string> *>(option.To);
        const std::string word = option.Name + (isMany ? "..." : "");
        text += option.IsRequired ? " " + word : " [" + word + "]";
    }
    return command.Commands.empty() ? text : text + " BEFEHL";
}

std::vector<std::pair<std::string, std::string>> CommonOptions(bool isRoot)
{
    std::vector<std::pair<std::string, std::string>> options = {{"-h,--hilfe", "Diese Hilfe anzeigen"}};
    if (isRoot) options.emplace_back("--version", "Die Version anzeigen");
    return options;
}

} // namespace tools
