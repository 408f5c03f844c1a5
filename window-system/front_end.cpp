#include "window-system/front_end.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include "text/windows1252.h"

namespace varkui {

namespace {

pthread_once_t chosenOnce = PTHREAD_ONCE_INIT;
std::atomic<FrontEnd> chosen{FrontEnd::Headless};

void Choose()
{
    const char *wish = secure_getenv("VARK_UI");
    if (wish == nullptr || *wish == 0 || strcmp(wish, "headless") == 0) return;
    constexpr char script[] = "script:";
    if (strncmp(wish, script, sizeof script - 1) == 0) {
        if (OpenScript(wish + sizeof script - 1)) chosen = FrontEnd::Script;
        return;
    }
    char line[256];
    snprintf(line, sizeof line, "VARK_UI=%s is not known; going on without a screen", wish);
    WriteToStandardError("varkui", line);
}

// Longest line that is written; a longer one is cut. Message texts have up to 399 characters.
constexpr size_t lineSize = 4096;

// One line of `prefix`, `separator` and `text` with line breaks turned into blanks, ended by a newline.
// Returns its length.
size_t ComposeLine(char (&line)[lineSize], const char *prefix, const char *separator, const char *text)
{
    char converted[lineSize];
    text::ToUtf8(text, converted, sizeof converted);
    const int length = snprintf(line, sizeof line - 1, "%s%s%s", prefix, separator, converted);
    size_t end = length < 0 ? 0 : static_cast<size_t>(length);
    if (end > sizeof line - 2) end = sizeof line - 2;
    for (size_t i = 0; i < end; ++i) {
        if (line[i] == '\n' || line[i] == '\r') line[i] = ' ';
    }
    line[end++] = '\n';
    return end;
}

void WriteWhole(int descriptor, const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, size);
        if (written <= 0) return; // nobody can be told that nothing can be told
        bytes += written;
        size -= static_cast<size_t>(written);
    }
}

// Opened for each line, so that the log may be moved away and a forked child shares nothing with its parent.
void AppendToLog(const char *bytes, size_t size)
{
    const char *path = secure_getenv("VARK_UI_LOG");
    if (path == nullptr || *path == 0) return;
    const int descriptor = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0) return;
    WriteWhole(descriptor, bytes, size);
    close(descriptor);
}

} // namespace

FrontEnd CurrentFrontEnd()
{
    pthread_once(&chosenOnce, Choose);
    return chosen;
}

void FallBackToHeadless() { chosen = FrontEnd::Headless; }

void LogText(const char *prefix, const char *text)
{
    char line[lineSize];
    AppendToLog(line, ComposeLine(line, prefix, " ", text));
}

void LogLine(const char *line)
{
    char whole[lineSize];
    const int length = snprintf(whole, sizeof whole, "%.*s\n", static_cast<int>(sizeof whole - 2), line);
    if (length > 0) AppendToLog(whole, static_cast<size_t>(length));
}

void WriteToStandardError(const char *prefix, const char *text)
{
    char line[lineSize];
    WriteWhole(STDERR_FILENO, line, ComposeLine(line, prefix, ": ", text));
}

} // namespace varkui
