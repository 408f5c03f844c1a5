#include "tools/common/system.h"

#include "src/platform/platform.h"
#include "tools/common/windows/handles.h"

#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <stdexcept>
#include <system_error>
#include <vector>
#include <windows.h>

#include <shellapi.h>

namespace tools {

namespace fs = std::filesystem;

std::string Utf8Of(const std::wstring &wide)
{
    if (wide.empty()) return {};
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring WideOf(const std::string &utf8)
{
    if (utf8.empty()) return {};
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), size);
    return wide;
}

int LastErrno()
{
    return std::error_code(static_cast<int>(GetLastError()), std::system_category())
        .default_error_condition()
        .value();
}

namespace {

// The terminal belongs to whoever called, who goes on with it as it was.
UINT outputPage;
UINT inputPage;

void RestoreTerminal()
{
    SetConsoleOutputCP(outputPage);
    SetConsoleCP(inputPage);
}

void PrepareTerminal()
{
    outputPage = GetConsoleOutputCP();
    inputPage = GetConsoleCP();
    if (outputPage == 0) return; // there is none
    SetConsoleOutputCP(CP_UTF8);
    SetConsoleCP(CP_UTF8);
    std::atexit(RestoreTerminal);
}

std::vector<std::string> texts;
std::vector<char *> arguments;

} // namespace

void BeginProgram(int &count, char **&given)
{
    PrepareTerminal();
    // What is written is the same on every system, to the byte.
    for (const int stream : {0, 1, 2}) {
        _setmode(stream, _O_BINARY);
    }
    int found = 0;
    LPWSTR *wide = CommandLineToArgvW(GetCommandLineW(), &found);
    if (wide == nullptr) return;
    for (int i = 0; i < found; ++i) {
        texts.push_back(Utf8Of(wide[i]));
    }
    LocalFree(wide);
    for (std::string &text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    count = found;
    given = arguments.data();
}

fs::path ProgramDirectory()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return fs::path(path).parent_path();
}

std::string PathBytes(const fs::path &path)
{
    const std::wstring wide = path.wstring();
    std::string bytes(3 * wide.size() + 1, '\0');
    BOOL isLost = FALSE;
    const int size =
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, &isLost);
    if (isLost != FALSE)
        throw std::runtime_error(path.string() +
                                 ": Im Pfad stehen Zeichen, die es auf diesem System nicht gibt.");
    bytes.resize(static_cast<size_t>(size));
    return bytes;
}

fs::path PathOfBytes(const std::string &bytes)
{
    std::wstring wide(bytes.size(), L'\0');
    const int size = MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(),
                                         static_cast<int>(wide.size()));
    wide.resize(static_cast<size_t>(size));
    return wide;
}

fs::path PathOfText(const std::string &text) { return WideOf(text); }

std::string IniLinesOfProgram() { return "DLLPfad=" + PathBytes(ProgramDirectory()) + "\n"; }

void RefuseUnreadableIni(const char *name)
{
    if (!vark::IsProfileUnreadable(name)) return;
    throw std::runtime_error(std::string(name) +
                             ": Lesen der Einstellungen nicht möglich, der Zugriff ist nicht erlaubt");
}

// The library asks the system itself, not the C runtime.
void SetEnvironment(const char *name, const std::string &value)
{
    SetEnvironmentVariableA(name, value.c_str());
}

// One that understands how a bar is drawn.
bool IsTerminal(FILE *stream)
{
    HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    DWORD mode = 0;
    if (!GetConsoleMode(handle, &mode)) return false;
    return (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 ||
           SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool IsInputReady()
{
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    switch (GetFileType(input)) {
    case FILE_TYPE_PIPE: {
        DWORD waiting = 0;
        return !PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) || waiting > 0; // or has ended
    }
    case FILE_TYPE_CHAR: return WaitForSingleObject(input, 0) == WAIT_OBJECT_0;
    default: return true;
    }
}

int CommonError(int error) { return error; }

} // namespace tools
