#include "window-system/include/dialog_table.h"

#include <cstdlib>
#include <cstring>

#include "text/windows1252.h"

#ifdef _WIN32
#include <commctrl.h>
#endif

namespace varkui {

namespace {

// The template is a run of 16-bit words: numbers, and texts as zero-terminated UTF-16. With `Words` null it
// is only measured.
struct Writer {
    uint16_t *Words;
    size_t Count;
};

void PutWord(Writer &writer, uint32_t word)
{
    if (writer.Words != nullptr) writer.Words[writer.Count] = static_cast<uint16_t>(word);
    ++writer.Count;
}

void PutDword(Writer &writer, uint32_t value)
{
    PutWord(writer, value & 0xFFFF);
    PutWord(writer, value >> 16);
}

// Every Windows-1252 character lies in the basic plane, so one word holds it.
void PutText(Writer &writer, const char *text)
{
    for (; text != nullptr && *text != 0; ++text) {
        PutWord(writer, static_cast<uint32_t>(text::CodePoint(static_cast<unsigned char>(*text))));
    }
    PutWord(writer, 0);
}

void AlignToDword(Writer &writer)
{
    if (writer.Count % 2 != 0) PutWord(writer, 0);
}

constexpr uint16_t buttonClass = 0x80;
constexpr uint16_t editClass = 0x81;
constexpr uint16_t staticClass = 0x82;
constexpr uint16_t listClass = 0x83;
constexpr uint16_t comboClass = 0x85;
constexpr uint16_t tabClass = 0; // has no number and goes by name

struct KindStyle {
    uint16_t Class;
    uint32_t Style;
    uint32_t ExStyle;
};

KindStyle StyleOf(DialogControlKind kind)
{
    constexpr uint32_t always = WS_CHILD | WS_VISIBLE;
    constexpr uint32_t tab = always | WS_TABSTOP;
    constexpr uint32_t list = tab | WS_VSCROLL | LBS_NOTIFY | LBS_USETABSTOPS;
    switch (kind) {
    case DialogControlKind::Text: return {staticClass, always | SS_LEFT, 0};
    case DialogControlKind::TextRight: return {staticClass, always | SS_RIGHT, 0};
    case DialogControlKind::Separator: return {staticClass, always | SS_ETCHEDHORZ, 0};
    case DialogControlKind::Group: return {buttonClass, always | WS_GROUP | BS_GROUPBOX, 0};
    case DialogControlKind::Edit: return {editClass, tab | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE};
    case DialogControlKind::PushButton: return {buttonClass, tab | BS_PUSHBUTTON, 0};
    case DialogControlKind::DefaultButton: return {buttonClass, tab | BS_DEFPUSHBUTTON, 0};
    case DialogControlKind::CheckBox: return {buttonClass, tab | BS_AUTOCHECKBOX, 0};
    case DialogControlKind::PlainCheckBox: return {buttonClass, tab | BS_CHECKBOX, 0};
    case DialogControlKind::RadioButton: return {buttonClass, always | BS_AUTORADIOBUTTON, 0};
    case DialogControlKind::PlainRadioButton: return {buttonClass, always | BS_RADIOBUTTON, 0};
    case DialogControlKind::ListBox: return {listClass, list, WS_EX_CLIENTEDGE};
    case DialogControlKind::ComboBox:
        return {comboClass, tab | WS_VSCROLL | CBS_DROPDOWN | CBS_AUTOHSCROLL, 0};
    case DialogControlKind::ComboList: return {comboClass, tab | WS_VSCROLL | CBS_DROPDOWNLIST, 0};
    case DialogControlKind::TabControl: break;
    }
    return {tabClass, tab, 0};
}

// Windows takes the height of a combo box as that with its list dropped down: eight rows.
uint16_t HeightOf(const DialogControl &control)
{
    const auto height = static_cast<uint16_t>(control.Height);
#ifdef _WIN32
    constexpr uint16_t droppedList = 8 * 8;
    const bool isCombo =
        control.Kind == DialogControlKind::ComboBox || control.Kind == DialogControlKind::ComboList;
    return static_cast<uint16_t>(height + (isCombo ? droppedList : 0));
#else
    return height;
#endif
}

void PutControl(Writer &writer, const DialogControl &control)
{
    const KindStyle kind = StyleOf(control.Kind);
    AlignToDword(writer);
    PutDword(writer, 0); // help id
    PutDword(writer, kind.ExStyle);
    PutDword(writer, (kind.Style | control.Style) & ~control.Without);
    PutWord(writer, static_cast<uint16_t>(control.X));
    PutWord(writer, static_cast<uint16_t>(control.Y));
    PutWord(writer, static_cast<uint16_t>(control.Width));
    PutWord(writer, HeightOf(control));
    PutDword(writer, static_cast<uint32_t>(control.Id));
    if (kind.Class == tabClass) {
        PutText(writer, WC_TABCONTROLA);
    } else {
        PutWord(writer, 0xFFFF);
        PutWord(writer, kind.Class);
    }
    PutText(writer, control.Text);
    PutWord(writer, 0); // no creation data
}

void PutTable(Writer &writer, const DialogTable &table)
{
    PutWord(writer, 1);      // version
    PutWord(writer, 0xFFFF); // tells the extended form
    PutDword(writer, static_cast<uint32_t>(table.Id));
    PutDword(writer, 0);
    PutDword(writer, (table.Style != 0 ? table.Style : defaultDialogStyle) | DS_SETFONT);
    PutWord(writer, table.Count);
    PutWord(writer, 0);
    PutWord(writer, 0);
    PutWord(writer, static_cast<uint16_t>(table.Width));
    PutWord(writer, static_cast<uint16_t>(table.Height));
    PutWord(writer, 0); // no menu
    PutWord(writer, 0); // the class of dialogs
    PutText(writer, table.Title);
    PutWord(writer, 8);      // size in points
    PutWord(writer, 400);    // weight
    PutWord(writer, 0x0100); // upright, default character set
    PutText(writer, "MS Shell Dlg");
    for (uint16_t i = 0; i < table.Count; ++i) {
        PutControl(writer, table.Controls[i]);
    }
}

} // namespace

DLGTEMPLATE *MakeDialogTemplate(const DialogTable &table)
{
    Writer measure{nullptr, 0};
    PutTable(measure, table);
    Writer writer{static_cast<uint16_t *>(malloc(measure.Count * sizeof(uint16_t))), 0};
    if (writer.Words == nullptr) return nullptr;
    PutTable(writer, table);
    return reinterpret_cast<DLGTEMPLATE *>(writer.Words);
}

void FreeDialogTemplate(DLGTEMPLATE *dialogTemplate) { free(dialogTemplate); }

} // namespace varkui
