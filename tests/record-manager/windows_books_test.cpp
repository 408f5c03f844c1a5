// What is Windows' own about the books of a directory: their map, which grows, the file that is as long as
// the map, disks that are full or cannot be written, and directories that are moved.
#include "record-manager/limits.h"
#include "tests/record-manager/files.h"
#include "tests/record-manager/windows/system_calls.h"

#include <memory>
#include <thread>
#include <utility>

namespace {

using namespace wbtrvtest;
namespace fs = std::filesystem;

constexpr int64_t mebibyte = 1 << 20;
constexpr uint32_t largeRecord = 4000;

std::string DefinitionOfLarge() { return CreateBuffer(largeRecord, 1, {{1, 4, 0, BtrTypeInteger}}); }

template <typename Client> int16_t InsertLarge(Client &client, int32_t number)
{
    return client(
               {.Operation = BtrOpInsert, .Data = Padded(Number(number), largeRecord), .Length = largeRecord})
        .Status;
}

// Inserts records of the numbers in transactions of a hundred each; the status of the first that failed.
template <typename Client> int16_t Fill(Client &client, int32_t from, int32_t to)
{
    int16_t status = BtrStatusOk;
    for (int32_t first = from; first < to && status == BtrStatusOk; first += 100) {
        status = client({.Operation = BtrOpBegin}).Status;
        for (int32_t i = first; i < first + 100 && i < to && status == BtrStatusOk; ++i) {
            status = InsertLarge(client, i);
        }
        const uint16_t end = status == BtrStatusOk ? BtrOpEnd : BtrOpAbort;
        const int16_t ended = client({.Operation = end}).Status;
        if (status == BtrStatusOk) status = ended;
    }
    return status;
}

struct Large : testing::Test {
    TempDirectory Directory;
    std::string Path = Directory / "l.btr";
    fs::path BooksFile = Directory / "books.mdb";
    Local Me;

    void SetUp() override
    {
        ASSERT_EQ(Create(Me, Path, DefinitionOfLarge()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    }
    int64_t Length() const { return static_cast<int64_t>(fs::file_size(BooksFile)); }
};

TEST_F(Large, MapGrowsWithTheBooksAndTheFileIsCutOffBehindThemAtTheEnd)
{
    EXPECT_EQ(Length(), 16 * mebibyte);
    ASSERT_EQ(Fill(Me, 0, 6000), BtrStatusOk);
    EXPECT_EQ(Length(), 64 * mebibyte) << "more than half of 32 MiB is used";
    EXPECT_EQ(CountRecords(Me), 6000);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    EXPECT_LT(Length(), 32 * mebibyte);
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 6000);
    EXPECT_EQ(InsertLarge(Me, 6000), BtrStatusOk);
}

int sparseFiles;

BOOL WINAPI CountSparse(HANDLE, DWORD code, LPVOID, DWORD, LPVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    if (code == FSCTL_SET_SPARSE) ++sparseFiles;
    return TRUE;
}

// How much a sparse file takes of the disk Wine does not tell.
TEST_F(Large, FileIsMadeSparseBeforeItIsAsLongAsTheMap)
{
    const TempDirectory another;
    const ExchangedCall counted(&entryOfDeviceIoControl, reinterpret_cast<void *>(CountSparse));
    sparseFiles = 0;
    ASSERT_EQ(Create(Me, another / "l.btr", DefinitionOfLarge()).Status, BtrStatusOk);
    EXPECT_EQ(sparseFiles, 1);
}

TEST_F(Large, OtherProcessesFollowTheMapThatOneHasMadeLarger)
{
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(other), 0);
    ASSERT_EQ(Fill(Me, 0, 3500), BtrStatusOk);
    EXPECT_EQ(Length(), 32 * mebibyte);
    EXPECT_EQ(CountRecords(other), 3500);
    ASSERT_EQ(Fill(other, 3500, 4500), BtrStatusOk);
    EXPECT_EQ(Length(), 64 * mebibyte) << "as the other one has made it";
    EXPECT_EQ(CountRecords(Me), 4500);
    EXPECT_EQ(InsertLarge(Me, 4500), BtrStatusOk);
}

TEST_F(Large, BooksAsLargeAsTheMapMayBecomeAreFullAndStayInOrder)
{
    const size_t before = wbtrv::limits.MapSize;
    wbtrv::limits.MapSize = 32 * mebibyte;
    EXPECT_EQ(Fill(Me, 0, 20000), BtrStatusDiskFull);
    wbtrv::limits.MapSize = before;
    const int64_t count = CountRecords(Me);
    EXPECT_EQ(count % 100, 0) << "no transaction is in the books in part";
    EXPECT_GT(count, 4000);
    // There is room again as soon as the map may grow.
    EXPECT_EQ(Fill(Me, static_cast<int32_t>(count), static_cast<int32_t>(count) + 100), BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), count + 100);
}

// ---- Full disks ----

BOOL WINAPI FailAsFull(HANDLE)
{
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI WriteToFullDisk(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED)
{
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(Large, OnAFullDiskAChangeIsRefusedAndTheBooksStayAsTheyWere)
{
    ASSERT_EQ(Fill(Me, 0, 100), BtrStatusOk);
    {
        const ExchangedCall full(&entryOfWriteFile, reinterpret_cast<void *>(WriteToFullDisk));
        EXPECT_EQ(InsertLarge(Me, 100), BtrStatusDiskFull);
        ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        EXPECT_EQ(InsertLarge(Me, 101), BtrStatusOk);
        EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusDiskFull);
        (void)Me({.Operation = BtrOpAbort});
    }
    EXPECT_EQ(CountRecords(Me), 100);
    EXPECT_EQ(InsertLarge(Me, 100), BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 101);
}

TEST_F(Large, MapThatCannotGrowOnAFullDiskIsUsedToItsEnd)
{
    {
        const ExchangedCall full(&entryOfSetEndOfFile, reinterpret_cast<void *>(FailAsFull));
        EXPECT_EQ(Fill(Me, 0, 20000), BtrStatusDiskFull);
    }
    const int64_t count = CountRecords(Me);
    EXPECT_GT(count, 2000);
    EXPECT_EQ(Length(), 16 * mebibyte);
    EXPECT_EQ(Fill(Me, static_cast<int32_t>(count), static_cast<int32_t>(count) + 100), BtrStatusOk);
}

// ---- What cannot be written ----

decltype(&CreateFileA) realCreateFile;

// As on a medium that is protected: superusers are not kept out of files by their attributes under Wine.
HANDLE WINAPI OpenForReadingOnly(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                 DWORD disposition, DWORD flags, HANDLE pattern)
{
    if ((access & GENERIC_WRITE) != 0 || disposition == CREATE_NEW) {
        SetLastError(ERROR_WRITE_PROTECT);
        return INVALID_HANDLE_VALUE;
    }
    return realCreateFile(path, access, share, security, disposition, flags, pattern);
}

TEST_F(Large, BooksThatCannotBeWrittenAreRead)
{
    ASSERT_EQ(Fill(Me, 0, 100), BtrStatusOk);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    realCreateFile = reinterpret_cast<decltype(realCreateFile)>(entryOfCreateFile);
    const ExchangedCall protectedMedium(&entryOfCreateFile, reinterpret_cast<void *>(OpenForReadingOnly));
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 100);
    EXPECT_EQ(Me({.Operation = BtrOpGetEqual, .Length = largeRecord, .Key = Number(42)}).Status, BtrStatusOk);
    EXPECT_EQ(InsertLarge(Me, 100), BtrStatusAccessDenied);
    EXPECT_EQ(Close(Me).Status, BtrStatusOk);
    EXPECT_EQ(Create(Me, Directory / "new.btr", DefinitionOfLarge()).Status, BtrStatusPermission);
}

TEST(Protected, DirectoryWithoutBooksTakesNone)
{
    const TempDirectory directory;
    Local me;
    realCreateFile = reinterpret_cast<decltype(realCreateFile)>(entryOfCreateFile);
    const ExchangedCall protectedMedium(&entryOfCreateFile, reinterpret_cast<void *>(OpenForReadingOnly));
    EXPECT_EQ(Create(me, directory / "l.btr", DefinitionOfLarge()).Status, BtrStatusPermission);
    EXPECT_EQ(Open(me, directory / "l.btr").Status, BtrStatusFileNotFound);
}

// ---- Drives ----

UINT WINAPI OfNetwork(LPCSTR) { return DRIVE_REMOTE; }

TEST_F(Large, OnANetworkDriveIsRefused)
{
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    {
        const ExchangedCall network(&entryOfGetDriveType, reinterpret_cast<void *>(OfNetwork));
        EXPECT_EQ(Open(Me, Path).Status, BtrStatusPermission);
        EXPECT_EQ(Create(Me, Directory / "new.btr", DefinitionOfLarge()).Status, BtrStatusPermission);
    }
    EXPECT_EQ(Open(Me, Path).Status, BtrStatusOk);
}

TEST(Network, PathOfAShareIsRefused)
{
    Local me;
    for (const char *path : {R"(\\server\share\books\l.btr)", "//server/share/books/l.btr"}) {
        EXPECT_EQ(Open(me, path).Status, BtrStatusPermission) << path;
        EXPECT_EQ(Create(me, path, DefinitionOfLarge()).Status, BtrStatusPermission) << path;
    }
}

// ---- Directories ----

TEST_F(Large, DirectoryCanBeMovedAndRemovedAsSoonAsItsLastFileIsClosed)
{
    ASSERT_EQ(Fill(Me, 0, 10), BtrStatusOk);
    const fs::path moved = Directory.Path.string() + "-moved";
    std::error_code error;
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    fs::rename(Directory.Path, moved, error);
    ASSERT_FALSE(error) << error.message();
    ASSERT_EQ(Open(Me, (moved / "l.btr").string()).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 10);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    fs::remove_all(moved, error);
    EXPECT_FALSE(error) << error.message();
    EXPECT_FALSE(fs::exists(moved));
}

TEST_F(Large, OfManyDirectoriesNoneStaysOpenIdly)
{
    std::vector<std::unique_ptr<TempDirectory>> directories;
    for (int i = 0; i < 20; ++i) {
        directories.push_back(std::make_unique<TempDirectory>());
        const std::string path = *directories.back() / "l.btr";
        ASSERT_EQ(Create(Me, path, DefinitionOfLarge()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, path, 1).Status, BtrStatusOk) << i;
        ASSERT_EQ(Close(Me, 1).Status, BtrStatusOk);
        EXPECT_LT(fs::file_size(*directories.back() / "books.mdb"), static_cast<uintmax_t>(mebibyte));
    }
    for (const auto &directory : directories) {
        std::error_code error;
        fs::remove_all(directory->Path, error);
        EXPECT_FALSE(error) << error.message();
    }
}

// ---- Several at once ----

TEST_F(Large, EightThreadsAndAnotherProcessWriteAtOnceAndNothingIsLost)
{
    constexpr int threads = 8;
    constexpr int32_t each = 20;
    const unsigned before = std::exchange(wbtrv::limits.ChangeWait_ms, 60000);
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    std::vector<std::thread> running;
    std::array<int, threads> refused{};
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            Local mine;
            if (Open(mine, Path).Status != BtrStatusOk) {
                refused[static_cast<size_t>(i)] = each;
                return;
            }
            for (int32_t number = i * 1000; number < i * 1000 + each; ++number) {
                if (InsertLarge(mine, number) != BtrStatusOk) ++refused[static_cast<size_t>(i)];
            }
        });
    }
    for (int32_t number = 100000; number < 100000 + each; ++number) {
        EXPECT_EQ(InsertLarge(other, number), BtrStatusOk);
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    wbtrv::limits.ChangeWait_ms = before;
    EXPECT_EQ(refused, (std::array<int, threads>{}));
    EXPECT_EQ(CountRecords(Me), (threads + 1) * each);
    for (int32_t number = 0; number < threads * 1000; number += 1000) {
        EXPECT_EQ(
            Me({.Operation = BtrOpGetEqual, .Length = largeRecord, .Key = Number(number + each - 1)}).Status,
            BtrStatusOk);
    }
}

TEST_F(Large, KilledWriterLeavesTheGateOpenAndItsChangesUndone)
{
    Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    ASSERT_EQ(other({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(InsertLarge(other, 1), BtrStatusOk);
    other.Kill();
    EXPECT_EQ(InsertLarge(Me, 1), BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 1);
}

} // namespace
