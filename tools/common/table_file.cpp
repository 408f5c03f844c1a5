#include "tools/common/table_file.h"

#include "record-manager/include/btrcall.h"
#include "tools/common/system.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tools {

namespace {

constexpr uint16_t pageSize = 4096;

// What Create takes and Stat gives.
struct FileDefinition {
    BtrFileHeader File;
    BtrKeyEntry Segments[BtrMaxKeys];
};

// `client` null is the calling thread's.
int Engine(BtrClient *client, uint16_t operation, void *positionBlock, void *data, uint32_t *length,
           void *key, int keyNumber)
{
    return BtrCallOf(client, operation, positionBlock, data, length, key, BtrKeyBufferSize,
                     static_cast<int8_t>(keyNumber));
}

// An operation on no file.
int Engine(BtrClient *client, uint16_t operation)
{
    return Engine(client, operation, nullptr, nullptr, nullptr, nullptr, 0);
}

// A path as key buffer of Open and Create.
void PutPath(uint8_t (&key)[BtrKeyBufferSize], const std::filesystem::path &path)
{
    const std::string text = PathBytes(path);
    if (text.size() >= BtrPathSize) throw std::runtime_error("Der Pfad ist zu lang: " + path.string());
    std::memset(key, 0, sizeof key);
    std::memcpy(key, text.data(), text.size());
}

} // namespace

std::string StatusText(int status)
{
    switch (status) {
    case BtrStatusIoError: return "die Datei läßt sich nicht lesen oder schreiben";
    case BtrStatusKeyNotFound: return "der Datensatz ist nicht vorhanden";
    case BtrStatusDuplicateKey: return "der Schlüssel ist schon vergeben";
    case BtrStatusBadName: return "der Dateiname ist unzulässig";
    case BtrStatusFileNotFound: return "die Datei ist nicht vorhanden";
    case BtrStatusDiskFull: return "der Datenträger ist voll";
    case BtrStatusNoEngine: return "die Datenbank ist nicht bereit";
    case BtrStatusForeignFile: return "die Datei gehört nicht zu dieser Datenbank";
    case BtrStatusAccessDenied: return "die Datei ist nur zum Lesen geöffnet";
    case BtrStatusFileExists: return "die Datei ist schon vorhanden";
    case BtrStatusRecordLocked: return "der Datensatz wird von einer anderen Anwendung benutzt";
    case BtrStatusFileLocked: return "die Datei wird von einer anderen Anwendung benutzt";
    case BtrStatusIncompatibleMode: return "die Datei ist in einer anderen Anwendung geöffnet";
    case BtrStatusPermission: return "der Zugriff ist nicht erlaubt";
    default: return "Status " + std::to_string(status) + " der Datenbank";
    }
}

EngineError::EngineError(const char *operation, int status, const std::filesystem::path &path)
    : std::runtime_error(path.string() + ": " + operation + " nicht möglich, " + StatusText(status)),
      Status(status)
{}

namespace {

void Create(const TableLayout &layout, const std::filesystem::path &directory, int existing)
{
    const std::filesystem::path path = directory / layout.FileName();
    FileDefinition stored = {};
    stored.File.RecordLength = layout.RecordLength;
    stored.File.PageSize = pageSize;
    stored.File.KeyCount = static_cast<uint8_t>(layout.Keys.size());
    BtrKeyEntry *next = stored.Segments;
    for (const KeyLayout &key : layout.Keys) {
        for (size_t i = 0; i < key.Segments.size(); ++i) {
            const KeySegment &segment = key.Segments[i];
            unsigned flags = BtrKeyExtendedType;
            if (key.Duplicates) flags |= BtrKeyDuplicates;
            if (key.Modifiable) flags |= BtrKeyModifiable;
            if (i + 1 < key.Segments.size()) flags |= BtrKeySegmented;
            next->Position = static_cast<uint16_t>(segment.Offset + 1);
            next->Length = segment.Length;
            next->Flags = static_cast<uint16_t>(flags);
            next->Type = static_cast<uint8_t>(segment.Type);
            ++next;
        }
    }
    uint8_t positionBlock[BtrPositionBlockSize] = {};
    uint8_t key[BtrKeyBufferSize];
    PutPath(key, path);
    auto length = static_cast<uint32_t>(sizeof stored.File +
                                        static_cast<size_t>(next - stored.Segments) * sizeof *next);
    const int status = Engine(nullptr, BtrOpCreate, positionBlock, &stored, &length, key, existing);
    if (status != 0) throw EngineError("Anlegen", status, path);
}

} // namespace

void CreateTable(const TableLayout &layout, const std::filesystem::path &directory)
{
    Create(layout, directory, BtrKeepExisting);
}

void ReplaceTable(const TableLayout &layout, const std::filesystem::path &directory)
{
    Create(layout, directory, 0);
}

EngineClient::EngineClient() : Handle(BtrMakeClient())
{
    if (Handle == nullptr) throw std::bad_alloc();
}

EngineClient::~EngineClient() { BtrEndClient(Handle); }

void EngineClient::BeginSnapshot()
{
    const int status = Engine(Handle, BtrOpBeginSnapshot);
    if (status != 0) throw EngineError("Lesen", status, {});
}

void EngineClient::EndSnapshot() noexcept { Engine(Handle, BtrOpEndSnapshot); }

TableFile::TableFile(const TableLayout &layout, const std::filesystem::path &directory, OpenMode mode,
                     EngineClient *client)
    : Layout(layout), Path(directory / layout.FileName()),
      caller(client != nullptr ? client->Handle : nullptr)
{
    PutPath(keyBuffer, Path);
    uint32_t length = 0;
    char noOwner[1] = {};
    const int status =
        Engine(caller, BtrOpOpen, positionBlock, noOwner, &length, keyBuffer, static_cast<int>(mode));
    if (status != 0) throw EngineError("Öffnen", status, Path);
    open = true;
}

TableFile::~TableFile()
{
    if (open) Call(BtrOpClose, nullptr, 0);
}

void TableFile::Close()
{
    if (!open) return;
    open = false;
    const int status = Call(BtrOpClose, nullptr, 0);
    if (status != 0) throw EngineError("Schließen", status, Path);
}

int TableFile::Call(uint16_t operation, void *record, int key)
{
    uint32_t length = record != nullptr ? Layout.RecordLength : 0;
    return Engine(caller, operation, positionBlock, record, &length, keyBuffer, key);
}

bool TableFile::Read(const char *name, uint16_t operation, void *record, int key)
{
    return Read(name, operation, record, Layout.RecordLength, key);
}

bool TableFile::Read(const char *name, uint16_t operation, void *record, size_t size, int key)
{
    auto length = static_cast<uint32_t>(size);
    int status = Engine(caller, operation, positionBlock, record, &length, keyBuffer, key);
    // The buffer would hold what was in it before.
    if (status == 0 && length < size) status = BtrStatusForeignFile;
    if (status == 0) return true;
    if (status == BtrStatusKeyNotFound || status == BtrStatusEndOfFile) return false;
    throw EngineError(name, status, Path);
}

void TableFile::SetKey(const void *value, int key)
{
    std::memset(keyBuffer, 0, sizeof keyBuffer);
    std::memcpy(keyBuffer, value, Layout.Keys[static_cast<size_t>(key)].Length());
}

void TableFile::Insert(void *record)
{
    const int status = Call(BtrOpInsert, record, 0);
    if (status != 0) throw EngineError("Einfügen", status, Path);
}

bool TableFile::TryInsert(void *record)
{
    const int status = Call(BtrOpInsert, record, 0);
    if (status == BtrStatusDuplicateKey) return false;
    if (status != 0) throw EngineError("Einfügen", status, Path);
    return true;
}

void TableFile::Update(const void *record)
{
    // The position in key order stays, so that a walk goes on with the record that followed.
    const int status = Call(BtrOpUpdate, const_cast<void *>(record), BtrNoCurrencyChange);
    if (status != 0) throw EngineError("Ändern", status, Path);
}

void TableFile::Delete()
{
    const int status = Call(BtrOpDelete, nullptr, 0);
    if (status != 0) throw EngineError("Löschen", status, Path);
}

bool TableFile::First(void *record, int key) { return Read("Lesen", BtrOpGetFirst, record, key); }

bool TableFile::Next(void *record, int key) { return Read("Lesen", BtrOpGetNext, record, key); }

bool TableFile::StepFirst(void *record) { return Read("Lesen", BtrOpStepFirst, record, 0); }

bool TableFile::StepNext(void *record) { return Read("Lesen", BtrOpStepNext, record, 0); }

size_t TableFile::StoredLength() const
{
    const auto duplicates = std::count_if(Layout.Keys.begin(), Layout.Keys.end(),
                                          [](const KeyLayout &key) { return key.Duplicates; });
    return Layout.RecordLength + 6 * (1 + static_cast<size_t>(duplicates));
}

bool TableFile::StepFirstStored(void *stored)
{
    return Read("Lesen", BtrOpStepFirstStored, stored, StoredLength(), 0);
}

bool TableFile::StepNextStored(void *stored)
{
    return Read("Lesen", BtrOpStepNextStored, stored, StoredLength(), 0);
}

void TableFile::InsertStored(const void *stored)
{
    auto length = static_cast<uint32_t>(StoredLength());
    const int status = Engine(caller, BtrOpInsertStored, positionBlock, const_cast<void *>(stored), &length,
                              keyBuffer, BtrNoCurrencyChange);
    if (status != 0) throw EngineError("Einfügen", status, Path);
}

bool TableFile::Equal(void *record, const void *value, int key)
{
    SetKey(value, key);
    return Read("Suchen", BtrOpGetEqual, record, key);
}

bool TableFile::GreaterEqual(void *record, const void *value, int key)
{
    SetKey(value, key);
    return Read("Suchen", BtrOpGetGreaterOrEqual, record, key);
}

uint32_t TableFile::RecordNumber()
{
    uint8_t bytes[4];
    uint32_t length = sizeof bytes;
    const int status = Engine(caller, BtrOpGetPosition, positionBlock, bytes, &length, keyBuffer, 0);
    if (status != 0) throw EngineError("Lesen", status, Path);
    // The more significant half comes first, each half little-endian.
    return uint32_t{bytes[1]} << 24 | uint32_t{bytes[0]} << 16 | uint32_t{bytes[3]} << 8 | bytes[2];
}

TableDefinition TableFile::Definition()
{
    FileDefinition stored = {};
    uint32_t length = sizeof stored;
    const int status = Engine(caller, BtrOpStat, positionBlock, &stored, &length, keyBuffer, 0);
    if (status != 0) throw EngineError("Abfragen", status, Path);

    TableDefinition definition{stored.File.RecordLength, stored.File.RecordCount, {}};
    const BtrKeyEntry *next = stored.Segments;
    for (unsigned i = 0; i < stored.File.KeyCount; ++i) {
        KeyLayout key{(next->Flags & BtrKeyDuplicates) != 0, (next->Flags & BtrKeyModifiable) != 0, {}};
        for (bool more = true; more; ++next) {
            more = (next->Flags & BtrKeySegmented) != 0;
            key.Segments.push_back(
                {static_cast<uint16_t>(next->Position - 1), next->Length, static_cast<KeyType>(next->Type)});
        }
        definition.Keys.push_back(std::move(key));
    }
    return definition;
}

EngineTransaction::EngineTransaction()
{
    const int status = Engine(nullptr, BtrOpBeginConcurrent);
    if (status != 0) throw EngineError("Transaktion", status, {});
}

EngineTransaction::~EngineTransaction()
{
    if (active) Engine(nullptr, BtrOpAbort);
}

void EngineTransaction::Finish()
{
    active = false;
    const int status = Engine(nullptr, BtrOpEnd);
    if (status != 0) throw EngineError("Transaktion", status, {});
}

void StopEngine() { Engine(nullptr, BtrOpStop); }

} // namespace tools
