// What a template can call: declarations while it is loaded, printing while its functions run.
#pragma once

#include "report-engine/report.h"

namespace rs {

// Bodies for RunProtected; the argument is the Report.
int OfferFunctions(lua_State *state);  // once, before anything else
int RunDeclarations(lua_State *state); // loads report.Source and checks what it declared

// The argument is a RecordCall: closes what the record's level ends, then runs the kind's function on it.
struct RecordCall {
    Report *To;
    int Kind;
    const char *Record;
};
int RunRecord(lua_State *state);

// The argument is the Report: closes all groups and makes the grand total.
int RunFinish(lua_State *state);

} // namespace rs
