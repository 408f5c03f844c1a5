#include "tools/books/perform.h"

#include "tools/books/load_report.h"
#include "tools/common/exit_codes.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"

#include <cstdio>
#include <iostream>

namespace books {

namespace {

// Runs `work` with a progress bar, which is gone when it is done.
template <typename Work> auto WithBar(const char *title, Work work)
{
    tools::ProgressBar bar(title);
    return work([&bar](double part) {
        tools::ThrowIfInterrupted();
        bar.Show(part);
    });
}

std::string FullPath(const std::filesystem::path &path)
{
    return std::filesystem::absolute(path).lexically_normal().string();
}

// Books without templates are good books; that no report can be had of them is better said at once.
void TellOfTemplates(bool areThere)
{
    if (areThere) return;
    std::fputs("books: Neben dem Programm liegen keine Berichtsvorlagen (templates); aus diesen Büchern gibt "
               "es keine Berichte.\n",
               stderr);
}

// The one object that a command which makes or moves books prints for programs.
void PrintSummaryJson(const std::string &place,
                      std::initializer_list<std::pair<const char *, int64_t>> counts)
{
    rapidjson::OStreamWrapper stream(std::cout);
    tools::JsonWriter json(stream);
    json.StartObject();
    tools::Put(json, "ziel", place);
    for (const auto &[name, count] : counts) {
        tools::Put(json, name, count);
    }
    json.EndObject();
    std::cout << '\n';
}

} // namespace

int MakeSampleBooks(const SampleOptions &options, bool isJson)
{
    const std::string place = FullPath(options.Directory);
    const SampleSummary summary =
        WithBar("Bücher anlegen", [&](const auto &progress) { return MakeSample(options, progress); });
    tools::AnswerByExitCode();
    TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        PrintSummaryJson(place, {{"verzeichnisse", summary.Directories},
                                 {"buchungen", summary.Postings},
                                 {"saetze", summary.Records}});
        return tools::ExitGood;
    }
    std::cout << "Bücher angelegt in " << place << ": 3 Mandanten, " << summary.Directories
              << " Jahresverzeichnisse, " << tools::Grouped(summary.Postings) << " endgültige Buchungen, "
              << tools::Grouped(summary.Records) << " Datensätze.\n"
              << "Mit VARK_CONFIG_DIR=" << place << " arbeitet VARK40 in diesen Büchern.\n";
    return tools::ExitGood;
}

int CheckAndTell(const CheckOptions &options)
{
    tools::ProgressBar bar("Prüfen");
    return CheckBooks(options, [&bar](double part) {
        tools::ThrowIfInterrupted();
        bar.Show(part);
        if (part >= 1) bar.Hide();
    });
}

int SaveAndTell(const SaveOptions &options, bool isJson)
{
    tools::EndWithAWordOnDamage();
    const SaveSummary summary =
        WithBar("Sichern", [&](const auto &progress) { return SaveBooks(options, progress); });
    if (options.To == "-") return tools::ExitGood;
    tools::AnswerByExitCode();
    if (isJson) {
        PrintSummaryJson(FullPath(options.To), {{"tabellen", summary.Tables}, {"saetze", summary.Records}});
    } else {
        std::cout << "Gesichert nach " << FullPath(options.To) << ": " << summary.Tables
                  << (summary.Tables == 1 ? " Tabelle, " : " Tabellen, ") << tools::Grouped(summary.Records)
                  << (summary.Records == 1 ? " Satz.\n" : " Sätze.\n");
    }
    return tools::ExitGood;
}

int LoadAndTell(const LoadOptions &options, bool isJson)
{
    tools::EndWithAWordOnDamage();
    const LoadSummary summary =
        WithBar("Laden", [&](const auto &progress) { return LoadBooks(options, progress); });
    tools::AnswerByExitCode();
    if (summary.IsLoaded) TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        PrintLoadJson(summary);
    } else {
        PrintLoad(summary, options);
    }
    return summary.Refused == 0 ? tools::ExitGood : tools::ExitRefused;
}

int CopyAndTell(const CopyOptions &options, bool isJson)
{
    tools::EndWithAWordOnDamage();
    const std::string place = FullPath(options.To);
    const CopySummary summary =
        WithBar("Kopieren", [&](const auto &progress) { return CopyBooks(options, progress); });
    tools::AnswerByExitCode();
    TellOfTemplates(summary.HasTemplates);
    if (isJson) {
        PrintSummaryJson(
            place, {{"verzeichnisse", summary.Directories}, {"bytes", static_cast<int64_t>(summary.Bytes)}});
    } else {
        std::cout << "Kopiert nach " << place << ": " << summary.Directories << " Verzeichnisse, "
                  << tools::Grouped(static_cast<int64_t>(summary.Bytes >> 20)) << " MiB.\n"
                  << "Mit VARK_CONFIG_DIR=" << place << " arbeitet VARK40 in der Kopie.\n";
    }
    return tools::ExitGood;
}

} // namespace books
