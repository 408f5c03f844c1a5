#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "text/windows1252.h"
#include "window-system/front_end.h"

namespace varkui {

namespace {

// A script is a list of instructions, one a line. Its whole text is held from the first to the last line,
// with every line ended by NUL.
struct Script {
    char *Text;
    char *Next; // the first line that is not done
    char *End;
    int Line; // number of the line before Next
};

Script script;
pthread_mutex_t scriptLock = PTHREAD_MUTEX_INITIALIZER;

constexpr size_t longestScript = size_t{64} << 20;

__attribute__((format(printf, 2, 3))) void Fail(int line, const char *format, ...)
{
    char message[3000];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    char whole[3100];
    snprintf(whole, sizeof whole, "script: line %d: %s\n", line, message);
    const ssize_t written = write(STDERR_FILENO, whole, strlen(whole));
    static_cast<void>(written);
    whole[strlen(whole) - 1] = 0;
    LogLine(whole);
    FallBackToHeadless();
}

// The next instruction without its surrounding blanks, null at the end of the script.
char *NextInstruction()
{
    while (script.Next < script.End) {
        char *line = script.Next;
        script.Next += strlen(line) + 1;
        ++script.Line;
        while (*line == ' ' || *line == '\t' || *line == '\r') {
            ++line;
        }
        if (*line == 0 || *line == '#') continue;
        char *end = line + strlen(line);
        while (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r') {
            *--end = 0;
        }
        return line;
    }
    return nullptr;
}

// The rest of `line` behind `word` and blanks, or null when the line does not begin with that word.
const char *After(const char *line, const char *word)
{
    const size_t length = strlen(word);
    if (strncmp(line, word, length) != 0) return nullptr;
    const char *rest = line + length;
    if (*rest != 0 && *rest != ' ' && *rest != '\t') return nullptr;
    while (*rest == ' ' || *rest == '\t') {
        ++rest;
    }
    return rest;
}

struct AnswerWord {
    const char *Word;
    int Id;
};

constexpr AnswerWord answerWords[] = {{"ok", IDOK},       {"cancel", IDCANCEL}, {"abort", IDABORT},
                                      {"retry", IDRETRY}, {"ignore", IDIGNORE}, {"yes", IDYES},
                                      {"no", IDNO}};

// The value of an instruction: a pair of quotes around it keeps blanks and is taken off.
void TakeValue(const char *rest, char *out, size_t size)
{
    size_t length = strlen(rest);
    if (length >= 2 && rest[0] == '"' && rest[length - 1] == '"') {
        ++rest;
        length -= 2;
    }
    if (length >= size) length = size - 1;
    memcpy(out, rest, length);
    out[length] = 0;
}

} // namespace

bool OpenScript(const char *path)
{
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        Fail(0, "%s: %s", path, strerror(errno));
        if (descriptor >= 0) close(descriptor);
        return false;
    }
    const size_t size = static_cast<size_t>(status.st_size);
    char *text = size < longestScript ? static_cast<char *>(malloc(size + 1)) : nullptr;
    size_t length = 0;
    while (text != nullptr && length < size) {
        const ssize_t got = read(descriptor, text + length, size - length);
        if (got <= 0) break;
        length += static_cast<size_t>(got);
    }
    close(descriptor);
    if (text == nullptr) {
        Fail(0, "%s: no memory for the script", path);
        return false;
    }
    text[length] = 0;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '\n') text[i] = 0;
    }
    script = Script{text, text, text + length, 0};
    return true;
}

int AnswerFromScript(const Box &box)
{
    pthread_mutex_lock(&scriptLock);
    int answer = 0;
    char *line = CurrentFrontEnd() == FrontEnd::Script ? NextInstruction() : nullptr;
    if (line == nullptr) {
        FallBackToHeadless();
        pthread_mutex_unlock(&scriptLock);
        return 0;
    }
    char shown[2000];
    text::ToUtf8(box.Text, shown, sizeof shown);
    const char *rest = After(line, "box");
    if (rest == nullptr) {
        Fail(script.Line, "\"%s\" does not fit: a message box is open: %s", line, shown);
    } else {
        const AnswerWord *word = nullptr;
        for (const AnswerWord &candidate : answerWords) {
            if (After(rest, candidate.Word) != nullptr) word = &candidate;
        }
        char wanted[1000] = "";
        if (word != nullptr) TakeValue(After(rest, word->Word), wanted, sizeof wanted);
        if (word == nullptr) {
            Fail(script.Line, "\"%s\" names no answer", line);
        } else if (!BoxHasButton(box.Style, word->Id)) {
            Fail(script.Line, "the message box has no button \"%s\": %s", word->Word, shown);
        } else if (strstr(shown, wanted) == nullptr) {
            Fail(script.Line, "the message box reads \"%s\", not \"%s\"", shown, wanted);
        } else {
            LogLine(line);
            answer = word->Id;
        }
    }
    pthread_mutex_unlock(&scriptLock);
    return answer;
}

} // namespace varkui
