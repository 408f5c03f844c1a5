// A record manager of lists in memory, written from the rules alone, that says what each call must answer. It
// knows several clients, which call one at a time, so whoever would have to wait is refused at once.
#pragma once

#include "driver.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace wbtrvtest {

struct ModelSegment {
    size_t Offset;
    size_t Length;
    uint8_t Type;
    bool Descending;
    char Null;
};

struct ModelKey {
    std::vector<ModelSegment> Segments;
    bool Duplicates;
    bool Modifiable;
    bool NullAll;
    bool Autoincrement;
};

struct ModelLayout {
    size_t Length;
    bool Variable;
    std::vector<ModelKey> Keys;
    std::string CreateBuffer;
};

struct ModelRecord {
    std::string Data;
    uint64_t Version;
    std::vector<uint64_t> Joined; // per key: when the record joined its group of duplicates
};

// The records of a file, by a number that rises with their insertion.
using ModelRecords = std::map<uint64_t, ModelRecord>;

// A file of a directory and the records it holds; a file made anew is another one.
struct ModelState {
    std::map<std::string, ModelRecords> Files;
};

struct ModelPlace {
    std::string Value;
    uint64_t Joined;
};

struct ModelLock {
    uint64_t Record;
    bool InTransaction;
};

struct ModelHandle {
    bool Open = false;
    std::string File;
    int8_t Mode = 0;
    bool Touched = false; // some record was
    bool Here = false;    // and still is
    bool KeyOnly = false;
    uint64_t Record = 0;
    uint64_t Version = 0;
    int Key = -1; // -2: changed under another one
    ModelPlace Place;
    std::optional<ModelLock> Single;
    std::vector<ModelLock> Multiple;
};

enum class ModelTransaction { None, Exclusive, Concurrent };

struct ModelClient {
    std::array<ModelHandle, 16> Handles;
    ModelTransaction Transaction = ModelTransaction::None;
    unsigned Inherited = 0;          // bias of the begin
    std::string Changed;             // directory, empty: none
    std::set<std::string> Whole;     // files locked as a whole
    std::set<std::string> Known;     // files that were closed inside the transaction
    std::set<std::string> KeptAlone; // of them, those that were opened exclusively
    std::map<std::string, std::set<uint64_t>> Implicit;
    std::vector<std::string> Made;  // files made among pending changes
    std::set<std::string> Replaced; // of them, those that all others still see as they were
    uint64_t FirstRecord = 0;       // numbers given out before the pending changes
    uint64_t FirstChange = 0;
};

class Model {
public:
    explicit Model(size_t clients) : Clients(clients) {}

    // Names a file by its path and says what it will be made as.
    void Add(const std::string &path, const ModelLayout &layout);

    // What the client's call must answer; the model's own state changes with it. The position that op 22
    // gives back is the engine's business: `PositionOf` is asked with what it gave.
    Answer Expect(size_t client, const Request &request);

    // Tells which position the engine gave to the current record. False if it contradicts what was given
    // before.
    bool LearnPosition(size_t client, uint8_t block, const std::string &position);

    // How many position blocks are open, for the test's choice of what to do next.
    bool IsOpen(size_t client, uint8_t block) const { return Clients[client].Handles[block].Open; }
    const std::string &FileOf(size_t client, uint8_t block) const
    {
        return Clients[client].Handles[block].File;
    }
    bool InTransaction(size_t client) const { return Clients[client].Transaction != ModelTransaction::None; }

    // The positions of a file's records that the engine has told, of deleted records too.
    std::vector<std::string> KnownPositions(const std::string &path) const;

private:
    struct Entry {
        std::string Value;
        uint64_t Joined;
        uint64_t Record;
    };

    std::vector<ModelClient> Clients;
    std::map<std::string, ModelLayout> Layouts;
    std::map<std::string, ModelState> States;                     // by directory: what all see
    std::map<std::string, std::pair<size_t, ModelState>> Pending; // and what one client has changed
    uint64_t LastRecord = 0;
    uint64_t LastChange = 0;
    std::map<std::string, std::map<std::string, uint64_t>> Positions; // by file and position

    static std::string DirectoryOf(const std::string &path);
    ModelState &View(size_t client, const std::string &path);
    ModelRecords &Records(size_t client, const std::string &path) { return View(client, path).Files[path]; }
    std::vector<Entry> Index(size_t client, const std::string &path, size_t key);
    bool IsKnown(size_t client, const std::string &path) const;
    bool Holds(size_t client, const std::string &path, uint64_t record) const;
    bool HoldsAny(size_t client, const std::string &path) const;
    int16_t TakeWhole(size_t client, uint8_t block);
    int16_t TakeToRead(size_t client, uint8_t block);
    int16_t TestLock(size_t client, const std::string &path, uint64_t record) const;
    int16_t EnterChange(size_t client, uint8_t block, uint64_t record);
    void LeaveChange(size_t client, const std::string &path, uint64_t record);
    void Undo(size_t client);
    void Release(size_t client);
    void Take(size_t client, uint8_t block, unsigned bias, uint64_t record);

    Answer Open(size_t client, const Request &request);
    Answer Create(size_t client, const Request &request);
    void CloseBlock(size_t client, uint8_t block);
    Answer Insert(size_t client, const Request &request, unsigned bias);
    Answer Update(size_t client, const Request &request);
    Answer Delete(size_t client, const Request &request);
    Answer ReadKeyed(size_t client, const Request &request, unsigned operation, bool keyOnly, unsigned bias);
    Answer ReadStep(size_t client, const Request &request, unsigned operation, unsigned bias);
    Answer ReadDirect(size_t client, const Request &request, unsigned bias);
    Answer Finish(size_t client, const Request &request, uint64_t record, int key, bool keyOnly);
    Answer Stat(size_t client, const Request &request);
    Answer Unlock(size_t client, const Request &request);
    int16_t FillNumbers(size_t client, const std::string &path, std::string *record);
};

} // namespace wbtrvtest
