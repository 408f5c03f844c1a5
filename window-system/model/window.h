// The structures of windows and controls; model.h has the model around them.
#pragma once

#include "window-system/include/varkui.h"
#include "window-system/model/rows.h"

namespace varkui {

constexpr int deepestNesting = 100; // windows in windows, owners of owners; recursion stays bounded
constexpr unsigned handleBits = 15; // windows at once: 32,767
constexpr int longestQueue = 10000; // messages that wait for one thread
constexpr int longestText = 30000;  // the initial limit of an edit
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
    unsigned Serial; // number of texts and selections that the screen did not make; tells its late ones
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
    VARKUIAREA Area;     // as told by the screen; the window's size before
    bool AreaTold;
};

// ---- Dialogs ----

// Steps of answering a window that no person sees.
enum class Unseen : unsigned char { Untouched, Answered, Cancelled, Closed, Forced };

struct DialogState {
    LONG Number;
    bool Ended; // ended, though its window may still exist
    bool Logged;
    bool IsBox;
    bool IsChooser; // of files
    UINT BoxStyle;
    int DefaultId;
    HWND SavedFocus; // the focus when the dialog was last left
};

// ---- Windows ----

enum Change : unsigned {
    changedState = 1, // style, place, text, check, selection, order
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
    Window *Parent; // null: a window in the list of outermost windows
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
    unsigned Changed; // Change flags that the screen has not been told
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

// Notes a change; the screen is told when the window's thread waits.
inline void Note(Window *window, unsigned change) { window->Changed |= change; }

} // namespace varkui
