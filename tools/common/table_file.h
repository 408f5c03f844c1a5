// Tables of the books through the record manager, with its refusals as exceptions.
#pragma once

#include "record-manager/include/btrcall.h"
#include "tools/common/layout.h"

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

// A refusal of the record manager. what() is German and UTF-8 and names the file and the operation.
struct EngineError : std::runtime_error {
    EngineError(const char *operation, int status, const std::filesystem::path &path);

    int Status;
};

// What a status means, in German; its number for one that is rare.
std::string StatusText(int status);

enum class OpenMode : int8_t {
    Normal = BtrModeNormal,
    Accelerated = BtrModeLoading, // for loading: fast, on disk only when closed, and alone
    ReadOnly = BtrModeReadOnly,
    Exclusive = BtrModeExclusive,
};

// A client beside those of the threads: one thread at a time may use it.
struct EngineClient {
    EngineClient();
    ~EngineClient();
    EngineClient(const EngineClient &) = delete;
    EngineClient &operator=(const EngineClient &) = delete;

    // Between these two every directory is seen as it stood when it was first used. An end too many does
    // nothing.
    void BeginSnapshot();
    void EndSnapshot() noexcept;

    BtrClient *Handle;
};

// Makes an empty table with its keys. An existing file is refused (status 59).
void CreateTable(const TableLayout &layout, const std::filesystem::path &directory);

// The same in place of one that exists, whose records are gone then.
void ReplaceTable(const TableLayout &layout, const std::filesystem::path &directory);

// Definition of a table as it stands on disk.
struct TableDefinition {
    uint16_t RecordLength;
    uint32_t Records;
    std::vector<KeyLayout> Keys;
};

// An open table. Reads give false where there is no (further) record; every other refusal is an EngineError.
struct TableFile {
    // `client` null is the calling thread's.
    TableFile(const TableLayout &layout, const std::filesystem::path &directory, OpenMode mode,
              EngineClient *client = nullptr);
    ~TableFile();
    TableFile(const TableFile &) = delete;
    TableFile &operator=(const TableFile &) = delete;

    // The record's autoincrement field, if it is 0, comes back filled in.
    void Insert(void *record);
    // As Insert, but false for a value that a key already holds.
    bool TryInsert(void *record);
    void Update(const void *record);
    void Delete();

    bool First(void *record, int key);
    bool Next(void *record, int key);
    bool StepFirst(void *record);
    bool StepNext(void *record);
    // For copies: records with what tells their places among duplicates, and one put in as it was there.
    size_t StoredLength() const;
    bool StepFirstStored(void *stored);
    bool StepNextStored(void *stored);
    void InsertStored(const void *stored);
    // `value` holds the key's bytes, as many as the key is long.
    bool Equal(void *record, const void *value, int key);
    bool GreaterEqual(void *record, const void *value, int key);

    // The number of the record read last; it stays the record's for ever, and is nobody else's.
    uint32_t RecordNumber();

    TableDefinition Definition();
    // Closes, and says so when that fails; the destructor is silent.
    void Close();

    const TableLayout &Layout;
    std::filesystem::path Path;

private:
    int Call(uint16_t operation, void *record, int key);
    bool Read(const char *name, uint16_t operation, void *record, int key);
    bool Read(const char *name, uint16_t operation, void *record, size_t size, int key);
    void SetKey(const void *value, int key);

    BtrClient *caller;
    bool open = false;
    uint8_t positionBlock[BtrPositionBlockSize] = {};
    uint8_t keyBuffer[BtrKeyBufferSize] = {};
};

// A transaction of this thread over tables of one directory; undone unless finished.
struct EngineTransaction {
    EngineTransaction();
    ~EngineTransaction();
    EngineTransaction(const EngineTransaction &) = delete;
    EngineTransaction &operator=(const EngineTransaction &) = delete;

    void Finish();

private:
    bool active = true;
};

// Ends this thread's client: all its tables are closed, its locks gone.
void StopEngine();

} // namespace tools
