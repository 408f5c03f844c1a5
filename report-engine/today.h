// The day that stands on a page.
#pragma once

namespace rs {

// Today as TT.MM.JJJJ, or what VARK_HEUTE says in the same form, for reproducible reports. `out` has 16
// bytes.
void TodayText(char *out);

} // namespace rs
