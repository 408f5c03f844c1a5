#include "src/frame/thread_context.h"

#include "src/platform/platform.h"

#include <cstdlib>

namespace vark {

namespace {

bool threadSlotAllocated;

void FreeThreadContext(void *value)
{
    auto *context = static_cast<ThreadContext *>(value);
    std::free(context->SplitOverflow);
    std::free(context->ReportViewTitle);
    std::free(context->ReportFrameClass);
    for (ThreadBlock *block = context->Blocks.Next; block != nullptr;) {
        ThreadBlock *const next = block->Next;
        std::free(block);
        block = next;
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

} // namespace

bool PrepareThreadContexts()
{
    threadSlotAllocated = AllocateThreadSlot(FreeThreadContext);
    if (threadSlotAllocated) OnFork(DropInherited);
    return threadSlotAllocated;
}

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

} // namespace vark
