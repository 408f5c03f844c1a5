#include "window-system/model/input.h"

#include "window-system/model/memory.h"
#include "window-system/model/window.h"

namespace varkui {

Input *MakeInput(InputKind kind, LONG index)
{
    auto *input = static_cast<Input *>(Allocate(sizeof(Input)));
    if (input == nullptr) return nullptr;
    input->Kind = kind;
    input->Index = index;
    input->Serial = serialOfScript;
    return input;
}

void FreeInput(Input *input)
{
    if (input == nullptr) return;
    Release(input->Text);
    Release(input);
}

} // namespace varkui
