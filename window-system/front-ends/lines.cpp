#include "window-system/front-ends/lines.h"

#include "host/descriptors.h"
#include "host/standard_error.h"
#include "text/windows1252.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace varkui {

namespace {

// One line of `prefix`, `separator` and `text` with line breaks turned into blanks, ended by a newline.
// Returns its length.
size_t ComposeLine(char (&line)[longestLine], const char *prefix, const char *separator, const char *text)
{
    char converted[longestLine];
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

// Opened for each line, so that the log may be moved away and a forked child shares nothing with its parent.
// A pipe without a reader is skipped.
void AppendToLog(const char *bytes, size_t size)
{
    const char *path = secure_getenv("VARK_UI_LOG");
    if (path == nullptr || *path == 0) return;
    const int descriptor =
        host::OpenFile(AT_FDCWD, path, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY, 0644);
    if (descriptor < 0) return;
    host::WriteWithinASecond(descriptor, bytes, size);
    close(descriptor);
}

size_t EndLine(char (&whole)[longestLine], const char *line)
{
    const int length = snprintf(whole, sizeof whole, "%.*s\n", static_cast<int>(sizeof whole - 2), line);
    return length > 0 ? static_cast<size_t>(length) : 0;
}

} // namespace

void LogText(const char *prefix, const char *text)
{
    char line[longestLine];
    AppendToLog(line, ComposeLine(line, prefix, " ", text));
}

void LogLine(const char *line)
{
    char whole[longestLine];
    AppendToLog(whole, EndLine(whole, line));
}

void WriteToStandardError(const char *prefix, const char *text)
{
    char line[longestLine];
    host::WriteToStandardError(line, ComposeLine(line, prefix, ": ", text));
}

void Complain(const char *line)
{
    char whole[longestLine];
    const size_t length = EndLine(whole, line);
    host::WriteToStandardError(whole, length);
    AppendToLog(whole, length);
}

} // namespace varkui
