// The map of the books, which grows with them: a process of 32 bits has little room for maps, and on
// Windows the file is as long as the map.
#pragma once

#include "record-manager/store.h"

#include <cstddef>
#include <cstdint>

namespace wbtrv {

// What new books begin with.
inline constexpr size_t firstMap = size_t{16} << 20;

// A snapshot stands between these two. Waits while the map is being changed. 0, or 85 when that does not
// end.
int16_t EnterMap(Environment *own);
void LeaveMap(Environment *own);

// Another process may have made the map larger: takes over its size. 0; 85 when a snapshot of this
// process is not given back; 2, 87.
int16_t FollowMap(Store *store);

// Makes room for the next write transaction, where there may be too little. The caller holds the gate.
int16_t MakeRoom(Store *store);

} // namespace wbtrv
