// The record managers of this process.
#pragma once

namespace cli {

// Whether the library works with the record manager that is linked here, as the same client of it. It may
// have found another one beside the books.
bool SharesRecordManager();

} // namespace cli
