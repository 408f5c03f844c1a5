// What is put together when the library is loaded: the classes of the system, and what the lower layers have
// from those above them.
#include <iterator>

#include "window-system/front_end.h"
#include "window-system/model.h"

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
    AddSystemClasses(systemClasses, static_cast<int>(std::size(systemClasses)));
    threadEvents = {EndThread, ForgetEverything};
    frontEnd = frontEndCalls;
}

} // namespace

} // namespace varkui
