// What differs between Linux and Windows and is no window: thread slots, ini files, the parts that are loaded
// at run time, the clock. Everything above this folder is the same on both.
#pragma once

#include "include/vark40.h"

#include <cstddef>
#include <cstdint>

namespace vark {

// Longest path text with its NUL; what does not fit is refused, never cut.
inline constexpr size_t maxPath = 260;

// Separator of directories: "\" on Windows, "/" elsewhere.
extern const char pathSeparator;

// True for a character that separates directories on this platform; on Linux that is also a trailing "\",
// since ini files travel.
bool IsPathSeparator(char character);

// ---- Threads ----

// Makes the slot that holds one pointer a thread; `release` is called with a thread's pointer when the thread
// ends, if it is not null. False when the system has none left. Called once.
bool AllocateThreadSlot(void (*release)(void *value));
void *ThreadSlotValue();
bool SetThreadSlotValue(void *value);

// Runs `body` once in the life of the process; other threads wait for its end, calls from within do not.
void RunOnce(void (*body)());

// Has `dropInherited` called in every forked child, on its one thread, before anything else runs there.
// Nothing to do on Windows.
void OnFork(void (*dropInherited)());

// ---- Ini files ----

// Reads a private-profile text into `out` (always terminated, cut to `size` - 1): section and key without
// regard to case, blanks around the value and one pair of quotes taken off. `fileName` comes without a
// directory: "tolka.ini". A missing file, section or key gives the empty text. Returns the length.
size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName);

// Whether the ini file that is in force is there and cannot be read. Another one must not take its place.
bool IsProfileUnreadable(const char *fileName);

// Writes one private-profile text (null removes the key); everything else in the file stays as it was,
// comments included. The file is replaced as a whole or not at all. False when it could not be written.
bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName);

// ---- The parts ----

// Entry of the record manager. Forms and statuses stand in record-manager/include/btrcall.h.
using RecordManagerEntry = int16_t(VARK_CALL *)(uint16_t operation, void *positionBlock, void *data,
                                                uint32_t *dataLength, void *key, uint8_t keyLength,
                                                int8_t keyNumber);

// Brings the engine's own process up where it needs one; never fails visibly.
void StartEngine(const char *dataPath);

// Finds and binds the record manager: beside the data (the last three characters of `dataPath` cut), in
// `dllPath` unless empty, and on Linux in the directory of this library. Null when none loads; a candidate
// that loads but lacks its entry ends the search with null.
RecordManagerEntry LoadRecordManager(const char *dataPath, const char *dllPath);

// Loads the report engine; null when there is none.
void *LoadReportEngine();

// Address of an entry in a loaded part, null when it has none of that name.
void *FindEntry(void *part, const char *name);

// Gives a loaded part back.
void ReleasePart(void *part);

// ---- Clock ----

struct CalendarDate {
    int Year;  // full
    int Month; // 1..12
    int Day;   // 1..31
};

// Today by the machine's clock, or by VARK_HEUTE=TT.MM.JJJJ where that is set and names a day.
CalendarDate SystemToday();

// What SystemToday is made of: the machine's own date, and a variable of the environment (null if it is not
// set, or not to be trusted).
CalendarDate MachineToday();
const char *EnvironmentText(const char *name);

// ---- Standard error ----

// Writes a line, where there is anybody to read it: it neither waits for long nor ends the host.
void TellOnStandardError(const char *line);

// ---- Texts ----

// A path in the form the system uses it (UTF-8 on Linux) as Windows-1252 text for a message.
void PathForMessage(const char *path, char *out, size_t size);

} // namespace vark
