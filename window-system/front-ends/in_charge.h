// The front end in charge.
#pragma once

namespace varkui {

// Headless answers everything by itself; Script plays a person from a file; Screen shows windows to one.
enum class FrontEnd { Headless, Script, Screen };

// Headless before the first choice.
FrontEnd InCharge();
void PutInCharge(FrontEnd chosen);

// Puts headless in charge and wakes all threads. Expects the lock.
void FallBackToHeadless();

} // namespace varkui
