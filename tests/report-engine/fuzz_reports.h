// One report made of arbitrary bytes: a template, then records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace reports {

// The first byte picks the report id, the text up to a line "--" is the template, of what follows each byte
// is a kind, and the records are filled from the bytes behind it. Whatever comes of it is counted and written
// in every form; pages are drawn when `pdf` names a file. True if the template was sound.
bool RunReport(const uint8_t *data, size_t size, const std::string &pdf = "");

// Templates end sooner than they need to in a host, so that endless ones cost less.
void LowerLimits();

} // namespace reports
