// VARK_HoleMandantenNr: the user chooses a Mandant.
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/pickers/pick_list.h"
#include "src/pickers/single_choice.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size

namespace vark {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int32_t nothingRead = -1;
constexpr int32_t noNumber = -2;

constexpr int mandantList = 1004;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Mandanten:"_w, 7, 7, 160, 8, 0, 0},
    {DialogControlKind::ListBox, mandantList, "", 7, 18, 160, 114, LBS_SORT, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 174, 18, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 174, 36, 55, 14, 0, 0},
};

constexpr varkui::DialogTable dialogTable = {101,      "Mandantenauswahl"_w, 236, 139,
                                             controls, std::size(controls),  0};

int32_t FillMandanten(const SingleChoice &choice, HWND dialog)
{
    ThreadContext &context = choice.Context;
    FistaRecord record;
    bool found = false;
    if (!GetFirstF(context, &record, found, TableFista) || !found) return nothingRead;
    while (found) {
        char name[sizeof record.Name];
        CopyText(name, record.Name);
        if (!AddLine(dialog, choice.List, name, record.Nummer)) {
            // Not 1400, which every other list shows: this is the text that this dialog has always had.
            ShowMessage(Message::ProzentsatzErwartet, 0, nullptr, -1);
            break;
        }
        if (!GetNextF(context, &record, found, TableFista)) return nothingRead;
    }
    SelectNumber(dialog, choice.List, RecallChoice(choice.Key, 0));
    return 1;
}

int32_t PickMandant(ThreadContext &context, HWND owner)
{
    HeldTables held(context);
    if (!Hold(held, TableFista)) return engineFailure;
    const SingleChoice choice = {context,  dialogTable,  mandantList, KeyOfChoice("Mandant", ""),
                                 noNumber, FillMandanten};
    return RunSingleChoice(choice, owner);
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_HoleMandantenNr(VarkWindow owner)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    return PickMandant(*context, static_cast<HWND>(owner));
}
