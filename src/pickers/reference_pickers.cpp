// VARK_HoleZahlungsziel and VARK_HoleKostenschablone: the user chooses from a table of numbered texts.
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
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

constexpr int zahlungszielList = 1030;
constexpr int kostenschablonenList = 1052;

constexpr varkui::DialogControl zahlungszielControls[] = {
    {DialogControlKind::Text, -1, "&Zahlungsziele:"_w, 7, 7, 180, 8, 0, 0},
    {DialogControlKind::ListBox, zahlungszielList, "", 7, 18, 180, 114, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 194, 18, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 194, 36, 55, 14, 0, 0},
};

constexpr varkui::DialogTable zahlungszielDialog = {
    116, "Zahlzielauswahl"_w, 256, 139, zahlungszielControls, std::size(zahlungszielControls), 0};

constexpr varkui::DialogControl kostenschablonenControls[] = {
    {DialogControlKind::Text, -1, "&Kostenschablonen:"_w, 7, 7, 180, 8, 0, 0},
    {DialogControlKind::ListBox, kostenschablonenList, "", 7, 18, 180, 114, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 194, 18, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 194, 36, 55, 14, 0, 0},
};

constexpr varkui::DialogTable kostenschablonenDialog = {
    133, "Kostenschablonenauswahl"_w, 256, 139, kostenschablonenControls, std::size(kostenschablonenControls),
    0};

// A kind of thing to choose from; `Record` begins with its number and its text.
struct Reference {
    TableId Table;
    const varkui::DialogTable &Dialog;
    int List;
    const char *Key; // in vark.ini, the Mandant's suffix behind it
    int32_t (*Fill)(const SingleChoice &choice, HWND dialog);
};

// Lines in the order of their numbers. An empty table gives an empty list, which can only be cancelled.
template <typename Record, size_t Width>
int32_t FillFrom(const SingleChoice &choice, HWND dialog, TableId table, const char (Record::*text)[Width])
{
    ThreadContext &context = choice.Context;
    Record record;
    bool found = false;
    if (!GetFirstF(context, &record, found, table)) return engineFailure;
    while (found) {
        char line[Width];
        CopyText(line, record.*text);
        if (!AddLine(dialog, choice.List, line, record.Nummer)) {
            ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
            break;
        }
        if (!GetNextF(context, &record, found, table)) return engineFailure;
    }
    if (!SelectNumber(dialog, choice.List, RecallChoice(choice.Key, -1))) {
        SendDlgItemMessageA(dialog, choice.List, LB_SETCURSEL, 0, 0);
    }
    return 1;
}

constexpr Reference zahlungsziele = {TableZahlziel, zahlungszielDialog, zahlungszielList, "Zahlziel",
                                     [](const SingleChoice &choice, HWND dialog) {
                                         return FillFrom(choice, dialog, TableZahlziel,
                                                         &ZahlzielRecord::Text);
                                     }};

constexpr Reference kostenschablonen = {TableKoscha, kostenschablonenDialog, kostenschablonenList,
                                        "Kostenschablone", [](const SingleChoice &choice, HWND dialog) {
                                            return FillFrom(choice, dialog, TableKoscha, &KoschaRecord::Name);
                                        }};

int32_t PickReference(const Reference &reference, HWND owner, int32_t mandant)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;
    HeldTables held(*context);
    if (!Hold(held, reference.Table)) return engineFailure;
    const SingleChoice choice = {
        *context, reference.Dialog, reference.List, KeyOfChoice(reference.Key, context->MandantSuffix),
        0,        reference.Fill};
    return RunSingleChoice(choice, owner);
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_HoleZahlungsziel(VarkWindow owner, int32_t mandant)
{
    return PickReference(zahlungsziele, static_cast<HWND>(owner), mandant);
}

int32_t VARK_CALL VARK_HoleKostenschablone(VarkWindow owner, int32_t mandant)
{
    return PickReference(kostenschablonen, static_cast<HWND>(owner), mandant);
}
