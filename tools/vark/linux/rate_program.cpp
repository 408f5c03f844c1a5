#include "tools/vark/rate_program.h"

#include "host/helpers.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cli {

void NeedRateProgram() {}

int RunRateProgram(int mandant, const std::string &script)
{
    int scriptFile = -1;
    if (!script.empty()) {
        scriptFile = memfd_create("vark-skript", MFD_CLOEXEC);
        if (scriptFile < 0 ||
            write(scriptFile, script.data(), script.size()) != static_cast<ssize_t>(script.size())) {
            throw std::runtime_error("Der Dialog läßt sich nicht vorbereiten.");
        }
    }
    char name[] = "vark-kurse";
    std::string number = std::to_string(mandant);
    char *const arguments[] = {name, number.data(), nullptr};
    const char *const before = std::getenv("VARK_UI");
    const std::optional<std::string> usual =
        before != nullptr ? std::optional(std::string(before)) : std::nullopt;
    const std::string played = "script:/proc/self/fd/" + std::to_string(host::firstOfHelper);
    if (scriptFile >= 0) setenv("VARK_UI", played.c_str(), 1);
    pid_t child = 0;
    const int error = host::StartHelper(name, arguments, &scriptFile, scriptFile >= 0 ? 1 : 0, child);
    if (usual) {
        setenv("VARK_UI", usual->c_str(), 1);
    } else {
        unsetenv("VARK_UI");
    }
    if (scriptFile >= 0) close(scriptFile);
    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) == 127) {
        throw std::runtime_error(std::string(name) + " läßt sich nicht ausführen.");
    }
    return WEXITSTATUS(status);
}

} // namespace cli
