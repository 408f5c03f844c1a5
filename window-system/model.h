// The model of windows: what lives, how it hangs together, who has the focus, what waits in the queues. It
// knows nothing of how it is shown.
//
// One lock guards all of it. No procedure of a window is ever called with the lock held, and no pointer to a
// window is kept across such a call: whatever a procedure may have destroyed is looked up again by its
// handle. Functions below that take a Window or Thread expect the lock to be held; those that take an HWND
// take it themselves, unless they say otherwise.
//
// Invariants, checked by CheckModel:
// M1  A handle in the table leads to a window with that handle; every living window has one.
//
// M2  Siblings are doubly linked and agree with their parent about it; the first and last are the ends.
//
// M3  No window lies inside itself, and none lies more than `deepestNesting` windows deep.
//
// M4  Every window belongs to a living thread, whose count of windows is right.
//
// M5  The focus of a thread is a window of that thread; so is its active window, which has no parent.
//
// M6  An owner is a window without parent, is not owned by what it owns, and its owned windows have no
// parent.
//
// M7  A window has the state of its kind of control, and only that.
//
// M8  A selection lies inside its text or rows; a row selected is a row that exists.
//
// M9  Every modal loop of a thread names a different dialog.
#pragma once

#include <pthread.h>

#include "window-system/rows.h"
#include "window-system/varkui.h"

namespace varkui {

constexpr int deepestNesting = 100; // windows in windows, owners of owners; recursion stays bounded
constexpr unsigned handleBits = 15; // windows at once: 32,767
constexpr int longestQueue = 10000; // messages that wait for one thread
constexpr int longestText = 30000;  // an edit takes this much unless told otherwise
constexpr size_t longestClassName = 255;

struct Thread;
struct Window;

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

struct Input;

struct WindowClass {
    const char *Name;
    char *OwnName; // the memory of a name that was told; null for the system's
    WNDPROC Procedure;
    void (*TakeInput)(HWND window, const Input &input); // what only this class understands; null for a host's
    int ExtraBytes;
    enum Kind Kind;
    bool OfSystem;
    WNDCLASSA Told; // as it was registered, for GetClassInfoA
    ATOM Atom;
    int Windows;
    WindowClass *Next;
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

// ---- Input of a person or script ----

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

// ---- Threads ----

struct Posted {
    MSG Message;
    bool IsKey; // goes to the focus as it is when the message is taken
    Input *Payload;
    Posted *Next;
};

// A message on its way to another thread; lives on the sender's stack.
struct Sent {
    HWND Target;
    UINT Message;
    WPARAM WParam;
    LPARAM LParam;
    LRESULT Result;
    bool Done;
    bool Nobody;           // nobody waits for the result: lies on the heap
    BOOL (*Instead)(HWND); // no message: this is done on the thread of the target
    struct Thread *Sender;
    Sent *Next;
};

// A modal loop that runs; lives on the stack of its thread.
struct ModalLoop {
    HWND Dialog;
    HWND Disabled; // the owner, to be enabled again; null when it was disabled before
    bool Ended;
    bool Told; // that it has ended, to a thread that waited for messages
    INT_PTR Result;
    ModalLoop *Outer;
};

struct Thread {
    pthread_cond_t Wake;
    Posted *FirstPosted;
    Posted *LastPosted;
    int PostedCount;
    Sent *FirstSent; // arrived, not yet handled
    Sent *LastSent;
    Sent *Handling; // being handled, innermost first
    bool Quit;
    int QuitCode;
    HWND Focus;
    HWND Active;
    ModalLoop *Modal;
    BYTE Keys[256];
    HCURSOR Cursor;
    Input *Current; // payload of the input message that was taken last
    int Descriptor; // -1 until asked for
    int WindowCount;
    uint32_t HeardKey;     // number of the last key that came from the screen
    uint32_t HandledKey;   // the same when the thread last had nothing left to do
    unsigned ScriptTicket; // 0 while it does not wait for the script
    struct Played *Played; // instructions of the host, null for none
    Thread *Next;
};

// Addresses and handles travel in messages as numbers; this is where they become what they were.
template <typename Pointer> Pointer AsPointer(LPARAM number)
{
    return reinterpret_cast<Pointer>(number); // NOLINT(performance-no-int-to-ptr)
}

template <typename Pointer> Pointer AsPointer(WPARAM number)
{
    return reinterpret_cast<Pointer>(number); // NOLINT(performance-no-int-to-ptr)
}

struct Model {
    pthread_mutex_t Lock;
    Thread *Threads;
    WindowClass *Classes;
    Window *FirstTop; // the topmost window without parent
    Window *LastTop;
    unsigned BaseX; // pixels of 4 horizontal and 8 vertical dialog units
    unsigned BaseY;
    char *Copied = nullptr; // what a person can paste
    unsigned CopiedSerial = 0;
};

extern Model model;

// What goes beyond the model when a thread ends, with the lock held, and in the child of a fork, whose one
// thread has no windows.
struct ThreadEvents {
    void (*Ends)(Thread *thread);
    void (*Forked)();
};

extern ThreadEvents threadEvents; // set once, when the library is loaded

// What the windows have from whoever answers for a person.
struct FrontEndCalls {
    void (*Choose)();            // at the first call; may start programs, so not with the lock held
    bool (*Ask)(Thread *thread); // what a person would do next, by a thread that is about to wait. True when
                                 // the thread should look at its queue again, false when it may sleep until
                                 // it is woken. Expects the lock, and lets go of it meanwhile
    void (*Show)();              // the screen gets to know what has changed; takes the lock
    void (*Shown)(HWND window);  // may be a dialog that is seen for the first time; takes the lock
    void (*Idle)();              // the calling thread may have nothing open any more; takes the lock
    void (*ThreadEnds)(Thread *thread);                     // expects the lock
    void (*Forget)();                                       // in the child of a fork: nobody is asked there
    void (*Unasked)(const char *caption, const char *text); // of a box that could not be shown
};

extern FrontEndCalls frontEnd; // set once, when the library is loaded

void Lock();
void Unlock();

// Holds the lock for a block. `Check`, in builds with assertions, checks all invariants at both ends.
struct Locked {
    bool Check;
    explicit Locked(bool check = false) : Check(check)
    {
        Lock();
        if (Check) CheckModelIfAsked();
    }
    ~Locked()
    {
        if (Check) CheckModelIfAsked();
        Unlock();
    }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
    static void CheckModelIfAsked();
};

constexpr bool mutates = true;

// Every invariant of above; asserts.
void CheckModel();

// ---- Handles (handles.cpp) ----

// Gives `window` a place in the table and its handle; null when the table is full.
HWND TakeHandle(Window *window);

// The handle leads nowhere from now on.
void FreeHandle(HWND handle);

// The window of a handle, null for any other value.
Window *Find(HWND handle);

// The windows in the order of their handles: the first at or after `place`, null behind the last. `place`
// moves behind it. Windows may go meanwhile.
Window *NextInTable(unsigned &place);

// The place of a handle in the table.
unsigned PlaceOf(HWND handle);

// How many places have ever been taken; there are never more windows.
unsigned PlacesUsed();

// ---- Classes (classes.cpp) ----

// A class of the system's own.
struct SystemClass {
    const char *Name;
    WNDPROC Procedure;
    void (*TakeInput)(HWND window, const Input &input);
    int ExtraBytes;
    enum Kind Kind;
};

// Enters the classes of the system, when the library is loaded. Needs no memory, so that windows can always
// be tried.
constexpr int mostSystemClasses = 16;
void AddSystemClasses(const SystemClass *classes, int count);

// A name is a text or, as a number below 65536, an atom. Null if there is no such class.
WindowClass *FindClass(LPCSTR name);

// Whether `name` is a text that names something. Atoms are refused, since nobody registers any.
bool IsName(LPCSTR name);

// ---- The life of windows (windows.cpp) ----

// Forgets everything: a forked child begins without windows.
void ForgetWindows();

// Takes the windows of a thread that ends away, without a message.
void TakeAwayWindows(Thread *thread);

bool IsWindowOfCaller(const Window *window);

// Tells the windows around a child what happens to it: WM_CREATE, WM_DESTROY, or WM_LBUTTONDOWN inside it.
// Ends below the parent of a window with WS_EX_NOPARENTNOTIFY. Takes the lock itself.
void TellParents(HWND handle, UINT event);

// `window` has changed; the screen hears of it when its thread waits.
void Note(Window *window, unsigned change);

// ---- The tree (tree.cpp) ----

// The ends of the children of `parent`, of the outermost windows for null.
Window *&FirstOf(Window *parent);
Window *&LastOf(Window *parent);

void Unlink(Window *window);

// To the front of its siblings.
void Raise(Window *window);

// Puts a window that stands nowhere among the children of `parent`, behind `after` (null: first).
void LinkBehind(Window *window, Window *parent, Window *after);

int DepthOf(const Window *window);

// Longest chain of owners above `window`, and of windows owned by each other below it; `depth` bounds the
// recursion.
int OwnerDepthOf(const Window *window);
int OwnedDepthOf(const Window *window, int depth);

bool IsOwnedBy(const Window *window, const Window *owner);

// The outermost window around `window`.
Window *Outermost(Window *window);

bool LiesInside(const Window *window, const Window *parent);
bool IsShown(const Window *window);    // it and all around it
bool AreEnabled(const Window *window); // it and all around it

// A descendant of `parent` by its id: pages in view first, then direct children, then any. Null if there is
// none.
Window *FindControl(Window *parent, LONG_PTR id);

// The window an owner given by a caller stands for: the outermost around it. Null for no window.
Window *OwnerOf(HWND handle);

// ---- Places (places.cpp) ----

// A rectangle with its numbers kept so small that they stay summable over all depths.
RECT PlaceAt(LONG x, LONG y, LONG width, LONG height);

// Shows or hides, with all messages; without a word about who is active.
void SetShown(HWND handle, bool shown);

// ---- What a window carries (window_data.cpp) ----

// Text of a window, never null.
const char *TextOf(const Window *window);

// Replaces the text; false without memory, and the old one stays.
bool ReplaceText(Window *window, const char *text, size_t length);

// ---- Threads and messages (queue.cpp) ----

// The calling thread's queue, made on first use; null without memory.
Thread *Self();

// Queues an input or key for the thread of `target`. Takes over `payload`, also on failure.
bool PostInput(HWND target, Input *payload);

// Queues a message for a window.
bool Post(Window *window, UINT message, WPARAM wParam, LPARAM lParam);

// An input without text; null without memory.
Input *MakeInput(InputKind kind, LONG index = 0);
void FreeInput(Input *input);

// The serial of a text that does not come from the screen, and so is never late.
constexpr unsigned serialOfScript = 0xFFFFFFFF;

// Queues the messages of a pressed and released key; `character` is what it types, 0 for nothing.
struct KeyPress {
    unsigned Key; // VK_...
    unsigned char Character;
    bool Shift;
    bool Control;
    bool Alt;
};
bool PostKey(Thread *thread, const KeyPress &press);

void WakeThread(Thread *thread);
void WakeAllThreads();

// Sends without waiting for a window of another thread; at once for one's own. Takes the lock itself.
void Tell(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Has the thread of `window` destroy it when it next looks for messages.
void DestroyElsewhere(Window *window);

// Has the thread of `window` do something to it when it next looks for messages.
void DoElsewhere(Window *window, BOOL (*what)(HWND));

// Answers everything sent to a thread that ends, and takes its windows away without a message.
void EndThread(Thread *thread);

// A forked child begins without windows.
void ForgetEverything();

// Drops what waits in the queue for a window that goes.
void DropMessages(Window *window);

// ---- Focus (focus.cpp); these take the lock themselves ----

HWND MoveFocus(HWND target);
bool Activate(HWND target, bool clicked);

// Finds another window to be active for a thread whose active one is going or hidden.
void ActivateAnother(HWND going);

// ---- Controls (one source each); run without the lock ----

LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK StaticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK TabControlProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK PictureProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Sends WM_COMMAND with `code` from the control to its parent.
void NotifyParent(HWND control, int code);

// Handles an input that was taken from the queue, as its control's procedure would the mouse.
void HandleInput(HWND window, const Input &input);

// The same for what concerns the inside of a control alone.
void InputToEdit(HWND edit, const Input &input);
void InputToListBox(HWND list, const Input &input);
void InputToComboBox(HWND combo, const Input &input);
void InputToTabControl(HWND tabs, const Input &input);
void InputToPicture(HWND picture, const Input &input);

// Makes and frees the state of a control; false without memory.
bool MakeState(Window *window);
void FreeState(Window *window);

// ---- Files (file_chooser.cpp) ----

// A file was chosen on the screen; runs without the lock.
void InputToChooser(HWND dialog, const Input &input);

// ---- Editing of text (edits.cpp), shared by edit and combo box ----

LONG SelectionStart(const EditState &edit);
LONG SelectionEnd(const EditState &edit);

// Selects as EM_SETSEL does: 0 to -1 is all, a start of -1 nothing.
void SelectText(Window *window, EditState &edit, LONG start, LONG end);

// What typing, a key or a person's whole text did.
enum class Edited : unsigned char { Nothing, Changed, AtLimit, NoMemory };
Edited TypeCharacter(Window *window, EditState &edit, unsigned char character);
Edited PressKey(Window *window, EditState &edit, WPARAM key, bool shift);
Edited TakeTyped(Window *window, EditState &edit, const Input &input);

// Where the person has put the caret.
void TakeCaret(Window *window, EditState &edit, const Input &input);

// Puts `text` in the place of the selection, cut to the limit if `limited`.
Edited ReplaceSelection(Window *window, EditState &edit, const char *text, bool limited);

// ---- Dialogs (dialogs.cpp) ----

// Makes the dialog of a template, modeless ones shown if their style says so. Null when it could not be made
// or is gone already. `loop` (null: modeless) is entered into its thread's modal loops.
HWND MakeDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter,
                ModalLoop *loop);

// Runs a modal dialog from its template, as DialogBoxIndirectParamA.
INT_PTR RunDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter);

// The modal loop that runs a dialog, null for a modeless one.
ModalLoop *LoopOf(const Window *dialog);

// The text that names a field or list: the one that its window has put right before it, as also the letter
// underlined in it leads there. Null for other controls and where no text stands there. A hidden text names
// what needs no name for those who see it.
const Window *LabelOf(const Window *control);

// The topmost window of a thread that waits for a person: the innermost modal dialog, else the active window.
Window *Topmost(Thread *thread);

// The button that Enter presses in `dialog` now, 0 for none.
int CurrentDefault(Window *dialog);

} // namespace varkui
