#include "report-engine/template_tables.h"

#include "text/windows1252.h"

#include <cmath>
#include <cstring>

namespace rs {

void RefuseUnknownKeys(lua_State *state, int table, std::initializer_list<const char *> known, bool hasList)
{
    lua_pushnil(state);
    while (lua_next(state, table) != 0) {
        lua_pop(state, 1);
        if (lua_isinteger(state, -1) && hasList) continue;
        const char *key = lua_type(state, -1) == LUA_TSTRING ? lua_tostring(state, -1) : nullptr;
        bool isKnown = false;
        for (const char *name : known) {
            if (key != nullptr && std::strcmp(key, name) == 0) isKnown = true;
        }
        if (!isKnown)
            luaL_error(state, "unknown entry '%s'", key != nullptr ? key : luaL_typename(state, -1));
    }
}

bool TextEntry(lua_State *state, int table, const char *key, char *out, size_t size)
{
    const int type = lua_getfield(state, table, key);
    if (type == LUA_TNIL) {
        lua_pop(state, 1);
        return false;
    }
    size_t length = 0;
    const char *value = type == LUA_TSTRING ? lua_tolstring(state, -1, &length) : nullptr;
    if (value == nullptr) return luaL_error(state, "'%s' must be a text", key) != 0;
    if (length >= size) luaL_error(state, "'%s' may have %d bytes", key, static_cast<int>(size) - 1);
    const char *next = value;
    while (next < value + length) {
        const char32_t character = text::NextCodePoint(next, value + length);
        if (character == 0xFFFD || (character < ' ' && character != '\n')) {
            luaL_error(state, "'%s' is no proper UTF-8 text", key);
        }
    }
    std::memcpy(out, value, length);
    out[length] = 0;
    lua_pop(state, 1);
    return true;
}

bool FlagEntry(lua_State *state, int table, const char *key, bool &out)
{
    const int type = lua_getfield(state, table, key);
    if (type != LUA_TNIL && type != LUA_TBOOLEAN) luaL_error(state, "'%s' must be true or false", key);
    if (type == LUA_TBOOLEAN) out = lua_toboolean(state, -1) != 0;
    lua_pop(state, 1);
    return type == LUA_TBOOLEAN;
}

int32_t IntegerEntry(lua_State *state, int table, const char *key, int32_t otherwise, int32_t lowest,
                     int32_t highest)
{
    const int type = lua_getfield(state, table, key);
    int32_t value = otherwise;
    if (type != LUA_TNIL) {
        int isInteger = 0;
        const lua_Integer number = type == LUA_TNUMBER ? lua_tointegerx(state, -1, &isInteger) : 0;
        if (isInteger == 0 || number < lowest || number > highest) {
            luaL_error(state, "'%s' must be a whole number from %d to %d", key, lowest, highest);
        }
        value = static_cast<int32_t>(number);
    }
    lua_pop(state, 1);
    return value;
}

bool MeasureEntry(lua_State *state, int table, const char *key, int32_t highest, int32_t &out)
{
    const int type = lua_getfield(state, table, key);
    if (type == LUA_TNIL) {
        lua_pop(state, 1);
        return false;
    }
    const double number = type == LUA_TNUMBER ? lua_tonumber(state, -1) : -1;
    if (!(number >= 0 && number * 100 <= highest)) {
        luaL_error(state, "'%s' must be a number from 0 to %d", key, highest / 100);
    }
    out = static_cast<int32_t>(std::lround(number * 100));
    lua_pop(state, 1);
    return true;
}

int ChoiceEntry(lua_State *state, int table, const char *key, std::initializer_list<const char *> choices,
                int otherwise)
{
    char text[24];
    if (!TextEntry(state, table, key, text, sizeof text)) return otherwise;
    int index = 0;
    for (const char *choice : choices) {
        if (std::strcmp(text, choice) == 0) return index;
        ++index;
    }
    return luaL_error(state, "'%s' cannot be '%s'", key, text);
}

int StyleNumber(lua_State *state, const Report &report, int index)
{
    luaL_checktype(state, index, LUA_TSTRING);
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.StyleNames);
    lua_pushvalue(state, index);
    const int type = lua_rawget(state, -2);
    const int number = type == LUA_TNUMBER ? static_cast<int>(lua_tointeger(state, -1)) : -1;
    lua_pop(state, 2);
    return number;
}

} // namespace rs
