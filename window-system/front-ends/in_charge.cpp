#include "window-system/front-ends/in_charge.h"

#include "window-system/model/model.h"
#include "window-system/model/threads.h"

#include <atomic>

namespace varkui {

namespace {

std::atomic<FrontEnd> inCharge{FrontEnd::Headless};

} // namespace

FrontEnd InCharge() { return inCharge; }

void PutInCharge(FrontEnd chosen) { inCharge = chosen; }

void FallBackToHeadless()
{
    inCharge = FrontEnd::Headless;
    WakeAllThreads();
}

} // namespace varkui
