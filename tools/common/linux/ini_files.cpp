#include "tools/common/system.h"
#include "tools/common/workplace.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tools {

namespace fs = std::filesystem;

namespace {

// Where the library looks for ini files, in its order.
std::vector<fs::path> ConfigurationDirectories()
{
    const auto variable = [](const char *name) {
        const char *value = secure_getenv(name);
        return value != nullptr ? std::string(value) : std::string();
    };
    if (const std::string only = variable("VARK_CONFIG_DIR"); !only.empty()) return {only};
    const std::string config = variable("XDG_CONFIG_HOME");
    const std::string home = variable("HOME");
    const fs::path own = config.starts_with('/') ? fs::path(config) : fs::path(home) / ".config";
    return {own / "vark", "/etc/vark"};
}

} // namespace

// One that is there and cannot be read must not let the next one's books be taken instead of its own.
void RefuseUnreadableIni(const char *name)
{
    for (const fs::path &directory : ConfigurationDirectories()) {
        const fs::path path = directory / name;
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (file < 0 && (errno == ENOENT || errno == ENOTDIR)) continue;
        if (file < 0) ThrowFileError(path, "Lesen der Einstellungen", errno);
        struct stat facts = {};
        const bool isRegular = fstat(file, &facts) == 0 && S_ISREG(facts.st_mode);
        close(file);
        if (isRegular) return;
        throw std::runtime_error(path.string() +
                                 ": Lesen der Einstellungen nicht möglich, das ist keine Datei");
    }
}

} // namespace tools
