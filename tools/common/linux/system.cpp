#include "tools/common/system.h"

#include "host/descriptors.h"

#include <cerrno>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;

void BeginProgram(int &, char **&) { host::GuardStandardDescriptors(); }

fs::path ProgramDirectory() { return fs::read_symlink("/proc/self/exe").parent_path(); }

std::string PathBytes(const fs::path &path) { return path.string(); }

fs::path PathOfBytes(const std::string &bytes) { return bytes; }

fs::path PathOfText(const std::string &text) { return text; }

std::string IniLinesOfProgram() { return {}; }

void SetEnvironment(const char *name, const std::string &value) { setenv(name, value.c_str(), 1); }

bool IsTerminal(FILE *stream) { return isatty(fileno(stream)) != 0; }

bool IsInputReady()
{
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

int CommonError(int error) { return error == EDQUOT ? ENOSPC : error; }

} // namespace tools
