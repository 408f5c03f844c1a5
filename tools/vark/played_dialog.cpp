#include "tools/vark/played_dialog.h"

namespace cli {

PlayedDialog::PlayedDialog(int number) { Add("dialog " + std::to_string(number), ""); }

void PlayedDialog::Add(const std::string &instruction, const std::string &option)
{
    instructions += instruction + '\n';
    options.push_back(option);
}

} // namespace cli
