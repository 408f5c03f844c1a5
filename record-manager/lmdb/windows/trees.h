// A transaction knows the trees that were open when it began, and one that a writer opened later would get
// the number of another. So all there are are opened before.
#pragma once

#include "record-manager/store.h"

#include <cstdint>

namespace wbtrv {

// Opens the trees of all files up to a number; those that were replaced have none. Store::Mutex is held, and
// no write transaction has made trees that its commit did not bring to the others.
int16_t OpenAllTrees(Store *store, uint32_t last);

} // namespace wbtrv
