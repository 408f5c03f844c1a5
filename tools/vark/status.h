// Whether the library is ready, and for which books.
#pragma once

namespace cli {

// Prints the state of the library, where the data lies, and the Mandanten. Returns the exit code: 3 when the
// library is not ready.
int ShowStatus(bool isJson);

} // namespace cli
