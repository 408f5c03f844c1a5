#include "tools/common/manual.h"

#include "tools/common/roff.h"

namespace tools {

namespace {

struct PageMaker {
    const Tool &Of;
    const std::string &Date;
    std::vector<ManualPage> Pages;
};

std::string PageName(const std::string &path)
{
    std::string name = path;
    for (char &character : name) {
        if (character == ' ') character = '-';
    }
    return name;
}

std::string Bold(const std::string &text) { return "\\fB" + Roff(text) + "\\fR"; }

std::string Entry(const std::string &name, const std::string &value, const std::string &meaning)
{
    return ".TP\n" + Bold(name) + (value.empty() ? "" : " \\fI" + Roff(value) + "\\fR") + "\n" +
           Roff(meaning) + "\n";
}

std::string OptionEntries(const Command &command, bool isRoot)
{
    std::string places;
    std::string options;
    for (const auto &[name, help] : CommonOptions(isRoot)) {
        options += Entry(name, "", help);
    }
    for (const Option &option : command.Options) {
        (IsPlace(option) ? places : options) +=
            Entry(option.Name, IsPlace(option) ? "" : ValueWord(option), FullHelp(command, option));
    }
    return (places.empty() ? "" : ".SH ANGABEN\n" + places) + ".SH OPTIONEN\n" + options;
}

std::string SeeAlso(const Tool &tool, const Command &command, const std::string &path)
{
    std::vector<std::string> pages;
    const size_t parent = path.rfind(' ');
    if (parent != std::string::npos) pages.push_back(PageName(path.substr(0, parent)) + "(1)");
    for (const Command &sub : command.Commands) {
        pages.push_back(PageName(path + " " + sub.Name) + "(1)");
    }
    pages.insert(pages.end(), tool.SeeAlso.begin(), tool.SeeAlso.end());
    std::string text = ".SH SIEHE AUCH\n";
    for (const std::string &page : pages) {
        const size_t section = page.find('(');
        text += ".BR " + Roff(page.substr(0, section)) + " " + page.substr(section) +
                (&page == &pages.back() ? "\n" : ",\n");
    }
    return text;
}

void AddPage(PageMaker &maker, const Command &command, const std::string &path)
{
    const Tool &tool = maker.Of;
    const bool isRoot = &command == &tool.Root;
    const std::string name = PageName(path);
    std::string text = RoffTitle(name, 1, maker.Date, tool.Version);
    text += ".SH NAME\n" + Roff(name) + " \\- " + Roff(command.Description) + "\n";
    text += ".SH ÜBERSICHT\n" + Bold(path) + " " + Roff(UsageOf(command)) + "\n";
    text += ".SH BESCHREIBUNG\n" +
            RoffParagraphs(command.Notes.empty() ? command.Description + "." : command.Notes);
    text += OptionEntries(command, isRoot);
    if (!command.Commands.empty()) text += ".SH BEFEHLE\n";
    for (const Command &sub : command.Commands) {
        text += Entry(sub.Name, "", sub.Description);
    }
    text += ".SH RÜCKGABEWERT\n";
    for (const auto &[code, meaning] : tool.ExitCodes) {
        text += Entry(std::to_string(code), "", meaning);
    }
    if (isRoot) {
        for (const Topic &topic : tool.Topics) {
            text += ".SH " + Roff(topic.Title) + "\n";
            for (const auto &[entry, meaning] : topic.Entries) {
                text += Entry(entry, "", meaning);
            }
        }
    }
    if (!command.Examples.empty()) {
        std::string lines;
        for (const std::string &example : command.Examples) {
            lines += example + "\n";
        }
        text += command.Examples.size() == 1 ? ".SH BEISPIEL\n" : ".SH BEISPIELE\n";
        text += RoffLines(lines);
    }
    text += SeeAlso(tool, command, path);
    maker.Pages.push_back({name + ".1", text});
    for (const Command &sub : command.Commands) {
        AddPage(maker, sub, path + " " + sub.Name);
    }
}

} // namespace

std::vector<ManualPage> ManualPages(const Tool &tool, const std::string &date)
{
    PageMaker maker = {tool, date, {}};
    AddPage(maker, tool.Root, tool.Root.Name);
    return maker.Pages;
}

} // namespace tools
