// Work that comes as lines of a CSV file: headings that say which column is what, lines that are done one by
// one or in groups, what was refused and why, and an account of it at the end.
#pragma once

#include "tools/common/exit_codes.h"
#include "tools/common/row_writer.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"
#include "tools/vark/booking_group.h"
#include "tools/vark/csv.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace cli {

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
    std::filesystem::path Rejections;        // where refused lines go as CSV, empty for nowhere; it takes the
                                             // place of a file at the end
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
    // The summary. Returns the exit code: 1 when something was refused, or the rejections could not be kept.
    // Without it the rejections so far are kept all the same.
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
    // What names the books that a line goes into, where many may be written down together; none: one by one.
    std::string Text::*Place = nullptr;
};

// A piece of work, with the lines that it came from.
template <typename Text> struct CsvPiece {
    std::vector<Text> Work;
    std::vector<CsvLine> Lines;
    std::string Fault; // why it is not even tried
};

// The lines of the file that the options name, with a bar on the terminal that shows how far they are read.
struct CsvSource {
    // A file that cannot be read is an exception.
    CsvSource(const TaskOptions &options, const TaskWords &words);
    ~CsvSource();
    CsvSource(const CsvSource &) = delete;
    CsvSource &operator=(const CsvSource &) = delete;

    bool Read(CsvLine &line);
    // Whether there are no more lines because they cannot be read.
    bool IsBroken() const;
    // Whether the next line is there already; where it is waited for, what was read is to be done first.
    bool IsReady() const;
    // Takes the bar away, so that something can be told.
    void HideBar();
    double Seconds() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

// Throws a UsageError where the rejections would take the place of the lines.
void CheckFiles(const TaskOptions &options);

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

// How many pieces are read before they are done.
inline constexpr size_t mostPieces = 1000;

// Tells how far it came, and why no farther.
void TellEarlyEnd(const std::string &reason, long number);

// Does the pieces and tells what became of them.
template <typename Text>
void DoPieces(const CsvTask<Text> &task, const std::vector<CsvPiece<Text>> &pieces, CsvSource &source,
              TaskReport &report)
{
    GroupedWork work;
    work.Count = pieces.size();
    work.Do = [&](size_t index) {
        const CsvPiece<Text> &piece = pieces[index];
        Outcome outcome;
        outcome.Reason = piece.Fault;
        try {
            if (piece.Fault.empty()) return task.Do(piece.Work);
        } catch (const std::exception &error) { // before anything of it was written
            outcome.Reason = error.what();
        }
        return outcome;
    };
    if (task.Place != nullptr) {
        work.Place = [&](size_t index) {
            return pieces[index].Work.empty() ? std::string() : pieces[index].Work.front().*task.Place;
        };
    }
    work.Tell = [&](size_t index, const Outcome &outcome) {
        if (!outcome.Reason.empty() || !outcome.Remark.empty()) source.HideBar();
        report.Add(outcome, pieces[index].Lines);
    };
    DoInGroups(work);
}

// Runs the task over its file. Returns the exit code: 0 all done, 1 some refused, 2 the file has no usable
// headings, 3 it could not be read to its end. A file that cannot be read at all is an exception.
template <typename Text> int RunCsv(const CsvTask<Text> &task)
{
    CheckFiles(task.Options);
    tools::CatchInterrupts(); // a line that is being booked is finished first
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
    std::vector<CsvPiece<Text>> pieces;
    const auto doPieces = [&] {
        DoPieces<Text>(task, pieces, source, report);
        pieces.clear();
    };
    bool isBehindFault = false;
    bool isInterrupted = false;
    while (!isInterrupted && source.Read(line)) {
        Text text = task.Defaults;
        std::string fault = line.Fault;
        if (fault.empty() && line.Fields.size() != places.size()) {
            fault = "Die Zeile hat " + std::to_string(line.Fields.size()) + " statt " +
                    std::to_string(places.size()) + " Spalten.";
        }
        for (size_t i = 0; fault.empty() && i < places.size(); ++i) {
            if (!line.Fields[i].empty()) text.*places[i] = line.Fields[i];
        }
        // Where lines belong together, one that cannot be read may belong to those before and behind it:
        // neither must be done without it.
        const bool goesOn =
            task.GoesOn && !pieces.empty() &&
            (!fault.empty() || (!pieces.back().Work.empty() && task.GoesOn(pieces.back().Work.back(), text)));
        if (!goesOn) {
            // Of lines that belong together the last piece may not be whole yet.
            if (pieces.size() >= mostPieces || (!task.GoesOn && !source.IsReady())) doPieces();
            pieces.emplace_back();
            if (task.GoesOn && isBehindFault)
                pieces.back().Fault = "Die Zeile davor ist nicht zu lesen und gehört vielleicht dazu.";
        }
        CsvPiece<Text> &piece = pieces.back();
        if (piece.Fault.empty()) piece.Fault = fault;
        isBehindFault = !fault.empty();
        if (fault.empty()) piece.Work.push_back(std::move(text));
        piece.Lines.push_back(line);
        isInterrupted = tools::IsInterrupted();
    }
    doPieces();
    const int exitCode = report.End(source.Seconds());
    if (isInterrupted) {
        TellEarlyEnd("abgebrochen.", line.Number);
        return tools::ExitInterrupted;
    }
    if (!source.IsBroken()) return exitCode;
    TellEarlyEnd(task.Options.File.string() + " läßt sich nicht weiter lesen.", line.Number);
    return tools::ExitFailure;
}

} // namespace cli
