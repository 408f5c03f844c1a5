// Set-up when the library is loaded: the system's classes, and the calls from lower layers to higher ones.
#include "host/descriptors.h"
#include "window-system/controls/buttons.h"
#include "window-system/controls/combo_boxes.h"
#include "window-system/controls/edits.h"
#include "window-system/controls/list_boxes.h"
#include "window-system/controls/pictures.h"
#include "window-system/controls/tab_controls.h"
#include "window-system/dialogs/file_chooser.h"
#include "window-system/front-ends/front_end.h"
#include "window-system/model/classes.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/window.h"
#include "window-system/windows/life.h"

#include <array> // std::size

namespace varkui {

namespace {

const SystemClass systemClasses[] = {
    {"#32770", DefDlgProcA, InputToChooser, DLGWINDOWEXTRA, Kind::Dialog},
    {"Button", ButtonProcedure, nullptr, 0, Kind::Button},
    {"Edit", EditProcedure, InputToEdit, 0, Kind::Edit},
    {"Static", StaticProcedure, nullptr, 0, Kind::Static},
    {"ListBox", ListBoxProcedure, InputToListBox, 0, Kind::ListBox},
    {"ComboBox", ComboBoxProcedure, InputToComboBox, 0, Kind::ComboBox},
    {WC_TABCONTROLA, TabControlProcedure, InputToTabControl, 0, Kind::TabControl},
    {VARKUI_PICTURE_CLASS, PictureProcedure, InputToPicture, 0, Kind::Picture},
};

__attribute__((constructor)) void PutTogether()
{
    host::GuardStandardDescriptors();
    AddSystemClasses(systemClasses, static_cast<int>(std::size(systemClasses)));
    threadEvents = {EndThread, ForgetEverything};
    frontEnd = frontEndCalls;
}

} // namespace

} // namespace varkui
