#include "tools/books/apart.h"

#include "tools/common/system.h"
#include "tools/common/terminal.h"
#include "tools/common/windows/handles.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>
#include <windows.h>

namespace books {

namespace {

// The word by which this program starts itself; people have no use for it.
constexpr char readerWord[] = "--liest";

struct Handle {
    HANDLE Value = nullptr;

    Handle() = default;
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { Close(); }
    void Close()
    {
        if (Value != nullptr) CloseHandle(Value);
        Value = nullptr;
    }
};

[[noreturn]] void ThrowNoProcess() { throw std::runtime_error("Es läßt sich kein weiterer Prozeß starten."); }

// Neither has a quotation mark, and a separator at the end is written as a slash.
std::wstring Quoted(const std::filesystem::path &path) { return L" \"" + path.generic_wstring() + L"\""; }

// Ends what is in it when its handle is closed, which the system does at the latest when this process ends.
void MakeJob(Handle &job)
{
    job.Value = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job.Value == nullptr ||
        !SetInformationJobObject(job.Value, JobObjectExtendedLimitInformation, &limits, sizeof limits))
        ThrowNoProcess();
}

// Starts the process, which writes into `output`.
void Start(const Reading &reading, HANDLE output, HANDLE job, Handle &process)
{
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    std::wstring command = Quoted(program) + L" " + tools::WideOf(readerWord) + Quoted(reading.Data) +
                           Quoted(reading.Name) + Quoted(reading.Directory);
    command.erase(0, 1);
    STARTUPINFOW how{};
    how.cb = sizeof how;
    how.dwFlags = STARTF_USESTDHANDLES;
    how.hStdOutput = output;
    how.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                        nullptr, &how, &started))
        ThrowNoProcess();
    process.Value = started.hProcess;
    AssignProcessToJobObject(job, started.hProcess);
    ResumeThread(started.hThread);
    CloseHandle(started.hThread);
}

// The number of an exception as the process leaves it, or nothing.
std::string ReasonOf(DWORD exitCode)
{
    if (exitCode < 0x80000000u) return {};
    char text[32];
    std::snprintf(text, sizeof text, "Ausnahme %08lX", exitCode);
    return text;
}

} // namespace

ReadingEnd ReadApart(const Reading &reading, const std::function<void(std::string_view told)> &listen)
{
    std::cout << std::flush;
    Handle job;
    MakeJob(job);
    Handle from;
    Handle to;
    if (!CreatePipe(&from.Value, &to.Value, nullptr, 0) ||
        !SetHandleInformation(to.Value, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT))
        ThrowNoProcess();
    Handle process;
    Start(reading, to.Value, job.Value, process);
    to.Close();
    std::vector<char> buffer(65536);
    DWORD got = 0;
    while (ReadFile(from.Value, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) && got > 0) {
        tools::ThrowIfInterrupted();
        listen({buffer.data(), got});
    }
    WaitForSingleObject(process.Value, INFINITE);
    tools::ThrowIfInterrupted(); // which ends the process as well
    DWORD exitCode = 1;
    GetExitCodeProcess(process.Value, &exitCode);
    return {exitCode == 0, ReasonOf(exitCode)};
}

bool ReadsApart(int count, const char *const *arguments)
{
    if (count != 5 || std::string_view(arguments[1]) != readerWord) return false;
    constexpr int output = 1;
    // A box that tells of the end of the process would wait for somebody.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    ReadHere({tools::PathOfText(arguments[2]).make_preferred(), arguments[3],
              tools::PathOfText(arguments[4]).make_preferred()},
             output);
    return true;
}

} // namespace books
