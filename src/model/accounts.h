// The four kinds of account: which table, layout and words belong to a Kontoart. All account records begin
// with number and Kürzel, which are keys 0 and 1 of their tables.
#pragma once

#include "src/model/tables.h"

#include <cstddef>
#include <cstdint>

namespace vark {

// The head of every account's record.
struct AccountHead {
    AccountNumber Konto;
    char Kuerzel[10];
};

// A record of any of the four tables, long enough for each of them.
union AnyAccount {
    char Bytes[sizeof(PersonalRecord)];
    AccountHead Head;
    SakoRecord Sako;
    PersonalRecord Personal;
    KoreRecord Kore;
};

static_assert(offsetof(SakoRecord, Konto) == offsetof(AccountHead, Konto));
static_assert(offsetof(SakoRecord, Kuerzel) == offsetof(AccountHead, Kuerzel));
static_assert(offsetof(PersonalRecord, Konto) == offsetof(AccountHead, Konto));
static_assert(offsetof(PersonalRecord, Kuerzel) == offsetof(AccountHead, Kuerzel));
static_assert(offsetof(KoreRecord, Nummer) == offsetof(AccountHead, Konto));
static_assert(offsetof(KoreRecord, Kuerzel) == offsetof(AccountHead, Kuerzel));
static_assert(sizeof(AnyAccount) == sizeof(PersonalRecord));
static_assert(__is_trivially_copyable(AnyAccount));

struct AccountKind {
    Kontoart Art;
    TableId Table;
    TableId OpenItems;            // TableUnused where the kind has none
    Buchungskontoart Buchungsart; // inside bat and split; 0 for a Kostenstelle, which none of them names
    size_t NameOffset;            // of the name (of a personal account its first line)
    size_t NameWidth;
    const char *FirstNumber; // that a free number is counted up from; empty where none is asked for
    const char *One;         // "Sachkonto"
    const char *Many;        // "Sachkonten"
    const char *PickTitle;   // of the dialog in which one is picked
};

// In the order in which an account of unknown kind is looked for.
inline constexpr AccountKind accountKinds[] = {
    {KontoartSachkonto, TableSako, TableUnused, BuchungSachkonto, offsetof(SakoRecord, Name),
     sizeof(SakoRecord::Name), "", "Sachkonto", "Sachkonten", "Sachkontenauswahl"},
    {KontoartKreditor, TableKred, TableOpkred, BuchungKreditor, offsetof(PersonalRecord, Name1),
     sizeof(PersonalRecord::Name1), "70000", "Kreditor", "Kreditoren", "Kreditorenkontenauswahl"},
    {KontoartDebitor, TableDebi, TableOpdebi, BuchungDebitor, offsetof(PersonalRecord, Name1),
     sizeof(PersonalRecord::Name1), "10000", "Debitor", "Debitoren", "Debitorenkontenauswahl"},
    {KontoartKostenstelle, TableKore, TableUnused, Buchungskontoart{}, offsetof(KoreRecord, Name),
     sizeof(KoreRecord::Name), "", "Kostenstelle", "Kostenstellen", "Kostenstellenauswahl"},
};

// The kind of a Kontoart, null for any other number.
constexpr const AccountKind *FindKind(int32_t kontoart)
{
    for (const AccountKind &kind : accountKinds) {
        if (kind.Art == kontoart) return &kind;
    }
    return nullptr;
}

// The kind of a Kontoart that has open items, Kreditor and Debitor; null for any other number.
constexpr const AccountKind *FindPersonalKind(int32_t kontoart)
{
    const AccountKind *const kind = FindKind(kontoart);
    return kind != nullptr && kind->OpenItems != TableUnused ? kind : nullptr;
}

// The kind of a Buchungskontoart, null for any other number.
constexpr const AccountKind *FindKindOfBuchung(uint8_t art)
{
    for (const AccountKind &kind : accountKinds) {
        if (kind.Buchungsart == art && art != 0) return &kind;
    }
    return nullptr;
}

// The kind that a table holds; that of Sachkonten for a table without accounts.
constexpr const AccountKind &KindOfTable(TableId table)
{
    for (const AccountKind &kind : accountKinds) {
        if (kind.Table == table) return kind;
    }
    return accountKinds[0];
}

// The sums of a Sachkonto or personal account. A Kostenstelle has none, but twelve months of its own.
inline const AccountSums &SumsOf(const AccountKind &kind, const AnyAccount &record)
{
    return kind.Table == TableSako ? record.Sako.Umsaetze : record.Personal.Umsaetze;
}

} // namespace vark
