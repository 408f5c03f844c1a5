// The forms of files that are made without drawing pages, each from the spool alone.
#pragma once

#include "report-engine/view.h"
#include "report-engine/writer.h"

namespace rs {

// The forms, each the whole file. False when the spool could not be read; failures of the writer stay in it.
bool WriteCsv(Writer &writer, const View &view);
bool WriteJson(Writer &writer, const View &view);
bool WriteHtml(Writer &writer, const View &view);
bool WriteText(Writer &writer, const View &view);

} // namespace rs
