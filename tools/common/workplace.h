// Making a directory or a file beside its place and moving it there when it is whole: whatever happens
// before, the place is as it was.
#pragma once

#include <filesystem>
#include <string>

namespace tools {

// A directory being filled, hidden beside its target, so that moving it is one step of the file system. Gone
// again unless it was moved. What earlier runs that were killed left of the same target is cleared away.
struct Workplace {
    // `target` is absolute and normal. The directory lies in `parent`, or beside the target.
    explicit Workplace(const std::filesystem::path &target, const std::filesystem::path &parent = {});
    ~Workplace();
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;

    // Takes the place of what may stand at the target, in one step where the file system can exchange two
    // names; what stood there is removed. On disk when this returns.
    void MoveTo(const std::filesystem::path &target);

    std::filesystem::path Path;

private:
    std::filesystem::path hidden; // holds the directory, and what it replaced at the end
    int lock = -1;                // on that: it is in use as long as this process is there
};

// A file being written, likewise.
struct FileInWork {
    // `path` is absolute. An existing one is refused unless `replace`.
    FileInWork(const std::filesystem::path &path, bool replace);
    ~FileInWork();
    FileInWork(const FileInWork &) = delete;
    FileInWork &operator=(const FileInWork &) = delete;

    void Write(const void *data, size_t size);
    // On disk and in its place when this returns.
    void Finish();

private:
    std::filesystem::path target;
    std::filesystem::path path;
    bool replaces;
    int file = -1;
};

// Throws with a German text: what could not be done, and why.
[[noreturn]] void ThrowFileError(const std::filesystem::path &path, const char *what, int error);

// The system's reason in German, for those that people meet.
std::string ErrorText(int error);

} // namespace tools
