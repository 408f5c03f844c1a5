// Pieces of work that are written down together: one step on the disk for many.
#pragma once

#include "tools/vark/outcome.h"

#include <cstddef>
#include <functional>
#include <string>

namespace cli {

// Work that is done piece by piece, and could be done by itself.
struct GroupedWork {
    size_t Count;
    // Does a piece; the books have it when it returns with code 1, or at the end of its group.
    std::function<Outcome(size_t)> Do;
    // The books that a piece goes into. A group is of one. None: each piece is written down by itself.
    std::function<std::string(size_t)> Place;
    // What became of a piece, once that is certain; in their order.
    std::function<void(size_t, const Outcome &)> Tell;
};

// Does all pieces, in groups that last so short that others who write hardly notice. A group of which
// anything could not be written leaves no trace and is done again, piece by piece. Nothing is shown while a
// group is open.
void DoInGroups(const GroupedWork &work);

} // namespace cli
