// What must hold of a client between its calls is checked, one belief broken at a time.
#include "files.h"

#include "record-manager/calls.h"

namespace {

using namespace wbtrvtest;

struct Beliefs : testing::Test {
    TempDirectory Directory;
    Local Me;
    OnT<Local> T{Me};
    wbtrv::Client *Client = nullptr;

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.GetEqual("a").Status, BtrStatusOk);
        Client = wbtrv::CurrentClient();
        ASSERT_EQ(wbtrv::BrokenInvariant(*Client), 0u);
    }
    wbtrv::ClientStore &Store() const { return *Client->Stores; }
    wbtrv::ClientFile &File() const { return *Store().Files; }
};

// Puts another value in its place for as long as it lives.
template <typename Value> struct Broken {
    Value &Place;
    Value Good;

    Broken(Value &place, Value bad) : Place(place), Good(place) { Place = bad; }
    Broken(const Broken &) = delete;
    Broken &operator=(const Broken &) = delete;
    ~Broken() { Place = Good; }
};

TEST_F(Beliefs, NoSnapshotIsLeftOpen)
{
    wbtrv::View *view = nullptr;
    ASSERT_EQ(wbtrv::BeginView(&Store(), &view), BtrStatusOk);
    EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 1u);
    wbtrv::EndView(&Store());
    EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 0u);
}

TEST_F(Beliefs, ASnapshotIsHeldOutsideOfTransactions)
{
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    {
        const Broken holds(Client->Holds, true);
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 8u);
    }
    ASSERT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpBeginSnapshot}).Status, BtrStatusOk);
    ASSERT_EQ(T.GetEqual("a").Status, BtrStatusOk);
    EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 0u) << "a snapshot that is held stays open";
    ASSERT_EQ(Me({.Operation = BtrOpEndSnapshot}).Status, BtrStatusOk);
}

TEST_F(Beliefs, ChangesArePendingOnlyInATransactionThatMadeThem)
{
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("b", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(wbtrv::BrokenInvariant(*Client), 0u);
    {
        const Broken changed(Client->Changed, static_cast<wbtrv::ClientStore *>(nullptr));
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 2u);
    }
    {
        const Broken counters(File().Now.Sequence, uint64_t{0});
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 3u);
    }
    EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
}

TEST_F(Beliefs, NothingIsTouchedWithoutPendingChanges)
{
    const Broken touched(File().Touched, true);
    EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 3u);
}

TEST_F(Beliefs, EveryLockIsCountedOnce)
{
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    ASSERT_EQ(wbtrv::BrokenInvariant(*Client), 0u);
    {
        const Broken single(Client->Handles[0]->Single.Record, uint32_t{0});
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 4u);
    }
    {
        const Broken description(Store().LockFd, -1);
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 7u);
    }
}

TEST_F(Beliefs, CursorsOfPendingChangesAreToldOf)
{
    const Broken cursors(File().Cursors, true);
    EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 5u);
}

TEST_F(Beliefs, OpensAreTheNumberOfPositionBlocks)
{
    {
        const Broken opens(File().Opens, 2u);
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 6u);
    }
    {
        const Broken loading(Store().LoadingOpens, 1u);
        EXPECT_EQ(wbtrv::BrokenInvariant(*Client), 6u);
    }
}

#ifndef NDEBUG
TEST_F(Beliefs, ABrokenOneStopsTheNextCallWhereAssertionsAre)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            Client->Stores->Files->Touched = true;
            (void)T.GetEqual("a");
        },
        "BrokenInvariant");
}
#endif

} // namespace
