// Where the data lies and who keeps it, as the configuration says. Set once, before the first export goes on.
#pragma once

#include "src/platform/platform.h"

namespace vark {

extern char DataPath[maxPath];   // without a separator at its end
extern char ReportPath[maxPath]; // with one at its end, unless empty
extern char DllPath[maxPath];    // may be empty
extern RecordManagerEntry EngineEntry;

} // namespace vark
