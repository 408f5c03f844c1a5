#include "src/pickers/remembered_choice.h"

#include "src/platform/platform.h"

#include <charconv>
#include <cstdio>

namespace vark {

namespace {

constexpr char section[] = "VARK";
constexpr char fileName[] = "vark.ini";

} // namespace

ChoiceKey KeyOfChoice(const char *name, const char *suffix)
{
    ChoiceKey key;
    std::snprintf(key.Name, sizeof key.Name, "%s%s", name, suffix);
    return key;
}

int32_t RecallChoice(const ChoiceKey &key, int32_t otherwise)
{
    char text[16];
    const size_t length = ReadProfileText(section, key.Name, text, sizeof text, fileName);
    int32_t number = otherwise;
    std::from_chars(text, text + length, number);
    return number;
}

void RememberChoice(const ChoiceKey &key, int32_t number)
{
    char text[16] = {};
    std::to_chars(text, text + sizeof text - 1, number);
    WriteProfileText(section, key.Name, text, fileName);
}

} // namespace vark
