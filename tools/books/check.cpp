#include "tools/books/check.h"

#include "tools/books/check_year.h"
#include "tools/books/place.h"
#include "tools/common/exit_codes.h"
#include "tools/common/json.h"
#include "tools/common/terminal.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <map>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

struct Gathered {
    std::vector<Finding> Shown;
    std::map<std::pair<std::string, std::string>, int64_t> CountOf; // of a rule in a table of a directory
    int64_t All = 0;
    int64_t Records = 0;
    int Directories = 0;
};

void Gather(Gathered &gathered, Finding finding, int64_t mostPerRule)
{
    ++gathered.All;
    const int64_t count = ++gathered.CountOf[{finding.Directory + "/" + finding.Table, finding.Rule}];
    if (count <= mostPerRule) gathered.Shown.push_back(std::move(finding));
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

// Reads in a child what `read` reads, and takes over what it finds. However the child ends, this goes on.
void ReadInChild(Gathered &gathered, const std::string &directory, int64_t mostPerRule,
                 const std::function<void(Findings &)> &read)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("Es läßt sich kein weiterer Prozeß starten.");
    std::cout << std::flush;
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("Es läßt sich kein weiterer Prozeß starten.");
    if (child == 0) {
        close(ends[0]);
        // A damaged page ends this process; where it happened is told by the parent, not by a core file.
        Findings findings(ends[1], directory);
        try {
            read(findings);
        } catch (const std::exception &error) {
            findings.Tell("lesbar", "", "", "", error.what());
        }
        _exit(0);
    }
    close(ends[1]);
    std::string pending;
    std::string table;
    char buffer[65536];
    for (ssize_t got; (got = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        pending.append(buffer, static_cast<size_t>(got));
        size_t start = 0;
        for (size_t end; (end = pending.find('\n', start)) != std::string::npos; start = end + 1) {
            const std::string line = pending.substr(start + 1, end - start - 1);
            switch (pending[start]) {
            case 'F': Gather(gathered, Parse(line), mostPerRule); break;
            case 'R': table = line; break;
            default: gathered.Records += std::stoll(line); break;
            }
        }
        pending.erase(0, start);
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    std::string text = "beim Lesen ist der Prozeß abgebrochen";
    if (WIFSIGNALED(status)) {
        text += " (";
        text += strsignal(WTERMSIG(status));
        text += ")";
    }
    text += "; die Datei ist beschädigt";
    Gather(gathered, {directory, table, "", "", "lesbar", text}, mostPerRule);
}

void CheckDirectory(Findings &findings, const fs::path &data, const std::string &name)
{
    int year = 0;
    int number = 0;
    if (!ParseYearDirectory(name, year, number)) {
        findings.Tell("verzeichnis", "", "", "", "das Verzeichnis hat keinen Namen aus Jahr und Mandant");
        return;
    }
    const auto mandant = FindMandant(data, number);
    if (!mandant) {
        findings.Tell("verzeichnis", "", "", "",
                      "zu dem Verzeichnis gibt es keinen Mandanten " + std::to_string(number));
        return;
    }
    CheckYear(findings, data, *mandant, year);
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

void PrintWords(const Gathered &gathered, int64_t mostPerRule)
{
    for (const Finding &finding : gathered.Shown) {
        std::cout << WhereOf(finding) << ": " << finding.Text << '\n';
    }
    for (const auto &[place, count] : gathered.CountOf) {
        if (count <= mostPerRule) continue;
        std::cout << place.first << ": noch " << Grouped(count - mostPerRule) << " weitere der Art „"
                  << place.second << "“\n";
    }
    if (gathered.All > 0) std::cout << '\n';
    std::cout << Grouped(gathered.Records) << " Sätze in " << gathered.Directories
              << " Verzeichnissen gelesen: " << (gathered.All == 0 ? "alles stimmt überein.\n" : "");
    if (gathered.All > 0) {
        std::cout << Grouped(gathered.All) << (gathered.All == 1 ? " Abweichung.\n" : " Abweichungen.\n");
    }
}

void PrintJson(const Gathered &gathered)
{
    rapidjson::OStreamWrapper stream(std::cout);
    JsonWriter json(stream);
    json.StartObject();
    Put(json, "abweichungen");
    json.StartArray();
    for (const Finding &finding : gathered.Shown) {
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
    Put(json, "anzahl", gathered.All);
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
    ReadInChild(gathered, "", options.MostPerRule, [&](Findings &findings) { CheckCompany(findings, data); });
    ++gathered.Directories;
    for (const std::string &name : names) {
        progress(static_cast<double>(gathered.Directories) / static_cast<double>(names.size() + 1));
        ReadInChild(gathered, name, options.MostPerRule,
                    [&](Findings &findings) { CheckDirectory(findings, data, name); });
        ++gathered.Directories;
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
