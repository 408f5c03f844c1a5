// What lives: windows, and what they carry. Structures alone; the model around them is in model.h.
#pragma once

#include "window-system/include/varkui.h"
#include "window-system/model/rows.h"

namespace varkui {

constexpr int deepestNesting = 100; // windows in windows, owners of owners; recursion stays bounded
constexpr unsigned handleBits = 15; // windows at once: 32,767
constexpr int longestQueue = 10000; // messages that wait for one thread
constexpr int longestText = 30000;  // an edit takes this much unless told otherwise
constexpr size_t longestClassName = 255;

struct Thread;
struct Window;
struct WindowClass;

enum class Kind : unsigned char {
    Plain,
    Dialog,
    Button,
    Edit,
    Static,
    ListBox,
    ComboBox,
    TabControl,
    Picture
};

struct Property {
    char *Name;
    HANDLE Value;
    Property *Next;
};

// ---- What controls hold beyond their text ----

struct ButtonState {
    int Check;
    bool Pushed;
};

struct EditState {
    LONG Anchor; // where the selection began
    LONG Caret;  // where it ends; both are offsets in the text
    LONG Limit;
    bool Modified;
    unsigned Serial; // counts the texts and selections that did not come from the screen, so that a late one
                     // of it is told apart
};

struct ListState {
    struct Rows Rows;
    LONG Selected; // LB_ERR for none
    LONG Top;
    LONG TabStops[16]; // in dialog units
    int TabStopCount;
};

struct ComboState {
    struct Rows Rows;
    LONG Selected;
    bool Dropped;
    EditState Edit;
};

struct Tab {
    char *Text;
    LPARAM Param;
};

struct TabState {
    Tab *Items;
    int Count;
    int Selected;
};

struct PictureState {
    VARKUIPICTURE Shown; // with a descriptor of its own
    VARKUIAREA Area;     // as the screen tells it; all of the window until it does
    bool AreaTold;
};

// ---- Dialogs ----

// How far a dialog that nobody sees has been answered.
enum class Unseen : unsigned char { Untouched, Answered, Cancelled, Closed, Forced };

struct DialogState {
    LONG Number;
    bool Ended; // closed, though its window may still be there
    bool Logged;
    bool IsBox;
    bool IsChooser; // of files
    UINT BoxStyle;
    int DefaultId;
    HWND SavedFocus; // had the focus when the dialog was left
};

// ---- Windows ----

enum Change : unsigned {
    changedState = 1, // style, place, text, check, selection, order: everything that is small
    changedRows = 2,
    changedPicture = 4,
    changedAll = 7,
    changedParent = 8,
};

struct Window {
    HWND Handle;
    WindowClass *Class;
    enum Kind Kind;
    WNDPROC Procedure;
    struct Thread *Thread;
    Window *Parent; // null for a window without; then it stands in the list of outermost windows
    Window *Owner;
    Window *FirstChild; // the topmost
    Window *LastChild;
    Window *Previous;
    Window *Next;
    DWORD Style;
    DWORD ExStyle;
    LONG_PTR Id;
    LONG_PTR UserData;
    HINSTANCE Instance;
    RECT Place; // inside the parent
    char *Text; // null is empty
    Property *Properties;
    unsigned char *Extra;
    int ExtraBytes;
    bool Destroying;
    bool DestroyTold; // WM_DESTROY has been sent
    bool SizeTold;    // the first WM_SIZE has been sent
    Unseen Answer;
    unsigned Changed; // what the screen has not heard of
    union {
        DialogState *Dialog;
        ButtonState *Button;
        EditState *Edit;
        ListState *List;
        ComboState *Combo;
        TabState *Tabs;
        PictureState *Picture;
        void *State;
    };
};

// `window` has changed; the screen hears of it when its thread waits.
inline void Note(Window *window, unsigned change) { window->Changed |= change; }

} // namespace varkui
