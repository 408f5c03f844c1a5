#include "tests/tools/program.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace tests {

namespace fs = std::filesystem;

namespace {

struct Pipe {
    int Read = -1;
    int Write = -1;

    explicit Pipe(bool isTerminal = false)
    {
        if (isTerminal) {
            Read = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
            grantpt(Read);
            unlockpt(Read);
            Write = open(ptsname(Read), O_RDWR | O_NOCTTY);
            termios raw;
            tcgetattr(Write, &raw);
            cfmakeraw(&raw);
            tcsetattr(Write, TCSANOW, &raw);
            return;
        }
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("pipe");
        Read = ends[0];
        Write = ends[1];
    }
};

// What decides how the library behaves; a test sets what it needs.
constexpr const char *libraryVariables[] = {"VARK_CONFIG_DIR", "VARK_UI", "VARK_UI_LOG",
                                            "VARK_HEUTE",      "DISPLAY", "WAYLAND_DISPLAY"};

[[noreturn]] void Execute(const Call &call)
{
    for (const char *name : libraryVariables) {
        unsetenv(name);
    }
    for (const auto &[name, value] : call.Environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char *> arguments = {const_cast<char *>(call.Program.c_str())};
    for (const std::string &argument : call.Arguments) {
        arguments.push_back(const_cast<char *>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execv(call.Program.c_str(), arguments.data());
    _exit(127);
}

} // namespace

TemporaryDirectory::TemporaryDirectory()
{
    // In memory where that is possible: nothing here is about surviving a power cut.
    const fs::path shared = "/dev/shm";
    const fs::path parent = access(shared.c_str(), W_OK) == 0 ? shared : fs::temp_directory_path();
    std::string pattern = (parent / "vark-tools-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp");
    Path = pattern;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    fs::remove_all(Path, ignored);
}

Result Run(const Call &call)
{
    const Pipe in;
    const Pipe out;
    const Pipe err(call.IsOnTerminal);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) {
        dup2(in.Read, STDIN_FILENO);
        dup2(out.Write, STDOUT_FILENO);
        dup2(err.Write, STDERR_FILENO);
        for (const int end : {in.Read, in.Write, out.Read, out.Write, err.Read, err.Write}) {
            close(end);
        }
        Execute(call);
    }
    close(in.Read);
    close(out.Write);
    close(err.Write);

    Result result{0, {}, {}};
    size_t sent = 0;
    pollfd ends[3] = {{in.Write, POLLOUT, 0}, {out.Read, POLLIN, 0}, {err.Read, POLLIN, 0}};
    const auto end = [&ends](int index) {
        close(ends[index].fd);
        ends[index].fd = -1;
    };
    if (call.Input.empty()) end(0);
    while (ends[1].fd >= 0 || ends[2].fd >= 0) {
        poll(ends, 3, -1);
        if (ends[0].fd >= 0 && ends[0].revents != 0) {
            const ssize_t written = write(ends[0].fd, call.Input.data() + sent, call.Input.size() - sent);
            if (written > 0) sent += static_cast<size_t>(written);
            if (written <= 0 || sent == call.Input.size()) end(0);
        }
        for (const int index : {1, 2}) {
            if (ends[index].fd < 0 || ends[index].revents == 0) continue;
            char buffer[4096];
            const ssize_t got = read(ends[index].fd, buffer, sizeof buffer);
            if (got > 0) {
                (index == 1 ? result.Out : result.Err).append(buffer, static_cast<size_t>(got));
            } else {
                end(index);
            }
        }
    }
    if (ends[0].fd >= 0) end(0);
    int status = 0;
    waitpid(child, &status, 0);
    result.ExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

Result Books(std::vector<std::string> arguments) { return Run({BOOKS_PROGRAM, std::move(arguments)}); }

Result Vark(const fs::path &configuration, std::vector<std::string> arguments, const std::string &input)
{
    arguments.insert(arguments.begin(), {"--config", configuration.string()});
    return Run({VARK_PROGRAM, std::move(arguments), input});
}

void WriteFile(const fs::path &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

std::string ReadFile(const fs::path &path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

} // namespace tests
