// What relies on how one version of the store looks inside. In any other it is left undone.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

namespace {

// The head of the store's private structure. Its fatal flag shows nowhere else.
struct EnvironmentHead {
    int BooksFd;
    int LockFd;
    int HeadFd;
    uint32_t Flags;
};
constexpr uint32_t gaveUp = 0x80000000;

bool IsKnownVersion()
{
    int major = 0;
    int minor = 0;
    int patch = 0;
    mdb_version(&major, &minor, &patch);
    return major == 0 && minor == 9 && patch == 24;
}

} // namespace

void GoOn(Environment *environment)
{
    if (!IsKnownVersion()) return;
    auto head = GetField<EnvironmentHead>(environment->Real);
    int booksFd = -1;
    unsigned known = 0;
    if (mdb_env_get_fd(environment->Real, &booksFd) != 0 || head.BooksFd != booksFd) return;
    if (mdb_env_get_flags(environment->Real, &known) != 0 || (head.Flags & known) != known) return;
    head.Flags &= ~gaveUp;
    PutField(environment->Real, head);
}

} // namespace wbtrv
