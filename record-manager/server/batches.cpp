// Loading: what goes into a tree is gathered and sent many at a time, since a statement for each row is
// what costs the time.
#include "record-manager/server/private.h"

#include <cstdlib>
#include <cstring>

namespace wbtrv {

namespace {

constexpr int fullRows = 1000;
constexpr size_t fullBytes = 512u << 10;
// So many are on their way at most, each of which may keep the server busy for a moment.
constexpr unsigned mostUnanswered = 16;
constexpr unsigned patience_ms = 60000;

void Put32(uint8_t *to, uint32_t number)
{
    for (size_t i = 4; i-- > 0; number >>= 8) {
        to[i] = static_cast<uint8_t>(number);
    }
}

// The binary form of an array of the server: dimensions, no nulls, type of the elements, their number,
// first index.
constexpr size_t arrayHead = 20;
constexpr uint32_t typeOfBytes = 17;
constexpr uint32_t typeOfNumbers = 20;

// A place for one more element; null for lack of memory.
uint8_t *Extend(ElementArray *array, size_t size)
{
    if (array->Size == 0) array->Size = arrayHead;
    if (array->Room < array->Size + 4 + size) {
        const size_t room = array->Room * 2 + arrayHead + 4 + size;
        void *larger = realloc(array->Bytes, room);
        if (larger == nullptr) return nullptr;
        array->Bytes = static_cast<uint8_t *>(larger);
        array->Room = room;
    }
    uint8_t *place = array->Bytes + array->Size;
    Put32(place, static_cast<uint32_t>(size));
    array->Size += 4 + size;
    return place + 4;
}

void AddArray(Parameters *parameters, const ElementArray &array, uint32_t type, int count)
{
    Put32(array.Bytes, 1);
    Put32(array.Bytes + 4, 0);
    Put32(array.Bytes + 8, type);
    Put32(array.Bytes + 12, static_cast<uint32_t>(count));
    Put32(array.Bytes + 16, 1);
    AddBytes(parameters, array.Bytes, array.Size);
}

} // namespace

int16_t ExchangeIn(Writer *writer, unsigned wait_ms)
{
    if (writer->Failed != BtrStatusOk) return writer->Failed;
    const int16_t status = Exchange(writer->Seen.By, wait_ms);
    if (writer->Failed == BtrStatusOk) writer->Failed = status;
    return status;
}

namespace {

int16_t SendBatch(Writer *writer, Batch *batch)
{
    if (batch->Count == 0) return BtrStatusOk;
    Parameters values{};
    AddNumber(&values, batch->File);
    Statement statement = Statement::PutRecords;
    if (batch->Tree == recordTree) {
        AddArray(&values, batch->Numbers, typeOfNumbers, batch->Count);
        AddArray(&values, batch->Texts, typeOfBytes, batch->Count);
    } else {
        AddNumber(&values, batch->Tree);
        AddArray(&values, batch->Texts, typeOfBytes, batch->Count);
        AddArray(&values, batch->Numbers, typeOfNumbers, batch->Count);
        statement = Statement::AddUniques;
    }
    constexpr uint8_t behind[8] = {255, 255, 255, 255, 255, 255, 255, 255};
    if (batch->GroupSize > 0) {
        AddNumber(&values, static_cast<int64_t>(batch->GroupSize));
        AddBytes(&values, behind, sizeof behind);
        statement = Statement::AddToGroups;
    }
    batch->Count = 0;
    batch->Numbers.Size = 0;
    batch->Texts.Size = 0;
    const int16_t status = Send(writer->Seen.By, statement, values, Answer::Needed);
    if (writer->Failed == BtrStatusOk) writer->Failed = status;
    if (++writer->BatchesSent % mostUnanswered == 0) return ExchangeIn(writer, patience_ms);
    return writer->Failed;
}

Batch *FindBatch(Writer *writer, uint32_t file, uint32_t tree)
{
    if (writer->Batches == nullptr)
        writer->Batches = static_cast<Batch *>(calloc(mostBatches, sizeof(Batch)));
    if (writer->Batches == nullptr) return nullptr;
    Batch *chosen = nullptr;
    for (size_t i = 0; i < mostBatches; ++i) {
        Batch *batch = &writer->Batches[i];
        if (batch->File == file && batch->Tree == tree) return batch;
        if (chosen == nullptr || (chosen->Count > 0 && batch->Count == 0)) chosen = batch;
    }
    if (SendBatch(writer, chosen) != BtrStatusOk) return nullptr;
    chosen->File = file;
    chosen->Tree = tree;
    return chosen;
}

} // namespace

int16_t AddToBatch(Writer *writer, uint32_t file, uint32_t tree, size_t groupSize, uint32_t record,
                   Bytes text)
{
    Batch *batch = FindBatch(writer, file, tree);
    if (batch == nullptr)
        return writer->Failed != BtrStatusOk ? writer->Failed
                                             : static_cast<int16_t>(BtrStatusHandleTableFull);
    batch->GroupSize = groupSize;
    uint8_t *number = Extend(&batch->Numbers, 8);
    uint8_t *bytes = number != nullptr ? Extend(&batch->Texts, text.Size) : nullptr;
    if (bytes == nullptr) {
        writer->Failed = BtrStatusHandleTableFull;
        return writer->Failed;
    }
    Put32(number, 0);
    Put32(number + 4, record);
    if (text.Size > 0) memcpy(bytes, text.Data, text.Size);
    batch->Count++;
    return batch->Count >= fullRows || batch->Texts.Size >= fullBytes ? SendBatch(writer, batch)
                                                                      : writer->Failed;
}

int16_t FlushBatches(Writer *writer)
{
    for (size_t i = 0; writer->Batches != nullptr && i < mostBatches && writer->Failed == BtrStatusOk; ++i) {
        (void)SendBatch(writer, &writer->Batches[i]);
    }
    return writer->Failed;
}

void FreeBatches(Writer *writer)
{
    for (size_t i = 0; writer->Batches != nullptr && i < mostBatches; ++i) {
        free(writer->Batches[i].Numbers.Bytes);
        free(writer->Batches[i].Texts.Bytes);
    }
    free(writer->Batches);
    writer->Batches = nullptr;
}

} // namespace wbtrv
