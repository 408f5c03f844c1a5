#include "report-engine/output.h"

#include "host/descriptors.h"
#include "report-engine/complain.h"
#include "report-engine/forms/forms.h"
#include "text/fixed_text.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rs {

namespace {

enum class FileKind { none, pdf, csv, json, html, text };

// Without regard to case; `lower` is in small letters.
bool IsSameExtension(const char *text, const char *lower)
{
    for (; *text != 0 && *lower != 0; ++text, ++lower) {
        const char letter = *text >= 'A' && *text <= 'Z' ? static_cast<char>(*text + ('a' - 'A')) : *text;
        if (letter != *lower) return false;
    }
    return *text == *lower;
}

FileKind KindOf(const char *path)
{
    struct Row {
        const char *Extension;
        FileKind Kind;
    };
    constexpr Row rows[] = {{".pdf", FileKind::pdf},
                            {".csv", FileKind::csv},
                            {".json", FileKind::json},
                            {".html", FileKind::html},
                            {".txt", FileKind::text}};
    const size_t length = std::strlen(path);
    for (const Row &row : rows) {
        const size_t part = std::strlen(row.Extension);
        if (length > part && IsSameExtension(path + length - part, row.Extension)) return row.Kind;
    }
    return FileKind::none;
}

// The file under its working name beside the final one, so that the last step is a rename within one
// directory.
struct NewFile {
    int File;
    char Final[PATH_MAX];
    char Working[PATH_MAX];
};

// 0 or errno.
int CreateNewFile(NewFile &file, const char *path)
{
    struct stat status = {};
    if (stat(path, &status) == 0) {
        if (S_ISDIR(status.st_mode)) return EISDIR;
        if (!S_ISREG(status.st_mode)) return EINVAL; // a device or a pipe cannot be replaced
        // A file that may not be written is not replaced either; a link keeps pointing at what it points at.
        if (access(path, W_OK) != 0) return errno;
        if (realpath(path, file.Final) == nullptr) return errno;
    } else if (std::strlen(path) >= sizeof file.Final) {
        return ENAMETOOLONG;
    } else {
        text::CopyText(file.Final, path);
    }
    static std::atomic<unsigned> next = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const int length = std::snprintf(file.Working, sizeof file.Working, "%s.%x-%x~", file.Final,
                                         static_cast<unsigned>(getpid()), next.fetch_add(1));
        if (length < 0 || length >= static_cast<int>(sizeof file.Working)) return ENAMETOOLONG;
        file.File = host::OpenFile(AT_FDCWD, file.Working, O_WRONLY | O_CREAT | O_EXCL);
        if (file.File >= 0) return 0;
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

Ended WriteContents(FileKind kind, int file, const View &view, const char *path, PageRange range,
                    const Progress *progress)
{
    if (kind == FileKind::pdf) return WritePages(file, view, path, range, progress);
    auto *writer = static_cast<Writer *>(std::malloc(sizeof(Writer)));
    if (writer == nullptr) {
        ComplainOf(path, ENOMEM);
        return Ended::failed;
    }
    writer->File = file;
    writer->Error = 0;
    writer->Watch = progress;
    writer->Used = 0;
    bool isRead = false;
    switch (kind) {
    case FileKind::csv: isRead = WriteCsv(*writer, view); break;
    case FileKind::json: isRead = WriteJson(*writer, view); break;
    case FileKind::html: isRead = WriteHtml(*writer, view); break;
    default: isRead = WriteText(*writer, view); break;
    }
    const bool isWritten = FlushWriter(*writer);
    const bool isStopped = writer->Error == ECANCELED;
    if (isStopped) {
        // The person knows.
    } else if (!isWritten) {
        ComplainOf(path, writer->Error);
    } else if (!isRead) {
        Complain(path, ": Die Zwischendatei läßt sich nicht lesen.");
    }
    std::free(writer);
    return isStopped ? Ended::stopped : isRead && isWritten ? Ended::good : Ended::failed;
}

// The directory remembers a new name only once it is on disk itself.
int SyncDirectoryOf(char *path)
{
    char *slash = std::strrchr(path, '/');
    const char *directory = slash == nullptr ? "." : slash == path ? "/" : path;
    if (slash != nullptr) *slash = 0;
    const int file = host::OpenFile(AT_FDCWD, directory, O_RDONLY | O_DIRECTORY);
    int error = file < 0 ? errno : 0;
    // Not every file system syncs directories; then it has nothing to lose there.
    if (error == 0 && fsync(file) != 0 && errno != EINVAL && errno != ENOTSUP) error = errno;
    if (file >= 0) close(file);
    return error;
}

// 0 or errno; EEXIST only without `mayReplace`.
int GiveName(const NewFile &file, bool mayReplace)
{
    if (mayReplace) return std::rename(file.Working, file.Final) == 0 ? 0 : errno;
    if (renameat2(AT_FDCWD, file.Working, AT_FDCWD, file.Final, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    if (access(file.Final, F_OK) == 0) return EEXIST;
    return std::rename(file.Working, file.Final) == 0 ? 0 : errno;
}

// The working file under its final name, or gone. The content is on disk before the name is, so that a crash
// leaves the old file or the new one, never an empty one.
int FinishFile(NewFile &file, bool mayReplace, int error)
{
    if (error == 0 && fsync(file.File) != 0 && errno != EINVAL) error = errno;
    // What close finds wrong (a full disk on a network) counts as much as what write finds.
    if (close(file.File) != 0 && error == 0) error = errno;
    if (error == 0) error = GiveName(file, mayReplace);
    if (error != 0) {
        unlink(file.Working);
        return error;
    }
    return SyncDirectoryOf(file.Final);
}

Written WriteFile(const View &view, FileKind kind, const char *path, bool mayReplace, PageRange range,
                  const Progress *progress)
{
    auto *file = static_cast<NewFile *>(std::calloc(1, sizeof(NewFile)));
    int error = file != nullptr ? CreateNewFile(*file, path) : ENOMEM;
    Ended ended = Ended::good;
    if (error == 0) {
        ended = WriteContents(kind, file->File, view, path, range, progress);
        error = FinishFile(*file, mayReplace, ended == Ended::good ? 0 : EIO);
    }
    std::free(file);
    if (ended == Ended::stopped) return Written::stopped;
    if (error == 0) return Written::whole;
    if (error == EEXIST && !mayReplace) return Written::nameTaken;
    if (ended == Ended::good) ComplainOf(path, error);
    return Written::failed;
}

} // namespace

const char *TitleOf(const View &view)
{
    return view.Of->Def.Title[0] != 0 ? view.Of->Def.Title : view.Of->Def.ReportId;
}

void NameForFile(const View &view, char (&name)[maxViewTitle])
{
    text::CopyText(name, TitleOf(view));
    for (char *letter = name; *letter != 0; ++letter) {
        if (*letter == '/' || static_cast<unsigned char>(*letter) < ' ') *letter = '-';
    }
}

Written ExportView(const View &view, const char *path, const Progress *progress)
{
    if (path == nullptr) path = "";
    const FileKind kind = KindOf(path);
    if (kind == FileKind::none) {
        Complain(path, ": In Dateien dieser Art wird kein Bericht geschrieben.");
        return Written::failed;
    }
    return WriteFile(view, kind, path, true, {}, progress);
}

Written WritePdfFile(const View &view, const char *path, bool mayReplace, PageRange range,
                     const Progress *progress)
{
    return WriteFile(view, FileKind::pdf, path, mayReplace, range, progress);
}

} // namespace rs
