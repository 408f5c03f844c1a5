// Ini files, which the library, its parts and the tools look for in the same places: $VARK_CONFIG_DIR if that
// is set (and then nowhere else), else $XDG_CONFIG_HOME/vark (~/.config/vark), else /etc/vark. `fileName`
// comes without a directory: "tolka.ini".
#pragma once

#include <cstddef>

namespace host {

// Reads a private-profile text into `out` (always terminated, cut to `size` - 1): section and key without
// regard to case, blanks around the value and one pair of quotes taken off. A missing file, section or key
// gives the empty text. Returns the length.
size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName);

// Whether the ini file that is in force is there and cannot be read. Another one must not take its place.
bool IsProfileUnreadable(const char *fileName);

// Writes one private-profile text (null removes the key); everything else in the file stays as it was,
// comments included. The file is replaced as a whole or not at all. False when it could not be written.
bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName);

} // namespace host
