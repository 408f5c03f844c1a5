// Values of keys as a person writes them, and what lies between two of them.
#pragma once

#include "tools/common/layout.h"

#include <string>
#include <string_view>
#include <vector>

namespace tools {

// What was given of a key: its first segments, and of a text no more than its beginning.
struct KeyValue {
    std::string Bytes;           // as long as the key; what was not given is lowest
    std::vector<uint16_t> Given; // bytes of each given segment that count
};

// Reads "1840", "15.04.1998", "USD,15.04.1998": segments with commas between them, as many as wanted. A key
// of one segment takes the text as a whole. Throws with a German text for what is no value of the key.
KeyValue ParseKey(const TableLayout &layout, const KeyLayout &key, std::string_view utf8, int firstMonth);

// -1, 0, 1: how a record stands to what was given; 0 also for all that begin so.
int CompareWith(const KeyLayout &key, const char *record, const KeyValue &value);

} // namespace tools
