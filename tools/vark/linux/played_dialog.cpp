#include "tools/vark/played_dialog.h"

#include "window-system/include/varkui.h"

#include <stdexcept>

namespace cli {

PlayedDialog::~PlayedDialog()
{
    if (isBegun) VarkUiPlayed(nullptr, 0);
}

void PlayedDialog::Begin(bool isUnseen)
{
    if (VarkUiPlay(instructions.c_str(), isUnseen ? TRUE : FALSE) == FALSE) throw std::bad_alloc();
    isBegun = true;
}

std::string PlayedDialog::End()
{
    const auto line = static_cast<size_t>(VarkUiPlayed(nullptr, 0));
    isBegun = false;
    return line == 0 ? std::string() : options.at(line - 1);
}

} // namespace cli
