#include "tools/books/snapshot.h"

#include "tools/books/copy_records.h"
#include "tools/common/table_file.h"

namespace books {

using namespace tools;

void CopyStore(const std::filesystem::path &from, const std::filesystem::path &to)
{
    try {
        CopyOneMoment(from, to);
    } catch (const EngineError &error) {
        if (error.Status == BtrStatusIoError || error.Status == BtrStatusForeignFile)
            throw DamagedBooks(error.what());
        // Where this program keeps everybody else out, its own thread is let in, and nothing changes.
        if (error.Status != BtrStatusIncompatibleMode) throw;
        CopyRecords(from, to, nullptr);
    }
}

} // namespace books
