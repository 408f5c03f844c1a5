#include "record-manager/lmdb/guarded.h"

namespace wbtrv {

constinit thread_local Guard *guard = nullptr;

void TellBrokenStore(MDB_env * /*environment*/, const char * /*message*/)
{
    // NOLINTNEXTLINE(cert-err52-cpp): the store knows no other way out
    if (guard != nullptr) std::longjmp(guard->Place, 1);
}

} // namespace wbtrv
