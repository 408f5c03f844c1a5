#include "report-engine/sandbox.h"

#include "text/windows1252.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace rs {

SandboxLimits sandboxLimits = {size_t{64} << 20, size_t{4} << 20, size_t{64} << 10,
                               size_t{1} << 20,  20'000'000,      1000};

namespace {

constexpr char templateName[] = "=template"; // in Lua's messages, until the path takes its place

constexpr int hookInterval = 1000; // instructions between two looks at the bounds

int64_t CpuTime_ms()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

// The line in which the innermost function of the template stands, 0 outside of any.
int CurrentLine(lua_State *state)
{
    lua_Debug frame;
    for (int level = 0; lua_getstack(state, level, &frame) != 0; ++level) {
        if (lua_getinfo(state, "l", &frame) != 0 && frame.currentline > 0) return frame.currentline;
    }
    return 0;
}

void *Allocate(void *context, void *block, size_t oldSize, size_t newSize)
{
    auto &sandbox = *static_cast<Sandbox *>(context);
    const bool isText = block == nullptr && oldSize == LUA_TSTRING; // the code for what it is to become
    if (block == nullptr) oldSize = 0;
    if (newSize == 0) {
        sandbox.MemoryUsed -= oldSize;
        std::free(block);
        return nullptr;
    }
    if (newSize > oldSize) {
        const char *refusal = isText && newSize > sandbox.Limits.Text ? "a text grows too large"
                              : newSize > sandbox.Limits.Block        ? "a table or the stack grows too large"
                              : sandbox.MemoryUsed + (newSize - oldSize) > sandbox.Limits.Memory
                                  ? "the template takes too much memory"
                                  : nullptr;
        void *grown = refusal == nullptr ? std::realloc(block, newSize) : nullptr;
        if (grown == nullptr) {
            sandbox.RefusedBy = refusal != nullptr ? refusal : "not enough memory";
            // Lua's own message for this knows no line. Asking for it allocates nothing.
            sandbox.RefusedLine = sandbox.State != nullptr ? CurrentLine(sandbox.State) : 0;
            return nullptr;
        }
        sandbox.MemoryUsed += newSize - oldSize;
        return grown;
    }
    void *shrunk = std::realloc(block, newSize);
    sandbox.MemoryUsed -= oldSize - newSize;
    return shrunk != nullptr ? shrunk : block; // Lua counts on shrinking never to fail
}

void WatchBounds(lua_State *state, lua_Debug * /*frame*/)
{
    void *context = nullptr;
    lua_getallocf(state, &context);
    auto &sandbox = *static_cast<Sandbox *>(context);
    // The clock is a call into the system: most functions are done before they are looked at.
    if (sandbox.InstructionsUsed == 0) sandbox.CpuTimeAtStart_ms = CpuTime_ms();
    sandbox.InstructionsUsed += hookInterval;
    if (sandbox.InstructionsUsed > sandbox.Limits.Instructions ||
        CpuTime_ms() - sandbox.CpuTimeAtStart_ms > sandbox.Limits.CpuTime_ms) {
        luaL_error(state, "the template does not come to an end");
    }
}

// Puts file and line before a message that has none (an error that is no text, or one raised without).
int AddPosition(lua_State *state)
{
    const char *message = lua_tostring(state, 1);
    if (message == nullptr)
        message = lua_pushfstring(state, "(an error that is a %s)", luaL_typename(state, 1));
    lua_Debug frame;
    for (int level = 0; lua_getstack(state, level, &frame) != 0; ++level) {
        if (lua_getinfo(state, "Sl", &frame) == 0 || frame.currentline <= 0) continue;
        const char *position = lua_pushfstring(state, "%s:%d:", frame.short_src, frame.currentline);
        const size_t fileLength = std::strlen(frame.short_src);
        if (std::strncmp(message, frame.short_src, fileLength) == 0 && message[fileLength] == ':') break;
        lua_pushfstring(state, "%s %s", position, message);
        return 1;
    }
    lua_pushstring(state, message);
    return 1;
}

// ---- Texts, by characters ----

// The characters of a text; a malformed byte counts as one.
lua_Integer CharacterCount(const char *bytes, size_t length)
{
    lua_Integer count = 0;
    for (const char *const end = bytes + length; bytes < end; ++count) {
        text::NextCodePoint(bytes, end);
    }
    return count;
}

const char *AfterCharacters(const char *bytes, const char *end, lua_Integer count)
{
    while (count-- > 0 && bytes < end) {
        text::NextCodePoint(bytes, end);
    }
    return bytes;
}

int TextLength(lua_State *state)
{
    size_t length = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    lua_pushinteger(state, CharacterCount(bytes, length));
    return 1;
}

int TextPart(lua_State *state)
{
    size_t length = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    lua_Integer first = luaL_checkinteger(state, 2);
    lua_Integer last = luaL_optinteger(state, 3, -1);
    const lua_Integer count = CharacterCount(bytes, length);
    if (first < 0) first = first < -count ? 1 : count + first + 1;
    if (first == 0) first = 1;
    if (last < 0) last = last < -count ? 0 : count + last + 1;
    if (last > count) last = count;
    if (first > last) {
        lua_pushliteral(state, "");
        return 1;
    }
    const char *const end = bytes + length;
    const char *const from = AfterCharacters(bytes, end, first - 1);
    const char *const to = AfterCharacters(from, end, last - first + 1);
    lua_pushlstring(state, from, static_cast<size_t>(to - from));
    return 1;
}

int TextRepeated(lua_State *state)
{
    size_t length = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    const lua_Integer count = luaL_checkinteger(state, 2);
    if (count <= 0 || length == 0) {
        lua_pushliteral(state, "");
        return 1;
    }
    const size_t most = sandboxLimits.Text / length;
    if (static_cast<lua_Unsigned>(count) > most)
        return luaL_error(state, "the repeated text grows too large");
    luaL_Buffer buffer;
    luaL_buffinitsize(state, &buffer, length * static_cast<size_t>(count));
    for (lua_Integer i = 0; i < count; ++i) {
        luaL_addlstring(&buffer, bytes, length);
    }
    luaL_pushresult(&buffer);
    return 1;
}

// Position of a text in another, by characters, or nil. There are no patterns.
int TextFound(lua_State *state)
{
    size_t length = 0;
    size_t soughtLength = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    const char *sought = luaL_checklstring(state, 2, &soughtLength);
    const auto *found = static_cast<const char *>(memmem(bytes, length, sought, soughtLength));
    if (found == nullptr) {
        lua_pushnil(state);
        return 1;
    }
    lua_pushinteger(state, CharacterCount(bytes, static_cast<size_t>(found - bytes)) + 1);
    return 1;
}

// Letters of the code page outside ASCII lie 32 apart; the division and multiplication signs stand among
// them.
char32_t InCase(char32_t letter, bool isUpper)
{
    if (isUpper) {
        if ((letter >= 'a' && letter <= 'z') || (letter >= 0xE0 && letter <= 0xFE && letter != 0xF7)) {
            return letter - 32;
        }
    } else if ((letter >= 'A' && letter <= 'Z') || (letter >= 0xC0 && letter <= 0xDE && letter != 0xD7)) {
        return letter + 32;
    }
    return letter;
}

int ChangeCase(lua_State *state, bool isUpper)
{
    size_t length = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    luaL_Buffer buffer;
    luaL_buffinitsize(state, &buffer, length);
    for (const char *const end = bytes + length; bytes < end;) {
        const char *const from = bytes;
        const char32_t letter = text::NextCodePoint(bytes, end);
        const char32_t changed = InCase(letter, isUpper);
        if (changed == letter || letter >= 0x800) {
            luaL_addlstring(&buffer, from, static_cast<size_t>(bytes - from));
        } else if (changed < 0x80) {
            luaL_addchar(&buffer, static_cast<char>(changed));
        } else {
            luaL_addchar(&buffer, static_cast<char>(0xC0 | (changed >> 6)));
            luaL_addchar(&buffer, static_cast<char>(0x80 | (changed & 0x3F)));
        }
    }
    luaL_pushresult(&buffer);
    return 1;
}

int TextUpper(lua_State *state) { return ChangeCase(state, true); }
int TextLower(lua_State *state) { return ChangeCase(state, false); }

// %s, %d and %% with an optional width of up to two digits, filled with blanks or, after a 0, with zeros;
// after a "-" the blanks stand behind. Floating-point forms would follow the host's locale.
int TextFormatted(lua_State *state)
{
    size_t length = 0;
    const char *form = luaL_checklstring(state, 1, &length);
    const char *const end = form + length;
    int argument = 1;
    luaL_Buffer buffer;
    luaL_buffinit(state, &buffer);
    while (form < end) {
        if (*form != '%') {
            luaL_addchar(&buffer, *form++);
            continue;
        }
        ++form;
        if (form < end && *form == '%') {
            luaL_addchar(&buffer, *form++);
            continue;
        }
        const bool isLeft = form < end && *form == '-';
        if (isLeft) ++form;
        const bool isZero = form < end && *form == '0';
        if (isZero) ++form;
        lua_Integer width = 0;
        for (int digits = 0; form < end && *form >= '0' && *form <= '9' && digits < 2; ++digits) {
            width = width * 10 + (*form++ - '0');
        }
        const char kind = form < end ? *form++ : 0;
        ++argument;
        char number[24];
        const char *bytes = number;
        size_t byteCount = 0;
        if (kind == 'd') {
            byteCount = static_cast<size_t>(std::snprintf(
                number, sizeof number, "%lld", static_cast<long long>(luaL_checkinteger(state, argument))));
        } else if (kind == 's') {
            bytes = luaL_checklstring(state, argument, &byteCount);
        } else {
            return luaL_error(state, "a format has only %%s, %%d and %%%%");
        }
        const lua_Integer blanks = width - CharacterCount(bytes, byteCount);
        if (!isLeft) {
            if (isZero && kind == 'd' && byteCount > 0 && *bytes == '-') {
                luaL_addchar(&buffer, '-');
                ++bytes;
                --byteCount;
            }
            for (lua_Integer i = 0; i < blanks; ++i) {
                luaL_addchar(&buffer, isZero ? '0' : ' ');
            }
        }
        luaL_addlstring(&buffer, bytes, byteCount);
        for (lua_Integer i = 0; isLeft && i < blanks; ++i) {
            luaL_addchar(&buffer, ' ');
        }
    }
    luaL_pushresult(&buffer);
    return 1;
}

constexpr luaL_Reg textFunctions[] = {{"find", TextFound},  {"format", TextFormatted}, {"len", TextLength},
                                      {"lower", TextLower}, {"rep", TextRepeated},     {"sub", TextPart},
                                      {"upper", TextUpper}, {nullptr, nullptr}};

// Calls the library's function, which is the upvalue, on a table that is short enough for it: with the right
// keys the border of a table lies at 2^62, and no hook ends a loop in C.
int OnShortTable(lua_State *state)
{
    luaL_checktype(state, 1, LUA_TTABLE);
    if (lua_rawlen(state, 1) > sandboxLimits.Entries) return luaL_error(state, "the table is too long");
    lua_pushvalue(state, lua_upvalueindex(1));
    lua_insert(state, 1);
    lua_call(state, lua_gettop(state) - 1, LUA_MULTRET);
    return lua_gettop(state);
}

// Puts the bound before a function of the table on top of the stack.
void BoundTable(lua_State *state, const char *name)
{
    lua_getfield(state, -1, name);
    lua_pushcclosure(state, OnShortTable, 1);
    lua_setfield(state, -2, name);
}

// Moves functions of the library table on top of the stack into the table below it and drops the former.
void TakeOver(lua_State *state, const char *const *names)
{
    for (; *names != nullptr; ++names) {
        lua_getfield(state, -1, *names);
        lua_setfield(state, -3, *names);
    }
    lua_pop(state, 1);
}

void OpenLibrary(lua_State *state, lua_CFunction library)
{
    lua_pushcfunction(state, library);
    lua_call(state, 0, 1);
}

// The global table is replaced by one that holds only what templates may use.
int BuildEnvironment(lua_State *state)
{
    constexpr const char *base[] = {"assert", "error",    "ipairs",   "next", "pairs",
                                    "select", "tonumber", "tostring", "type", nullptr};
    constexpr const char *math[] = {"abs", "floor", "max", "min", "tointeger", nullptr};
    constexpr const char *table[] = {"concat", "insert", "remove", "unpack", nullptr};

    lua_newtable(state);
    OpenLibrary(state, luaopen_base);
    TakeOver(state, base);
    lua_newtable(state);
    OpenLibrary(state, luaopen_math);
    TakeOver(state, math);
    lua_setfield(state, -2, "math");
    lua_newtable(state);
    OpenLibrary(state, luaopen_table);
    TakeOver(state, table);
    for (const char *name : {"concat", "insert", "remove"}) {
        BoundTable(state, name);
    }
    lua_setfield(state, -2, "table");

    luaL_newlib(state, textFunctions);
    lua_pushliteral(state, ""); // the metatable of all texts
    lua_newtable(state);
    lua_pushvalue(state, -3);
    lua_setfield(state, -2, "__index");
    lua_setmetatable(state, -2);
    lua_pop(state, 1);
    lua_setfield(state, -2, "string");

    lua_rawseti(state, LUA_REGISTRYINDEX, LUA_RIDX_GLOBALS);
    return 0;
}

} // namespace

bool OpenSandbox(Sandbox &sandbox, void *owner)
{
    sandbox = {};
    sandbox.Limits = sandboxLimits;
    sandbox.State = lua_newstate(Allocate, &sandbox);
    if (sandbox.State == nullptr) return false;
    std::memcpy(lua_getextraspace(sandbox.State), &owner, sizeof owner);
    char message[128];
    if (!RunProtected(sandbox, BuildEnvironment, nullptr, message, sizeof message)) {
        CloseSandbox(sandbox);
        return false;
    }
    return true;
}

void CloseSandbox(Sandbox &sandbox)
{
    if (sandbox.State != nullptr) lua_close(sandbox.State);
    sandbox.State = nullptr;
}

bool RunProtected(Sandbox &sandbox, lua_CFunction body, void *argument, char *message, size_t size)
{
    lua_State *state = sandbox.State;
    sandbox.InstructionsUsed = 0;
    sandbox.RefusedBy = nullptr;
    lua_sethook(state, WatchBounds, LUA_MASKCOUNT, hookInterval);
    lua_pushcfunction(state, AddPosition);
    lua_pushcfunction(state, body);
    lua_pushlightuserdata(state, argument);
    const int status = lua_pcall(state, 1, 0, 1);
    if (status == LUA_OK) {
        lua_settop(state, 0);
        return true;
    }
    // The message is Lua's; nothing here may raise an error any more, so it is only looked at.
    const char *text =
        lua_type(state, -1) == LUA_TSTRING ? lua_tostring(state, -1) : "an error without a text";
    if (status == LUA_ERRMEM || status == LUA_ERRERR) {
        const char *refused = sandbox.RefusedBy != nullptr ? sandbox.RefusedBy : text;
        std::snprintf(message, size, "%d: %s", sandbox.RefusedLine, refused);
    } else {
        const size_t prefix = sizeof templateName; // the name without its "=", and the colon
        const bool isPlaced =
            std::strncmp(text, templateName + 1, prefix - 2) == 0 && text[prefix - 2] == ':';
        // What is wrong with the whole has no line of its own; what is wrong in a shared file, that file's.
        const bool isShared = !isPlaced && std::strstr(text, ".lua:") != nullptr;
        std::snprintf(message, size, "%s%s",
                      isPlaced   ? ""
                      : isShared ? " "
                                 : "1: ",
                      isPlaced ? text + prefix - 1 : text);
    }
    lua_settop(state, 0);
    return false;
}

void LoadTemplate(lua_State *state, const char *source, size_t length, const char *fileName)
{
    char name[64];
    std::snprintf(name, sizeof name, "=%s", fileName != nullptr ? fileName : templateName + 1);
    if (luaL_loadbufferx(state, source, length, name, "t") != LUA_OK) lua_error(state);
}

} // namespace rs
