#include "src/booking/checks.h"

#include "src/booking/account_queries.h"
#include "src/frame/beliefs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"

#include <charconv>
#include <cstring>
#include <initializer_list>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

// One account of a Teilbuchung: its record if it is a Sachkonto, and whether it is what the caller says.
int32_t CheckAccount(ThreadContext &context, const AccountNumber &konto, int32_t art, SakoRecord &record,
                     bool &hasUstId, int32_t code, const char *word, int32_t partIndex)
{
    const int32_t kind = FindAccount(context, konto, record, hasUstId);
    Holds(code < 0);
    Holds(std::strlen(konto) == accountDigits);
    Holds(word != nullptr);
    if (kind == 0) return engineFailure;
    Holds(!hasUstId || kind != KontoartSachkonto);
    if (kind == KontoartKeine || kind != art)
        return Report(context, Message::KontonummerUnzulaessig, code, word, partIndex);
    return 1;
}

// The Zahlungsziel of one account, 0 for none. False when the engine failed.
bool ReadZahlungsziel(ThreadContext &context, const AccountNumber &konto, uint8_t art, int32_t &number)
{
    number = 0;
    Holds(std::strlen(konto) == accountDigits);
    const AccountKind *const kind = FindKindOfBuchung(art);
    if (kind == nullptr || kind->OpenItems == TableUnused) return true;
    PersonalRecord record{};
    bool found = false;
    if (!GetEqual(context, &record, KeyOfText(konto, sizeof konto), found, kind->Table)) return false;
    if (found) number = record.Zahlungsziel;
    return true;
}

} // namespace

bool HoldPostingTables(HeldTables &held)
{
    Holds(held.Context.TransactionDepth == 0);
    for (const TableId table :
         {TableKred, TableDebi, TableSako, TableBat, TableSplit, TableSteke, TableKobu, TableStapel}) {
        if (!Hold(held, table)) return false;
        if (!Holds(held.Context.OpenCounts[table] > 0)) return false;
    }
    return true;
}

bool CalendarDigits(ThreadContext &context, const char *date, char (&out)[7])
{
    constexpr size_t longest = 19;
    char text[longest + 5];
    CopyText(text, sizeof text, date, longest + 1);
    if (std::strlen(text) > longest) return false;
    // A thread without a Mandant has no calendar yet; the way into the fiscal calendar and back gives the
    // same digits in every one, and a date without a year means this year on the first call, too.
    if (context.FirstFiscalMonth == 0) context.FirstFiscalMonth = 1;
    if (context.TodayShort[0] == 0) RefreshToday(context);
    if (ParseDateText(context, text, sizeof text, false) != DateGood) return false;
    PackedDate packed;
    CopyText(packed, text);
    DateText shown; // TT.MM.JJ
    FormatDate(packed, shown, false, context.FirstFiscalMonth);
    Holds(std::strlen(packed) == sizeof packed - 1);
    Holds(std::strlen(shown) == 8);
    const char digits[7] = {packed[0], packed[1], shown[3], shown[4], shown[6], shown[7], 0};
    CopyText(out, digits);
    Holds(std::strlen(out) == sizeof out - 1);
    return true;
}

int32_t CheckPostingHead(ThreadContext &context, int32_t stapel, PackedDate &date, uint32_t &stapelPosition)
{
    bool found = false;
    if (!Exists(context, KeyOfNumber(stapel), found, TableStapel)) return engineFailure;
    // The key of numbers that the engine gives out counts by its absolute value: -16 would find Stapel 16.
    if (!found || stapel < 0)
        return Report(context, Message::ExistiertNicht, stapelUnknown, "Stapel", noPart);
    if (!CurrentPosition(context, stapelPosition, TableStapel)) return engineFailure;
    if (ParseDateText(context, date, sizeof date, false) != DateGood) {
        return Report(context, Message::BuchungsdatumUnzulaessig, dateRefused, nullptr, noPart);
    }
    const int year = PostableYear(context, FiscalYearOf(date));
    if (year == 0) return Report(context, Message::BuchungsdatumUnzulaessig, dateRefused, nullptr, noPart);
    char yearText[5] = {};
    std::to_chars(yearText, yearText + sizeof yearText - 1, year);
    if (!SelectYear(context, yearText)) return engineFailure;
    Holds(std::strlen(date) == sizeof date - 1);
    Holds(std::strcmp(context.WorkYear, yearText) == 0);
    Holds(stapelPosition != 0);
    return 1;
}

int32_t CheckAccountsAndAmounts(ThreadContext &context, TeilbuchungWork &work, int32_t partIndex)
{
    TeilbuchungEingabe &eingabe = work.Eingabe;
    RightJustify(eingabe.Sollkonto, accountDigits);
    RightJustify(eingabe.Habenkonto, accountDigits);
    if (SameText(eingabe.Sollkonto, eingabe.Habenkonto)) {
        return Report(context, Message::KontenGleich, sameAccount, nullptr, partIndex);
    }
    bool sollHasUstId = false;
    bool habenHasUstId = false;
    int32_t result = CheckAccount(context, eingabe.Sollkonto, eingabe.SollArt, work.Soll, sollHasUstId,
                                  sollkontoRefused, "Sollk", partIndex);
    if (result != 1) return result;
    result = CheckAccount(context, eingabe.Habenkonto, eingabe.HabenArt, work.Haben, habenHasUstId,
                          habenkontoRefused, "Habenk", partIndex);
    if (result != 1) return result;
    work.HasUstId = sollHasUstId || habenHasUstId;
    if (!NormalizeDigits(eingabe.Brutto, sizeof eingabe.Brutto, 9, 2, false, true)) {
        return Report(context, Message::AngabeUnzulaessig, bruttoRefused, "Bruttobetrag", partIndex);
    }
    if (eingabe.Steuersatz[0] != 0 &&
        !NormalizeDigits(eingabe.Steuersatz, sizeof eingabe.Steuersatz, 2, 2, false, false)) {
        return Report(context, Message::AngabeUnzulaessig, steuersatzRefused, "Steuersatz", partIndex);
    }
    if (eingabe.Steuerbetrag[0] != 0 &&
        !NormalizeDigits(eingabe.Steuerbetrag, sizeof eingabe.Steuerbetrag, 9, 2, false, true)) {
        return Report(context, Message::AngabeUnzulaessig, steuerbetragRefused, "Steuerbetrag", partIndex);
    }
    Holds(!SameText(eingabe.Sollkonto, eingabe.Habenkonto));
    Holds(eingabe.SollArt != KontoartKeine && eingabe.HabenArt != KontoartKeine);
    Holds(IsWholeAmount(eingabe.Brutto));
    Holds(eingabe.Steuersatz[0] == 0 || IsWholeRate(eingabe.Steuersatz));
    Holds(eingabe.Steuerbetrag[0] == 0 || IsWholeAmount(eingabe.Steuerbetrag));
    return 1;
}

uint8_t BuchungskontoartOf(int32_t kontoart)
{
    const AccountKind *const kind = FindKind(kontoart);
    return kind != nullptr && kind->Buchungsart != 0 ? kind->Buchungsart : BuchungKreditor;
}

void FillImage(TeilbuchungWork &work)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    SplitRecord &image = work.Teil.Image;
    CopyText(image.Sollkonto, eingabe.Sollkonto);
    CopyText(image.Habenkonto, eingabe.Habenkonto);
    CopyText(image.Text, eingabe.Text);
    image.SollArt = BuchungskontoartOf(eingabe.SollArt);
    image.HabenArt = BuchungskontoartOf(eingabe.HabenArt);
    Holds(image.SollArt != 0 && image.HabenArt != 0);
    Holds(std::strlen(image.Sollkonto) == accountDigits);
    Holds(std::strlen(image.Habenkonto) == accountDigits);
    Holds(!SameText(image.Sollkonto, image.Habenkonto));
}

int32_t CheckZahlungsziel(ThreadContext &context, int32_t number)
{
    Holds(context.TransactionDepth == 0);
    if (number == 0) return 1;
    bool found = false;
    if (!Exists(context, KeyOfNumber(number), found, TableZahlziel)) return engineFailure;
    return found ? 1
                 : Report(context, Message::Unzulaessig, zahlungszielUnknown, "Das Zahlungsziel ist", noPart);
}

int32_t DefaultZahlungsziel(ThreadContext &context, const AccountNumber &sollkonto,
                            const AccountNumber &habenkonto, uint8_t sollArt, uint8_t habenArt)
{
    int32_t number = 0;
    if (!ReadZahlungsziel(context, sollkonto, sollArt, number)) return 0;
    if (number == 0) ReadZahlungsziel(context, habenkonto, habenArt, number);
    return number;
}

} // namespace vark
