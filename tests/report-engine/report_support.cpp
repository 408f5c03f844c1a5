#include "report_support.h"

#include "text/windows1252.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace reports {

namespace {

// Nobody sees these views, wherever the tests run; a test of windows says so before the first one.
const int unseen = setenv("VARK_UI", "headless", 1);

// Loaded before a test captures standard error: the window system writes to what was a stream for messages
// then.
void *const windowSystem = dlopen(
    (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "libvarkui.so").c_str(), RTLD_NOW);

} // namespace

Directory::Directory()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "reports-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
    Path = pattern;
}

Directory::~Directory()
{
    std::error_code ignored;
    std::filesystem::remove_all(Path, ignored);
}

std::string Directory::Write(const std::string &name, const std::string &contents) const
{
    std::ofstream(Path / name, std::ios::binary) << contents;
    return At(name);
}

std::vector<std::string> Directory::Files() const
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(Path)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadFile(const std::string &path)
{
    std::ostringstream contents;
    contents << std::ifstream(path, std::ios::binary).rdbuf();
    return contents.str();
}

std::string ShippedTemplate(const std::string &name) { return std::string(TEMPLATES) + "/" + name; }

Record &Record::Text(const std::string &utf8, size_t width)
{
    std::string field(width + 1, '\0');
    text::FromUtf8(utf8.c_str(), field.data(), width);
    field.resize(width);
    Bytes += field;
    return *this;
}

Record &Record::Amount(int64_t pfennig)
{
    const int64_t magnitude = pfennig < 0 ? -pfennig : pfennig;
    char text[32];
    std::snprintf(text, sizeof text, "%09lld%c%02lld", static_cast<long long>(magnitude / 100),
                  pfennig < 0 ? '-' : ',', static_cast<long long>(magnitude % 100));
    return Text(text, 13);
}

namespace {

template <typename Number> void Append(std::string &bytes, Number value)
{
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof value);
}

} // namespace

Record &Record::I16(int16_t value)
{
    Append(Bytes, value);
    return *this;
}

Record &Record::I32(int32_t value)
{
    Append(Bytes, value);
    return *this;
}

Record &Record::U32(uint32_t value)
{
    Append(Bytes, value);
    return *this;
}

Record &Record::U8(uint8_t value)
{
    Append(Bytes, value);
    return *this;
}

int32_t Record::AddTo(int32_t report, int32_t kind, size_t size) const
{
    EXPECT_LE(Bytes.size(), size) << "a record longer than its kind";
    auto exact = std::make_unique<char[]>(size);
    std::memcpy(exact.get(), Bytes.data(), std::min(size, Bytes.size()));
    return RSAddData(report, kind, exact.get());
}

Record SusaHeader(const std::string &mandant, const std::string &bis)
{
    return Record()
        .Text(mandant, 41)
        .Date(bis)
        .Text("März", 20)
        .Text("Sachkonten", 30)
        .Text("von 1000 bis 8999", 30);
}

int32_t AddSusaHeader(int32_t report, const Record &header) { return header.AddTo(report, 0, 128); }

int32_t AddSusaLine(int32_t report, const SusaLine &line)
{
    return Record()
        .Text(line.Konto, 8)
        .Text("", 9)
        .Text(line.Name, 41)
        .Amount(line.VortragSoll)
        .Amount(line.VortragHaben)
        .Amount(line.MonatSoll)
        .Amount(line.MonatHaben)
        .Amount(line.KumSoll)
        .Amount(line.KumHaben)
        .Amount(line.VortragSoll + line.KumSoll)
        .Amount(line.VortragHaben + line.KumHaben)
        .U32(line.Bewegt)
        .AddTo(report, 1, 166);
}

int32_t OpenShipped(const std::string &name, const char *reportId)
{
    return RSOpenReport(ShippedTemplate(name).c_str(), reportId, 0);
}

RSWindow OpenView(int32_t report)
{
    return RSOpenView(report, "Bericht", "%N", nullptr, 0, 0, 0, 0, 0, 0, 65535, 65535, nullptr);
}

std::string Errors(const std::function<void()> &body)
{
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

std::string TemplateWith(const std::string &body)
{
    return std::string("report { id = \"tervoSUSALIST0.0\", title = \"Test\" }\n") + body;
}

std::vector<std::string> PagesOf(const std::string &pdf)
{
    const std::string command = "pdftotext -layout '" + pdf + "' -";
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "pdftotext does not run";
        return {};
    }
    std::vector<std::string> pages = {""};
    for (int character = fgetc(pipe); character != EOF; character = fgetc(pipe)) {
        if (character == '\f') {
            pages.emplace_back();
        } else {
            pages.back() += static_cast<char>(character);
        }
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    pages.pop_back(); // every page ends with a form feed
    return pages;
}

int PageCountOf(const std::string &pdf) { return static_cast<int>(PagesOf(pdf).size()); }

std::vector<std::string> LinesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

namespace {

std::vector<pid_t> Marked(const std::string &name, const std::string &mark, const std::string &argument = "")
{
    std::vector<pid_t> found;
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        const std::string id = entry.path().filename().string();
        if (id.find_first_not_of("0123456789") != std::string::npos) continue;
        if (ReadFile(entry.path().string() + "/comm") != name + "\n") continue;
        const std::string line = ReadFile(entry.path().string() + "/cmdline");
        if (!argument.empty() && line.find('\0' + argument + '\0') == std::string::npos) continue;
        const std::string environment = '\0' + ReadFile(entry.path().string() + "/environ");
        if (environment.find('\0' + ("VARK_TEST_MARK=" + mark) + '\0') != std::string::npos) {
            found.push_back(std::stoi(id));
        }
    }
    return found;
}

} // namespace

pid_t FindMarked(const std::string &name, const std::string &mark)
{
    const std::vector<pid_t> found = Marked(name, mark);
    return found.size() == 1 ? found.front() : -1;
}

bool RunsMarked(const std::string &name, const std::string &mark) { return !Marked(name, mark).empty(); }

bool StopMarked(const std::string &name, const std::string &mark, const std::string &argument)
{
    bool isStopped = false;
    for (const pid_t each : Marked(name, mark, argument)) {
        if (kill(each, SIGSTOP) == 0) isStopped = true;
    }
    return isStopped;
}

bool HasWrittenMarked(const std::string &name, const std::string &mark, const std::string &argument)
{
    for (const pid_t each : Marked(name, mark, argument)) {
        const std::string counts = ReadFile("/proc/" + std::to_string(each) + "/io");
        if (counts.find("\nwchar: ") != std::string::npos && counts.find("\nwchar: 0\n") == std::string::npos)
            return true;
    }
    return false;
}

int KillMarked(const std::string &name, const std::string &mark)
{
    int killed = 0;
    for (const pid_t each : Marked(name, mark)) {
        if (kill(each, SIGKILL) == 0) ++killed;
    }
    return killed;
}

} // namespace reports
