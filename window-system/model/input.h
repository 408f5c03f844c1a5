// The input of a person or script, on its way to a window.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

enum class InputKind : unsigned char {
    Click,  // a button
    Select, // row Index of a list or combo box, page Index of a tab control
    Pick,   // the same with a double click
    Text,   // the content of an edit or combo box becomes Text
    Focus,  // a click into a control; Index is not 0 when its window became active again with it, which takes
            // the focus from no other control
    Activate, // a window comes to the front
    Close,
    Resize, // Index is the width, Index2 the height
    Drop,   // the list of a combo box opens or closes (Index)
    Area,   // a picture has Index x Index2 pixels to show, each Serial pixels of the screen wide
    Scroll, // of a picture: Index, Index2 comes to the upper left corner
    Press,  // into a picture at Index, Index2; Serial is the number of presses, serialShift with Shift
    Drag,
    Release,
    Zoom,  // at Index, Index2; Serial is the number of steps as a signed number
    Caret, // of an edit or combo box is at Index, the other end of the selection at Index2
    File,  // Text, a path as the file system has it, was chosen in a chooser, for row Index of its kinds;
           // Index2 is not 0 when the person has agreed that a file of that name goes
};

struct Input {
    InputKind Kind;
    LONG Index;
    LONG Index2;
    unsigned Serial;
    char *Text;
};

// The message that carries an input; its payload stays with the thread.
constexpr UINT inputMessage = 0xFF01;

constexpr unsigned serialShift = 0x100;

// The serial of a text that does not come from the screen, and so is never late.
constexpr unsigned serialOfScript = 0xFFFFFFFF;

// An input without text; null without memory.
Input *MakeInput(InputKind kind, LONG index = 0);
void FreeInput(Input *input);

} // namespace varkui
