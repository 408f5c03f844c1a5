// What a person would do in the dialog that the next call of the library opens, done without one.
#pragma once

#include <string>
#include <vector>

namespace cli {

struct PlayedDialog {
    // The dialog must be the one of this number.
    explicit PlayedDialog(int number);
    // Takes back what has not been done.
    ~PlayedDialog();
    PlayedDialog(const PlayedDialog &) = delete;
    PlayedDialog &operator=(const PlayedDialog &) = delete;

    // An instruction of the window system, which stands for an option.
    void Add(const std::string &instruction, const std::string &option);

    // From here on the windows of this thread are answered so. Behind the last instruction the person before
    // the screen goes on; unseen, nobody does.
    void Begin(bool isUnseen);

    // The option that could not be done, empty when all were.
    std::string End();

private:
    std::string instructions;
    std::vector<std::string> options; // of each line
    bool isBegun = false;
};

} // namespace cli
