// Pick dialogs with one list of things that have a number and a name: Mandanten, Zahlungsziele,
// Kostenschablonen.
#pragma once

#include "src/frame/thread_context.h"
#include "src/pickers/remembered_choice.h"
#include "src/platform/window_api.h"
#include "window-system/include/dialog_table.h"

#include <cstdint>

namespace vark {

struct SingleChoice {
    ThreadContext &Context;
    const varkui::DialogTable &Dialog; // with a list, OK and Cancel
    int List;                          // id of the list
    ChoiceKey Key;                     // where the choice is remembered
    int32_t NoNumber;                  // result for a line that stands for no number above 0; 0: any is good

    // Fills the list and selects a line; below 0 the dialog ends with it before it is seen.
    int32_t (*Fill)(const SingleChoice &choice, HWND dialog);
};

// Lets the user choose a line. Returns its number, which is remembered; 0 cancelled; what Fill refused with;
// engineFailure when the dialog could not be made.
int32_t RunSingleChoice(const SingleChoice &choice, HWND owner);

} // namespace vark
