// Which front end answers now.
#pragma once

namespace varkui {

// Headless answers everything by itself; Script plays a person from a file; Screen shows windows to one.
enum class FrontEnd { Headless, Script, Screen };

// Headless until one has been put in charge.
FrontEnd InCharge();
void PutInCharge(FrontEnd chosen);

// From now on nobody is asked any more; everything is answered as headless does. Expects the lock.
void FallBackToHeadless();

} // namespace varkui
