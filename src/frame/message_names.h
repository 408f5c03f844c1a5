// What the library's messages are called in the code. Their texts stand beside the names, in messages.def.
#pragma once

#include <cstdint>

namespace vark::Message {

enum Number : int32_t {
#define VARK_MESSAGE(Number, Name, Text) Name = (Number),
#include "src/frame/messages.def"
#undef VARK_MESSAGE
};

} // namespace vark::Message
