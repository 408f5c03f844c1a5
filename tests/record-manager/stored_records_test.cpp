// Copies of a file whose duplicates stay in their order: records as they are stored, with what tells their
// places, and put into another file so.
#include "audit.h"
#include "files.h"

namespace {

using namespace wbtrvtest;

constexpr uint32_t storedLength = 6 * 3 + 64; // for its last change and its places under the keys 1 and 2

struct StoredRecords : testing::Test {
    TempDirectory Directory;
    Local Me;
    std::string From = Directory / "t.btr";
    std::string To = Directory / "u.btr";
    OnT<Local> T{Me};
    OnT<Local> U{Me, 1};

    // All of them are x and 1. a leaves the others for a moment under the first of the keys with duplicates,
    // b under the second, and d for good.
    void SetUp() override
    {
        ASSERT_EQ(Create(Me, From, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Create(Me, To, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, From).Status, BtrStatusOk);
        for (const char *name : {"a", "b", "c", "d", "e"}) {
            ASSERT_EQ(T.Insert(name, "x", 1).Status, BtrStatusOk);
        }
        ASSERT_EQ(T.GetEqual("a").Status, BtrStatusOk);
        ASSERT_EQ(T.Update("a", "y", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Update("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.GetEqual("d").Status, BtrStatusOk);
        ASSERT_EQ(T.Delete().Status, BtrStatusOk);
        ASSERT_EQ(T.GetEqual("b").Status, BtrStatusOk);
        ASSERT_EQ(T.Update("b", "x", 2).Status, BtrStatusOk);
        ASSERT_EQ(T.Update("b", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(OrderOf(T, 1), "bcea");
        ASSERT_EQ(OrderOf(T, 2), "aceb");
    }
    static std::string OrderOf(const OnT<Local> &file, int8_t key)
    {
        std::string names;
        Answer answer = file.Read(BtrOpGetFirst, key);
        for (; answer.Status == BtrStatusOk; answer = file.Read(BtrOpGetNext, key)) {
            names += Name(answer);
        }
        return names;
    }
    int16_t Insert(const std::string &stored)
    {
        return Me({.Operation = BtrOpInsertStored,
                   .Block = 1,
                   .Data = stored,
                   .Length = static_cast<uint32_t>(stored.size()),
                   .KeyNumber = -1})
            .Status;
    }
    void Copy()
    {
        ASSERT_EQ(Open(Me, To, 1).Status, BtrStatusOk);
        Answer stored = Me({.Operation = BtrOpStepFirstStored, .Length = storedLength});
        for (; stored.Status == BtrStatusOk;
             stored = Me({.Operation = BtrOpStepNextStored, .Length = storedLength})) {
            ASSERT_EQ(stored.Length, storedLength);
            ASSERT_EQ(Insert(stored.Data), BtrStatusOk);
        }
        EXPECT_EQ(stored.Status, BtrStatusEndOfFile);
    }
};

TEST_F(StoredRecords, KeepTheOrderOfDuplicatesUnderEachKey)
{
    Copy();
    for (int8_t key = 0; key < 3; ++key) {
        EXPECT_EQ(OrderOf(U, key), OrderOf(T, key)) << int{key};
    }
    const auto client = [this](const Request &request) { return Me(request); };
    EXPECT_EQ(Audit(client, To).Complaint, "");
    // Whoever comes later comes behind them.
    ASSERT_EQ(U.Insert("f", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(OrderOf(U, 1), "bceaf");
    EXPECT_EQ(OrderOf(U, 2), "acebf");
    ASSERT_EQ(U.GetEqual("c").Status, BtrStatusOk);
    ASSERT_EQ(U.Update("c", "y", 1).Status, BtrStatusOk);
    ASSERT_EQ(U.Update("c", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(OrderOf(U, 1), "beafc");
    ASSERT_EQ(U.Delete().Status, BtrStatusOk);
    EXPECT_EQ(Audit(client, To).Complaint, "");
}

TEST_F(StoredRecords, AreLoaded)
{
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    std::vector<std::string> records;
    ASSERT_EQ(Open(Me, From).Status, BtrStatusOk);
    for (Answer stored = Me({.Operation = BtrOpStepFirstStored, .Length = storedLength});
         stored.Status == BtrStatusOk;
         stored = Me({.Operation = BtrOpStepNextStored, .Length = storedLength})) {
        records.push_back(stored.Data);
    }
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, To, 1, BtrModeLoading).Status, BtrStatusOk);
    for (const std::string &record : records) {
        ASSERT_EQ(Insert(record), BtrStatusOk);
    }
    ASSERT_EQ(Close(Me, 1).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, To, 1).Status, BtrStatusOk);
    EXPECT_EQ(OrderOf(U, 1), "bcea");
    EXPECT_EQ(OrderOf(U, 2), "aceb");
    const auto client = [this](const Request &request) { return Me(request); };
    EXPECT_EQ(Audit(client, To).Complaint, "");
}

TEST_F(StoredRecords, AreRefusedLikeOthers)
{
    ASSERT_EQ(Open(Me, To, 1).Status, BtrStatusOk);
    EXPECT_EQ(Me({.Operation = BtrOpStepFirstStored, .Length = storedLength - 1}).Status,
              BtrStatusDataBufferShort);
    const Answer stored = Me({.Operation = BtrOpStepFirstStored, .Length = storedLength});
    ASSERT_EQ(stored.Status, BtrStatusOk);
    EXPECT_EQ(Insert(stored.Data.substr(0, storedLength - 1)), BtrStatusDataBufferShort);
    EXPECT_EQ(Insert(stored.Data.substr(0, 17)), BtrStatusDataBufferShort);
    ASSERT_EQ(Insert(stored.Data), BtrStatusOk);
    EXPECT_EQ(Insert(stored.Data), BtrStatusDuplicateKey);
    EXPECT_EQ(CountRecords(Me, 1), 1);
    EXPECT_EQ(Me({.Operation = BtrOpStepFirstStored, .Block = 7, .Length = storedLength}).Status,
              BtrStatusNotOpen);
    ASSERT_EQ(Me({.Operation = BtrOpBeginSnapshot}).Status, BtrStatusOk);
    EXPECT_EQ(Insert(stored.Data), BtrStatusNotAllowed);
    EXPECT_EQ(Me({.Operation = BtrOpStepFirstStored, .Length = storedLength}).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpEndSnapshot}).Status, BtrStatusOk);
}

} // namespace
