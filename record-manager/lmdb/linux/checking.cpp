// Looking at pages before they are used. A page that was looked at is known again by its sum, which its head
// tells; what was written since has another. The first look goes through a read, which fails where the map
// would end the process.
#include "record-manager/lmdb/private.h"

#include <cerrno>
#include <unistd.h>

namespace wbtrv {

namespace {

// Whether the bytes are there to be read. One of each page of the system's brings all of it into memory,
// where the map shows it.
bool CanBeRead(const Store *store, uint64_t offset, size_t size)
{
    constexpr size_t systemPage = 4096;
    for (size_t at = 0; at < size; at += systemPage) {
        const size_t end = size - at < systemPage ? size : at + systemPage;
        char last = 0;
        ssize_t got = -1;
        do {
            got = pread(store->PresenceFd, &last, 1, static_cast<off_t>(offset + end - 1));
        } while (got < 0 && errno == EINTR);
        if (got != 1) return false;
    }
    return true;
}

bool IsMarked(const Environment &own, uint64_t number, const uint8_t *page)
{
    const uint32_t mark = own.Marks[number].load(std::memory_order_relaxed);
    return mark != 0 && mark == (SumIn(HeadOf(page)) | looked);
}

bool HasItsSum(const Environment &own, const uint8_t *page, size_t size)
{
    return !own.Summed || SumIn(HeadOf(page)) == SumOf(page, size);
}

void Mark(const Environment &own, uint64_t number, const uint8_t *page)
{
    own.Marks[number].store(SumIn(HeadOf(page)) | looked, std::memory_order_relaxed);
}

bool IsWhole(const View &view, uint64_t number, const uint8_t *page)
{
    const Environment &own = *view.Of->Own;
    if (!CanBeRead(view.Of, number * own.PageSize, own.PageSize)) return false;
    if (!HasItsSum(own, page, own.PageSize) || !IsInOrder(page, own.PageSize, number)) return false;
    Mark(own, number, page);
    return true;
}

bool IsWholeRun(const View &view, uint64_t number, const uint8_t *page)
{
    const Environment &own = *view.Of->Own;
    if (!CanBeRead(view.Of, number * own.PageSize, own.PageSize)) return false;
    const PageHead head = HeadOf(page);
    const uint64_t pages = PagesOfRun(head);
    if (head.Number != number || KindOf(head) != RunPage || pages == 0 ||
        pages > view.LastPage - number + 1) {
        return false;
    }
    if (!CanBeRead(view.Of, number * own.PageSize, pages * own.PageSize)) return false;
    if (!HasItsSum(own, page, pages * own.PageSize)) return false;
    Mark(own, number, page);
    return true;
}

} // namespace

int16_t LookAtPage(const View &view, uint64_t number, const uint8_t **page)
{
    const Environment &own = *view.Of->Own;
    if (number > view.LastPage || number >= own.MarkCount) return damaged;
    *page = own.Map + number * own.PageSize;
    // The page is not touched before the mark tells that it is there.
    if (own.Marks[number].load(std::memory_order_relaxed) != 0 && IsMarked(own, number, *page))
        return BtrStatusOk;
    return IsWhole(view, number, *page) ? static_cast<int16_t>(BtrStatusOk) : damaged;
}

int16_t LookAtRun(const View &view, uint64_t number, size_t size, const uint8_t **page)
{
    const Environment &own = *view.Of->Own;
    if (number > view.LastPage || number >= own.MarkCount) return damaged;
    *page = own.Map + number * own.PageSize;
    const bool known = own.Marks[number].load(std::memory_order_relaxed) != 0 && IsMarked(own, number, *page);
    if (!known && !IsWholeRun(view, number, *page)) return damaged;
    const PageHead head = HeadOf(*page);
    const bool fits = KindOf(head) == RunPage && size <= PagesOfRun(head) * own.PageSize - sizeof head;
    return fits ? static_cast<int16_t>(BtrStatusOk) : damaged;
}

namespace {

int16_t LookAtRunOf(const View &view, const uint8_t *at)
{
    const NodeHead node = NodeOf(at);
    if ((node.Flags & BigNode) == 0) return BtrStatusOk;
    const uint8_t *ignored = nullptr;
    const auto number = GetField<uint64_t>(at + sizeof node + node.KeySize);
    return LookAtRun(view, number, ValueSize(node), &ignored);
}

int16_t LookBelow(const View &view, const TreeHead &tree, uint64_t number, unsigned depth)
{
    const uint8_t *page = nullptr;
    if (depth == deepest) return damaged;
    int16_t status = LookAtPage(view, number, &page);
    if (status != BtrStatusOk) return status;
    const PageHead head = HeadOf(page);
    const bool leaf = KindOf(head) == LeafPage;
    if (leaf && view.Of->Own->Summed && tree.RunPages == 0) return BtrStatusOk;
    for (size_t i = 0; i < CountNodes(head) && status == BtrStatusOk; ++i) {
        const uint8_t *at = NodeAt(page, i);
        status = leaf ? LookAtRunOf(view, at) : LookBelow(view, tree, ChildOf(NodeOf(at)), depth + 1);
    }
    return status;
}

} // namespace

int16_t LookAtTree(const View &view, const TreeHead &tree)
{
    return tree.Root == noPage ? static_cast<int16_t>(BtrStatusOk) : LookBelow(view, tree, tree.Root, 0);
}

} // namespace wbtrv
