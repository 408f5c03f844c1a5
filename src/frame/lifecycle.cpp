#include "src/frame/lifecycle.h"

#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/installation.h"
#include "src/frame/record_store.h"
#include "src/frame/report_engine.h"

#include <cstdlib>
#include <cstring>

namespace vark {

int32_t LibraryState = noContext;

namespace {

void FindReportPath()
{
    if (ReadProfileText("VARK", "ReportPfad", ReportPath, maxPath, "vark.ini") == 0) {
        ReadProfileText("TOLKA", "ReportPfad", ReportPath, maxPath, "tolka.ini");
    }
    size_t length = std::strlen(ReportPath);
    if (length == 0) {
        // The data lies in a directory of exactly two letters; the installation lies above it.
        length = std::strlen(DataPath);
        length = length > 2 ? length - 2 : 0;
        std::memcpy(ReportPath, DataPath, length);
        ReportPath[length] = 0;
    }
    if (length > 0 && !IsPathSeparator(ReportPath[length - 1]) && length + 1 < maxPath) {
        ReportPath[length] = pathSeparator;
        ReportPath[length + 1] = 0;
    }
}

void Attach()
{
    LibraryState = noContext;
    if (!PrepareThreadContexts()) return;

    LibraryState = noDataPath;
    if (IsProfileUnreadable("tolka.ini") || IsProfileUnreadable("vark.ini")) return;
    if (ReadProfileText("TOLKA", "Pfad32", DataPath, maxPath, "tolka.ini") == 0 &&
        ReadProfileText("TOLKA", "Pfad", DataPath, maxPath, "tolka.ini") == 0 &&
        ReadProfileText("VARK", "Pfad", DataPath, maxPath, "vark.ini") == 0) {
        return;
    }
    const size_t length = std::strlen(DataPath);
    if (IsPathSeparator(DataPath[length - 1])) DataPath[length - 1] = 0;
    FindReportPath();
    ReadProfileText("VARK", "DLLPfad", DllPath, maxPath, "vark.ini");
    FillRecordLengthTable();

    LibraryState = engineFailure;
    StartEngine(DataPath);
    EngineEntry = LoadRecordManager(DataPath, DllPath);
    if (EngineEntry == nullptr) return;

    LibraryState = noContext;
    BindReportEngine();
    LibraryState = ready;
}

} // namespace

void AttachLibrary() { RunOnce(Attach); }

int32_t EnterExport(ThreadContext *&context)
{
    context = nullptr;
    AttachLibrary();
    if (LibraryState != ready) return LibraryState;
    context = GetThreadContext();
    if (context == nullptr) return noContext;
    ForgetBrokenBeliefs(*context);
    return ready;
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_Status(void)
{
    AttachLibrary();
    return LibraryState;
}

void VARK_CALL VARK_SchliesseDB(void)
{
    AttachLibrary();
    ThreadContext *context = GetThreadContext();
    if (LibraryState != ready || context == nullptr) return;
    context->CurrentMandant = -1;
    CloseAllTables(*context);
}
