// What is copied of a report, as text with tabs between the columns and as a table of HTML.
#pragma once

#include "report-engine/page_requests.h"

namespace rs {

// A file with what is selected, or with the whole report, and behind it, where that is rows, the same as a
// page of HTML; -1 on failure. `answer` tells both lengths, and whether the text was cut short. The file is
// the caller's.
int CopyText(const PageRequest &request, PageAnswer &answer);

} // namespace rs
