// What a change of a record does to the indexes of its file.
#pragma once

#include "record-manager/change.h"

namespace wbtrv {

// Adds the record's entry to the index of one key; 5 when the value is there and may not be twice.
int16_t AddEntry(Change *change, const Key &key, const uint8_t *record, uint32_t number, uint64_t sequence);
// Removes an entry that must be there: 30 when it is not.
int16_t RemoveEntry(Change *change, const Key &key, const uint8_t *entry);
// Fills the autoincrement fields that are zero. `record` is the change's own copy.
int16_t AssignNumbers(Change *change, uint8_t *record, bool *assigned);

} // namespace wbtrv
