// JSON output over RapidJSON. Included by sources, not by headers.
#pragma once

#include <ostream>

#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/prettywriter.h>

#include <string>
#include <string_view>

namespace tools {

using JsonWriter = rapidjson::PrettyWriter<rapidjson::OStreamWrapper>;

// A name, or a name and its value, of an object that is being written.
inline void Put(JsonWriter &json, const char *name) { json.Key(name); }

inline void Put(JsonWriter &json, const char *name, std::string_view value)
{
    json.Key(name);
    json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

inline void Put(JsonWriter &json, const char *name, const char *value)
{
    Put(json, name, std::string_view(value));
}

inline void Put(JsonWriter &json, const char *name, int64_t value)
{
    json.Key(name);
    json.Int64(value);
}

inline void Put(JsonWriter &json, const char *name, int value)
{
    Put(json, name, static_cast<int64_t>(value));
}

inline void Put(JsonWriter &json, const char *name, bool value)
{
    json.Key(name);
    json.Bool(value);
}

} // namespace tools
