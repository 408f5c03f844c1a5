#include "model.h"

#include <algorithm>

namespace wbtrvtest {

namespace {

int64_t SignedOf(const char *bytes, size_t length)
{
    int64_t value = static_cast<signed char>(bytes[length - 1]);
    for (size_t i = length - 1; i-- > 0;) {
        value = value * 256 + static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

uint64_t UnsignedOf(const char *bytes, size_t length)
{
    uint64_t value = 0;
    for (size_t i = length; i-- > 0;) {
        value = value * 256 + static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

template <typename Number> int Order(Number a, Number b) { return a < b ? -1 : a > b ? 1 : 0; }

int CompareSegment(const ModelSegment &segment, const char *a, const char *b)
{
    const size_t length = segment.Length;
    switch (segment.Type) {
    case BtrTypeInteger: return Order(SignedOf(a, length), SignedOf(b, length));
    case BtrTypeUnsigned: return Order(UnsignedOf(a, length), UnsignedOf(b, length));
    case BtrTypeAutoincrement: return Order(std::abs(SignedOf(a, length)), std::abs(SignedOf(b, length)));
    case BtrTypeZString: return strncmp(a, b, length);
    default: return memcmp(a, b, length);
    }
}

int CompareValues(const ModelKey &key, const std::string &a, const std::string &b)
{
    size_t at = 0;
    for (const ModelSegment &segment : key.Segments) {
        const int order = CompareSegment(segment, a.data() + at, b.data() + at);
        if (order != 0) return segment.Descending ? -order : order;
        at += segment.Length;
    }
    return 0;
}

std::string ValueOf(const ModelKey &key, const std::string &record)
{
    std::string value;
    for (const ModelSegment &segment : key.Segments) {
        value += record.substr(segment.Offset, segment.Length);
    }
    return value;
}

size_t LengthOf(const ModelKey &key)
{
    size_t length = 0;
    for (const ModelSegment &segment : key.Segments) {
        length += segment.Length;
    }
    return length;
}

bool IsNull(const ModelKey &key, const std::string &record)
{
    if (!key.NullAll) return false;
    for (const ModelSegment &segment : key.Segments) {
        for (size_t i = 0; i < segment.Length; ++i) {
            if (record[segment.Offset + i] != segment.Null) return false;
        }
    }
    return true;
}

// An answer that leaves every buffer as it was.
Answer Unchanged(const Request &request, int16_t status)
{
    Answer answer;
    answer.Status = status;
    answer.Length = request.Length;
    answer.Data = request.Data;
    if (answer.Data.size() < request.Length) answer.Data.resize(request.Length);
    answer.Key = request.Key;
    answer.Key.resize(BtrKeyBufferSize);
    return answer;
}

void PutKey(Answer *answer, const std::string &value) { answer->Key.replace(0, value.size(), value); }

bool Locks(unsigned bias)
{
    return bias == BtrBiasLock || bias == BtrBiasMultiple || bias == BtrBiasWaitLock ||
           bias == BtrBiasWaitMultiple;
}
bool LocksOne(unsigned bias) { return bias == BtrBiasLock || bias == BtrBiasWaitLock; }

} // namespace

void Model::Add(const std::string &path, const ModelLayout &layout) { Layouts[path] = layout; }

std::string Model::DirectoryOf(const std::string &path) { return path.substr(0, path.find_last_of("/\\")); }

ModelState &Model::View(size_t client, const std::string &path)
{
    const std::string directory = DirectoryOf(path);
    const auto pending = Pending.find(directory);
    if (pending != Pending.end() && pending->second.first == client) return pending->second.second;
    return States[directory];
}

std::vector<Model::Entry> Model::Index(size_t client, const std::string &path, size_t key)
{
    const ModelKey &layout = Layouts[path].Keys[key];
    std::vector<Entry> index;
    for (const auto &[number, record] : Records(client, path)) {
        if (!IsNull(layout, record.Data))
            index.push_back({ValueOf(layout, record.Data), record.Joined[key], number});
    }
    std::sort(index.begin(), index.end(), [&](const Entry &a, const Entry &b) {
        const int order = CompareValues(layout, a.Value, b.Value);
        return order != 0 ? order < 0 : a.Joined < b.Joined;
    });
    return index;
}

// ---- Locks ----

bool Model::Holds(size_t client, const std::string &path, uint64_t record) const
{
    const ModelClient &who = Clients[client];
    const auto implicit = who.Implicit.find(path);
    if (implicit != who.Implicit.end() && implicit->second.count(record) > 0) return true;
    for (const ModelHandle &handle : who.Handles) {
        if (!handle.Open || handle.File != path) continue;
        if (handle.Single && handle.Single->Record == record) return true;
        for (const ModelLock &lock : handle.Multiple) {
            if (lock.Record == record) return true;
        }
    }
    return false;
}

bool Model::HoldsAny(size_t client, const std::string &path) const
{
    const ModelClient &who = Clients[client];
    const auto implicit = who.Implicit.find(path);
    if (implicit != who.Implicit.end() && !implicit->second.empty()) return true;
    return std::any_of(who.Handles.begin(), who.Handles.end(), [&](const ModelHandle &handle) {
        return handle.Open && handle.File == path && (handle.Single || !handle.Multiple.empty());
    });
}

bool Model::IsKnown(size_t client, const std::string &path) const
{
    const ModelClient &who = Clients[client];
    if (who.Known.count(path) > 0 || who.Whole.count(path) > 0 || HoldsAny(client, path)) return true;
    return std::any_of(who.Handles.begin(), who.Handles.end(),
                       [&](const ModelHandle &handle) { return handle.Open && handle.File == path; });
}

// 0, or the status that a request for the record's lock meets.
int16_t Model::TestLock(size_t client, const std::string &path, uint64_t record) const
{
    for (size_t other = 0; other < Clients.size(); ++other) {
        if (other == client) continue;
        if (Clients[other].Whole.count(path) > 0) return BtrStatusFileLocked;
        if (Holds(other, path, record)) return BtrStatusRecordLocked;
    }
    return BtrStatusOk;
}

int16_t Model::TakeWhole(size_t client, uint8_t block)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[block];
    if (who.Transaction != ModelTransaction::Exclusive || who.Whole.count(handle.File) > 0)
        return BtrStatusOk;
    for (size_t other = 0; other < Clients.size(); ++other) {
        if (other == client) continue;
        if (Clients[other].Whole.count(handle.File) > 0) return BtrStatusFileLocked;
        if (HoldsAny(other, handle.File)) return BtrStatusRecordLocked;
    }
    who.Whole.insert(handle.File);
    handle.Single.reset();
    handle.Multiple.clear();
    return BtrStatusOk;
}

// Who has changed something in a directory is the only writer there, and reads without a lock.
int16_t Model::TakeToRead(size_t client, uint8_t block)
{
    const auto pending = Pending.find(DirectoryOf(Clients[client].Handles[block].File));
    const bool isWriter = pending != Pending.end() && pending->second.first == client;
    return isWriter ? int16_t{BtrStatusOk} : TakeWhole(client, block);
}

void Model::Take(size_t client, uint8_t block, unsigned bias, uint64_t record)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[block];
    const bool inside = who.Transaction != ModelTransaction::None;
    if (LocksOne(bias)) {
        if (handle.Single && handle.Single->Record == record) return;
        handle.Single = ModelLock{record, inside};
        return;
    }
    for (const ModelLock &lock : handle.Multiple) {
        if (lock.Record == record) return;
    }
    handle.Multiple.push_back({record, inside});
}

Answer Model::Unlock(size_t client, const Request &request)
{
    ModelHandle &handle = Clients[client].Handles[request.Block];
    if (request.KeyNumber >= 0) {
        const bool locked = handle.Single.has_value();
        handle.Single.reset();
        return Unchanged(request, locked ? BtrStatusOk : BtrStatusUnlockMismatch);
    }
    if (request.KeyNumber == BtrUnlockOne) {
        if (request.Length < 4) return Unchanged(request, BtrStatusDataBufferShort);
        const auto &positions = Positions[handle.File];
        const auto known = positions.find(request.Data.substr(0, 4));
        if (known == positions.end()) return Unchanged(request, BtrStatusUnlockMismatch);
        const auto lock = std::find_if(handle.Multiple.begin(), handle.Multiple.end(),
                                       [&](const ModelLock &held) { return held.Record == known->second; });
        if (lock == handle.Multiple.end()) return Unchanged(request, BtrStatusUnlockMismatch);
        handle.Multiple.erase(lock);
        return Unchanged(request, BtrStatusOk);
    }
    const bool any = request.KeyNumber == BtrUnlockAll && !handle.Multiple.empty();
    if (any) handle.Multiple.clear();
    return Unchanged(request, any ? BtrStatusOk : BtrStatusUnlockMismatch);
}

// ---- Transactions ----

// What a change meets before it looks at the record: the one writer, then the record's lock.
int16_t Model::EnterChange(size_t client, uint8_t block, uint64_t record)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[block];
    if (handle.Mode == BtrModeReadOnly) return BtrStatusAccessDenied;
    const int16_t whole = TakeWhole(client, block);
    if (whole != BtrStatusOk) return whole;
    const std::string directory = DirectoryOf(handle.File);
    if (!who.Changed.empty() && who.Changed != directory) return BtrStatusNotAllowed;
    const auto pending = Pending.find(directory);
    if (pending != Pending.end() && pending->second.first != client) {
        const bool exclusive = Clients[pending->second.first].Transaction == ModelTransaction::Exclusive;
        return exclusive ? BtrStatusFileLocked : BtrStatusRecordLocked;
    }
    return TestLock(client, handle.File, record);
}

// After a change that worked: inside a transaction it is pending, and a concurrent one keeps the record's
// lock.
void Model::LeaveChange(size_t client, const std::string &path, uint64_t record)
{
    ModelClient &who = Clients[client];
    if (who.Transaction == ModelTransaction::None) return;
    who.Known.insert(path);
    if (who.Transaction == ModelTransaction::Concurrent) who.Implicit[path].insert(record);
}

// Drops what is pending. Position blocks on records that were never there lose them, and others are back
// where the record is as it was.
void Model::Undo(size_t client)
{
    ModelClient &who = Clients[client];
    const std::string directory = who.Changed;
    if (directory.empty()) return;
    Pending.erase(directory);
    for (const std::string &path : who.Made) {
        States[directory].Files[path] = {};
        Positions.erase(path);
    }
    for (ModelHandle &handle : who.Handles) {
        if (!handle.Open || DirectoryOf(handle.File) != directory || !handle.Here) continue;
        if (handle.Version <= who.FirstChange) continue;
        const ModelRecords &records = States[directory].Files[handle.File];
        const auto record = records.find(handle.Record);
        handle.Here = record != records.end();
        if (handle.Here) handle.Version = record->second.Version;
    }
    // Positions of records that were never there may be given again.
    for (auto &[path, positions] : Positions) {
        if (DirectoryOf(path) != directory) continue;
        std::erase_if(positions, [&](const auto &known) { return known.second > who.FirstRecord; });
    }
    who.Changed.clear();
    who.Made.clear();
    who.Replaced.clear();
}

void Model::Release(size_t client)
{
    ModelClient &who = Clients[client];
    who.Transaction = ModelTransaction::None;
    who.Changed.clear();
    who.Made.clear();
    who.Replaced.clear();
    who.Whole.clear();
    who.Known.clear();
    who.KeptAlone.clear();
    who.Implicit.clear();
    for (ModelHandle &handle : who.Handles) {
        if (handle.Single && handle.Single->InTransaction) handle.Single.reset();
        std::erase_if(handle.Multiple, [](const ModelLock &lock) { return lock.InTransaction; });
    }
}

// ---- Files ----

Answer Model::Open(size_t client, const Request &request)
{
    ModelClient &who = Clients[client];
    const std::string &path = request.Key;
    const auto &files = View(client, path).Files;
    if (files.find(path) == files.end()) return Unchanged(request, BtrStatusFileNotFound);
    const bool alone = request.KeyNumber == BtrModeExclusive;
    for (size_t other = 0; other < Clients.size(); ++other) {
        if (other != client && Clients[other].Replaced.count(path) > 0) {
            return Unchanged(request, BtrStatusIncompatibleMode);
        }
        bool opensAlone = std::any_of(
            Clients[other].Handles.begin(), Clients[other].Handles.end(), [&](const ModelHandle &handle) {
                return handle.Open && handle.File == path && handle.Mode == BtrModeExclusive;
            });
        const bool opens =
            std::any_of(Clients[other].Handles.begin(), Clients[other].Handles.end(),
                        [&](const ModelHandle &handle) { return handle.Open && handle.File == path; });
        const bool inTheWay = other == client ? opens : IsKnown(other, path);
        if (other != client && Clients[other].KeptAlone.count(path) > 0 && IsKnown(other, path))
            opensAlone = true;
        if (opensAlone || (alone && inTheWay)) return Unchanged(request, BtrStatusIncompatibleMode);
    }
    who.KeptAlone.erase(path);
    ModelHandle &handle = who.Handles[request.Block];
    handle = {};
    handle.Open = true;
    handle.File = path;
    handle.Mode = request.KeyNumber;
    return Unchanged(request, BtrStatusOk);
}

void Model::CloseBlock(size_t client, uint8_t block)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[block];
    if (handle.Single && handle.Single->InTransaction)
        who.Implicit[handle.File].insert(handle.Single->Record);
    for (const ModelLock &lock : handle.Multiple) {
        if (lock.InTransaction) who.Implicit[handle.File].insert(lock.Record);
    }
    // Until the end of a transaction that needs the file, it stays for its client alone.
    if (handle.Mode == BtrModeExclusive) who.KeptAlone.insert(handle.File);
    handle = {};
}

Answer Model::Create(size_t client, const Request &request)
{
    ModelClient &who = Clients[client];
    const std::string &path = request.Key;
    const std::string directory = DirectoryOf(path);
    const auto pending = Pending.find(directory);
    if (pending != Pending.end() && pending->second.first != client) {
        const bool exclusive = Clients[pending->second.first].Transaction == ModelTransaction::Exclusive;
        return Unchanged(request, exclusive ? BtrStatusFileLocked : BtrStatusRecordLocked);
    }
    ModelState &view = View(client, path);
    if (view.Files.count(path) > 0) {
        if (request.KeyNumber == BtrKeepExisting) return Unchanged(request, BtrStatusFileExists);
        for (size_t other = 0; other < Clients.size(); ++other) {
            if (IsKnown(other, path)) return Unchanged(request, BtrStatusIncompatibleMode);
        }
    }
    view.Files[path] = {};
    Positions.erase(path);
    if (pending != Pending.end()) {
        who.Made.push_back(path);
        if (States[directory].Files.count(path) > 0) who.Replaced.insert(path);
    }
    return Unchanged(request, BtrStatusOk);
}

Answer Model::Stat(size_t client, const Request &request)
{
    const ModelHandle &handle = Clients[client].Handles[request.Block];
    const ModelLayout &layout = Layouts[handle.File];
    Answer answer = Unchanged(request, BtrStatusOk);
    if (request.Length < layout.CreateBuffer.size()) return Unchanged(request, BtrStatusDataBufferShort);
    std::string expected = layout.CreateBuffer;
    const auto count = static_cast<uint32_t>(Records(client, handle.File).size());
    memcpy(expected.data() + 6, &count, sizeof count);
    size_t at = 16;
    for (size_t key = 0; key < layout.Keys.size(); ++key) {
        const std::vector<Entry> index = Index(client, handle.File, key);
        uint32_t values = 0;
        for (size_t i = 0; i < index.size(); ++i) {
            if (i == 0 || CompareValues(layout.Keys[key], index[i - 1].Value, index[i].Value) != 0) ++values;
        }
        for (size_t segment = 0; segment < layout.Keys[key].Segments.size(); ++segment, at += 16) {
            memcpy(expected.data() + at + 6, &values, sizeof values);
        }
    }
    answer.Data.replace(0, expected.size(), expected);
    answer.Length = static_cast<uint32_t>(expected.size());
    return answer;
}

// ---- Reading ----

// The record that was found becomes the current one and is handed over.
Answer Model::Finish(size_t client, const Request &request, uint64_t record, int key, bool keyOnly)
{
    ModelHandle &handle = Clients[client].Handles[request.Block];
    const ModelLayout &layout = Layouts[handle.File];
    const ModelRecord &found = Records(client, handle.File).at(record);
    handle.Touched = true;
    handle.Here = true;
    handle.KeyOnly = keyOnly;
    handle.Record = record;
    handle.Version = found.Version;
    if (key >= 0) {
        const auto index = static_cast<size_t>(key);
        handle.Key = key;
        handle.Place = {ValueOf(layout.Keys[index], found.Data), found.Joined[index]};
    }
    Answer answer = Unchanged(request, BtrStatusOk);
    if (!keyOnly) {
        if (request.Length < layout.Length) return Unchanged(request, BtrStatusDataBufferShort);
        const size_t fits = std::min<size_t>(request.Length, found.Data.size());
        answer.Data.replace(0, fits, found.Data, 0, fits);
        if (fits < found.Data.size()) {
            answer.Status = BtrStatusDataBufferShort;
            return answer;
        }
        answer.Length = static_cast<uint32_t>(fits);
    }
    if (key >= 0) PutKey(&answer, handle.Place.Value);
    return answer;
}

Answer Model::ReadKeyed(size_t client, const Request &request, unsigned operation, bool keyOnly,
                        unsigned bias)
{
    ModelHandle &handle = Clients[client].Handles[request.Block];
    const ModelLayout &layout = Layouts[handle.File];
    const int number = request.KeyNumber;
    if (number < 0 || static_cast<size_t>(number) >= layout.Keys.size()) {
        return Unchanged(request, BtrStatusBadKeyNumber);
    }
    const auto key = static_cast<size_t>(number);
    const ModelKey &by = layout.Keys[key];
    const bool relative = operation == BtrOpGetNext || operation == BtrOpGetPrevious;
    if (relative && handle.Key == -1) return Unchanged(request, BtrStatusNoPosition);
    if (relative && handle.Key != number) return Unchanged(request, BtrStatusKeyNumberChanged);
    if (request.KeyLength < LengthOf(by)) return Unchanged(request, BtrStatusKeyBufferShort);
    const int16_t whole = TakeToRead(client, request.Block);
    if (whole != BtrStatusOk) return Unchanged(request, whole);
    if ((LocksOne(bias) && !handle.Multiple.empty()) || (Locks(bias) && !LocksOne(bias) && handle.Single)) {
        return Unchanged(request, BtrStatusBadLockType);
    }

    std::string value = request.Key;
    value.resize(LengthOf(by));
    const std::vector<Entry> index = Index(client, handle.File, key);
    // Where an entry stands to what is asked for: below, at, or above it.
    const auto side = [&](const Entry &entry) {
        if (operation == BtrOpGetFirst) return 1;
        if (operation == BtrOpGetLast) return -1;
        if (!relative) return CompareValues(by, entry.Value, value);
        const int order = CompareValues(by, entry.Value, handle.Place.Value);
        // Without duplicates a place is its value, whoever has it meanwhile.
        return order != 0 || !by.Duplicates ? order : Order(entry.Joined, handle.Place.Joined);
    };
    const Entry *found = nullptr;
    for (const Entry &entry : index) {
        const int stands = side(entry);
        switch (operation) {
        case BtrOpGetEqual:
            if (stands == 0 && found == nullptr) found = &entry;
            break;
        case BtrOpGetFirst:
        case BtrOpGetNext:
        case BtrOpGetGreater:
            if (stands > 0 && found == nullptr) found = &entry;
            break;
        case BtrOpGetGreaterOrEqual:
            if (stands >= 0 && found == nullptr) found = &entry;
            break;
        case BtrOpGetLast:
        case BtrOpGetPrevious:
        case BtrOpGetLess:
            if (stands < 0) found = &entry;
            break;
        default:
            if (stands <= 0) found = &entry;
            break; // less or equal
        }
    }
    if (found == nullptr) {
        return Unchanged(request, operation == BtrOpGetEqual ? BtrStatusKeyNotFound : BtrStatusEndOfFile);
    }
    if (Locks(bias)) {
        const int16_t lock = TestLock(client, handle.File, found->Record);
        if (lock != BtrStatusOk) return Unchanged(request, lock);
        Take(client, request.Block, bias, found->Record);
    }
    return Finish(client, request, found->Record, number, keyOnly);
}

Answer Model::ReadStep(size_t client, const Request &request, unsigned operation, unsigned bias)
{
    ModelHandle &handle = Clients[client].Handles[request.Block];
    const int16_t whole = TakeToRead(client, request.Block);
    if (whole != BtrStatusOk) return Unchanged(request, whole);
    if ((LocksOne(bias) && !handle.Multiple.empty()) || (Locks(bias) && !LocksOne(bias) && handle.Single)) {
        return Unchanged(request, BtrStatusBadLockType);
    }
    const ModelRecords &records = Records(client, handle.File);
    const bool forward = operation == BtrOpStepFirst || operation == BtrOpStepNext;
    const bool fromHere = handle.Touched && (operation == BtrOpStepNext || operation == BtrOpStepPrevious);
    uint64_t found = 0;
    for (const auto &[number, record] : records) {
        if (forward && (!fromHere || number > handle.Record) && found == 0) found = number;
        if (!forward && (!fromHere || number < handle.Record)) found = number;
    }
    if (found == 0) return Unchanged(request, BtrStatusEndOfFile);
    if (Locks(bias)) {
        const int16_t lock = TestLock(client, handle.File, found);
        if (lock != BtrStatusOk) return Unchanged(request, lock);
        Take(client, request.Block, bias, found);
    }
    if (operation == BtrOpStepFirst || operation == BtrOpStepLast) handle.Key = -1;
    return Finish(client, request, found, -1, false);
}

Answer Model::ReadDirect(size_t client, const Request &request, unsigned bias)
{
    ModelHandle &handle = Clients[client].Handles[request.Block];
    const ModelLayout &layout = Layouts[handle.File];
    const int number = request.KeyNumber;
    if (number != -1) {
        if (number < 0 || static_cast<size_t>(number) >= layout.Keys.size()) {
            return Unchanged(request, BtrStatusBadKeyNumber);
        }
        if (request.KeyLength < LengthOf(layout.Keys[static_cast<size_t>(number)])) {
            return Unchanged(request, BtrStatusKeyBufferShort);
        }
    }
    if (request.Length < 4) return Unchanged(request, BtrStatusDataBufferShort);
    const int16_t whole = TakeToRead(client, request.Block);
    if (whole != BtrStatusOk) return Unchanged(request, whole);
    if ((LocksOne(bias) && !handle.Multiple.empty()) || (Locks(bias) && !LocksOne(bias) && handle.Single)) {
        return Unchanged(request, BtrStatusBadLockType);
    }
    const auto &positions = Positions[handle.File];
    const auto known = positions.find(request.Data.substr(0, 4));
    const ModelRecords &records = Records(client, handle.File);
    if (known == positions.end() || records.count(known->second) == 0) {
        handle.Key = -1;
        return Unchanged(request, BtrStatusBadPosition);
    }
    const uint64_t record = known->second;
    if (number >= 0 && IsNull(layout.Keys[static_cast<size_t>(number)], records.at(record).Data)) {
        return Unchanged(request, BtrStatusNotInIndex);
    }
    if (Locks(bias)) {
        const int16_t lock = TestLock(client, handle.File, record);
        if (lock != BtrStatusOk) return Unchanged(request, lock);
        Take(client, request.Block, bias, record);
    }
    handle.Key = -1;
    return Finish(client, request, record, number, false);
}

// ---- Changing ----

int16_t Model::FillNumbers(size_t client, const std::string &path, std::string *record)
{
    const ModelLayout &layout = Layouts[path];
    for (size_t key = 0; key < layout.Keys.size(); ++key) {
        const ModelKey &by = layout.Keys[key];
        if (!by.Autoincrement || SignedOf(record->data() + by.Segments[0].Offset, by.Segments[0].Length) != 0)
            continue;
        int64_t highest = 0;
        for (const auto &[number, other] : Records(client, path)) {
            highest = std::max(highest, std::abs(SignedOf(other.Data.data() + by.Segments[0].Offset,
                                                          by.Segments[0].Length)));
        }
        if (highest >= (int64_t{1} << (8 * by.Segments[0].Length - 1)) - 1) return BtrStatusDuplicateKey;
        const int64_t next = highest + 1;
        memcpy(record->data() + by.Segments[0].Offset, &next, by.Segments[0].Length);
    }
    return BtrStatusOk;
}

Answer Model::Insert(size_t client, const Request &request, unsigned bias)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[request.Block];
    const std::string path = handle.File;
    const ModelLayout &layout = Layouts[path];
    const int number = request.KeyNumber;
    if (number != -1) {
        if (number < 0 || static_cast<size_t>(number) >= layout.Keys.size())
            return Unchanged(request, BtrStatusBadKeyNumber);
        if (request.KeyLength < LengthOf(layout.Keys[static_cast<size_t>(number)]))
            return Unchanged(request, BtrStatusKeyBufferShort);
    }
    if (request.Length < layout.Length) return Unchanged(request, BtrStatusDataBufferShort);
    if ((LocksOne(bias) && !handle.Multiple.empty()) || (Locks(bias) && !LocksOne(bias) && handle.Single)) {
        return Unchanged(request, BtrStatusBadLockType);
    }
    const int16_t entered = EnterChange(client, request.Block, LastRecord + 1);
    if (entered != BtrStatusOk) return Unchanged(request, entered);

    std::string record = request.Data;
    record.resize(request.Length);
    if (!layout.Variable) record.resize(layout.Length);
    const int16_t filled = FillNumbers(client, path, &record);
    if (filled != BtrStatusOk) return Unchanged(request, filled);
    for (size_t key = 0; key < layout.Keys.size(); ++key) {
        const ModelKey &by = layout.Keys[key];
        if (by.Duplicates || IsNull(by, record)) continue;
        for (const Entry &entry : Index(client, path, key)) {
            if (CompareValues(by, entry.Value, ValueOf(by, record)) == 0)
                return Unchanged(request, BtrStatusDuplicateKey);
        }
    }

    const std::string directory = DirectoryOf(path);
    if (who.Transaction != ModelTransaction::None && who.Changed.empty()) {
        who.Changed = directory;
        who.FirstRecord = LastRecord;
        who.FirstChange = LastChange;
        Pending[directory] = {client, States[directory]};
    }
    const uint64_t given = ++LastRecord;
    const uint64_t change = ++LastChange;
    Records(client, path)[given] = {record, change, std::vector<uint64_t>(layout.Keys.size(), change)};
    LeaveChange(client, path, given);
    if (Locks(bias)) Take(client, request.Block, bias, given);
    handle.Touched = true;
    handle.Here = true;
    handle.KeyOnly = false;
    handle.Record = given;
    handle.Version = change;
    Answer answer = Unchanged(request, BtrStatusOk);
    answer.Data.replace(0, record.size(), record);
    if (number >= 0) {
        const ModelKey &by = layout.Keys[static_cast<size_t>(number)];
        PutKey(&answer, ValueOf(by, record));
        if (!IsNull(by, record)) {
            handle.Key = number;
            handle.Place = {ValueOf(by, record), change};
        }
    }
    return answer;
}

Answer Model::Update(size_t client, const Request &request)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[request.Block];
    const std::string path = handle.File;
    const ModelLayout &layout = Layouts[path];
    const int number = request.KeyNumber;
    if (number != -1) {
        if (number < 0 || static_cast<size_t>(number) >= layout.Keys.size())
            return Unchanged(request, BtrStatusBadKeyNumber);
        if (request.KeyLength < LengthOf(layout.Keys[static_cast<size_t>(number)]))
            return Unchanged(request, BtrStatusKeyBufferShort);
    }
    if (request.Length < layout.Length) return Unchanged(request, BtrStatusDataBufferShort);
    if (!handle.Here || handle.KeyOnly) return Unchanged(request, BtrStatusNoPosition);
    const int16_t entered = EnterChange(client, request.Block, handle.Record);
    if (entered != BtrStatusOk) return Unchanged(request, entered);
    {
        const ModelRecords &records = Records(client, path);
        const auto current = records.find(handle.Record);
        if (current == records.end() || current->second.Version != handle.Version)
            return Unchanged(request, BtrStatusConflict);
    }
    const ModelRecord old = Records(client, path).at(handle.Record);
    std::string record = request.Data;
    record.resize(request.Length);
    if (!layout.Variable) record.resize(layout.Length);
    const int16_t filled = FillNumbers(client, path, &record);
    if (filled != BtrStatusOk) return Unchanged(request, filled);
    for (const ModelKey &by : layout.Keys) {
        if (!by.Modifiable && ValueOf(by, old.Data) != ValueOf(by, record))
            return Unchanged(request, BtrStatusNotModifiable);
    }
    for (size_t key = 0; key < layout.Keys.size(); ++key) {
        const ModelKey &by = layout.Keys[key];
        if (by.Duplicates || IsNull(by, record)) continue;
        for (const Entry &entry : Index(client, path, key)) {
            if (entry.Record != handle.Record && CompareValues(by, entry.Value, ValueOf(by, record)) == 0) {
                return Unchanged(request, BtrStatusDuplicateKey);
            }
        }
    }

    const std::string directory = DirectoryOf(path);
    if (who.Transaction != ModelTransaction::None && who.Changed.empty()) {
        who.Changed = directory;
        who.FirstRecord = LastRecord;
        who.FirstChange = LastChange;
        Pending[directory] = {client, States[directory]};
    }
    const uint64_t change = ++LastChange;
    ModelRecord &now = Records(client, path).at(handle.Record);
    now.Data = record;
    now.Version = change;
    for (size_t key = 0; key < layout.Keys.size(); ++key) {
        const ModelKey &by = layout.Keys[key];
        const bool same = IsNull(by, old.Data) == IsNull(by, record) &&
                          CompareValues(by, ValueOf(by, old.Data), ValueOf(by, record)) == 0;
        if (!same) now.Joined[key] = change;
    }
    LeaveChange(client, path, handle.Record);
    handle.Version = change;
    if (handle.Single && handle.Single->Record == handle.Record) handle.Single.reset();
    Answer answer = Unchanged(request, BtrStatusOk);
    answer.Data.replace(0, record.size(), record);
    if (number >= 0) {
        const ModelKey &by = layout.Keys[static_cast<size_t>(number)];
        PutKey(&answer, ValueOf(by, record));
        if (handle.Key != -1 && handle.Key != number) {
            handle.Key = -2;
        } else if (handle.Key == number && !IsNull(by, record)) {
            handle.Place = {ValueOf(by, record), now.Joined[static_cast<size_t>(number)]};
        }
    }
    return answer;
}

Answer Model::Delete(size_t client, const Request &request)
{
    ModelClient &who = Clients[client];
    ModelHandle &handle = who.Handles[request.Block];
    const std::string path = handle.File;
    if (!handle.Here || handle.KeyOnly) return Unchanged(request, BtrStatusNoPosition);
    const int16_t entered = EnterChange(client, request.Block, handle.Record);
    if (entered != BtrStatusOk) return Unchanged(request, entered);
    {
        const ModelRecords &records = Records(client, path);
        const auto current = records.find(handle.Record);
        if (current == records.end() || current->second.Version != handle.Version)
            return Unchanged(request, BtrStatusConflict);
    }
    const std::string directory = DirectoryOf(path);
    if (who.Transaction != ModelTransaction::None && who.Changed.empty()) {
        who.Changed = directory;
        who.FirstRecord = LastRecord;
        who.FirstChange = LastChange;
        Pending[directory] = {client, States[directory]};
    }
    Records(client, path).erase(handle.Record);
    LeaveChange(client, path, handle.Record);
    handle.Here = false;
    if (handle.Single && handle.Single->Record == handle.Record) handle.Single.reset();
    std::erase_if(handle.Multiple, [&](const ModelLock &lock) { return lock.Record == handle.Record; });
    return Unchanged(request, BtrStatusOk);
}

// ---- Calls ----

Answer Model::Expect(size_t client, const Request &request)
{
    ModelClient &who = Clients[client];
    if (request.Operation >= BtrOpBeginConcurrent || request.Operation % 100 == BtrOpBegin) {
        if (who.Transaction != ModelTransaction::None) return Unchanged(request, BtrStatusTransactionActive);
        const bool concurrent = request.Operation >= BtrOpBeginConcurrent;
        who.Transaction = concurrent ? ModelTransaction::Concurrent : ModelTransaction::Exclusive;
        who.Inherited = concurrent ? request.Operation - BtrOpBeginConcurrent : 0u;
        return Unchanged(request, BtrStatusOk);
    }
    unsigned bias = request.Operation / 100 * 100;
    unsigned operation = request.Operation % 100;
    const bool keyOnly = operation >= BtrBiasKeyOnly;
    if (keyOnly) operation -= BtrBiasKeyOnly;
    const bool isRead = operation >= BtrOpGetEqual && operation <= BtrOpGetLast;
    const bool isStep = operation == BtrOpStepNext || operation >= BtrOpStepFirst;
    if (bias == 0 && who.Transaction == ModelTransaction::Concurrent &&
        (isRead || isStep || operation == BtrOpGetDirect)) {
        bias = who.Inherited;
    }
    switch (operation) {
    case BtrOpOpen: return Open(client, request);
    case BtrOpCreate: return Create(client, request);
    case BtrOpEnd:
        if (who.Transaction == ModelTransaction::None) return Unchanged(request, BtrStatusNoTransaction);
        if (!who.Changed.empty()) {
            States[who.Changed] = Pending.at(who.Changed).second;
            Pending.erase(who.Changed);
        }
        Release(client);
        return Unchanged(request, BtrStatusOk);
    case BtrOpAbort:
        if (who.Transaction == ModelTransaction::None) return Unchanged(request, BtrStatusNoTransaction);
        Undo(client);
        Release(client);
        return Unchanged(request, BtrStatusOk);
    case BtrOpReset:
    case BtrOpStop:
        Undo(client);
        Release(client);
        for (ModelHandle &handle : who.Handles) {
            handle = {};
        }
        return Unchanged(request, BtrStatusOk);
    default: break;
    }
    ModelHandle &handle = who.Handles[request.Block];
    if (!handle.Open) return Unchanged(request, BtrStatusNotOpen);
    switch (operation) {
    case BtrOpClose: CloseBlock(client, request.Block); return Unchanged(request, BtrStatusOk);
    case BtrOpInsert: return Insert(client, request, bias);
    case BtrOpUpdate: return Update(client, request);
    case BtrOpDelete: return Delete(client, request);
    case BtrOpStat: return Stat(client, request);
    case BtrOpUnlock: return Unlock(client, request);
    case BtrOpGetDirect: return ReadDirect(client, request, bias);
    case BtrOpGetPosition: {
        Answer answer = Unchanged(request, BtrStatusOk);
        if (!handle.Here) return Unchanged(request, BtrStatusNoPosition);
        if (request.Length < 4) return Unchanged(request, BtrStatusDataBufferShort);
        answer.Length = 4;
        return answer;
    }
    default: break;
    }
    return isRead ? ReadKeyed(client, request, operation, keyOnly, bias)
                  : ReadStep(client, request, operation, bias);
}

std::vector<std::string> Model::KnownPositions(const std::string &path) const
{
    std::vector<std::string> known;
    const auto positions = Positions.find(path);
    if (positions == Positions.end()) return known;
    for (const auto &[position, record] : positions->second) {
        known.push_back(position);
    }
    return known;
}

bool Model::LearnPosition(size_t client, uint8_t block, const std::string &position)
{
    const ModelHandle &handle = Clients[client].Handles[block];
    auto &positions = Positions[handle.File];
    for (const auto &[known, record] : positions) {
        if ((known == position) != (record == handle.Record)) return false;
    }
    positions[position] = handle.Record;
    return position != std::string(4, '\0');
}

} // namespace wbtrvtest
