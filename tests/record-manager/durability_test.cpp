// What survives when the power goes: every write and sync of a run of postings is recorded, and every prefix
// of them is replayed as a disk may have it, with some of the pages that were not yet synced there and the
// others not. Each posting that was answered must be there, and the one under way whole or not at all.
#include "audit.h"
#include "faults.h"
#include "files.h"

#include "record-manager/limits.h"

#include <fstream>
#include <random>

namespace {

using namespace wbtrvtest;

constexpr uint64_t unit = 4096; // what a disk writes at once, or not at all

// The records of both files.
struct State {
    std::vector<std::string> T;
    std::vector<std::string> U;

    bool operator==(const State &) const = default;
};

struct Page {
    uint64_t Offset;
    std::string Data;
};

struct Recorded {
    std::string Before; // the file as it was
    std::vector<DiskEvent> Events;
    std::vector<State> States; // after so many postings
};

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

State Read(const Caller &client, const TempDirectory &directory, std::string *complaint)
{
    State state;
    for (const auto &[name, records] : {std::pair{"t.btr", &state.T}, {"u.btr", &state.U}}) {
        const FileImage image = Audit(client, directory / name);
        if (image.Opened != BtrStatusOk) *complaint = "opened with " + std::to_string(image.Opened);
        if (!image.Complaint.empty()) *complaint = image.Complaint;
        *records = image.Records;
    }
    return state;
}

// Each posting inserts into both files and changes a sum in one; some delete what an earlier one has
// inserted, so that pages are given back and used again.
Recorded RecordPostings(int postings)
{
    const TempDirectory directory;
    Local me;
    const auto client = [&](const Request &request) { return me(request); };
    const OnT<Local> t{me};
    const OnT<Local> u{me, 1};
    EXPECT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    EXPECT_EQ(Open(me, directory / "u.btr", 1).Status, BtrStatusOk);
    EXPECT_EQ(t.Insert("sum", "x", 0).Status, BtrStatusOk);

    Recorded recorded;
    std::string complaint;
    recorded.Before = ReadFile(directory / "books.mdb");
    recorded.States.push_back(Read(client, directory, &complaint));
    StartRecording("books.mdb");
    for (int i = 1; i <= postings; ++i) {
        const std::string name = "p" + std::to_string(i);
        EXPECT_EQ(
            me({.Operation = i % 2 == 0 ? uint16_t{BtrOpBegin} : uint16_t{BtrOpBeginConcurrent}}).Status,
            BtrStatusOk);
        EXPECT_EQ(t.Insert(name, "x", i).Status, BtrStatusOk);
        EXPECT_EQ(u.Insert(name, "x", -i).Status, BtrStatusOk);
        EXPECT_EQ(Name(t.GetEqual("sum")), "sum");
        EXPECT_EQ(t.Update("sum", "x", i).Status, BtrStatusOk);
        if (i % 3 == 0) {
            EXPECT_EQ(Name(u.GetEqual("p" + std::to_string(i - 2))), "p" + std::to_string(i - 2));
            EXPECT_EQ(u.Delete().Status, BtrStatusOk);
        }
        EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        Note(static_cast<uint64_t>(i));
        recorded.States.push_back(Read(client, directory, &complaint));
    }
    recorded.Events = StopRecording();
    EXPECT_EQ(complaint, "");
    return recorded;
}

void Apply(std::string *disk, const Page &page)
{
    if (disk->size() < page.Offset + page.Data.size()) disk->resize(page.Offset + page.Data.size());
    disk->replace(page.Offset, page.Data.size(), page.Data);
}

// Opens the disk's image, and tells what is wrong with it after `answered` postings.
std::string Check(const std::string &disk, const std::vector<State> &states, size_t answered)
{
    const TempDirectory directory(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
    std::ofstream(directory / "books.mdb", std::ios::binary) << disk;
    Local me;
    std::string complaint;
    const State found = Read([&](const Request &request) { return me(request); }, directory, &complaint);
    if (!complaint.empty()) return complaint;
    if (found == states[answered]) return "";
    if (answered + 1 < states.size() && found == states[answered + 1]) return "";
    return "neither what " + std::to_string(answered) + " postings leave nor what one more does";
}

struct Outcome {
    uint64_t Disks = 0;
    std::vector<std::string> Complaints;
};

// Replays every prefix. Without `obeying` syncs are taken for nothing, which must be noticed.
Outcome Replay(const Recorded &recorded, bool obeying)
{
    wbtrv::limits.Readers = 16;
    std::mt19937 random(5); // NOLINT: the same choices every time
    Outcome outcome;
    std::string disk = recorded.Before;
    std::vector<Page> unsynced;
    size_t answered = 0;
    for (size_t prefix = 0; prefix <= recorded.Events.size(); ++prefix) {
        const auto check = [&](const char *which, auto chosen) {
            std::string image = disk;
            for (size_t i = 0; i < unsynced.size(); ++i) {
                if (chosen(i)) Apply(&image, unsynced[i]);
            }
            ++outcome.Disks;
            const std::string complaint = Check(image, recorded.States, answered);
            if (complaint.empty()) return;
            outcome.Complaints.push_back("after " + std::to_string(prefix) + " events with " + which +
                                         " of " + std::to_string(unsynced.size()) + " pages: " + complaint);
        };
        check("none", [](size_t) { return false; });
        if (!unsynced.empty()) {
            check("all", [](size_t) { return true; });
            check("the first", [](size_t i) { return i == 0; });
            check("all but the first", [](size_t i) { return i != 0; });
            check("the last", [&](size_t i) { return i + 1 == unsynced.size(); });
            check("all but the last", [&](size_t i) { return i + 1 != unsynced.size(); });
            for (int subset = 0; subset < 3; ++subset) {
                check("some", [&](size_t) { return random() % 2 == 0; });
            }
        }
        if (prefix == recorded.Events.size() || outcome.Complaints.size() > 3) break;

        const DiskEvent &event = recorded.Events[prefix];
        switch (event.Kind) {
        case DiskEvent::Written:
            if (event.SyncedAtOnce && obeying) {
                Apply(&disk, {event.Offset, event.Data});
                break;
            }
            for (uint64_t at = 0; at < event.Data.size();) {
                const uint64_t size =
                    std::min<uint64_t>(unit - (event.Offset + at) % unit, event.Data.size() - at);
                unsynced.push_back({event.Offset + at, event.Data.substr(at, size)});
                at += size;
            }
            break;
        case DiskEvent::Synced:
            if (!obeying) break;
            for (const Page &page : unsynced) {
                Apply(&disk, page);
            }
            unsynced.clear();
            break;
        case DiskEvent::Cut: disk.resize(event.Offset); break;
        case DiskEvent::Returned: answered = event.Offset; break;
        }
    }
    return outcome;
}

TEST(Durability, WhatWasAnsweredSurvivesAndWhatWasNotIsWholeOrAbsent)
{
    const Recorded recorded = RecordPostings(25);
    ASSERT_FALSE(HasFailure());
    size_t writes = 0;
    size_t answers = 0;
    for (const DiskEvent &event : recorded.Events) {
        writes += event.Kind == DiskEvent::Written ? 1 : 0;
        answers += event.Kind == DiskEvent::Returned ? 1 : 0;
    }
    EXPECT_EQ(answers, 25U);
    EXPECT_GE(writes, 50U) << "each posting writes its pages and the head of the books";
    const Outcome outcome = Replay(recorded, true);
    EXPECT_GT(outcome.Disks, 300U);
    for (const std::string &complaint : outcome.Complaints) {
        ADD_FAILURE() << complaint;
    }
}

TEST(Durability, ADiskThatForgetsWhatWasSyncedIsNoticed)
{
    const Recorded recorded = RecordPostings(3);
    ASSERT_FALSE(HasFailure());
    EXPECT_FALSE(Replay(recorded, false).Complaints.empty());
}

// ---- A full disk ----

// A posting with the disk full from its n-th write on, for n = 1, 2, 3 …: it is refused as 18 and undone, and
// the next one goes through as soon as there is space.
void FillDiskAtEachWrite(Fault fault)
{
    const TempDirectory directory;
    Local me;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "u.btr", 1).Status, BtrStatusOk);
    const auto client = [&](const Request &request) { return me(request); };
    const OnT<Local> t{me};
    const OnT<Local> u{me, 1};
    const auto post = [&](const std::string &name) {
        EXPECT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        EXPECT_EQ(t.Insert(name, "x", 1).Status, BtrStatusOk);
        EXPECT_EQ(u.Insert(name, "x", 2).Status, BtrStatusOk);
        const int16_t status = me({.Operation = BtrOpEnd}).Status;
        if (status != BtrStatusOk) {
            EXPECT_EQ(status, BtrStatusDiskFull);
            EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusDiskFull) << "it can only be aborted";
            EXPECT_EQ(me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
        }
        return status;
    };
    uint64_t n = 1;
    for (;; ++n) {
        std::string complaint;
        const State before = Read(client, directory, &complaint);
        const std::string name = std::to_string(n);
        Arm(fault, n, true);
        const int16_t status = post(name);
        // A change that stands alone is refused in the same way.
        if (status != BtrStatusOk) {
            EXPECT_EQ(t.Insert(name, "x", 1).Status, BtrStatusDiskFull);
        }
        const bool reached = HasFailed();
        Disarm();
        if (!reached) break;
        ASSERT_EQ(status, BtrStatusDiskFull) << "write " << n;
        ASSERT_EQ(Read(client, directory, &complaint), before) << "write " << n;
        ASSERT_EQ(post(name), BtrStatusOk) << "write " << n;
        ASSERT_EQ(complaint, "");
        const Remote next;
        ASSERT_EQ(Open(next, directory / "t.btr").Status, BtrStatusOk);
        ASSERT_EQ(CountRecords(next), static_cast<int64_t>(n));
    }
    EXPECT_GE(n, 3U) << "a posting writes its pages and the head of the books";
}

TEST(FullDisk, AtEachWriteOfAPostingRefusesItAndLosesNothing) { FillDiskAtEachWrite(Fault::Write); }
TEST(FullDisk, InTheMiddleOfEachWriteOfAPostingDoesSoToo) { FillDiskAtEachWrite(Fault::ShortWrite); }

TEST(FullDisk, BooksThatCannotBeMadeAreNotThere)
{
    wbtrv::limits.Readers = 16;
    for (const Fault fault : {Fault::Write, Fault::ShortWrite}) {
        uint64_t n = 1;
        for (;; ++n) {
            const TempDirectory directory;
            Local me;
            Arm(fault, n, true);
            const int16_t status = Create(me, directory / "t.btr", DefinitionOfT()).Status;
            const bool reached = HasFailed();
            Disarm();
            if (!reached) break;
            // The store tells of a short write as of any failure.
            ASSERT_TRUE(status == BtrStatusDiskFull ||
                        (fault == Fault::ShortWrite && status == BtrStatusIoError))
                << "write " << n << " gives " << status;
            ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT(), BtrKeepExisting).Status, BtrStatusOk)
                << n;
            ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
            ASSERT_EQ(OnT<Local>{me}.Insert("a", "x", 1).Status, BtrStatusOk);
        }
        EXPECT_GE(n, 3U);
    }
}

} // namespace
