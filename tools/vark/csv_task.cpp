#include "tools/vark/csv_task.h"

#include "tools/common/exit_codes.h"
#include "tools/common/json.h"
#include "tools/common/system.h"
#include "tools/common/terminal.h"
#include "tools/common/text_table.h"
#include "tools/common/workplace.h"

#include <cerrno>
#include <chrono>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

namespace cli {

using namespace tools;
namespace fs = std::filesystem;

struct TaskReport::State {
    const TaskOptions &Options;
    const TaskWords &Words;
    rapidjson::OStreamWrapper Stream;
    JsonWriter Json;
    // Refused lines as they came, with the reason above each, so that they can be put right and tried again.
    // They go aside, and take the place of a file at the end; a pipe gets them as they come.
    std::optional<FileInWork> Rejections = {};
    std::ofstream RejectionStream = {};
    bool AreRejectionsLost = false;
    int64_t Done = 0;
    int64_t Refused = 0;
    int64_t Cut = 0;
    std::map<std::string, int64_t> Reasons = {};
    std::vector<std::string> Results = {};

    State(const TaskOptions &options, const TaskWords &words)
        : Options(options), Words(words), Stream(std::cout), Json(Stream)
    {}

    void TellRow(const Outcome &outcome, const std::vector<CsvLine> &lines);
    void TellRefusal(const Outcome &outcome, const std::vector<CsvLine> &lines);
    void RejectLines(const Outcome &outcome, const std::vector<CsvLine> &lines);
    void TellReasons() const;
    void Reject(const std::string &text);
    void KeepRejections();
    void LoseRejections(const char *reason);
};

namespace {

// "Zeile 3", "Zeilen 3 bis 5"
std::string PlaceOf(const std::vector<CsvLine> &lines)
{
    const std::string first = std::to_string(lines.front().Number);
    return lines.size() == 1 ? "Zeile " + first
                             : "Zeilen " + first + " bis " + std::to_string(lines.back().Number);
}

} // namespace

TaskReport::TaskReport(const TaskOptions &options, const TaskWords &words, const std::string &headings)
    : state(std::make_unique<State>(options, words))
{
    if (!options.Rejections.empty()) {
        const fs::path path = fs::absolute(options.Rejections);
        const bool isStream = fs::exists(path) && !fs::is_regular_file(path) && !fs::is_directory(path);
        if (isStream) {
            state->RejectionStream.open(path, std::ios::binary);
            if (!state->RejectionStream) ThrowFileError(path, "Schreiben", errno);
        } else {
            state->Rejections.emplace(path, true);
        }
        // A comment, so that the file can be used as it stands.
        state->Reject(std::string("# Abgelehnte ") + words.Many +
                      "; der Grund steht jeweils in der Zeile darüber.\n" + headings + '\n');
    }
    if (options.As == Output::Csv) std::cout << "Zeile;Code;Ergebnis;Grund\n";
    if (options.As != Output::Json) return;
    state->Json.SetIndent(' ', 2);
    state->Json.StartObject();
    state->Json.Key("abgelehnt");
    state->Json.StartArray();
}

TaskReport::~TaskReport() { state->KeepRejections(); }

// What is done stays done, and the rest is to be done: it is told what became of each line all the same.
void TaskReport::State::LoseRejections(const char *reason)
{
    std::cerr << "vark: " << reason << '\n';
    AreRejectionsLost = true;
    Rejections.reset();
    RejectionStream.close();
}

void TaskReport::State::Reject(const std::string &text)
{
    try {
        if (Rejections) Rejections->Write(text.data(), text.size());
        if (!RejectionStream.is_open()) return;
        if (!(RejectionStream << text << std::flush)) ThrowFileError(Options.Rejections, "Schreiben", errno);
    } catch (const std::exception &error) {
        LoseRejections(error.what());
    }
}

void TaskReport::State::KeepRejections()
{
    if (!Rejections) return;
    try {
        Rejections->Finish();
        Rejections.reset();
    } catch (const std::exception &error) {
        LoseRejections(error.what());
    }
}

void TaskReport::State::TellRow(const Outcome &outcome, const std::vector<CsvLine> &lines)
{
    if (!lines.empty()) std::cout << lines.front().Number;
    std::cout << ';' << outcome.Code << ';' << CsvField(outcome.Result) << ';' << CsvField(outcome.Reason)
              << '\n';
}

void TaskReport::State::TellRefusal(const Outcome &outcome, const std::vector<CsvLine> &lines)
{
    if (Options.As == Output::Csv) return;
    if (Options.As == Output::Table) {
        std::cerr << (lines.empty() ? Words.NotDone : PlaceOf(lines)) << ": " << outcome.Reason << '\n';
        return;
    }
    Json.StartObject();
    if (!lines.empty()) Put(Json, "zeile", static_cast<int64_t>(lines.front().Number));
    Put(Json, "code", outcome.Code);
    Put(Json, "grund", outcome.Reason);
    if (lines.size() == 1) Put(Json, "inhalt", lines.front().Text);
    if (lines.size() > 1) Put(Json, "bisZeile", static_cast<int64_t>(lines.back().Number));
    Json.EndObject();
}

void TaskReport::State::RejectLines(const Outcome &outcome, const std::vector<CsvLine> &lines)
{
    if (lines.empty()) return;
    std::string text = "# " + PlaceOf(lines) + ": " + outcome.Reason + '\n';
    for (const CsvLine &line : lines) {
        text += line.Text + '\n';
    }
    Reject(text);
}

void TaskReport::Add(const Outcome &outcome, const std::vector<CsvLine> &lines)
{
    if (state->Options.As == Output::Csv) state->TellRow(outcome, lines);
    if (outcome.Reason.empty()) {
        if (!outcome.Remark.empty()) {
            std::cerr << (lines.empty() ? std::string("Erledigt") : PlaceOf(lines))
                      << ": Die Bibliothek meldet dazu: " << outcome.Remark << '\n';
        }
        ++state->Done;
        if (outcome.IsCut) ++state->Cut;
        if (!outcome.Result.empty()) state->Results.push_back(outcome.Result);
        return;
    }
    ++state->Refused;
    ++state->Reasons[outcome.Reason];
    state->TellRefusal(outcome, lines);
    state->RejectLines(outcome, lines);
}

void TaskReport::State::TellReasons() const
{
    TextTable table{{{"Anzahl", Align::Right}, {"Grund"}}, {}};
    std::vector<std::pair<int64_t, std::string>> sorted;
    for (const auto &[reason, count] : Reasons) {
        sorted.emplace_back(count, reason);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto &a, const auto &b) { return a.first > b.first; });
    for (const auto &[count, reason] : sorted) {
        table.Add({Grouped(count), reason});
    }
    std::cout << '\n';
    table.Print(std::cout);
}

int TaskReport::End(double seconds)
{
    state->KeepRejections();
    const int exitCode = state->Refused > 0 || state->AreRejectionsLost ? ExitRefused : ExitGood;
    if (state->Options.As == Output::Csv) return exitCode;
    if (state->Options.As == Output::Json) {
        JsonWriter &json = state->Json;
        json.EndArray();
        Put(json, "ergebnisse");
        json.StartArray();
        for (const std::string &result : state->Results) {
            json.String(result.c_str());
        }
        json.EndArray();
        Put(json, state->Words.Key, state->Done);
        Put(json, "gekuerzt", state->Cut);
        json.Key("sekunden");
        json.Double(seconds);
        json.EndObject();
        std::cout << '\n';
        return exitCode;
    }
    // The refusal of a single piece of work says everything.
    const bool isAlone = state->Options.File.empty();
    if (state->Options.IsQuiet || (isAlone && state->Refused > 0)) return exitCode;
    if (isAlone && !state->Results.empty()) {
        std::cout << state->Results.front() << ' ' << state->Words.Done << ".\n";
        return exitCode;
    }
    std::cout << Grouped(state->Done) << ' ' << (state->Done == 1 ? state->Words.One : state->Words.Many)
              << ' ' << state->Words.Done << ", " << Grouped(state->Refused) << " abgelehnt.\n";
    if (state->Cut > 0) std::cout << Grouped(state->Cut) << " davon mit gekürztem Text.\n";
    // A single reason has just been told.
    if (state->Refused > 1) state->TellReasons();
    return exitCode;
}

struct CsvSource::State {
    std::ifstream File = {};
    std::istream *In = &std::cin;
    double Size = 0; // 0: unknown
    double Read = 0;
    ProgressBar Bar;
    std::chrono::steady_clock::time_point Begin = std::chrono::steady_clock::now();
};

CsvSource::CsvSource(const TaskOptions &options, const TaskWords &words)
    : state(new State{.Bar = ProgressBar(words.Title)})
{
    if (options.File == "-") return;
    state->File.open(options.File, std::ios::binary);
    if (!state->File) ThrowFileError(options.File, "Lesen", errno);
    if (fs::is_directory(options.File)) ThrowFileError(options.File, "Lesen", EISDIR);
    state->In = &state->File;
    std::error_code unknown;
    state->Size = static_cast<double>(std::filesystem::file_size(options.File, unknown));
    if (unknown) state->Size = 0;
}

CsvSource::~CsvSource() = default;

bool CsvSource::Read(CsvLine &line)
{
    if (!ReadCsvLine(*state->In, line)) {
        state->Bar.Hide();
        return false;
    }
    state->Read += static_cast<double>(line.Text.size() + 1);
    if (state->Size > 0) state->Bar.Show(std::min(state->Read / state->Size, 0.999));
    return true;
}

bool CsvSource::IsBroken() const { return state->In->bad(); }

bool CsvSource::IsReady() const
{
    if (state->Size > 0 || state->In->rdbuf()->in_avail() > 0) return true;
    if (state->In != &std::cin) return false;
    return IsInputReady();
}

void CsvSource::HideBar() { state->Bar.Hide(); }

double CsvSource::Seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - state->Begin).count();
}

void CheckFiles(const TaskOptions &options)
{
    std::error_code missing;
    if (options.Rejections.empty() || options.File == "-") return;
    if (fs::equivalent(options.File, options.Rejections, missing))
        throw UsageError(
            "--abgelehnt und --datei nennen dieselbe Datei: Eine Ausgabe ersetzt nie ihre Eingabe.");
}

void TellEarlyEnd(const std::string &reason, long number)
{
    std::cerr << "vark: " << reason << " Bis Zeile " << number
              << " ist alles erledigt oder abgelehnt, danach nichts begonnen.\n";
}

int RefuseHeadings(long number, const std::string &fault, const std::vector<const char *> &known)
{
    if (number == 0) {
        std::cerr << "vark: Die Datei ist leer; die erste Zeile muß die Spalten nennen.\n";
        return ExitUsage;
    }
    std::cerr << "vark: Zeile " << number << ": " << fault << "\nDie erste Zeile nennt die Spalten: ";
    for (const char *heading : known) {
        std::cerr << (heading == known.front() ? "" : ";") << heading;
    }
    std::cerr << '\n';
    return ExitUsage;
}

} // namespace cli
