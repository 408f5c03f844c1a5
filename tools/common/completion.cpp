#include "tools/common/completion.h"

#include "tools/common/texts.h"

#include <algorithm>
#include <exception>

namespace tools {

namespace {

// How far the words before the one that is being typed lead.
struct Position {
    const Command *In = nullptr;
    const Option *Wants = nullptr; // the option before is still to have its value
    bool IsBehindDashes = false;   // behind "--" there are no options
    size_t Places = 0;             // how many values known by their place there were
    Typed Values = {};
};

const Option *FindOption(const Command &command, const std::string &name)
{
    const auto found = std::find_if(command.Options.begin(), command.Options.end(),
                                    [&name](const Option &option) { return option.Name == name; });
    return found != command.Options.end() && !IsPlace(*found) ? &*found : nullptr;
}

bool IsMany(const Option &option) { return std::holds_alternative<std::vector<std::string> *>(option.To); }

// The value of a place, by its number; the last one of many takes all that follow.
const Option *PlaceAt(const Command &command, size_t number)
{
    for (const Option &option : command.Options) {
        if (!IsPlace(option)) continue;
        if (number == 0 || IsMany(option)) return &option;
        --number;
    }
    return nullptr;
}

void Take(Position &position, const std::string &word)
{
    const bool isOption = !position.IsBehindDashes && word.size() > 1 && word[0] == '-';
    if (position.Wants != nullptr) {
        const Option &option = *position.Wants;
        position.Wants = nullptr;
        if (!option.IsValueOptional || !isOption) {
            position.Values.Values[option.Name] = word;
            return;
        }
    }
    if (word == "--" && !position.IsBehindDashes) {
        position.IsBehindDashes = true;
        return;
    }
    if (isOption) {
        const size_t sign = word.find('=');
        const Option *const option = FindOption(*position.In, word.substr(0, sign));
        if (option == nullptr) return;
        position.Values.Values[option->Name] = sign == std::string::npos ? "" : word.substr(sign + 1);
        if (sign == std::string::npos && TakesValue(*option)) position.Wants = option;
        return;
    }
    for (const Command &sub : position.In->Commands) {
        if (sub.Name != word) continue;
        position.In = &sub;
        position.Places = 0;
        return;
    }
    if (const Option *const place = PlaceAt(*position.In, position.Places++))
        position.Values.Values[place->Name] = word;
}

bool Has(const std::vector<std::string> &names, const std::string &name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Whether the option does not go with one that has been typed, or has been typed itself.
bool IsOut(const Option &option, const Position &position)
{
    const auto &typed = position.Values.Values;
    if (typed.contains(option.Name) && !IsMany(option)) return true;
    return std::any_of(typed.begin(), typed.end(), [&](const auto &one) {
        const Option *const other = FindOption(*position.In, one.first);
        return Has(option.Excludes, one.first) || (other != nullptr && Has(other->Excludes, option.Name));
    });
}

void Offer(Completion &completion, const std::string &begun, const Suggestion &word)
{
    if (word.Value.starts_with(begun)) completion.Words.push_back(word);
}

void OfferOptions(Completion &completion, const Position &position, const std::string &begun)
{
    for (const Option &option : position.In->Options) {
        if (!IsPlace(option) && !IsOut(option, position))
            Offer(completion, begun, {option.Name, option.Help});
    }
    Offer(completion, begun, {"--hilfe", "Diese Hilfe anzeigen"});
}

// `prefix` stands before each value: "--art=". Of a list only the last value is being typed.
void OfferValues(Completion &completion, const Option &option, Position &position, std::string begun,
                 std::string prefix)
{
    const size_t separator = option.Separator != 0 ? begun.rfind(option.Separator) : std::string::npos;
    if (separator != std::string::npos) {
        prefix += begun.substr(0, separator + 1);
        begun.erase(0, separator + 1);
    }
    position.Values.Begun = begun;
    std::vector<Suggestion> words;
    for (const std::string &word : option.Words) {
        words.push_back({word, ""});
    }
    if (option.Suggestions) {
        const std::vector<Suggestion> more = option.Suggestions(position.Values);
        words.insert(words.end(), more.begin(), more.end());
    }
    for (const Suggestion &word : words) {
        Offer(completion, prefix + begun, {prefix + word.Value, word.Help});
    }
    completion.Also = option.Names;
}

void OfferAll(Completion &completion, Position &position, const std::string &begun)
{
    const bool isOption = !position.IsBehindDashes && begun.starts_with('-');
    if (position.Wants != nullptr && !(position.Wants->IsValueOptional && isOption)) {
        OfferValues(completion, *position.Wants, position, begun, "");
        return;
    }
    const size_t sign = begun.find('=');
    if (isOption && sign != std::string::npos) {
        const Option *const option = FindOption(*position.In, begun.substr(0, sign));
        if (option != nullptr && TakesValue(*option))
            OfferValues(completion, *option, position, begun.substr(sign + 1), begun.substr(0, sign + 1));
        return;
    }
    if (!isOption) {
        for (const Command &sub : position.In->Commands) {
            Offer(completion, begun, {sub.Name, sub.Description});
        }
        const Option *const place = PlaceAt(*position.In, position.Places);
        if (place != nullptr) OfferValues(completion, *place, position, begun, "");
    }
    const bool hasNothing = completion.Words.empty() && completion.Also == Named::Nothing;
    if (!position.IsBehindDashes && (isOption || (hasNothing && begun.empty())))
        OfferOptions(completion, position, begun);
}

} // namespace

Completion CompletionOf(const Tool &tool, const std::vector<std::string> &words)
{
    Completion completion;
    Position position;
    position.In = &tool.Root;
    try {
        for (size_t i = 0; i + 1 < words.size(); ++i) {
            Take(position, words[i]);
        }
        OfferAll(completion, position, words.empty() ? "" : words.back());
        if (&tool.Root == position.In && !words.empty() && words.back().starts_with("-"))
            Offer(completion, words.back(), {"--version", "Die Version anzeigen"});
    } catch (const std::exception &) { // books that are not there, or not to be read
    }
    return completion;
}

std::string CompletionLines(const Completion &completion)
{
    std::string lines;
    for (const Suggestion &word : completion.Words) {
        lines += Printable(word.Value);
        if (!word.Help.empty()) lines += "\t" + Printable(word.Help);
        lines += "\n";
    }
    if (completion.Also == Named::File) lines += ":dateien\n";
    if (completion.Also == Named::Directory) lines += ":verzeichnisse\n";
    return lines;
}

} // namespace tools
