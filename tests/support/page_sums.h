// Books that a test has changed behind the record manager's back, with the store alone: their pages have the
// sums of what was there before.
#pragma once

#include "record-manager/lmdb/form.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace testsupport {

struct BooksBytes {
    std::vector<uint8_t> Bytes;
    size_t PageSize = 0;

    uint8_t *Page(uint64_t number) { return Bytes.data() + number * PageSize; }
};

inline void SumTree(BooksBytes &books, uint64_t root)
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
            SumTree(books, ChildOf(node));
        } else if ((node.Flags & BigNode) != 0) {
            uint64_t run = 0;
            memcpy(&run, value, sizeof run);
            PutSum(books.Page(run), PagesOfRun(HeadOf(books.Page(run))) * books.PageSize);
        } else if ((node.Flags & TreeNode) != 0) {
            TreeHead tree;
            memcpy(&tree, value, sizeof tree);
            SumTree(books, tree.Root);
        }
    }
    PutSum(books.Page(root), books.PageSize);
}

// Gives every page of the file the sum that it should have.
inline void SumAnew(const std::string &path)
{
    using namespace wbtrv;
    BooksBytes books;
    {
        std::ifstream in(path, std::ios::binary);
        books.Bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    MetaPage first;
    memcpy(&first, books.Bytes.data(), sizeof first);
    books.PageSize = first.Free.PageSize;
    MetaPage second;
    memcpy(&second, books.Page(1), sizeof second);
    const MetaPage &newest = second.Transaction > first.Transaction ? second : first;
    SumTree(books, newest.Free.Root);
    SumTree(books, newest.Main.Root);
    for (uint64_t meta = 0; meta < 2; ++meta) {
        const uint64_t sum = SumOfMeta(books.Page(meta) + metaBegin);
        memcpy(books.Page(meta) + offsetof(MetaPage, Sum), &sum, sizeof sum);
    }
    std::ofstream(path, std::ios::binary | std::ios::in)
        .write(reinterpret_cast<const char *>(books.Bytes.data()),
               static_cast<std::streamsize>(books.Bytes.size()));
}

} // namespace testsupport
