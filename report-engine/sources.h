// The texts of templates and of the files that they share.
#pragma once

#include "report-engine/report.h"

namespace rs {

// The whole of a regular file, to be freed; null with errno.
char *ReadSource(const char *path, size_t &length);

// The source of a shared file of the report's template, read when it is first wanted; null with errno. Stays
// the report's.
const SharedSource *SharedSourceOf(Report &report, const char *name);

} // namespace rs
