#include "tools/common/exit_codes.h"
#include "tools/common/terminal.h"

#include <atomic>
#include <windows.h>

namespace tools {

namespace {

std::atomic<bool> isInterrupted = false;

// Closing the terminal or logging off gives a program a few seconds only.
BOOL WINAPI NoteInterrupt(DWORD)
{
    isInterrupted = true;
    return TRUE;
}

LONG WINAPI TellDamage(EXCEPTION_POINTERS *)
{
    constexpr char word[] =
        "\nbooks: Lesen abgebrochen, eine Datei ist beschädigt. Mehr dazu sagt books pruefen.\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), word, sizeof word - 1, &written, nullptr);
    TerminateProcess(GetCurrentProcess(), ExitFailure);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

void CatchInterrupts() { SetConsoleCtrlHandler(NoteInterrupt, TRUE); }

bool IsInterrupted() { return isInterrupted; }

// An interruption comes on a thread of its own here, and cuts nothing short.
void CopyFiles(const std::filesystem::path &from, const std::filesystem::path &to,
               std::filesystem::copy_options options)
{
    std::filesystem::copy(from, to, options);
}

void EndWithAWordOnDamage() { SetUnhandledExceptionFilter(TellDamage); }

void EndQuietlyOnClosedPipe() {}

void OutliveClosedPipe() {}

} // namespace tools
