// The commands that write into the books: bookings, split bookings, personal accounts; and what lies in a
// Stapel.
#pragma once

#include "tools/vark/commands.h"

namespace cli {

tools::Command BookingCommand(Given &given);
tools::Command SplitCommand(Given &given);
tools::Command BatchCommand(Given &given);
tools::Command PartnerCommands(Given &given);

} // namespace cli
