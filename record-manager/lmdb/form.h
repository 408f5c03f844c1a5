// How the store lays out its file: pages with a head, trees of them, and two meta pages that tell in turn
// where the trees begin. This is the layout of its data version 1; books of another are refused when they are
// opened.
//
// The record manager adds a sum to each page when the store writes it (calls.cpp): 23 bits in places of the
// head that the store leaves at 0, and 64 bits behind the contents of a meta page. Books that were made
// before there were sums have none at all, and tell so by those of their meta pages.
#pragma once

#include "record-manager/fields.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace wbtrv {

inline constexpr uint32_t metaMagic = 0xBEEFC0DE;
inline constexpr uint32_t metaVersion = 1;
inline constexpr uint64_t noPage = UINT64_MAX;

enum PageFlag : uint16_t {
    BranchPage = 0x01,
    LeafPage = 0x02,
    RunPage = 0x04, // the first of several that hold one value
    MetaPageFlag = 0x08,
    SumFlags = 0x3F80 // seven more bits of the sum
};
enum NodeFlag : uint16_t { BigNode = 0x01, TreeNode = 0x02 };
enum TreeFlag : uint16_t { NumberedTree = 0x08 }; // its keys are numbers of the machine

#pragma pack(push, 1)
struct PageHead {
    uint64_t Number;
    uint16_t Sum;
    uint16_t Flags;
    uint16_t Lower; // end of the table of node offsets
    uint16_t Upper; // begin of the nodes
};
struct TreeHead {
    uint32_t PageSize; // in the tree of free pages
    uint16_t Flags;
    uint16_t Depth;
    uint64_t BranchPages;
    uint64_t LeafPages;
    uint64_t RunPages;
    uint64_t Entries;
    uint64_t Root;
};
struct MetaPage {
    PageHead Head;
    uint32_t Magic;
    uint32_t Version;
    uint64_t Address;
    uint64_t MapSize;
    TreeHead Free;
    TreeHead Main;
    uint64_t LastPage;
    uint64_t Transaction;
    uint64_t Sum; // of what lies between Address and here
};
struct NodeHead {
    uint16_t Low; // size of a leaf's value, or part of a branch's page number
    uint16_t High;
    uint16_t Flags; // or the highest part of the page number
    uint16_t KeySize;
};
#pragma pack(pop)
static_assert(sizeof(PageHead) == 16);
static_assert(sizeof(TreeHead) == 48);
static_assert(sizeof(MetaPage) == 160);
static_assert(sizeof(NodeHead) == 8);

// What the store writes of a meta page by a commit.
inline constexpr size_t metaBegin = offsetof(MetaPage, MapSize);
inline constexpr size_t metaSize = offsetof(MetaPage, Sum) - metaBegin;
static_assert(metaBegin == 32 && metaSize == 120);

inline constexpr size_t smallestPage = 512;
inline constexpr size_t largestPage = 65536;

inline PageHead HeadOf(const uint8_t *page) { return GetField<PageHead>(page); }

inline size_t CountNodes(const PageHead &head) { return (head.Lower - sizeof head) / sizeof(uint16_t); }

// A run tells its length where other pages tell of their nodes.
inline uint32_t PagesOfRun(const PageHead &head) { return head.Lower | uint32_t{head.Upper} << 16; }

inline const uint8_t *NodeAt(const uint8_t *page, size_t index)
{
    return page + GetField<uint16_t>(page + sizeof(PageHead) + index * sizeof(uint16_t));
}

inline NodeHead NodeOf(const uint8_t *at) { return GetField<NodeHead>(at); }

inline uint64_t ChildOf(const NodeHead &node)
{
    return node.Low | uint64_t{node.High} << 16 | uint64_t{node.Flags} << 32;
}

inline size_t ValueSize(const NodeHead &node) { return node.Low | size_t{node.High} << 16; }

inline uint16_t KindOf(const PageHead &head) { return static_cast<uint16_t>(head.Flags & ~SumFlags); }

// The 23 bits of a page's head that tell its sum; 0 where there is none.
inline uint32_t SumIn(const PageHead &head)
{
    return head.Sum | static_cast<uint32_t>(head.Flags & SumFlags) << 9;
}

// The sum of a page, or of a run of them, whatever its head tells of it. Never 0.
uint32_t SumOf(const uint8_t *page, size_t size);
void PutSum(uint8_t *page, size_t size);

// The sum of the contents of a meta page, given from MapSize on. Never 0.
uint64_t SumOfMeta(const void *contents);

// Whether every node of a branch or leaf lies within the page, and the head is that of page `number`.
bool IsInOrder(const uint8_t *page, size_t pageSize, uint64_t number);

// Reads both meta pages. False when one is none or cannot be read, or is not what its sum says and was not
// just being written either. `*summed` tells that these books have sums.
bool ReadMetas(int fd, MetaPage metas[2], bool *summed);

} // namespace wbtrv
