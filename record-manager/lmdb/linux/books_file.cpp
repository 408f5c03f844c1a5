#include "record-manager/lmdb/books_file.h"

#include "record-manager/lmdb/form.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace wbtrv {

namespace {

constexpr unsigned deepestList = 32;

struct Walk {
    int Fd;
    size_t PageSize;
    uint64_t Pages;    // whole ones in the file
    uint64_t LastPage; // by the meta page
    uint64_t Free;     // of those that are missing
};

bool ReadAt(int fd, void *to, size_t size, uint64_t offset)
{
    return pread(fd, to, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

bool ReadNewestMeta(int fd, MetaPage *newest)
{
    MetaPage first;
    if (!ReadAt(fd, &first, sizeof first, 0) || first.Magic != metaMagic || first.Version != metaVersion)
        return false;
    const uint32_t pageSize = first.Free.PageSize;
    if (pageSize < 512 || pageSize > 65536) return false;
    MetaPage second;
    if (!ReadAt(fd, &second, sizeof second, pageSize) || second.Magic != metaMagic) return false;
    *newest = second.Transaction > first.Transaction ? second : first;
    newest->Free.PageSize = pageSize;
    return true;
}

// A list of free pages: how many, then their numbers.
bool CountList(Walk *walk, const uint8_t *list, size_t size)
{
    if (size < sizeof(uint64_t)) return false;
    const auto count = GetField<uint64_t>(list);
    if (count > size / sizeof count - 1) return false;
    for (uint64_t i = 1; i <= count; ++i) {
        const auto page = GetField<uint64_t>(list + i * sizeof(uint64_t));
        if (page >= walk->Pages && page <= walk->LastPage) walk->Free++;
    }
    return true;
}

bool CountBigList(Walk *walk, uint64_t page, size_t size)
{
    const uint64_t pages = (sizeof(PageHead) + size + walk->PageSize - 1) / walk->PageSize;
    if (page >= walk->Pages || pages > walk->Pages - page) return false;
    auto *list = static_cast<uint8_t *>(std::malloc(size));
    if (list == nullptr) return false;
    const bool whole =
        ReadAt(walk->Fd, list, size, page * walk->PageSize + sizeof(PageHead)) && CountList(walk, list, size);
    std::free(list);
    return whole;
}

bool CountPage(Walk *walk, uint64_t number, unsigned depth);

bool CountNode(Walk *walk, const uint8_t *page, size_t offset, bool leaf, unsigned depth)
{
    if (offset + sizeof(NodeHead) > walk->PageSize) return false;
    const NodeHead node = NodeOf(page + offset);
    if (!leaf) {
        return CountPage(walk, ChildOf(node), depth + 1);
    }
    const size_t size = ValueSize(node);
    const size_t value = offset + sizeof node + node.KeySize;
    if ((node.Flags & BigNode) == 0) {
        return value + size <= walk->PageSize && CountList(walk, page + value, size);
    }
    if (value + sizeof(uint64_t) > walk->PageSize) return false;
    return CountBigList(walk, GetField<uint64_t>(page + value), size);
}

bool CountPage(Walk *walk, uint64_t number, unsigned depth)
{
    if (number >= walk->Pages || depth > deepestList) return false;
    auto *page = static_cast<uint8_t *>(std::malloc(walk->PageSize));
    if (page == nullptr) return false;
    PageHead head;
    bool whole = ReadAt(walk->Fd, page, walk->PageSize, number * walk->PageSize);
    if (whole) {
        head = HeadOf(page);
        whole = (head.Flags & (BranchPage | LeafPage)) != 0 && head.Lower >= sizeof head &&
                head.Lower <= walk->PageSize;
    }
    for (size_t at = sizeof head; whole && at + sizeof(uint16_t) <= head.Lower; at += sizeof(uint16_t)) {
        const auto offset = GetField<uint16_t>(page + at);
        whole = CountNode(walk, page, offset, (head.Flags & LeafPage) != 0, depth);
    }
    std::free(page);
    return whole;
}

bool ReadFacts(int fd, const char *path, int flags, BooksFacts *facts)
{
    struct statx found;
    if (statx(fd, path, flags, STATX_TYPE | STATX_INO | STATX_NLINK | STATX_SIZE, &found) != 0) return false;
    *facts = {makedev(found.stx_dev_major, found.stx_dev_minor), found.stx_ino, found.stx_nlink,
              static_cast<int64_t>(found.stx_size)};
    return true;
}

} // namespace

bool ReadFacts(int fd, BooksFacts *facts) { return ReadFacts(fd, "", AT_EMPTY_PATH, facts); }

bool ReadFacts(const char *path, BooksFacts *facts)
{
    return ReadFacts(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, facts);
}

bool IsUnfinished(int fd)
{
    MetaPage first;
    BooksFacts found;
    if (!ReadFacts(fd, &found) || !ReadAt(fd, &first, sizeof first, 0)) return false;
    const bool untouched = first.Magic == metaMagic && first.Version == metaVersion && first.Transaction == 0;
    return untouched && found.Size < 2 * int64_t{first.Free.PageSize};
}

bool OnlyFreePagesMissing(int fd)
{
    // Pages that a meta page knows are not written over before the next but one; a third try would only be
    // needed if others wrote faster than the list can be read.
    for (unsigned attempt = 0; attempt < 3; ++attempt) {
        MetaPage meta;
        BooksFacts found;
        if (!ReadNewestMeta(fd, &meta) || !ReadFacts(fd, &found)) return false;
        Walk walk{fd, meta.Free.PageSize, static_cast<uint64_t>(found.Size) / meta.Free.PageSize,
                  meta.LastPage, 0};
        if (walk.LastPage < walk.Pages) return true;
        const bool read = meta.Free.Root == noPage || CountPage(&walk, meta.Free.Root, 0);
        MetaPage after;
        if (!ReadNewestMeta(fd, &after)) return false;
        if (after.Transaction > meta.Transaction + 1) continue;
        return read && walk.Free == walk.LastPage + 1 - walk.Pages;
    }
    return true;
}

} // namespace wbtrv
