// What is copied of a report, as text with tabs between the columns.
#pragma once

#include "report-engine/page_requests.h"

namespace rs {

// A file with what is selected, or with the whole report; -1 on failure. `answer` tells its length, and
// whether it holds rows or was cut short. The file is the caller's.
int CopyText(const PageRequest &request, PageAnswer &answer);

} // namespace rs
