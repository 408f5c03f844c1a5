#include "src/booking/personal_accounts.h"

#include "src/booking/account_queries.h"
#include "src/booking/checks.h"
#include "src/frame/beliefs.h"
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/model/accounts.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cstring>
#include <initializer_list>

namespace vark {

using namespace text;

namespace {

enum Aktion : int32_t { AktionNeu = 1, AktionAendern = 2, AktionLoeschen = 3 };

constexpr int32_t aktionRefused = VARK_FEHLER_AKTION;
constexpr int32_t artRefused = VARK_FEHLER_KONTOART;
constexpr int32_t noAccountNamed = VARK_FEHLER_KONTO;
constexpr int32_t gegenkontoRefused = VARK_FEHLER_GEGENKONTO;
constexpr int32_t bankRefused = VARK_FEHLER_BANK;
constexpr int32_t skontoRefused = VARK_FEHLER_SKONTO;
constexpr int32_t mahnkennzifferRefused = VARK_FEHLER_MAHNKENNZIFFER;
constexpr int32_t kuerzelDiffers = VARK_FEHLER_KUERZEL_ANDERS;
constexpr int32_t kuerzelMissing = VARK_FEHLER_KUERZEL_FEHLT;
constexpr int32_t nameMissing = VARK_FEHLER_NAME_FEHLT;
constexpr int32_t kontoExists = VARK_FEHLER_KONTO_BESTEHT;
constexpr int32_t kuerzelExists = VARK_FEHLER_KUERZEL_BESTEHT;
constexpr int32_t notDeletable = VARK_FEHLER_NICHT_LOESCHBAR;

// One call at work.
struct PekoWork {
    PekoEingabe Eingabe; // texts terminated; numbers get their fixed forms
    AccountNumber Konto;
    char Kuerzel[10];      // as wide as in the record, so that a change leaves a long one alone
    TableKeyCode Position; // table and key that the record was read by
    bool IsLocked;         // the record is locked by that read
    PersonalRecord Record;
};

template <size_t Width> KeyBuffer KeyOf(const char (&field)[Width]) { return KeyOfText(field, Width); }

void EndTexts(PekoEingabe &eingabe)
{
    const auto end = [](auto &...fields) { (CopyText(fields, fields), ...); };
    end(eingabe.Konto, eingabe.Kuerzel, eingabe.Name1, eingabe.Name2, eingabe.UstId, eingabe.Land,
        eingabe.Waehrung, eingabe.Plz, eingabe.Adresse2, eingabe.Adresse1, eingabe.Blz, eingabe.Bankkonto,
        eingabe.Bank, eingabe.Gegenkonto, eingabe.Skonto);
    Holds(eingabe.Konto[sizeof eingabe.Konto - 1] == 0);
    Holds(eingabe.Skonto[sizeof eingabe.Skonto - 1] == 0);
}

// 1, -31 or -32 for a number or Kürzel that any of the three account tables has, -3.
int32_t CheckUnique(ThreadContext &context, const PekoWork &work)
{
    constexpr TableId tables[] = {TableSako, TableKred, TableDebi};
    Holds(std::strlen(work.Konto) == accountDigits);
    Holds(work.Kuerzel[0] != 0);
    bool found = false;
    for (const TableId table : tables) {
        if (!Exists(context, KeyOf(work.Konto), found, table)) return engineFailure;
        if (found) return kontoExists;
    }
    for (const TableId table : tables) {
        if (!Exists(context, KeyOf(work.Kuerzel), found, KeyCode(table, 1))) return engineFailure;
        if (found) return kuerzelExists;
    }
    return 1;
}

// Finds the account by number or else by Kürzel, and reads and locks its record; the one that was not given
// is taken from it.
int32_t ResolveAccount(ThreadContext &context, PekoWork &work, TableId table)
{
    if (work.Konto[0] == 0 && work.Kuerzel[0] == 0) {
        return Report(context, Message::KontonummerUnzulaessig, noAccountNamed, "K", noPart);
    }
    Holds(table == TableKred || table == TableDebi);
    Holds(!work.IsLocked);
    const bool isByKuerzel = work.Konto[0] == 0;
    work.Position = KeyCode(table, isByKuerzel ? 1 : 0);
    RightJustify(work.Konto, accountDigits);
    LockNext(context);
    bool found = false;
    const KeyBuffer key = isByKuerzel ? KeyOf(work.Kuerzel) : KeyOf(work.Konto);
    if (!GetEqual(context, &work.Record, key, found, work.Position)) return engineFailure;
    if (!found) return Report(context, Message::KontoExistiertNicht, VARK_FEHLER_KEIN_KONTO, nullptr, noPart);
    work.IsLocked = true;
    if (!isByKuerzel && work.Kuerzel[0] != 0 && !SameText(work.Kuerzel, work.Record.Kuerzel)) {
        return Report(context, Message::Unzulaessig, kuerzelDiffers, "Das Kürzel ist"_w, noPart);
    }
    CopyText(work.Konto, work.Record.Konto);
    CopyText(work.Kuerzel, work.Record.Kuerzel);
    Holds(TableOf(work.Position) == table);
    Holds(context.LockBias == 0);
    return 1;
}

int32_t BeginNew(ThreadContext &context, PekoWork &work)
{
    RightJustify(work.Konto, accountDigits);
    Holds(std::strlen(work.Konto) == accountDigits);
    if (work.Kuerzel[0] == 0) return Report(context, Message::KuerzelFehlt, kuerzelMissing, nullptr, noPart);
    const int32_t unique = CheckUnique(context, work);
    if (unique < 0) {
        return Report(context, Message::ExistiertBereits, unique,
                      unique == kontoExists ? "Konto" : "Kürzel"_w, noPart);
    }
    Holds(unique == 1 && !work.IsLocked);
    return 1;
}

int32_t DeleteAccount(ThreadContext &context, PekoWork &work, TableId table)
{
    const int32_t resolved = ResolveAccount(context, work, table);
    if (resolved < 0) return resolved;
    Holds(work.IsLocked);
    if (work.Record.Zustand == 0)
        return Report(context, Message::KontoNichtLoeschbar, notDeletable, nullptr, noPart);
    if (!Delete(context, table)) return engineFailure;
    work.IsLocked = false;
    return 1;
}

// Digits only, up to the field's width. One byte more than the field is needed to see whether any follow.
template <size_t Width> bool IsDigits(char (&field)[Width])
{
    char digits[Width + 1];
    CopyText(digits, field);
    return NormalizeDigits(digits, sizeof digits, -static_cast<int>(Width - 1), 0, false, false);
}

// What a new and a changed account have to satisfy, in the order of precedence.
int32_t CheckFields(ThreadContext &context, PekoEingabe &eingabe, bool isDebitor)
{
    if (eingabe.Name1[0] == 0) return Report(context, Message::NameFehlt, nameMissing, nullptr, noPart);
    if (eingabe.Gegenkonto[0] != 0) {
        RightJustify(eingabe.Gegenkonto, accountDigits);
        bool found = false;
        if (!Exists(context, KeyOf(eingabe.Gegenkonto), found, TableSako)) return engineFailure;
        if (!found)
            return Report(context, Message::Unzulaessig, gegenkontoRefused, "Das Gegenkonto ist", noPart);
    }
    const bool hasBlz = eingabe.Blz[0] != 0;
    const bool hasBankkonto = eingabe.Bankkonto[0] != 0;
    if (hasBlz && !IsDigits(eingabe.Blz))
        return Report(context, Message::Unzulaessig, bankRefused, "Die BLZ ist", noPart);
    if (hasBankkonto && !IsDigits(eingabe.Bankkonto)) {
        return Report(context, Message::Unzulaessig, bankRefused, "Die Bankkontonummer ist", noPart);
    }
    if (hasBlz != hasBankkonto)
        return Report(context, Message::Unzulaessig, bankRefused, "Die Bankverbindung ist", noPart);
    if (eingabe.Skonto[0] == 0) {
        CopyText(eingabe.Skonto, zeroRate);
    } else if (!NormalizeDigits(eingabe.Skonto, sizeof eingabe.Skonto, 2, 2, false, false)) {
        return Report(context, Message::Unzulaessig, skontoRefused, "Die Skontoprozente sind", noPart);
    }
    const int32_t lowest = isDebitor ? -1 : 0;
    const int32_t highest = isDebitor ? 3 : 0;
    if (eingabe.Mahnkennziffer < lowest || eingabe.Mahnkennziffer > highest) {
        return Report(context, Message::Unzulaessig, mahnkennzifferRefused, "Die Mahnkennziffer ist", noPart);
    }
    if (eingabe.Land[0] == 0) CopyText(eingabe.Land, context.DefaultLand);
    Holds(IsWholeRate(eingabe.Skonto));
    Holds(eingabe.Gegenkonto[0] == 0 || std::strlen(eingabe.Gegenkonto) == accountDigits);
    return CheckZahlungsziel(context, eingabe.Zahlungsziel);
}

void FillRecord(const ThreadContext &context, PekoWork &work, bool isDebitor)
{
    const PekoEingabe &eingabe = work.Eingabe;
    PersonalRecord &record = work.Record;
    Holds(std::strlen(work.Konto) == accountDigits);
    Holds(IsWholeRate(eingabe.Skonto));
    Holds(eingabe.Mahnkennziffer >= -1 && eingabe.Mahnkennziffer <= 3);
    CopyText(record.Konto, work.Konto);
    CopyText(record.Kuerzel, work.Kuerzel);
    CopyText(record.Datum, context.TodayPacked);
    CopyText(record.Name1, eingabe.Name1);
    CopyText(record.Name2, eingabe.Name2);
    CopyText(record.Adresse1, eingabe.Adresse1);
    CopyText(record.Plz, eingabe.Plz);
    CopyText(record.Land, eingabe.Land);
    CopyText(record.Adresse2, eingabe.Adresse2);
    CopyText(record.Gegenkonto, eingabe.Gegenkonto);
    CopyText(record.Blz, eingabe.Blz);
    CopyText(record.Bank, eingabe.Bank);
    record.Wert1 = static_cast<int16_t>(eingabe.Wert1);
    record.Wert2 = static_cast<int16_t>(eingabe.Wert2);
    CopyText(record.Skonto, eingabe.Skonto);
    record.Mahnkennziffer = static_cast<int16_t>(eingabe.Mahnkennziffer);
    CopyText(record.UstId, eingabe.UstId);
    if (!isDebitor) CopyText(record.Waehrung, eingabe.Waehrung);
    Holds(SameText(record.Konto, work.Konto));
    Holds((record.Blz[0] != 0) == (eingabe.Bankkonto[0] != 0));
    record.Zahlungsziel = eingabe.Zahlungsziel;
    CopyText(record.Bankkonto, eingabe.Bankkonto);
}

// ---- Writing ----
//
// Other clients may have written since the checks. A transaction is the only writer from its first change on,
// so the account is written and everything that was checked looked at again before it ends. A concurrent one:
// an exclusive one would wait until nobody has any account open for changes.

// Holds what the second look reads, since reads inside a transaction leave the count of a table higher.
bool BeginWriting(HeldTables &held, const PekoEingabe &eingabe)
{
    Holds(held.Context.TransactionDepth == 0);
    if (eingabe.Zahlungsziel != 0 && !Hold(held, TableZahlziel)) return false;
    return Transaction(held.Context, TransactionAction::BeginConcurrent);
}

// The second look at what others may have made meanwhile: 1, -31, -32, -3. The account itself is there.
int32_t CheckStillUnique(ThreadContext &context, const PekoWork &work, TableId own)
{
    Holds(context.TransactionDepth > 0);
    Holds(work.Record.Konto[0] != 0);
    for (const TableId table : {TableSako, TableKred, TableDebi}) {
        bool found = false;
        if (table == own) continue;
        if (!Exists(context, KeyOf(work.Konto), found, table)) return engineFailure;
        if (found) return kontoExists;
        if (!Exists(context, KeyOf(work.Kuerzel), found, KeyCode(table, 1))) return engineFailure;
        if (found) return kuerzelExists;
    }
    // The oldest of a Kürzel comes first, and nobody has written since.
    PersonalRecord oldest{};
    bool found = false;
    if (!GetEqual(context, &oldest, KeyOf(work.Kuerzel), found, KeyCode(own, 1))) return engineFailure;
    Holds(found);
    return SameText(oldest.Konto, work.Record.Konto) ? 1 : kuerzelExists;
}

// The second look at what a new or changed account names: 1, -15, -27, -3.
int32_t CheckStillNamed(ThreadContext &context, const PekoEingabe &eingabe)
{
    Holds(context.TransactionDepth > 0);
    bool found = true;
    if (eingabe.Gegenkonto[0] != 0 && !StillExists(context, KeyOf(eingabe.Gegenkonto), found, TableSako))
        return engineFailure;
    if (!found) return gegenkontoRefused;
    const KeyBuffer ziel = KeyOfNumber(eingabe.Zahlungsziel);
    if (eingabe.Zahlungsziel != 0 && !StillExists(context, ziel, found, TableZahlziel)) return engineFailure;
    return found ? 1 : VARK_FEHLER_ZAHLUNGSZIEL;
}

// Ends or aborts the transaction by the result of the second look, and tells what no longer held.
int32_t EndWriting(ThreadContext &context, int32_t result)
{
    Holds(result <= 1);
    const auto action = result == 1 ? TransactionAction::End : TransactionAction::Abort;
    const bool isOver = Transaction(context, action);
    Holds(context.TransactionDepth == 0);
    if (result == 1) return isOver ? 1 : engineFailure;
    switch (result) {
    case kontoExists: return Report(context, Message::ExistiertBereits, result, "Konto", noPart);
    case kuerzelExists: return Report(context, Message::ExistiertBereits, result, "Kürzel"_w, noPart);
    case gegenkontoRefused:
        return Report(context, Message::Unzulaessig, result, "Das Gegenkonto ist", noPart);
    case VARK_FEHLER_ZAHLUNGSZIEL:
        return Report(context, Message::Unzulaessig, result, "Das Zahlungsziel ist", noPart);
    default: return result;
    }
}

int32_t WriteNew(ThreadContext &context, PekoWork &work, TableId table)
{
    Holds(!work.IsLocked); // nobody has a record that is not there
    HeldTables held(context);
    if (!BeginWriting(held, work.Eingabe)) return engineFailure;
    bool exists = false;
    int32_t result = engineFailure;
    if (InsertUnlessThere(context, &work.Record, exists, table)) {
        result = exists ? kontoExists : CheckStillUnique(context, work, table);
        if (result == 1) result = CheckStillNamed(context, work.Eingabe);
    }
    return EndWriting(context, result);
}

int32_t WriteChanged(ThreadContext &context, PekoWork &work)
{
    Holds(work.IsLocked);
    Holds(work.Record.Konto[0] != 0);
    HeldTables held(context);
    if (!BeginWriting(held, work.Eingabe)) return engineFailure;
    int32_t result = engineFailure;
    if (Update(context, &work.Record, work.Position)) {
        work.IsLocked = false;
        result = CheckStillNamed(context, work.Eingabe);
    }
    return EndWriting(context, result);
}

int32_t DoPeko(ThreadContext &context, int32_t aktion, int32_t art, PekoWork &work)
{
    InitPersonalRecord(work.Record);
    const AccountKind *const kind = FindPersonalKind(art);
    if (kind == nullptr) return Report(context, Message::KontoartUnzulaessig, artRefused, nullptr, noPart);
    Holds(kind->OpenItems != TableUnused);
    const bool isDebitor = kind->Art == KontoartDebitor;
    const TableId table = kind->Table;
    int32_t result;
    switch (aktion) {
    case AktionNeu: result = BeginNew(context, work); break;
    case AktionAendern: result = ResolveAccount(context, work, table); break;
    case AktionLoeschen: return DeleteAccount(context, work, table);
    default: return Report(context, Message::AktionUnzulaessig, aktionRefused, nullptr, noPart);
    }
    if (result != 1) return result;
    result = CheckFields(context, work.Eingabe, isDebitor);
    if (result != 1) return result;
    FillRecord(context, work, isDebitor);
    Holds(work.IsLocked == (aktion == AktionAendern));
    return aktion == AktionNeu ? WriteNew(context, work, table) : WriteChanged(context, work);
}

bool HoldAccountTables(HeldTables &held)
{
    Holds(held.Context.TransactionDepth == 0);
    return Hold(held, TableKred) && Hold(held, TableDebi) && Hold(held, TableSako);
}

} // namespace

void InitPersonalRecord(PersonalRecord &record)
{
    const auto clear = [](AmountText &amount) { CopyText(amount, zeroAmount); };
    const auto clearPair = [&clear](SollHaben &pair) {
        clear(pair.Soll);
        clear(pair.Haben);
    };
    record = {};
    record.Zustand = 1;
    record.ReservedOne66 = 1;
    for (AmountText &amount : record.ReservedAmounts27) {
        clear(amount);
    }
    clearPair(record.Umsaetze.Vortrag);
    clearPair(record.Umsaetze.Slot0);
    for (SollHaben &pair : record.Umsaetze.Monat) {
        clearPair(pair);
    }
    for (AmountText &amount : record.ReservedAmounts709) {
        clear(amount);
    }
    Holds(IsWholeAmount(record.Umsaetze.Slot0.Haben));
    Holds(IsWholeAmount(record.Umsaetze.Monat[11].Haben));
}

int32_t ChangePersonalAccount(ThreadContext &context, int32_t aktion, int32_t art, const PekoEingabe *eingabe,
                              int32_t showMessages)
{
    context.ShowMessages = showMessages;
    PekoWork work{};
    if (eingabe != nullptr) work.Eingabe = *eingabe;
    EndTexts(work.Eingabe);
    CopyText(work.Konto, work.Eingabe.Konto);
    CopyText(work.Kuerzel, work.Eingabe.Kuerzel);
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(context, work.Eingabe.Mandant, fista);
    if (selected < 1) return selected;
    HeldTables held(context);
    if (!HoldAccountTables(held)) return engineFailure;
    AtRestHolds(context);
    const int32_t result = DoPeko(context, aktion, art, work);
    Holds(result <= 1);
    if (work.IsLocked) Unlock(context, work.Position);
    AtRestHolds(context);
    return result;
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_Peko(int32_t aktion, int32_t art, const PekoEingabe *peko, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    return ChangePersonalAccount(*context, aktion, art, peko, showMessages);
}

int32_t VARK_CALL VARK_PekoDirekt(int32_t aktion, int32_t art, int32_t showMessages, int32_t mandant,
                                  const char *konto, const char *kuerzel, const char *name1,
                                  const char *name2, const char *ustId, const char *land,
                                  const char *waehrung, const char *plz, const char *adresse2,
                                  const char *adresse1, const char *blz, const char *bankkonto,
                                  const char *bank, const char *gegenkonto, int32_t wert1, int32_t wert2,
                                  const char *skonto, int32_t mahnkennziffer, int32_t zahlungsziel)
{
    PekoEingabe eingabe{};
    eingabe.Mandant = mandant;
    CopyText(eingabe.Konto, konto);
    CopyText(eingabe.Kuerzel, kuerzel);
    CopyText(eingabe.Name1, name1);
    CopyText(eingabe.Name2, name2);
    CopyText(eingabe.UstId, ustId);
    CopyText(eingabe.Land, land);
    CopyText(eingabe.Waehrung, waehrung);
    CopyText(eingabe.Plz, plz);
    CopyText(eingabe.Adresse2, adresse2);
    CopyText(eingabe.Adresse1, adresse1);
    CopyText(eingabe.Blz, blz);
    CopyText(eingabe.Bankkonto, bankkonto);
    CopyText(eingabe.Bank, bank);
    CopyText(eingabe.Gegenkonto, gegenkonto);
    eingabe.Wert1 = wert1;
    eingabe.Wert2 = wert2;
    CopyText(eingabe.Skonto, skonto);
    eingabe.Mahnkennziffer = mahnkennziffer;
    eingabe.Zahlungsziel = zahlungsziel;
    return VARK_Peko(aktion, art, &eingabe, showMessages);
}
