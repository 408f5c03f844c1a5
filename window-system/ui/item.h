// One window of the model as vark-ui shows it, and what is told about it to the host.
#pragma once

#include <cstdint>
#include <gtk/gtk.h>
#include <string>
#include <unordered_map>
#include <vector>

#include "window-system/front-ends/protocol.h"
#include "window-system/ui/picture.h"

namespace ui {

using namespace varkui;

// Both as the model numbers them.
enum class Kind : uint8_t { Plain, Dialog, Button, Edit, Static, ListBox, ComboBox, TabControl, Picture };
enum class InputKind : uint8_t {
    Click,
    Select,
    Pick,
    Text,
    Focus,
    Activate,
    Close,
    Resize,
    Drop,
    Area,
    Scroll,
    Press,
    Drag,
    Release,
    Zoom,
    Caret,
    File
};

constexpr uint32_t typeMask = 0xF;
constexpr uint32_t pushButton = 0, defaultButton = 1, radioButton = 4, groupBox = 7, autoRadioButton = 9;
constexpr uint32_t iconButton = 0x40;
constexpr uint32_t thickFrame = 0x40000;
constexpr uint32_t statics = 0x1F, staticCenter = 1, staticRight = 2, staticLine = 0x10,
                   staticNoPrefix = 0x80;
constexpr uint32_t editSides = 3, editCenter = 1, editRight = 2;
constexpr uint32_t editMultiline = 4, editPassword = 0x20, editReadOnly = 0x800, editWantReturn = 0x1000,
                   editNumber = 0x2000;
constexpr uint32_t listAnyHeight = 0x100;
constexpr uint32_t comboTypes = 3, comboList = 3;

struct Item {
    uint32_t Handle = 0, Parent = 0, Owner = 0, Thread = 0, Style = 0, ExStyle = 0, Serial = 0, BoxStyle = 0,
             Label = 0;
    Kind What = Kind::Plain;
    uint8_t Flags = 0;
    int32_t Id = 0, X = 0, Y = 0, Width = 0, Height = 0, Value = 0, Limit = 0, Anchor = 0, Caret = 0;
    std::string Text;
    std::vector<int32_t> TabStops;
    GtkWidget *Placed =
        nullptr; // what stands in the parent's place; the window itself for one without parent
    GtkWidget *Control = nullptr; // what has the focus
    GtkWidget *Inside = nullptr;  // holds the children
    GtkWidget *Buttons = nullptr; // of a message box
    GtkWidget *Partner = nullptr; // keeps a radio button a group of its own
    GListModel *Rows = nullptr;   // of a list, see row_model.h
    GtkSingleSelection *Selection = nullptr;
    PangoTabArray *Columns = nullptr; // of a list
    int FramesToScroll = 0;           // until a list knows how high its new rows are
    pictures::Picture *Shown = nullptr;
    int32_t ToldWidth = 0, ToldHeight = 0; // of a window that the person may resize
    bool SizeIsComing = false;
    uint32_t DefaultButton = 0;              // that is marked in a window
    uint32_t LeftWith = 0;                   // what had the keyboard when the window was left last
    bool IsActive = false;                   // in its thread, as the model said last
    bool IsDropped = false;                  // as the model said last
    int32_t ToldAnchor = -1, ToldCaret = -1; // as the host knows a field
    std::string ToldText;
    uint32_t ShownSerial = UINT32_MAX; // of the text that the model has shown here last
};

extern std::unordered_map<uint32_t, Item *> items;
extern int updating; // while the model's state is being shown, nothing that changes is the person's doing

Item *FindItem(uint32_t handle);

// The item that has the keyboard in a window, null for none.
Item *FocusedItem(GtkWindow *window);

// The host's socket, which this program is started with.
constexpr int hostSocket = 3;

void Append(std::string &frame, uint32_t value);

// Sends a frame; ends the program when the host has gone.
void Send(const std::string &frame);

void SendInput(const Item *item, InputKind kind, int index, int index2, uint32_t serial,
               const std::string &text);
void SendInput(const Item *item, InputKind kind, int index = 0, int index2 = 0, const std::string &text = {});

} // namespace ui
