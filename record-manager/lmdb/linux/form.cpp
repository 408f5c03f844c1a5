#include "record-manager/lmdb/form.h"

#include <cerrno>
#include <unistd.h>

namespace wbtrv {

namespace {

constexpr size_t lanes = 4;
constexpr size_t stride = lanes * sizeof(uint64_t);
static_assert(smallestPage % stride == 0);
constexpr uint64_t factor = 0x9E3779B97F4A7C15;

// Each step can be undone, so two inputs that differ in one word never come to the same.
uint64_t Stir(uint64_t lane, uint64_t word)
{
    lane = (lane ^ word) * factor;
    return lane << 31 | lane >> 33;
}

uint64_t Join(const uint64_t *lane)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < lanes; ++i) {
        sum = Stir(sum, lane[i]);
        sum ^= sum >> 32;
    }
    sum *= factor;
    return sum ^ sum >> 29;
}

void StirAll(uint64_t *lane, const uint8_t *from, size_t size)
{
    for (size_t at = 0; at < size; at += stride) {
        for (size_t i = 0; i < lanes; ++i) {
            lane[i] = Stir(lane[i], GetField<uint64_t>(from + at + i * sizeof(uint64_t)));
        }
    }
}

} // namespace

uint32_t SumOf(const uint8_t *page, size_t size)
{
    uint8_t first[stride];
    std::memcpy(first, page, stride);
    PageHead head = HeadOf(page);
    head.Sum = 0;
    head.Flags = KindOf(head);
    PutField(first, head);
    uint64_t lane[lanes] = {1, 2, 3, 4};
    StirAll(lane, first, stride);
    StirAll(lane, page + stride, size - stride);
    const auto sum = static_cast<uint32_t>(Join(lane) >> 41);
    return sum == 0 ? 1 : sum;
}

void PutSum(uint8_t *page, size_t size)
{
    const uint32_t sum = SumOf(page, size);
    PageHead head = HeadOf(page);
    head.Sum = static_cast<uint16_t>(sum);
    head.Flags = static_cast<uint16_t>(KindOf(head) | (sum >> 9 & SumFlags));
    PutField(page, head);
}

uint64_t SumOfMeta(const void *contents)
{
    uint8_t padded[(metaSize + stride - 1) / stride * stride] = {};
    std::memcpy(padded, contents, metaSize);
    uint64_t lane[lanes] = {1, 2, 3, 4};
    StirAll(lane, padded, sizeof padded);
    const uint64_t sum = Join(lane);
    return sum == 0 ? 1 : sum;
}

bool IsInOrder(const uint8_t *page, size_t pageSize, uint64_t number)
{
    const PageHead head = HeadOf(page);
    const uint16_t kind = KindOf(head);
    const bool leaf = kind == LeafPage;
    if (head.Number != number || (!leaf && kind != BranchPage)) return false;
    if (head.Lower <= sizeof head || head.Lower > head.Upper || head.Upper > pageSize) return false;
    for (size_t i = 0; i < CountNodes(head); ++i) {
        const auto offset = static_cast<size_t>(NodeAt(page, i) - page);
        if (offset < head.Upper || offset + sizeof(NodeHead) > pageSize) return false;
        const NodeHead node = NodeOf(page + offset);
        size_t end = offset + sizeof node + node.KeySize;
        if (leaf) end += (node.Flags & BigNode) != 0 ? sizeof(uint64_t) : ValueSize(node);
        if (end > pageSize) return false;
    }
    return true;
}

namespace {

bool ReadMeta(int fd, uint64_t offset, MetaPage *meta)
{
    ssize_t got = -1;
    do {
        got = pread(fd, meta, sizeof *meta, static_cast<off_t>(offset));
    } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(sizeof *meta) && meta->Magic == metaMagic &&
           meta->Version == metaVersion && KindOf(meta->Head) == MetaPageFlag;
}

bool HasItsSum(const MetaPage &meta)
{
    return meta.Sum == SumOfMeta(reinterpret_cast<const uint8_t *>(&meta) + metaBegin);
}

// A writer that died has left the older of the two half written, as the one before it was.
bool CanBeHalfWritten(const MetaPage &meta, const MetaPage &other)
{
    return meta.Transaction + 1 == other.Transaction || (meta.Transaction == 0 && other.Transaction == 0);
}

bool HaveTheirSums(const MetaPage metas[2])
{
    const bool first = HasItsSum(metas[0]);
    const bool second = HasItsSum(metas[1]);
    if (first && second) return true;
    if (first) return CanBeHalfWritten(metas[1], metas[0]);
    return second && CanBeHalfWritten(metas[0], metas[1]);
}

} // namespace

bool ReadMetas(int fd, MetaPage metas[2], bool *summed)
{
    // Whoever writes one is done with it before it writes the other, so of some looks one finds both whole.
    for (unsigned attempt = 0; attempt < 3; ++attempt) {
        if (!ReadMeta(fd, 0, &metas[0])) return false;
        const size_t pageSize = metas[0].Free.PageSize;
        if (pageSize < smallestPage || pageSize > largestPage || (pageSize & (pageSize - 1)) != 0)
            return false;
        if (!ReadMeta(fd, pageSize, &metas[1]) || metas[1].Free.PageSize != pageSize) return false;
        *summed = metas[0].Sum != 0 || metas[1].Sum != 0;
        if (!*summed || HaveTheirSums(metas)) return true;
    }
    return false;
}

} // namespace wbtrv
