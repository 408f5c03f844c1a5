#include "tools/books/load.h"

#include "tools/books/installation_files.h"
#include "tools/books/load_places.h"
#include "tools/books/place.h"
#include "tools/books/sequential.h"
#include "tools/books/server.h"
#include "tools/books/snapshot.h"
#include "tools/common/exit_codes.h"
#include "tools/common/fields.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"
#include "tools/common/workplace.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// Checking reads the files once, loading once more and writes: about this part of the time is checking.
constexpr double checkingPart = 0.2;
constexpr int nobody = 0; // no Mandant has this number

// A file, and the table that it goes into.
struct Job {
    const TableLayout *Layout;
    fs::path File;
    std::string Name;      // of the file, as it is told
    std::string Directory; // below the data path; empty for fista
    int FirstMonth;
    int Mandant = 0; // of fista: no other Mandant's record; 0: all
};

struct Loader {
    const LoadOptions &Options;
    const Progress &Show;
    LoadSummary Summary = {};
    std::vector<Job> Jobs = {};
    uint64_t AllBytes = 1;
    uint64_t DoneBytes = 0;
    double Before = 0; // how much of all was done before this round through the files
    double Share = 1;  // of all, that this round takes
    std::map<std::string, int64_t> Told = {};

    void Tell(const Refusal &refusal, bool isRemark)
    {
        ++(isRemark ? Summary.Remarks : Summary.Refused);
        if (++Told[refusal.File] <= Options.MostPerTable) Summary.Refusals.push_back(refusal);
    }

    void Step(uint64_t offset) const
    {
        Show(Before + Share * static_cast<double>(DoneBytes + offset) / static_cast<double>(AllBytes));
    }

    void AddJob(const TableLayout &layout, const fs::path &file, const std::string &directory, int firstMonth,
                int mandant = 0);
    template <typename Visit> void ReadFile(const Job &job, Visit visit);
    void Check();
    void CheckRecord(const Job &job, const SequentialReader &reader, const char *record);
    void Fill(const fs::path &data);
    void FillTable(const Job &job, TableFile &table);
    void LoadInstallation();
    void MakeInstallation(const fs::path &target);
    void LoadMandant();
    void LoadTable();
    void FindJobs(const fs::path &from, int mandant);
    void ReplaceData(const fs::path &data);
    void ReplaceOnServer(const fs::path &data);
};

void Loader::AddJob(const TableLayout &layout, const fs::path &file, const std::string &directory,
                    int firstMonth, int mandant)
{
    const std::string name =
        Options.Table.empty() ? file.lexically_relative(Options.From).string() : file.filename().string();
    Jobs.push_back({&layout, file, name, directory, firstMonth, mandant});
    AllBytes += fs::file_size(file);
}

// Hands every good record to `visit`; tells of the others.
template <typename Visit> void Loader::ReadFile(const Job &job, Visit visit)
{
    SequentialReader reader(job.File);
    std::string record(job.Layout->RecordLength, '\0');
    for (;;) {
        const auto got = reader.Next(record.data(), record.size());
        if (got == SequentialReader::Got::End) break;
        if (got != SequentialReader::Got::Record) {
            Tell({job.Name, reader.Number, reader.Offset, "", "", reader.Fault}, false);
            if (got == SequentialReader::Got::Broken) break;
            continue;
        }
        if (reader.Number % recordsPerStep == 0) Step(reader.Offset);
        if (job.Mandant != 0) {
            vark::FistaRecord company;
            std::memcpy(&company, record.data(), sizeof company);
            if (company.Nummer != job.Mandant) continue;
        }
        visit(reader, record.data());
    }
    DoneBytes += reader.Bytes;
}

void Loader::CheckRecord(const Job &job, const SequentialReader &reader, const char *record)
{
    for (const FieldLayout &field : job.Layout->Fields) {
        const std::string fault = FaultOfForm(field, record, job.FirstMonth);
        const std::string what = fault.empty() ? RemarkOnForm(field, record) : fault;
        if (what.empty()) continue;
        Tell({job.Name, reader.Number, reader.Offset, KeyText(*job.Layout, record), field.Name,
              what + ": „" + FieldValue(field, record, job.FirstMonth) + "“"},
             fault.empty() || Options.IsLenient);
    }
    for (const KeyLayout &key : job.Layout->Keys) {
        const KeySegment &segment = key.Segments.front();
        if (segment.Type != KeyType::Autoincrement) continue;
        int32_t number = 0;
        std::memcpy(&number, record + segment.Offset, sizeof number);
        if (number != 0) continue;
        // The record manager would give it a new one, and whatever refers to it would lead nowhere.
        const FieldLayout *field = FieldOf(*job.Layout, segment);
        Tell({job.Name, reader.Number, reader.Offset, KeyText(*job.Layout, record),
              field != nullptr ? field->Name : "", "die laufende Nummer ist 0"},
             false);
    }
    ++Summary.Records;
}

void Loader::Check()
{
    Share = checkingPart;
    DoneBytes = 0;
    for (const Job &job : Jobs) {
        ReadFile(job, [&](const SequentialReader &reader, const char *record) {
            CheckRecord(job, reader, record);
        });
        ++Summary.Tables;
    }
    Before = checkingPart;
    Share = 1 - checkingPart;
    DoneBytes = 0;
}

void Loader::FillTable(const Job &job, TableFile &table)
{
    ReadFile(job, [&](const SequentialReader &reader, char *record) {
        if (table.TryInsert(record)) return;
        const KeyLayout *taken = nullptr;
        size_t number = 0;
        std::string other(job.Layout->RecordLength, '\0');
        for (; taken == nullptr && number < job.Layout->Keys.size(); ++number) {
            const KeyLayout &key = job.Layout->Keys[number];
            if (key.Duplicates) continue;
            std::string value;
            for (const KeySegment &segment : key.Segments) {
                value.append(record + segment.Offset, segment.Length);
            }
            if (table.Equal(other.data(), value.data(), static_cast<int>(number))) taken = &key;
        }
        const FieldLayout *field = taken != nullptr ? FieldOf(*job.Layout, taken->Segments.front()) : nullptr;
        Tell({job.Name, reader.Number, reader.Offset, KeyText(*job.Layout, record),
              field != nullptr ? field->Name : "",
              "der Wert des Schlüssels " + std::to_string(taken != nullptr ? number - 1 : 0) +
                  " ist schon vergeben"},
             false);
    });
}

// Loads the files into the tables below a data path, which nobody else sees yet. Tables that are not there
// are made; one that is keeps its records.
void Loader::Fill(const fs::path &data)
{
    const std::string *directory = nullptr;
    std::unique_ptr<TableFile> held; // while one table is open for loading, nothing waits for the disk
    for (const Job &job : Jobs) {
        if (directory == nullptr || *directory != job.Directory) {
            if (held != nullptr) held->Close();
            held.reset();
            directory = &job.Directory;
        }
        const fs::path place = data / job.Directory;
        std::unique_ptr<TableFile> table;
        try {
            table = std::make_unique<TableFile>(*job.Layout, place, OpenMode::Accelerated);
        } catch (const EngineError &error) {
            if (error.Status != BtrStatusFileNotFound) throw;
            CreateTable(*job.Layout, place);
            table = std::make_unique<TableFile>(*job.Layout, place, OpenMode::Accelerated);
        }
        FillTable(job, *table);
        if (held == nullptr) {
            held = std::move(table);
        } else {
            table->Close();
        }
    }
    if (held != nullptr) held->Close();
}

// "sako.seq", whatever the case of its letters; null for any other name.
const TableLayout *LayoutOfFile(const fs::path &file)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == sequentialExtension ? FindLayout(file.stem().string()) : nullptr;
}

// The files of a directory, in the order of the tables.
std::map<vark::TableId, fs::path> FilesIn(const fs::path &directory)
{
    std::map<vark::TableId, fs::path> files;
    for (const fs::directory_entry &entry : fs::directory_iterator(directory)) {
        if (!entry.is_regular_file()) continue;
        const TableLayout *layout = LayoutOfFile(entry.path());
        if (layout == nullptr) continue;
        if (!files.emplace(layout->Id, entry.path()).second) {
            throw std::runtime_error("In " + directory.string() + " liegt " + layout->Stem +
                                     " mehr als einmal.");
        }
    }
    return files;
}

// Every table that lies below `from`, or those of one Mandant.
void Loader::FindJobs(const fs::path &from, int mandant)
{
    if (!fs::is_directory(from)) throw std::runtime_error(from.string() + " ist kein Verzeichnis.");
    const auto top = FilesIn(from);
    const auto companies = top.find(vark::TableFista);
    if (companies == top.end()) {
        throw std::runtime_error("In " + from.string() + " liegen keine gesicherten Bücher: es fehlt fista" +
                                 sequentialExtension + ".");
    }
    AddJob(LayoutOf(vark::TableFista), companies->second, "", 1, mandant);
    // Which Mandanten there are decides how the dates of their years are read.
    std::map<int, int> firstMonths;
    {
        SequentialReader reader(companies->second);
        vark::FistaRecord company;
        while (reader.Next(reinterpret_cast<char *>(&company), sizeof company) ==
               SequentialReader::Got::Record) {
            const bool isMonth = company.FirstFiscalMonth >= 1 && company.FirstFiscalMonth <= 12;
            firstMonths[company.Nummer] = isMonth ? company.FirstFiscalMonth : 1;
        }
    }
    if (mandant != 0 && firstMonths.count(mandant) == 0) {
        throw UsageError("In " + companies->second.string() + " steht kein Mandant " +
                         std::to_string(mandant) + ".");
    }
    for (const std::string &name : YearDirectories(from)) {
        int year = 0;
        int number = 0;
        ParseYearDirectory(name, year, number);
        if (mandant != 0 && number != mandant) continue;
        const auto firstMonth = firstMonths.find(number);
        if (firstMonth == firstMonths.end()) {
            Tell(
                {name, 0, 0, "", "", "zu dem Verzeichnis gibt es keinen Mandanten " + std::to_string(number)},
                false);
            continue;
        }
        const auto files = FilesIn(from / name);
        for (const auto &[id, file] : files) {
            if (IsYearTable(LayoutOf(id))) AddJob(LayoutOf(id), file, name, firstMonth->second);
        }
    }
}

// Years that come with any table have all of them.
void MakeYearDirectories(const std::vector<Job> &jobs, const fs::path &data)
{
    for (const Job &job : jobs) {
        if (job.Directory.empty() || fs::exists(data / job.Directory)) continue;
        fs::create_directory(data / job.Directory);
        MakeYearTables(data / job.Directory);
    }
}

// The same on a server, where the other Mandanten's schemas are not touched.
void Loader::ReplaceOnServer(const fs::path &data)
{
    const HeldBooks held(data);
    Workplace workplace(data, BesideOf(data));
    SchemaExchange exchange(data);
    exchange.Add(workplace.Path, "", Options.Mandant != 0);
    if (Options.Mandant == 0) {
        CreateTable(LayoutOf(vark::TableFista), workplace.Path);
    } else {
        RemoveCompany(workplace.Path, Options.Mandant);
    }
    for (const Job &job : Jobs) {
        if (job.Directory.empty() || fs::exists(workplace.Path / job.Directory)) continue;
        fs::create_directory(workplace.Path / job.Directory);
        exchange.Add(workplace.Path / job.Directory, job.Directory, false);
        MakeYearTables(workplace.Path / job.Directory);
    }
    for (const std::string &name : YearDirectories(data)) {
        int year = 0;
        int mandant = 0;
        ParseYearDirectory(name, year, mandant);
        const bool goes = Options.Mandant == 0 || mandant == Options.Mandant;
        if (goes && HasBooks(data / name) && !fs::exists(workplace.Path / name)) exchange.Remove(name);
    }
    Fill(workplace.Path);
    Summary.IsLoaded = Summary.Refused == 0 && !Options.IsTrial;
    if (Summary.IsLoaded) exchange.Finish();
}

// All tables anew, or one Mandant's, in books that exist.
void Loader::ReplaceData(const fs::path &data)
{
    if (IsOnServer(data)) {
        ReplaceOnServer(data);
        return;
    }
    HeldBooks held(data);
    Workplace workplace(data, BesideOf(data));
    CopyOtherFiles(data, workplace.Path);
    if (Options.Mandant == 0) {
        CreateTable(LayoutOf(vark::TableFista), workplace.Path);
    } else {
        CopyStore(data, workplace.Path);
        RemoveCompany(workplace.Path, Options.Mandant);
        CopyYears(data, workplace.Path, Options.Mandant);
    }
    MakeYearDirectories(Jobs, workplace.Path);
    Fill(workplace.Path);
    Summary.IsLoaded = Summary.Refused == 0 && !Options.IsTrial;
    if (Summary.IsLoaded) {
        held.AllowMove();
        workplace.MoveTo(data);
    }
    StopEngine();
}

void Loader::LoadInstallation()
{
    FindJobs(Options.From, 0);
    const fs::path target = TargetPath(Options.To);
    const fs::path data = BooksIn(target);
    if (data.empty()) {
        CheckTarget(target, false);
    } else if (!Options.Replace) {
        throw std::runtime_error("In " + target.string() +
                                 " liegen schon Bücher. Mit --ersetzen treten die geladenen an ihre Stelle.");
    }
    Check();
    if (Summary.Refused > 0) return;
    if (data.empty()) {
        MakeInstallation(target);
    } else {
        ReplaceData(data);
    }
}

void Loader::MakeInstallation(const fs::path &target)
{
    Workplace workplace(target);
    const fs::path data = workplace.Path / dataDirectory;
    fs::create_directory(data);
    fs::create_directory(workplace.Path / reportDirectory);
    Summary.HasTemplates = CopyTemplates(workplace.Path / reportDirectory);
    WriteIniFiles(workplace.Path, target);
    CreateTable(LayoutOf(vark::TableFista), data);
    MakeYearDirectories(Jobs, data);
    Fill(data);
    Summary.IsLoaded = Summary.Refused == 0 && !Options.IsTrial;
    if (Summary.IsLoaded) workplace.MoveTo(target);
    StopEngine();
}

void Loader::LoadMandant()
{
    FindJobs(Options.From, Options.Mandant);
    const fs::path data = fs::canonical(DataPathOf(Options.To));
    if (FindMandant(data, Options.Mandant) && !Options.Replace) {
        throw std::runtime_error("Den Mandanten " + std::to_string(Options.Mandant) +
                                 " gibt es schon. Mit --ersetzen tritt der geladene an seine Stelle.");
    }
    Check();
    if (Summary.Refused == 0) ReplaceData(data);
}

void Loader::LoadTable()
{
    const TableLayout &layout = NamedTable(Options.Table);
    const fs::path data = fs::canonical(DataPathOf(Options.To));
    const bool isYear = IsYearTable(layout);
    if (isYear && Options.Mandant == 0 && ReadMandanten(data).size() > 1) {
        throw UsageError("Es gibt mehrere Mandanten; --mandant sagt, in wessen Bücher geladen wird.");
    }
    const TablePlace place = PlaceOf(layout, data, Options.Mandant, Options.Year);
    const std::string directory = isYear ? place.Directory.filename().string() : "";
    if (!Options.Replace && !Options.Append) {
        TableFile table(layout, place.Directory, OpenMode::ReadOnly);
        const uint32_t records = table.Definition().Records;
        if (records > 0) {
            throw std::runtime_error(
                place.Name + " enthält schon " + Grouped(records) + (records == 1 ? " Satz" : " Sätze") +
                ". Mit --ersetzen treten die geladenen an ihre Stelle, mit --anfuegen kommen "
                "sie dazu.");
        }
    }
    StopEngine();
    AddJob(layout, fs::absolute(Options.From), directory, place.FirstMonth);
    Check();
    if (Summary.Refused > 0) return;

    // A year's directory changes places alone; fista lies with the directories of the years, so all of them
    // do.
    const fs::path target = isYear ? place.Directory : data;
    const auto held =
        isYear ? std::make_unique<HeldBooks>(data, directory) : std::make_unique<HeldBooks>(data);
    Workplace workplace(target, BesideOf(data));
    std::optional<SchemaExchange> exchange;
    if (IsOnServer(target)) {
        exchange.emplace(target);
        exchange->Add(workplace.Path, "", true);
    } else {
        CopyOtherFiles(target, workplace.Path);
        CopyStore(target, workplace.Path);
        if (!isYear) CopyYears(data, workplace.Path, nobody);
    }
    if (Options.Replace) ReplaceTable(layout, workplace.Path);
    Jobs.front().Directory.clear(); // what is filled is the directory itself
    Fill(workplace.Path);
    Summary.IsLoaded = Summary.Refused == 0 && !Options.IsTrial;
    if (Summary.IsLoaded && exchange) exchange->Finish();
    if (Summary.IsLoaded && !exchange) {
        held->AllowMove();
        workplace.MoveTo(target);
    }
    if (!exchange) StopEngine();
}

} // namespace

LoadSummary LoadBooks(const LoadOptions &options, const Progress &progress)
{
    LoadOptions wanted = options;
    wanted.From = TargetPath(options.From);
    Loader loader{wanted, progress};
    if (!wanted.Table.empty()) {
        loader.LoadTable();
    } else if (wanted.Append) {
        throw UsageError("--anfuegen gehört zu einer einzelnen Tabelle.");
    } else if (wanted.Mandant != 0) {
        loader.LoadMandant();
    } else {
        loader.LoadInstallation();
    }
    return loader.Summary;
}

} // namespace books
