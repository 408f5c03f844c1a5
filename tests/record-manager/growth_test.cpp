// The books do not grow without bound while others have them open and do nothing. POSTINGS says how many
// changes are made meanwhile.
#include "files.h"

#ifndef POSTINGS
#define POSTINGS 1000
#endif

namespace {

using namespace wbtrvtest;

TEST(Growth, IsBoundedWhileReadersIdle)
{
    const TempDirectory directory(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
    const std::string path = directory / "t.btr";
    Local me;
    ASSERT_EQ(Create(me, path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
    const OnT<Local> t{me};
    for (const char *name : {"a", "b", "c"}) {
        ASSERT_EQ(t.Insert(name, "x", 1).Status, BtrStatusOk);
    }
    // One that has read, and one that has read and locked in a transaction that it does not end.
    const Remote idle;
    ASSERT_EQ(Open(idle, path).Status, BtrStatusOk);
    ASSERT_EQ(Name(OnT<const Remote>{idle}.GetEqual("a")), "a");
    const Remote busy;
    ASSERT_EQ(Open(busy, path).Status, BtrStatusOk);
    ASSERT_EQ(busy({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(Name(OnT<const Remote>{busy}.GetEqual("b", BtrBiasLock)), "b");

    const auto post = [&](int i) {
        return me({.Operation = BtrOpBeginConcurrent}).Status == BtrStatusOk &&
               t.Insert("p", "x", i).Status == BtrStatusOk && Name(t.GetEqual("c")) == "c" &&
               t.Update("c", "y", i).Status == BtrStatusOk && Name(t.GetEqual("p")) == "p" &&
               t.Delete().Status == BtrStatusOk && me({.Operation = BtrOpEnd}).Status == BtrStatusOk;
    };
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(post(i));
    }
    const uint64_t size = std::filesystem::file_size(directory / "books.mdb");
    for (int i = 0; i < POSTINGS; ++i) {
        ASSERT_TRUE(post(i)) << i;
    }
    EXPECT_LE(std::filesystem::file_size(directory / "books.mdb"), size + size_t{16} * 4096);
    EXPECT_EQ(Name(OnT<const Remote>{idle}.GetEqual("c")), "c");
    EXPECT_EQ(busy({.Operation = BtrOpEnd}).Status, BtrStatusOk);
}

} // namespace
