// Key values in a form whose byte order is the key's order, so that the store below compares bytes alone.
#pragma once

#include "record-manager/definition.h"

#include <cstddef>
#include <cstdint>

namespace wbtrv {

// Writes the ordered form of the key that lies in `record` to `out`, key.Length bytes.
void OrderedFromRecord(const Definition &definition, const Key &key, const uint8_t *record, uint8_t *out);

// The same from a key value as callers pass it: the segments one behind the other.
void OrderedFromValue(const Definition &definition, const Key &key, const uint8_t *value, uint8_t *out);

// Copies the key value that lies in `record` to `value`, key.Length bytes.
void ValueFromRecord(const Definition &definition, const Key &key, const uint8_t *record, uint8_t *value);

// Whether the record is left out of this key's index.
bool IsNull(const Definition &definition, const Key &key, const uint8_t *record);

// Whether two records agree in every byte of the key.
bool SameBytes(const Definition &definition, const Key &key, const uint8_t *one, const uint8_t *other);

// An autoincrement field: reading it, its largest value, writing it. Only the absolute value counts.
uint64_t AutoincrementOf(const Definition &definition, const Key &key, const uint8_t *record);
uint64_t AutoincrementFromOrdered(const Definition &definition, const Key &key, const uint8_t *ordered);
uint64_t AutoincrementMax(const Key &key);
void SetAutoincrement(const Definition &definition, const Key &key, uint8_t *record, uint64_t value);

} // namespace wbtrv
