// What create takes and what it refuses, and what stat gives back of it.
#include "audit.h"
#include "files.h"
#include "threaded.h"

namespace {

using namespace wbtrvtest;

struct Fault {
    const char *What;
    std::string Buffer;
    int16_t Status;
};

std::string Raw(BtrFileHeader file, const std::vector<BtrKeyEntry> &keys)
{
    std::string buffer(reinterpret_cast<const char *>(&file), sizeof file);
    for (const BtrKeyEntry &key : keys) {
        buffer.append(reinterpret_cast<const char *>(&key), sizeof key);
    }
    return buffer;
}

std::vector<KeySegment> Segments(unsigned count)
{
    std::vector<KeySegment> segments;
    for (unsigned i = 0; i < count; ++i) {
        segments.push_back({1, 1, i + 1 < count ? unsigned{BtrKeySegmented} : 0u});
    }
    return segments;
}

TEST(Create, RefusesWhatMakesNoFile)
{
    const TempDirectory directory;
    Local me;
    const std::vector<Fault> faults = {
        {"nothing", "", BtrStatusDataBufferShort},
        {"half a file", std::string(15, 0), BtrStatusDataBufferShort},
        {"a key too few", CreateBuffer(16, 2, {{1, 4, 0}}), BtrStatusDataBufferShort},
        {"a last segment that says more follow", CreateBuffer(16, 1, {{1, 4, BtrKeySegmented}}),
         BtrStatusDataBufferShort},
        {"page of 0", CreateBuffer(16, 1, {{1, 4, 0}}, 0, 0), BtrStatusBadPageSize},
        {"page of 1000", CreateBuffer(16, 1, {{1, 4, 0}}, 0, 1000), BtrStatusBadPageSize},
        {"page of 4608", CreateBuffer(16, 1, {{1, 4, 0}}, 0, 4608), BtrStatusBadPageSize},
        {"record of 0", CreateBuffer(0, 1, {{1, 4, 0}}), BtrStatusBadRecordLength},
        {"record larger than its page", CreateBuffer(512, 1, {{1, 4, 0}}, 0, 512), BtrStatusBadRecordLength},
        {"120 keys", CreateBuffer(16, 120, Segments(120)), BtrStatusBadKeyCount},
        {"120 segments", CreateBuffer(16, 1, Segments(120)), BtrStatusBadKeyCount},
        {"9 segments on a page of 512", CreateBuffer(16, 1, Segments(9), 0, 512), BtrStatusBadKeyCount},
        {"24 segments on a page of 1024", CreateBuffer(16, 1, Segments(24), 0, 1024), BtrStatusBadKeyCount},
        {"25 segments on a page of 1536", CreateBuffer(16, 1, Segments(25), 0, 1536), BtrStatusBadKeyCount},
        {"55 segments on a page of 3584", CreateBuffer(16, 1, Segments(55), 0, 3584), BtrStatusBadKeyCount},
        {"position 0", CreateBuffer(16, 1, {{0, 4, 0}}), BtrStatusBadKeyPosition},
        {"key beyond the record", CreateBuffer(16, 1, {{14, 4, 0}}), BtrStatusBadKeyPosition},
        {"length 0", CreateBuffer(16, 1, {{1, 0, 0}}), BtrStatusBadKeyLength},
        {"key of 256", CreateBuffer(300, 1, {{1, 256, 0}}), BtrStatusBadKeyLength},
        {"segments of 256 in all", CreateBuffer(300, 1, {{1, 128, BtrKeySegmented}, {1, 128, 0}}),
         BtrStatusBadKeyLength},
        {"integer of 3", CreateBuffer(16, 1, {{1, 3, 0, BtrTypeInteger}}), BtrStatusBadKeyLength},
        {"unsigned of 6", CreateBuffer(16, 1, {{1, 6, 0, BtrTypeUnsigned}}), BtrStatusBadKeyLength},
        {"float of 2", CreateBuffer(16, 1, {{1, 2, 0, BtrTypeFloat}}), BtrStatusBadKeyLength},
        {"date of 8", CreateBuffer(16, 1, {{1, 8, 0, BtrTypeDate}}), BtrStatusBadKeyLength},
        {"time of 2", CreateBuffer(16, 1, {{1, 2, 0, BtrTypeTime}}), BtrStatusBadKeyLength},
        {"autoincrement of 1", CreateBuffer(16, 1, {{1, 1, 0, BtrTypeAutoincrement}}), BtrStatusBadKeyLength},
        {"autoincrement with duplicates",
         CreateBuffer(16, 1, {{1, 4, BtrKeyDuplicates, BtrTypeAutoincrement}}), BtrStatusBadKeyType},
        {"autoincrement as first segment",
         CreateBuffer(16, 1, {{1, 4, BtrKeySegmented, BtrTypeAutoincrement}, {5, 1, 0}}),
         BtrStatusBadKeyType},
        {"autoincrement as second segment",
         CreateBuffer(16, 1, {{5, 1, BtrKeySegmented}, {1, 4, 0, BtrTypeAutoincrement}}),
         BtrStatusBadKeyType},
        {"a type there is not", CreateBuffer(16, 1, {{1, 4, 0, 99}}), BtrStatusBadKeyType},
        {"a collating sequence", CreateBuffer(16, 1, {{1, 4, BtrKeyCollation}}), BtrStatusBadCollation},
        {"duplicates in one segment alone",
         CreateBuffer(16, 1, {{1, 4, BtrKeySegmented | BtrKeyDuplicates}, {5, 1, 0}}), BtrStatusBadKeyFlags},
        {"modifiable in one segment alone",
         CreateBuffer(16, 1, {{1, 4, BtrKeySegmented}, {5, 1, BtrKeyModifiable}}), BtrStatusBadKeyFlags},
        {"null in one segment alone",
         CreateBuffer(16, 1, {{1, 4, BtrKeySegmented | BtrKeyNullAll}, {5, 1, 0}}), BtrStatusBadKeyFlags},
    };
    for (const Fault &fault : faults) {
        EXPECT_EQ(Create(me, directory / "f.btr", fault.Buffer).Status, fault.Status) << fault.What;
        EXPECT_EQ(Open(me, directory / "f.btr").Status, BtrStatusFileNotFound) << fault.What;
    }
}

TEST(Create, TakesTheMostThatEachPageSizeAllows)
{
    const TempDirectory directory;
    Local me;
    const std::pair<uint16_t, unsigned> most[] = {{512, 8},   {1024, 23}, {1536, 24},
                                                  {2048, 54}, {3584, 54}, {4096, 119}};
    for (const auto &[page, segments] : most) {
        EXPECT_EQ(Create(me, directory / "f.btr", CreateBuffer(16, 1, Segments(segments), 0, page)).Status,
                  BtrStatusOk);
    }
    std::vector<KeySegment> keys;
    for (unsigned i = 0; i < 119; ++i) {
        keys.push_back({static_cast<uint16_t>(i + 1), 1, BtrKeyDuplicates});
    }
    ASSERT_EQ(Create(me, directory / "f.btr", CreateBuffer(200, 119, keys)).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "f.btr").Status, BtrStatusOk);
    std::string record(200, 'r');
    record[118] = 's';
    EXPECT_EQ(
        me({.Operation = BtrOpInsert, .Data = record, .Length = 200, .KeyNumber = 118}).Key.substr(0, 1),
        "s");
    EXPECT_EQ(me({.Operation = BtrOpGetEqual, .Length = 200, .Key = "s", .KeyNumber = 118}).Data, record);
}

TEST(Create, AKeyOf255BytesWorks)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "f.btr", CreateBuffer(300, 1, {{3, 255, BtrKeyDuplicates}})).Status,
              BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "f.btr").Status, BtrStatusOk);
    const std::string key = std::string(254, 'k') + "\xFF";
    const std::string record = "12" + key + std::string(43, '.');
    ASSERT_EQ(me({.Operation = BtrOpInsert, .Data = record, .Length = 300}).Status, BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpGetEqual, .Length = 300, .Key = key}).Data, record);
    EXPECT_EQ(me({.Operation = BtrOpGetLast, .Length = 300}).Key, key);
    EXPECT_EQ(me({.Operation = BtrOpGetEqual, .Length = 300, .Key = key, .KeyLength = 254}).Status,
              BtrStatusKeyBufferShort);
}

TEST(Create, KeysCanBringTheirOwnNumbers)
{
    const TempDirectory directory;
    Local me;
    BtrFileHeader file{};
    file.RecordLength = 8;
    file.PageSize = 512;
    file.KeyCount = 2;
    file.Flags = BtrFileKeyNumbers;
    BtrKeyEntry first{};
    first.Position = 1;
    first.Length = 4;
    first.KeyNumber = 7;
    BtrKeyEntry second = first;
    second.Position = 5;
    second.KeyNumber = 2;
    ASSERT_EQ(Create(me, directory / "f.btr", Raw(file, {first, second})).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "f.btr").Status, BtrStatusOk);
    ASSERT_EQ(
        me({.Operation = BtrOpInsert, .Data = "aaaabbbb", .Length = 8, .KeyNumber = 2}).Key.substr(0, 4),
        "bbbb");
    EXPECT_EQ(me({.Operation = BtrOpGetEqual, .Length = 8, .Key = "aaaa", .KeyNumber = 7}).Status,
              BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpGetFirst, .Length = 8, .KeyNumber = 0}).Status, BtrStatusBadKeyNumber);
    ASSERT_EQ(Close(me).Status, BtrStatusOk);

    second.KeyNumber = 7;
    EXPECT_EQ(Create(me, directory / "f.btr", Raw(file, {first, second})).Status, BtrStatusBadKeyCount);
    second.KeyNumber = 119;
    EXPECT_EQ(Create(me, directory / "f.btr", Raw(file, {first, second})).Status, BtrStatusBadKeyCount);
}

TEST(Create, AFileMayHaveNoKeys)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "f.btr", CreateBuffer(4, 0, {})).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "f.btr").Status, BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpInsert, .Data = "abcd", .Length = 4, .KeyNumber = -1}).Status,
              BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpInsert, .Data = "efgh", .Length = 4, .KeyNumber = -1}).Status,
              BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpGetFirst, .Length = 4}).Status, BtrStatusBadKeyNumber);
    EXPECT_EQ(me({.Operation = BtrOpStepLast, .Length = 4}).Data, "efgh");
    EXPECT_EQ(me({.Operation = BtrOpStepPrevious, .Length = 4}).Data, "abcd");
}

TEST(Create, TheNameMustBeOne)
{
    const TempDirectory directory;
    Local me;
    const std::string good = CreateBuffer(4, 0, {});
    EXPECT_EQ(Create(me, "", good).Status, BtrStatusBadName);
    EXPECT_EQ(Create(me, directory / "", good).Status, BtrStatusBadName);
    EXPECT_EQ(Create(me, directory / ".", good).Status, BtrStatusBadName);
    EXPECT_EQ(Create(me, directory / "..", good).Status, BtrStatusBadName);
    EXPECT_EQ(Create(me, directory / "sub/f.btr", good).Status, BtrStatusFileNotFound);
    // Without a NUL in the key buffer there is no name.
    EXPECT_EQ(
        me({.Operation = BtrOpCreate, .Data = good, .Length = 16, .Key = "f.btr", .KeyLength = 5}).Status,
        BtrStatusBadName);
    EXPECT_EQ(Create(me, std::string(255, 'f'), good).Status, BtrStatusBadName);
    // A blank does not end it.
    EXPECT_EQ(Create(me, directory / "a b.btr", good).Status, BtrStatusOk);
    EXPECT_EQ(Open(me, directory / "a").Status, BtrStatusFileNotFound);
    EXPECT_EQ(Open(me, directory / "a b.btr").Status, BtrStatusOk);
}

TEST(Create, APathOf254BytesIsTheLongest)
{
    const TempDirectory directory;
    Local me;
    const std::string good = CreateBuffer(4, 0, {});
    const std::string start = directory / "";
    const std::string longest = start + std::string(254 - start.size(), 'f');
    EXPECT_EQ(Create(me, longest, good).Status, BtrStatusOk);
    EXPECT_EQ(Open(me, longest).Status, BtrStatusOk);
    EXPECT_EQ(Create(me, longest + "f", good).Status, BtrStatusBadName);
}

TEST(Create, ReplacesNoFileThatIsOpen)
{
    const TempDirectory directory;
    Local me;
    const Remote other;
    const std::string path = directory / "t.btr";
    ASSERT_EQ(Create(me, path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
    ASSERT_EQ(OnT<Local>{me}.Insert("a", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Create(me, path, DefinitionOfN()).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(Create(other, path, DefinitionOfN()).Status, BtrStatusIncompatibleMode);
    EXPECT_EQ(CountRecords(me), 1);
    ASSERT_EQ(Close(me).Status, BtrStatusOk);
    EXPECT_EQ(Create(other, path, DefinitionOfN()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(me), 0);
    EXPECT_EQ(me({.Operation = BtrOpGetFirst, .Length = 16, .KeyNumber = 2}).Status, BtrStatusBadKeyNumber);
}

TEST(Stat, GivesBackTheDefinitionAndCountsRecordsAndValues)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    const OnT<Local> t{me};
    ASSERT_EQ(t.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(t.Insert("b", "x", 5).Status, BtrStatusOk);
    ASSERT_EQ(t.Insert("c", "y", 5).Status, BtrStatusOk);
    const auto stat = [&] {
        const Answer answer = me({.Operation = BtrOpStat, .Length = 64});
        std::vector<uint32_t> counts(4);
        memcpy(counts.data(), answer.Data.data() + 6, 4);
        for (size_t i = 0; i < 3; ++i) {
            memcpy(&counts[i + 1], answer.Data.data() + 16 + 16 * i + 6, 4);
        }
        return counts;
    };
    EXPECT_EQ(stat(), (std::vector<uint32_t>{3, 3, 2, 2}));
    ASSERT_EQ(Name(t.GetEqual("c")), "c");
    ASSERT_EQ(t.Update("c", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(stat(), (std::vector<uint32_t>{3, 3, 1, 2}));
    ASSERT_EQ(Name(t.GetEqual("b")), "b");
    ASSERT_EQ(t.Delete().Status, BtrStatusOk);
    EXPECT_EQ(stat(), (std::vector<uint32_t>{2, 2, 1, 1}));
    ASSERT_EQ(Name(t.GetEqual("a")), "a");
    ASSERT_EQ(t.Delete().Status, BtrStatusOk);
    ASSERT_EQ(Name(t.GetEqual("c")), "c");
    ASSERT_EQ(t.Delete().Status, BtrStatusOk);
    EXPECT_EQ(stat(), (std::vector<uint32_t>{0, 0, 0, 0}));
    // The version is told where the key number asks for it.
    std::string definition = DefinitionOfT();
    EXPECT_EQ(me({.Operation = BtrOpStat, .Length = 64}).Data.substr(16, 6), definition.substr(16, 6));
}

TEST(Stat, TellsTheVersionWhenAsked)
{
    const TempDirectory directory;
    Local me;
    std::string definition = DefinitionOfT();
    definition[5] = 0x61;
    ASSERT_EQ(Create(me, directory / "t.btr", definition).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    EXPECT_EQ(me({.Operation = BtrOpStat, .Length = 64, .KeyNumber = -1}).Data[5], 0x61);
    EXPECT_EQ(me({.Operation = BtrOpStat, .Length = 64, .KeyNumber = 0}).Data[5], 0);
}

// The trees of a replaced file are gone from the process as soon as the transaction has replaced it, and
// others still find its name.
TEST(Create, AFileBeingReplacedInATransactionIsOpenedByNobodyElse)
{
    const TempDirectory directory;
    Local me;
    Threaded other;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(OnT<Local>{me}.Insert("a", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Create(me, directory / "v.btr", DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Open(other, directory / "u.btr").Status, BtrStatusIncompatibleMode);
    ASSERT_EQ(Open(me, directory / "u.btr", 1).Status, BtrStatusOk);
    ASSERT_EQ((OnT<Local>{me, 1}.Insert("b", "y", 2).Status), BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "v.btr", 2).Status, BtrStatusOk);
    ASSERT_EQ((OnT<Local>{me, 2}.Insert("c", "z", 3).Status), BtrStatusOk);
    ASSERT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);

    const Remote next; // finds what was written, not what this process knows
    for (const char *name : {"t.btr", "u.btr", "v.btr"}) {
        const FileImage image =
            Audit([&](const Request &request) { return next(request); }, directory / name);
        EXPECT_EQ(image.Opened, BtrStatusOk) << name;
        EXPECT_EQ(image.Complaint, "") << name;
        EXPECT_EQ(image.Records.size(), 1U) << name;
    }
}

} // namespace
