// The closed environment in which a template runs: no files, no system, no loading of code, bounded memory
// and bounded work. A template can do nothing but call what the engine offers it and what stands here:
//   assert error ipairs next pairs select tonumber tostring type
//   math.abs math.floor math.max math.min math.tointeger
//   string.find (plain) string.format (%s %d %%, with widths) string.len string.lower string.rep string.sub
//   string.upper, all by characters and also as methods of a text
//   table.concat table.insert table.remove table.unpack
// There are no patterns, no coroutines, no metatables and nothing that catches an error: each of them is a
// way around the bounds.
#pragma once

#include <lua.hpp>

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace rs {

struct SandboxLimits {
    size_t Memory;         // bytes that a template may hold
    size_t Block;          // bytes of its largest table
    size_t Text;           // bytes of its largest text: what works on a whole text stays short of the clock
    size_t Entries;        // of a table that table.insert and table.remove work on
    uint64_t Instructions; // of Lua in one call
    int64_t CpuTime_ms;    // of one call, for what takes long in few instructions
};

// Far above what a template needs (a few hundred KiB, a few hundred instructions a record) and far below what
// a host would notice. Written by tests alone, before any report is opened.
extern SandboxLimits sandboxLimits;

struct Sandbox {
    lua_State *State; // null when there was no memory for it
    SandboxLimits Limits;
    size_t MemoryUsed;
    uint64_t InstructionsUsed;
    int64_t CpuTimeAtStart_ms;
    const char *RefusedBy; // why the current call was refused memory, null when it was not
    int RefusedLine;       // and the line that wanted it
};

// Makes the environment. `owner` is what OwnerOf gives to the functions that the template calls. False
// without memory. The sandbox must not be moved.
bool OpenSandbox(Sandbox &sandbox, void *owner);
void CloseSandbox(Sandbox &sandbox);

template <typename Owner> Owner &OwnerOf(lua_State *state)
{
    return **static_cast<Owner **>(lua_getextraspace(state));
}

// Runs `body` with `argument` under the bounds; an error in it comes back as false and as text in `message`,
// of `size` bytes: "12: what happened", with the line of the template (1 for the whole). No object with
// a destructor may live in `body` or in anything that a template calls: an error jumps over it.
bool RunProtected(Sandbox &sandbox, lua_CFunction body, void *argument, char *message, size_t size);

// Compiles `source` (text only), for `body` of RunProtected: leaves the function on the stack or raises the
// error. `fileName` names a file other than the template itself in messages; null for the template.
void LoadTemplate(lua_State *state, const char *source, size_t length, const char *fileName);

} // namespace rs
