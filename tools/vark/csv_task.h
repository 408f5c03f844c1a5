// Work that comes as lines of a CSV file: headings that say which column is what, lines that are done one by
// one or in groups, what was refused and why, and an account of it at the end.
#pragma once

#include "tools/common/row_writer.h"
#include "tools/common/texts.h"
#include "tools/vark/csv.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace cli {

// What came of one piece of work.
struct Outcome {
    int Code = 0;            // of the library; 0 where it was not asked
    std::string Reason;      // empty: done
    bool IsCut = false;      // a text was longer than the books keep
    std::string Result = {}; // what it was done to, where that is worth telling: "Debitor 10401"
};

// How the account of the work names it.
struct TaskWords {
    const char *One;     // "Buchung"
    const char *Many;    // "Buchungen"
    const char *Done;    // "in den Stapel geschrieben"
    const char *NotDone; // "Nicht gebucht"
    const char *Key;     // of JSON, "gebucht"
    const char *Title;   // of the progress bar, "Buchen"
};

struct TaskOptions {
    std::filesystem::path File;              // empty: no file, one piece of work; "-": standard input
    std::filesystem::path Rejections;        // where refused lines go as CSV, empty for nowhere
    tools::Output As = tools::Output::Table; // as CSV and JSON for programs
    bool IsQuiet = false;                    // no summary
};

// Tells what becomes of the work: refusals on standard error as they come and a summary; as CSV a row for
// each piece of work; or all of it as JSON.
struct TaskReport {
    // `headings` is the first line of the file, for that of the rejections.
    TaskReport(const TaskOptions &options, const TaskWords &words, const std::string &headings = {});
    ~TaskReport();
    TaskReport(const TaskReport &) = delete;
    TaskReport &operator=(const TaskReport &) = delete;

    // What was done, or why not. `lines` are those of the file that it came from, none without a file.
    void Add(const Outcome &outcome, const std::vector<CsvLine> &lines);
    // The summary. Returns the exit code: 1 when something was refused.
    int End(double seconds);

private:
    struct State;
    std::unique_ptr<State> state;
};

template <typename Text> struct CsvColumn {
    const char *Heading;
    std::string Text::*Field;
    bool IsNeeded;
};

// A task over lines that become `Text`.
template <typename Text> struct CsvTask {
    const TaskOptions &Options;
    const TaskWords &Words;
    std::span<const CsvColumn<Text>> Columns;
    Text Defaults; // what columns leave empty
    // Whether a line goes on with the work of the one before it; none: each line stands alone.
    std::function<bool(const Text &before, const Text &line)> GoesOn;
    std::function<Outcome(const std::vector<Text> &)> Do;
};

// The lines of the file that the options name, with a bar on the terminal that shows how far they are read.
struct CsvSource {
    // A file that cannot be read is an exception.
    CsvSource(const TaskOptions &options, const TaskWords &words);
    ~CsvSource();
    CsvSource(const CsvSource &) = delete;
    CsvSource &operator=(const CsvSource &) = delete;

    bool Read(CsvLine &line);
    // Takes the bar away, so that something can be told.
    void HideBar();
    double Seconds() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

// Tells what is wrong with the headings, and which there are. Returns ExitUsage.
int RefuseHeadings(long number, const std::string &fault, const std::vector<const char *> &known);

// Where the columns of a file lie. What is wrong with its headings; empty when `places` has been filled.
template <typename Text>
std::string ReadHeadings(const CsvTask<Text> &task, const CsvLine &line,
                         std::vector<std::string Text::*> &places)
{
    const auto isTaken = [&places](std::string Text::*field) {
        return std::find(places.begin(), places.end(), field) != places.end();
    };
    if (!line.Fault.empty()) return line.Fault;
    for (const std::string &heading : line.Fields) {
        const auto found =
            std::find_if(task.Columns.begin(), task.Columns.end(), [&](const CsvColumn<Text> &column) {
                return tools::Lower(column.Heading) == tools::Lower(heading);
            });
        if (found == task.Columns.end()) return "Unbekannte Spalte „" + heading + "“.";
        if (isTaken(found->Field)) return "Die Spalte „" + heading + "“ kommt zweimal vor.";
        places.push_back(found->Field);
    }
    for (const CsvColumn<Text> &column : task.Columns) {
        if (column.IsNeeded && !isTaken(column.Field) && (task.Defaults.*column.Field).empty()) {
            return std::string("Es fehlt die Spalte „") + column.Heading + "“.";
        }
    }
    return {};
}

// Runs the task over its file. Returns the exit code: 0 all done, 1 some refused, 2 the file has no usable
// headings. A file that cannot be read is an exception.
template <typename Text> int RunCsv(const CsvTask<Text> &task)
{
    CsvSource source(task.Options, task.Words);
    CsvLine line;
    std::vector<const char *> known;
    for (const CsvColumn<Text> &column : task.Columns) {
        known.push_back(column.Heading);
    }
    if (!source.Read(line)) return RefuseHeadings(0, "", known);
    std::vector<std::string Text::*> places;
    const std::string unusable = ReadHeadings(task, line, places);
    if (!unusable.empty()) return RefuseHeadings(line.Number, unusable, known);

    TaskReport report(task.Options, task.Words, line.Text);
    std::vector<Text> work;
    std::vector<CsvLine> lines; // that the work came from
    std::string fault;
    const auto finish = [&] {
        if (lines.empty()) return;
        Outcome outcome;
        outcome.Reason = fault;
        if (fault.empty()) outcome = task.Do(work);
        if (!outcome.Reason.empty()) source.HideBar();
        report.Add(outcome, lines);
        work.clear();
        lines.clear();
        fault.clear();
    };
    bool isBehindFault = false;
    while (source.Read(line)) {
        Text text = task.Defaults;
        std::string ownFault = line.Fault;
        if (ownFault.empty() && line.Fields.size() != places.size()) {
            ownFault = "Die Zeile hat " + std::to_string(line.Fields.size()) + " statt " +
                       std::to_string(places.size()) + " Spalten.";
        }
        for (size_t i = 0; ownFault.empty() && i < places.size(); ++i) {
            if (!line.Fields[i].empty()) text.*places[i] = line.Fields[i];
        }
        // Where lines belong together, one that cannot be read may belong to those before and behind it:
        // neither must be done without it.
        const bool goesOn =
            task.GoesOn && (!ownFault.empty() || (!work.empty() && task.GoesOn(work.back(), text)));
        if (!goesOn) finish();
        if (fault.empty()) fault = ownFault;
        if (task.GoesOn && !goesOn && isBehindFault)
            fault = "Die Zeile davor ist nicht zu lesen und gehört vielleicht dazu.";
        isBehindFault = !ownFault.empty();
        if (ownFault.empty()) work.push_back(std::move(text));
        lines.push_back(line);
    }
    finish();
    return report.End(source.Seconds());
}

} // namespace cli
