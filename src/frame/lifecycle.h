// From load to unload: where the data lies, whether the record manager is there, and the first lines that
// every export has in common.
#pragma once

#include "include/vark40.h"
#include "src/frame/installation.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// States of the library, and what an export answers while it is not ready.
inline constexpr int32_t ready = 1;
inline constexpr int32_t engineFailure = VARK_FEHLER_DATENBANK;   // the record manager is missing or refused
inline constexpr int32_t noDataPath = VARK_FEHLER_KEIN_DATENPFAD; // no ini file names the data
inline constexpr int32_t noContext = VARK_FEHLER_KEIN_SPEICHER;   // the calling thread has no context

extern int32_t LibraryState;

// Reads the configuration and binds the parts, once in the life of the process, by whichever thread comes
// first. Whatever fails shows in LibraryState and is final.
void AttachLibrary();

// The first lines of every export: attaches, and gives the thread's context. Returns 1, or what the export
// has to return at once: LibraryState while it is not 1, or -42 (`context` is null then).
int32_t EnterExport(ThreadContext *&context);

} // namespace vark
