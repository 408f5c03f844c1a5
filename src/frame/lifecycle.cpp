#include "src/frame/lifecycle.h"

#include "src/frame/installation.h"
#include "src/frame/record_store.h"
#include "src/frame/report_engine.h"

#include <cstdlib>
#include <cstring>

namespace vark {

int32_t LibraryState = noContext;

namespace {

bool threadSlotAllocated;

void FreeThreadContext(void *value)
{
    auto *context = static_cast<ThreadContext *>(value);
    std::free(context->SplitOverflow);
    std::free(context->ReportViewTitle);
    std::free(context->ReportFrameClass);
    while (context->Blocks.Next != nullptr) {
        FreeThreadBlock(context->Blocks.Next);
    }
    std::free(context);
}

// What the parent had open is not ours: the child opens everything anew.
void DropInherited()
{
    if (!threadSlotAllocated) return;
    auto *context = static_cast<ThreadContext *>(ThreadSlotValue());
    if (context == nullptr) return;
    SetThreadSlotValue(nullptr);
    FreeThreadContext(context);
}

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
    threadSlotAllocated = AllocateThreadSlot(FreeThreadContext);
    if (!threadSlotAllocated) return;
    OnFork(DropInherited);

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

ThreadContext *GetThreadContext()
{
    if (!threadSlotAllocated) return nullptr;
    auto *context = static_cast<ThreadContext *>(ThreadSlotValue());
    if (context != nullptr) return context;
    context = static_cast<ThreadContext *>(std::calloc(1, sizeof *context));
    if (context == nullptr) return nullptr;
    if (!SetThreadSlotValue(context)) {
        std::free(context);
        return nullptr;
    }
    context->CurrentMandant = -1;
    context->CursorKind = -1;
    context->YearDirectory[0] = pathSeparator;
    return context;
}

void *AllocateThreadBlock(ThreadContext &context, size_t size)
{
    auto *block = static_cast<ThreadBlock *>(std::calloc(1, size));
    if (block == nullptr) return nullptr;
    block->Next = context.Blocks.Next;
    block->Previous = &context.Blocks;
    if (block->Next != nullptr) block->Next->Previous = block;
    context.Blocks.Next = block;
    return block;
}

void FreeThreadBlock(ThreadBlock *block)
{
    block->Previous->Next = block->Next;
    if (block->Next != nullptr) block->Next->Previous = block->Previous;
    std::free(block);
}

int32_t EnterExport(ThreadContext *&context)
{
    context = nullptr;
    AttachLibrary();
    if (LibraryState != ready) return LibraryState;
    context = GetThreadContext();
    return context != nullptr ? ready : noContext;
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
