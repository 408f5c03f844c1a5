// A process cannot be forked here: the program is started once more, in the role of a client, and is
// first told the limits, which a fork would have.
#include "tests/record-manager/process.h"

#include "record-manager/limits.h"
#include "tests/record-manager/driver.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace wbtrvtest {

namespace {

constexpr char clientRole[] = "--as-client";

HANDLE HandleOf(int end) { return reinterpret_cast<HANDLE>(_get_osfhandle(end)); }

// A pipe of which the child inherits one end.
void MakePipe(int (&ends)[2], int inherited)
{
    if (_pipe(ends, 65536, _O_BINARY | _O_NOINHERIT) != 0) abort();
    if (!SetHandleInformation(HandleOf(ends[inherited]), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT)) abort();
}

} // namespace

std::filesystem::path MakeDirectory(const std::filesystem::path &where)
{
    std::filesystem::path path = where / ("wbtrv-" + UniqueName());
    std::filesystem::create_directory(path);
    return path;
}

std::string UniqueName()
{
    static unsigned count = 0;
    return std::to_string(GetCurrentProcessId()) + "-" + std::to_string(GetTickCount64()) + "-" +
           std::to_string(++count);
}

Partner StartPartner(void (*)(int from, int to))
{
    int requests[2];
    int answers[2];
    MakePipe(requests, 0);
    MakePipe(answers, 1);
    STARTUPINFOA how{};
    how.cb = sizeof how;
    how.dwFlags = STARTF_USESTDHANDLES;
    how.hStdInput = HandleOf(requests[0]);
    how.hStdOutput = HandleOf(answers[1]);
    how.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::string command = std::string("\"") + program + "\" " + clientRole;
    PROCESS_INFORMATION started;
    if (!CreateProcessA(program, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &how, &started))
        abort();
    CloseHandle(started.hThread);
    _close(requests[0]);
    _close(answers[1]);
    if (_write(requests[1], &wbtrv::limits, sizeof wbtrv::limits) != sizeof wbtrv::limits) abort();
    return {answers[0], requests[1], reinterpret_cast<std::intptr_t>(started.hProcess)};
}

void KillPartner(Partner &partner)
{
    if (partner.Process == -1) return;
    HANDLE process = reinterpret_cast<HANDLE>(partner.Process);
    TerminateProcess(process, 137);
    WaitForSingleObject(process, INFINITE);
    CloseHandle(process);
    _close(partner.From);
    _close(partner.To);
    partner.Process = -1;
}

} // namespace wbtrvtest

int main(int count, char **arguments)
{
    if (count == 2 && strcmp(arguments[1], wbtrvtest::clientRole) == 0) {
        _setmode(0, _O_BINARY);
        _setmode(1, _O_BINARY);
        if (_read(0, &wbtrv::limits, sizeof wbtrv::limits) != sizeof wbtrv::limits) return 1;
        wbtrvtest::Remote::Serve(0, 1);
    }
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
