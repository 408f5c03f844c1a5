// What a person chose last in a pick dialog: a number in vark.ini, section VARK, per Mandant where the things
// to choose from are the Mandant's own.
#pragma once

#include <cstdint>

namespace vark {

// A key of vark.ini, "Stapel" or "Stapel1".
struct ChoiceKey {
    char Name[32];
};

// `suffix` is that of the Mandant's directory: empty for Mandant 1, the number less one for another.
ChoiceKey KeyOfChoice(const char *name, const char *suffix);

// The number that the key holds; `otherwise` where there is none.
int32_t RecallChoice(const ChoiceKey &key, int32_t otherwise);

// Keeps the number. An ini file that cannot be written is no reason to refuse the choice: nothing is said.
void RememberChoice(const ChoiceKey &key, int32_t number);

} // namespace vark
