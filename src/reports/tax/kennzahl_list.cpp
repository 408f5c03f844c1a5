#include "src/reports/tax/kennzahl_list.h"

#include "src/values/amounts.h"
#include "text/fixed_text.h"

#include <cstdlib>
#include <cstring>

namespace vark {

namespace {

Kennzahlknoten *MakeNode(const AccountNumber &konto, int32_t kennzahl)
{
    auto *node = static_cast<Kennzahlknoten *>(std::calloc(1, sizeof(Kennzahlknoten)));
    if (node == nullptr) return nullptr;
    text::CopyText(node->Konto, konto);
    node->Kennzahl = kennzahl;
    text::CopyText(node->Betrag, zeroAmount);
    return node;
}

} // namespace

Kennzahlliste::~Kennzahlliste()
{
    while (Head != nullptr) {
        Kennzahlknoten *const next = Head->Next;
        std::free(Head);
        Head = next;
    }
}

Kennzahlknoten *FindAccountNode(const Kennzahlliste &list, const AccountNumber &konto)
{
    if (konto[0] == 0) return nullptr;
    for (Kennzahlknoten *node = list.Head; node != nullptr; node = node->Next) {
        const int order = std::memcmp(konto, node->Konto, accountDigits);
        if (order == 0) return node;
        if (order > 0) return nullptr;
    }
    return nullptr;
}

Kennzahlknoten *AddAccountNode(Kennzahlliste &list, const AccountNumber &konto, int32_t kennzahl)
{
    Kennzahlknoten *const node = MakeNode(konto, kennzahl);
    if (node == nullptr) return nullptr;
    node->Next = list.Head;
    list.Head = node;
    return node;
}

Kennzahlknoten *FindOrAddKennzahl(Kennzahlliste &list, int32_t kennzahl)
{
    Kennzahlknoten **end = &list.Head;
    for (; *end != nullptr; end = &(*end)->Next) {
        if ((*end)->Kennzahl == kennzahl) return *end;
    }
    *end = MakeNode(AccountNumber{}, kennzahl);
    return *end;
}

bool SumOfKennzahl(const Kennzahlliste &list, int32_t kennzahl, AmountText &sum)
{
    text::CopyText(sum, zeroAmount);
    for (const Kennzahlknoten *node = list.Head; node != nullptr; node = node->Next) {
        if (node->Kennzahl == kennzahl && !AccumulateAmount(sum, node->Betrag)) return false;
    }
    return true;
}

} // namespace vark
