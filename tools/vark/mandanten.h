// The Mandanten of the books, read as records: no export lists them without a dialog.
#pragma once

#include "tools/common/installation.h"
#include "tools/common/row_writer.h"
#include "tools/common/text_table.h"

#include <vector>

namespace cli {

// The table that `vark status` and `vark mandanten` show.
tools::TextTable MandantenTable(const std::vector<tools::Mandant> &mandanten);

// Lists the Mandanten. Returns the exit code.
int ShowMandanten(tools::Output as);

} // namespace cli
