#include "src/frame/installation.h"

namespace vark {

char DataPath[maxPath];
char ReportPath[maxPath];
char DllPath[maxPath];
RecordManagerEntry EngineEntry;

} // namespace vark
