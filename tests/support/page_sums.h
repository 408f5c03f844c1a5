// Books that were changed behind the record manager's back, with the store alone: pages that have the sums of
// what was there before, and books as they were made before there were sums.
#pragma once

#include "record-manager/lmdb/form.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

struct BooksBytes {
    std::string Path;
    std::vector<uint8_t> Bytes;
    size_t PageSize = 0;

    uint8_t *Page(uint64_t number) { return Bytes.data() + number * PageSize; }
};

inline BooksBytes ReadBooks(const std::string &path)
{
    BooksBytes books;
    books.Path = path;
    std::ifstream in(path, std::ios::binary);
    books.Bytes.assign(std::istreambuf_iterator<char>(in), {});
    wbtrv::MetaPage first;
    memcpy(&first, books.Bytes.data(), sizeof first);
    books.PageSize = first.Free.PageSize;
    return books;
}

inline void WriteBooks(const BooksBytes &books)
{
    std::ofstream(books.Path, std::ios::binary | std::ios::in)
        .write(reinterpret_cast<const char *>(books.Bytes.data()),
               static_cast<std::streamsize>(books.Bytes.size()));
}

// A page, or a run of them, with its size.
using EachPage = std::function<void(uint8_t *page, size_t size)>;

inline void VisitTree(BooksBytes &books, uint64_t root, const EachPage &visit)
{
    using namespace wbtrv;
    if (root == noPage) return;
    const PageHead head = HeadOf(books.Page(root));
    const bool leaf = (head.Flags & LeafPage) != 0;
    for (size_t i = 0; i < CountNodes(head); ++i) {
        const uint8_t *at = NodeAt(books.Page(root), i);
        const NodeHead node = NodeOf(at);
        const uint8_t *value = at + sizeof node + node.KeySize;
        if (!leaf) {
            VisitTree(books, ChildOf(node), visit);
        } else if ((node.Flags & BigNode) != 0) {
            uint64_t run = 0;
            memcpy(&run, value, sizeof run);
            visit(books.Page(run), PagesOfRun(HeadOf(books.Page(run))) * books.PageSize);
        } else if ((node.Flags & TreeNode) != 0) {
            TreeHead tree;
            memcpy(&tree, value, sizeof tree);
            VisitTree(books, tree.Root, visit);
        }
    }
    visit(books.Page(root), books.PageSize);
}

// All pages of the newest state of the books, apart from the two meta pages.
inline void VisitBooks(BooksBytes &books, const EachPage &visit)
{
    using namespace wbtrv;
    MetaPage metas[2];
    memcpy(&metas[0], books.Page(0), sizeof metas[0]);
    memcpy(&metas[1], books.Page(1), sizeof metas[1]);
    const MetaPage &newest = metas[metas[1].Transaction > metas[0].Transaction ? 1 : 0];
    VisitTree(books, newest.Free.Root, visit);
    VisitTree(books, newest.Main.Root, visit);
}

inline void PutMetaSum(BooksBytes &books, uint64_t meta, uint64_t sum)
{
    memcpy(books.Page(meta) + offsetof(wbtrv::MetaPage, Sum), &sum, sizeof sum);
}

// Gives every page of the file the sum that it should have.
inline void SumAnew(const std::string &path)
{
    BooksBytes books = ReadBooks(path);
    VisitBooks(books, wbtrv::PutSum);
    for (uint64_t meta = 0; meta < 2; ++meta) {
        PutMetaSum(books, meta, wbtrv::SumOfMeta(books.Page(meta) + wbtrv::metaBegin));
    }
    WriteBooks(books);
}

// How many pages of the file tell a sum.
inline size_t CountSums(const std::string &path)
{
    BooksBytes books = ReadBooks(path);
    size_t count = 0;
    VisitBooks(books, [&](const uint8_t *page, size_t) {
        if (wbtrv::SumIn(wbtrv::HeadOf(page)) != 0) ++count;
    });
    return count;
}

// Makes of books what they would be from before there were sums: the heads are the store's own, and the
// catalogue tells the older form.
inline void TakeSums(const std::string &path)
{
    using namespace wbtrv;
    BooksBytes books = ReadBooks(path);
    VisitBooks(books, [](uint8_t *page, size_t) {
        PageHead head = HeadOf(page);
        head.Sum = 0;
        head.Flags = KindOf(head);
        memcpy(page, &head, sizeof head);
    });
    for (uint64_t meta = 0; meta < 2; ++meta) {
        PutMetaSum(books, meta, 0);
    }
    // "!format" in the catalogue: the mark, and behind it the number of the form.
    constexpr std::string_view name = "!formatWBTRVBKS";
    constexpr uint32_t withoutSums = 1;
    const std::string_view all(reinterpret_cast<const char *>(books.Bytes.data()), books.Bytes.size());
    for (size_t at = all.find(name); at != std::string_view::npos; at = all.find(name, at + 1)) {
        memcpy(books.Bytes.data() + at + name.size(), &withoutSums, sizeof withoutSums);
    }
    WriteBooks(books);
}

} // namespace testsupport
