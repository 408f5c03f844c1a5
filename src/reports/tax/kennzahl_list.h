// The working list of a tax return: what is collected for each box of the form, by account and by box alone.
// Its order decides what a search finds, so it is a list and kept as it grows.
#pragma once

#include "src/model/text_forms.h"

#include <cstdint>

namespace vark {

struct Kennzahlknoten {
    AccountNumber Konto; // empty for a node of a box alone
    int32_t Kennzahl;
    AmountText Betrag;
    Kennzahlknoten *Next;
};

// Frees its nodes at the end of the scope.
struct Kennzahlliste {
    Kennzahlknoten *Head = nullptr;

    Kennzahlliste() = default;
    Kennzahlliste(const Kennzahlliste &) = delete;
    Kennzahlliste &operator=(const Kennzahlliste &) = delete;
    ~Kennzahlliste();
};

// The node of an account, null when there is none. The search gives up at the first node whose number lies
// below the sought one, which is right while numbers fall from the head on; nodes that a second year adds
// before them may end it early, and a node behind is then not found. An empty number has no node.
Kennzahlknoten *FindAccountNode(const Kennzahlliste &list, const AccountNumber &konto);

// A new node of an account, with nothing in it yet, at the head. Null when memory has run out.
Kennzahlknoten *AddAccountNode(Kennzahlliste &list, const AccountNumber &konto, int32_t kennzahl);

// The first node of a box or, when there is none, a new one at the end. Null when memory has run out.
Kennzahlknoten *FindOrAddKennzahl(Kennzahlliste &list, int32_t kennzahl);

// What all nodes of a box hold together. False on overflow.
bool SumOfKennzahl(const Kennzahlliste &list, int32_t kennzahl, AmountText &sum);

} // namespace vark
