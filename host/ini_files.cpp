#include "host/ini_files.h"

#include "host/descriptors.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

// No ini file of ours comes near this; a larger one is not read.
constexpr off_t maxIniSize = 1 << 20;

struct Span {
    const char *Begin;
    const char *End;
};

struct FileText {
    char *Bytes; // owned, null when there is no file
    size_t Length;
};

bool IsBlank(char character) { return character == ' ' || character == '\t'; }

Span Trimmed(Span span)
{
    while (span.Begin < span.End && IsBlank(*span.Begin)) {
        ++span.Begin;
    }
    while (span.Begin < span.End && (IsBlank(span.End[-1]) || span.End[-1] == '\r')) {
        --span.End;
    }
    return span;
}

// The letters of names are ASCII; strcasecmp would follow the host's locale.
char Lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool Equals(Span span, const char *text)
{
    while (span.Begin < span.End && *text != 0 && Lower(*span.Begin) == Lower(*text)) {
        ++span.Begin;
        ++text;
    }
    return span.Begin == span.End && *text == 0;
}

// The line that begins at `at`, without its line feed; `at` moves to the next one.
Span NextLine(const char *&at, const char *end)
{
    const Span rest{at, end};
    const auto *feed = static_cast<const char *>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
    at = feed != nullptr ? feed + 1 : end;
    return {rest.Begin, feed != nullptr ? feed : end};
}

// "[section]" gives the section's name, any other line an empty span with a null Begin.
Span SectionOf(Span line)
{
    line = Trimmed(line);
    if (line.End - line.Begin < 2 || *line.Begin != '[') return {nullptr, nullptr};
    const auto *bracket =
        static_cast<const char *>(std::memchr(line.Begin, ']', static_cast<size_t>(line.End - line.Begin)));
    if (bracket == nullptr) return {nullptr, nullptr};
    return Trimmed({line.Begin + 1, bracket});
}

// Where a key's line stands in a file, or where it would have to be put.
struct KeyPlace {
    bool SectionFound;
    bool KeyFound;
    const char *Begin; // the key's line, or the place behind the section's last line that is not blank
    const char *End;   // behind the line and its line feed
    Span Value;
};

KeyPlace FindKey(const FileText &file, const char *section, const char *key)
{
    const char *at = file.Bytes;
    const char *const end = file.Bytes + file.Length;
    KeyPlace place{false, false, end, end, {end, end}};
    while (at < end) {
        const char *const begin = at;
        const Span line = NextLine(at, end);
        const Span name = SectionOf(line);
        if (name.Begin != nullptr) {
            if (place.SectionFound) return place;
            if (Equals(name, section)) place = {true, false, at, at, {at, at}};
            continue;
        }
        if (!place.SectionFound) continue;
        const Span content = Trimmed(line);
        if (content.Begin == content.End) continue;
        place.Begin = place.End = at;
        if (*content.Begin == ';') continue;
        const auto *equals = static_cast<const char *>(
            std::memchr(content.Begin, '=', static_cast<size_t>(content.End - content.Begin)));
        if (equals == nullptr || !Equals(Trimmed({content.Begin, equals}), key)) continue;
        return {true, true, begin, at, Trimmed({equals + 1, content.End})};
    }
    return place;
}

Span WithoutQuotes(Span value)
{
    const bool quoted = value.End - value.Begin >= 2 && (*value.Begin == '"' || *value.Begin == '\'') &&
                        value.End[-1] == *value.Begin;
    return quoted ? Span{value.Begin + 1, value.End - 1} : value;
}

bool Join(char (&out)[PATH_MAX], const char *directory, const char *middle, const char *fileName)
{
    const int length = std::snprintf(out, sizeof out, "%s%s/%s", directory, middle, fileName);
    return length > 0 && static_cast<size_t>(length) < sizeof out;
}

// Candidate `index` (from 0) for an ini file; false when there is none of that number.
bool Candidate(int index, const char *fileName, char (&out)[PATH_MAX])
{
    if (const char *only = secure_getenv("VARK_CONFIG_DIR"); only != nullptr && *only != 0) {
        return index == 0 && Join(out, only, "", fileName);
    }
    if (index == 0) {
        const char *config = secure_getenv("XDG_CONFIG_HOME");
        if (config != nullptr && *config == '/') return Join(out, config, "/vark", fileName);
        const char *home = secure_getenv("HOME");
        return Join(out, home != nullptr && *home != 0 ? home : "/nonexistent", "/.config/vark", fileName);
    }
    return index == 1 && Join(out, "/etc", "/vark", fileName);
}

// Whether there is a file of that name, or may be behind a closed door. A link is one, also where it leads
// nowhere: what it leads to may be away for the moment.
bool IsThere(const char *path)
{
    struct stat info;
    return lstat(path, &info) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

// The file that is in force: the first candidate that is there.
bool Locate(const char *fileName, char (&out)[PATH_MAX])
{
    for (int i = 0; Candidate(i, fileName, out); ++i) {
        if (IsThere(out)) return true;
    }
    return false;
}

// Reads a whole file; false when it exists but cannot be read, so that a write does not wipe it out.
bool ReadFile(const char *path, FileText &file)
{
    file = {nullptr, 0};
    // A pipe of that name is not waited for.
    const int descriptor = OpenFile(AT_FDCWD, path, O_RDONLY | O_NONBLOCK);
    if (descriptor < 0) return errno == ENOENT && !IsThere(path);
    struct stat info;
    bool read = fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) && info.st_size <= maxIniSize;
    if (read) {
        const auto size = static_cast<size_t>(info.st_size);
        file.Bytes = static_cast<char *>(std::malloc(size + 1));
        read = file.Bytes != nullptr;
        while (read && file.Length < size) {
            const ssize_t count = ::read(descriptor, file.Bytes + file.Length, size - file.Length);
            if (count < 0 && errno == EINTR) continue;
            read = count >= 0;
            if (count <= 0) break;
            file.Length += static_cast<size_t>(count);
        }
    }
    close(descriptor);
    return read;
}

bool WriteAll(int descriptor, const char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t count = write(descriptor, bytes, length);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

// Writes the pieces into a file of another name and puts it in the place of `path` only when it is whole.
bool Replace(const char *path, const char *const *pieces, const size_t *lengths, size_t count)
{
    char temporary[PATH_MAX];
    const int length = std::snprintf(temporary, sizeof temporary, "%s.XXXXXX", path);
    if (length < 0 || static_cast<size_t>(length) >= sizeof temporary) return false;
    struct stat info;
    const mode_t mode = stat(path, &info) == 0 ? info.st_mode & 07777 : 0644;
    const int descriptor = KeepAboveStandard(mkostemp(temporary, O_CLOEXEC));
    if (descriptor < 0) return false;
    bool written = fchmod(descriptor, mode) == 0;
    for (size_t i = 0; written && i < count; ++i) {
        written = WriteAll(descriptor, pieces[i], lengths[i]);
    }
    written = written && fsync(descriptor) == 0;
    written = close(descriptor) == 0 && written;
    written = written && rename(temporary, path) == 0;
    if (!written) unlink(temporary);
    return written;
}

// Makes every directory above `path`, as far as missing.
void MakeDirectories(const char *path)
{
    char part[PATH_MAX];
    const size_t length = std::strlen(path);
    std::memcpy(part, path, length + 1);
    for (size_t i = 1; i < length; ++i) {
        if (part[i] != '/') continue;
        part[i] = 0;
        mkdir(part, 0755);
        part[i] = '/';
    }
}

bool WriteKey(const char *path, const char *section, const char *key, const char *value)
{
    FileText file;
    if (!ReadFile(path, file)) {
        std::free(file.Bytes);
        return false;
    }
    const bool windowsLines = file.Length > 0 && std::memchr(file.Bytes, '\r', file.Length) != nullptr;
    const char *const newLine = windowsLines ? "\r\n" : "\n";
    const char *const text = file.Bytes != nullptr ? file.Bytes : "";
    const FileText content{const_cast<char *>(text), file.Length};
    const KeyPlace place = FindKey(content, section, key);

    const char *pieces[12];
    size_t lengths[12];
    size_t count = 0;
    const auto add = [&](const char *bytes, size_t length) {
        pieces[count] = bytes;
        lengths[count++] = length;
    };
    const auto addText = [&](const char *bytes) { add(bytes, std::strlen(bytes)); };

    const auto headLength = static_cast<size_t>(place.Begin - text);
    add(text, headLength);
    if (value != nullptr || !place.KeyFound) {
        if (headLength > 0 && text[headLength - 1] != '\n') addText(newLine);
        if (!place.SectionFound) {
            addText("[");
            addText(section);
            addText("]");
            addText(newLine);
        }
        addText(key);
        addText("=");
        addText(value != nullptr ? value : "");
        addText(newLine);
    }
    add(place.End, static_cast<size_t>(text + file.Length - place.End));
    const bool nothingToRemove = value == nullptr && !place.KeyFound;
    const bool written = nothingToRemove || Replace(path, pieces, lengths, count);
    std::free(file.Bytes);
    return written;
}

} // namespace

size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName)
{
    if (size == 0) return 0;
    out[0] = 0;
    char path[PATH_MAX];
    FileText file;
    if (!Locate(fileName, path)) return 0;
    if (!ReadFile(path, file) || file.Bytes == nullptr) {
        std::free(file.Bytes);
        return 0;
    }
    const KeyPlace place = FindKey(file, section, key);
    const Span value = WithoutQuotes(place.KeyFound ? place.Value : Span{file.Bytes, file.Bytes});
    auto length = static_cast<size_t>(value.End - value.Begin);
    if (length > size - 1) length = size - 1;
    std::memcpy(out, value.Begin, length);
    out[length] = 0;
    std::free(file.Bytes);
    return length;
}

bool IsProfileUnreadable(const char *fileName)
{
    char path[PATH_MAX];
    FileText file;
    if (!Locate(fileName, path)) return false;
    const bool read = ReadFile(path, file);
    std::free(file.Bytes);
    return !read;
}

namespace {

// Another writer is done in a moment; who holds the lock for longer is none, and a choice that is not
// remembered does no harm.
bool LockWithinASecond(int file)
{
    constexpr int steps = 200;
    constexpr timespec step{0, 5'000'000};
    for (int i = 0; i < steps; ++i) {
        if (flock(file, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        nanosleep(&step, nullptr);
    }
    return false;
}

} // namespace

bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName)
{
    char path[PATH_MAX];
    if (!Locate(fileName, path)) {
        if (!Candidate(0, fileName, path)) return false;
        MakeDirectories(path);
    } else if (char real[PATH_MAX]; realpath(path, real) != nullptr) {
        std::memcpy(path, real, sizeof path); // a link stays a link
    }
    // One writer at a time, in this process or another: the change is a read and a write.
    char directory[PATH_MAX];
    std::memcpy(directory, path, sizeof directory);
    char *slash = std::strrchr(directory, '/');
    if (slash == nullptr) return false;
    slash[slash == directory ? 1 : 0] = 0;
    const int lock = OpenFile(AT_FDCWD, directory, O_RDONLY | O_DIRECTORY);
    if (lock < 0) return false;
    const bool written = LockWithinASecond(lock) && WriteKey(path, section, key, value);
    close(lock);
    return written;
}

} // namespace host
