#include "tools/books/check.h"

#include "tools/books/apart.h"
#include "tools/books/findings.h"
#include "tools/books/place.h"
#include "tools/books/snapshot.h"
#include "tools/common/exit_codes.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

struct Gathered {
    std::vector<Finding> Shown;
    std::vector<Finding> Remarks;
    std::map<std::pair<std::string, std::string>, int64_t> CountOf; // of a rule in a table of a directory
    std::map<std::pair<std::string, std::string>, int64_t> RemarksOf;
    int64_t All = 0;
    int64_t AllRemarks = 0;
    int64_t Records = 0;
    int Directories = 0;
};

void Gather(Gathered &gathered, Finding finding, bool isRemark, int64_t mostPerRule)
{
    ++(isRemark ? gathered.AllRemarks : gathered.All);
    auto &counts = isRemark ? gathered.RemarksOf : gathered.CountOf;
    const int64_t count = ++counts[{finding.Directory + "/" + finding.Table, finding.Rule}];
    if (count <= mostPerRule) (isRemark ? gathered.Remarks : gathered.Shown).push_back(std::move(finding));
}

// Adds what was gathered of one directory.
void Add(Gathered &all, Gathered &&one)
{
    const auto move = [](std::vector<Finding> &to, std::vector<Finding> &from) {
        std::move(from.begin(), from.end(), std::back_inserter(to));
    };
    move(all.Shown, one.Shown);
    move(all.Remarks, one.Remarks);
    all.CountOf.merge(one.CountOf);
    all.RemarksOf.merge(one.RemarksOf);
    all.All += one.All;
    all.AllRemarks += one.AllRemarks;
    all.Records += one.Records;
    ++all.Directories;
}

Finding Parse(const std::string &line)
{
    Finding finding;
    std::string *parts[] = {&finding.Directory, &finding.Table, &finding.Key,
                            &finding.Field,     &finding.Rule,  &finding.Text};
    size_t at = 0;
    for (std::string *part : parts) {
        const size_t end = line.find('\x1F', at);
        *part = line.substr(at, end - at);
        at = end + 1;
    }
    return finding;
}

// What a reading process has told so far.
struct Told {
    Gathered Of;
    std::string Table;   // that it was reading last
    std::string Stopped; // why it could not go on, though the books are not to blame
};

void TakeLine(Told &told, char kind, const std::string &line, int64_t mostPerRule)
{
    switch (kind) {
    case 'F':
    case 'H': Gather(told.Of, Parse(line), kind == 'H', mostPerRule); return;
    case 'R': told.Table = line; return;
    case 'S': told.Stopped = line; return;
    default: told.Of.Records += std::stoll(line); return;
    }
}

// Has the process read, and gives what it finds. However that ends, this goes on. Throws when the books
// could not be read through no fault of theirs.
Gathered ReadAndGather(const Reading &reading, int64_t mostPerRule)
{
    Told told;
    std::string pending;
    const ReadingEnd end = ReadApart(reading, [&](std::string_view piece) {
        pending += piece;
        size_t start = 0;
        for (size_t line; (line = pending.find('\n', start)) != std::string::npos; start = line + 1) {
            TakeLine(told, pending[start], pending.substr(start + 1, line - start - 1), mostPerRule);
        }
        pending.erase(0, start);
    });
    if (!told.Stopped.empty()) throw std::runtime_error(told.Stopped);
    if (end.IsWhole) return std::move(told.Of);
    std::string text = "beim Lesen ist der Prozeß abgebrochen";
    if (!end.Reason.empty()) text += " (" + end.Reason + ")";
    text += "; die Datei ist beschädigt";
    Gather(told.Of, {reading.Name, told.Table, "", "", "lesbar", text}, false, mostPerRule);
    return std::move(told.Of);
}

// How a store stands, as far as others' changes show: they write to its file.
struct Stamp {
    fs::file_time_type Changed;
    uintmax_t Size;
    bool IsFresh; // changed so lately that a further change may not show
};

Stamp StampOf(const fs::path &directory)
{
    constexpr std::chrono::seconds freshFor(2);
    if (IsOnServer(directory)) return {{}, 0, true};
    const fs::path books = directory / "books.mdb";
    std::error_code missing;
    const auto changed = fs::last_write_time(books, missing);
    if (missing) return {};
    const uintmax_t size = fs::file_size(books, missing);
    return {changed, size, fs::file_time_type::clock::now() - changed < freshFor};
}

bool IsChanged(const Stamp &before, const fs::path &directory)
{
    const Stamp now = StampOf(directory);
    return before.IsFresh || now.Size != before.Size || now.Changed != before.Changed;
}

// One directory. What disagrees may be two moments, when somebody worked there meanwhile; then one moment is
// copied, and the copy is checked.
Gathered CheckOne(const fs::path &data, const std::string &name, int64_t mostPerRule)
{
    const Stamp before = StampOf(data / name);
    Gathered found = ReadAndGather({data, name, data / name}, mostPerRule);
    if (found.All == 0 || !IsChanged(before, data / name)) return found;
    const Workplace workplace(fs::temp_directory_path() / "vark-pruefung");
    fs::permissions(workplace.Path, fs::perms::owner_all);
    try {
        CopyStore(data / name, workplace.Path);
    } catch (const DamagedBooks &) {
        return found;
    } catch (const EngineError &) {
        return found;
    }
    return ReadAndGather({data, name, workplace.Path}, mostPerRule);
}

std::string WhereOf(const Finding &finding)
{
    std::string place = finding.Directory;
    if (!finding.Table.empty()) {
        if (!place.empty()) place += '/';
        place += finding.Table;
    }
    if (!finding.Key.empty()) {
        place += " [";
        place += finding.Key;
        place += ']';
    }
    if (!finding.Field.empty()) {
        place += ' ';
        place += finding.Field;
    }
    return place;
}

void PrintList(const std::vector<Finding> &shown,
               const std::map<std::pair<std::string, std::string>, int64_t> &countOf, const char *prefix,
               int64_t mostPerRule)
{
    for (const Finding &finding : shown) {
        std::cout << prefix << WhereOf(finding) << ": " << finding.Text << '\n';
    }
    for (const auto &[place, count] : countOf) {
        if (count <= mostPerRule) continue;
        std::cout << prefix << place.first << ": noch " << Grouped(count - mostPerRule)
                  << " weitere der Art „" << place.second << "“\n";
    }
}

void PrintWords(const Gathered &gathered, int64_t mostPerRule)
{
    PrintList(gathered.Shown, gathered.CountOf, "", mostPerRule);
    PrintList(gathered.Remarks, gathered.RemarksOf, "Hinweis: ", mostPerRule);
    if (gathered.All + gathered.AllRemarks > 0) std::cout << '\n';
    std::cout << Grouped(gathered.Records) << " Sätze in " << gathered.Directories
              << " Verzeichnissen gelesen: ";
    if (gathered.All == 0) {
        std::cout << "alles stimmt überein";
    } else {
        std::cout << Grouped(gathered.All) << (gathered.All == 1 ? " Abweichung" : " Abweichungen");
    }
    if (gathered.AllRemarks > 0) {
        std::cout << ", " << Grouped(gathered.AllRemarks)
                  << (gathered.AllRemarks == 1 ? " Hinweis" : " Hinweise");
    }
    std::cout << ".\n";
}

void PutFindings(JsonWriter &json, const char *name, const std::vector<Finding> &findings)
{
    Put(json, name);
    json.StartArray();
    for (const Finding &finding : findings) {
        json.StartObject();
        Put(json, "verzeichnis", finding.Directory);
        Put(json, "tabelle", finding.Table);
        Put(json, "schluessel", finding.Key);
        Put(json, "feld", finding.Field);
        Put(json, "regel", finding.Rule);
        Put(json, "text", finding.Text);
        json.EndObject();
    }
    json.EndArray();
}

void PrintJson(const Gathered &gathered)
{
    rapidjson::OStreamWrapper stream(std::cout);
    JsonWriter json(stream);
    json.StartObject();
    PutFindings(json, "abweichungen", gathered.Shown);
    Put(json, "anzahl", gathered.All);
    PutFindings(json, "hinweise", gathered.Remarks);
    Put(json, "hinweiszahl", gathered.AllRemarks);
    Put(json, "saetze", gathered.Records);
    Put(json, "verzeichnisse", gathered.Directories);
    json.EndObject();
    std::cout << '\n';
}

} // namespace

int CheckBooks(const CheckOptions &options, const Progress &progress)
{
    const fs::path data = DataPathOf(options.Directory);
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(data)) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());

    Gathered gathered;
    Add(gathered, ReadAndGather({data, "", data}, options.MostPerRule));
    for (const std::string &name : names) {
        progress(static_cast<double>(gathered.Directories) / static_cast<double>(names.size() + 1));
        Add(gathered, CheckOne(data, name, options.MostPerRule));
    }
    progress(1);
    if (options.IsJson) {
        PrintJson(gathered);
    } else {
        PrintWords(gathered, options.MostPerRule);
    }
    return gathered.All == 0 ? ExitGood : ExitRefused;
}

} // namespace books
