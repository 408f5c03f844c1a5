#include "src/booking/promises.h"

#include "src/booking/posting_work.h"
#include "src/frame/beliefs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"

#include <cstring>

namespace vark {

namespace {

bool Break(Promises &promises, int32_t message, int32_t code, const char *word, int32_t index)
{
    Holds(promises.Code == 0);
    Holds(code < 0);
    Holds(message != 0 && index >= noPart);
    promises.Code = code;
    promises.Message = message;
    promises.Word = word;
    promises.PartIndex = promises.IsSplit ? index : noPart;
    return false;
}

const SplitRecord &ImageAt(const Buchung &buchung, int32_t index)
{
    Holds(index >= 0 && index < buchung.Bat.Anzahl);
    return index == 0 ? buchung.Bat.Teil : buchung.Weitere[index - 1].Image;
}

bool AccountExists(ThreadContext &context, const AccountNumber &konto, uint8_t art, bool &found)
{
    const AccountKind *const kind = FindKindOfBuchung(art);
    if (!Holds(kind != nullptr) || !Holds(std::strlen(konto) == accountDigits)) return false;
    return StillExists(context, KeyOfText(konto, sizeof konto), found, kind->Table);
}

bool HasKostenschablone(const Buchung &buchung)
{
    for (int32_t i = 0; i < buchung.Bat.Anzahl; ++i) {
        if (ImageAt(buchung, i).Kostenschablone != 0) return true;
    }
    return false;
}

} // namespace

bool HoldPromised(HeldTables &held, const Buchung &buchung, const Promises &promises)
{
    if (!Holds(buchung.Bat.Anzahl > 0) || !Holds(promises.Code == 0)) return false;
    Holds(held.Context.TransactionDepth == 0);
    if (promises.Zahlungsziel != 0 && !Hold(held, TableZahlziel)) return false;
    return !HasKostenschablone(buchung) || Hold(held, TableKoscha);
}

bool AccountsStillExist(ThreadContext &context, const Buchung &buchung, Promises &promises)
{
    if (!Holds(buchung.Bat.Anzahl > 0) || !Holds(context.TransactionDepth > 0)) return false;
    for (int32_t i = 0; i < buchung.Bat.Anzahl; ++i) {
        const SplitRecord &image = ImageAt(buchung, i);
        bool found = false;
        if (!AccountExists(context, image.Sollkonto, image.SollArt, found)) return false;
        if (!found) return Break(promises, Message::KontonummerUnzulaessig, sollkontoRefused, "Sollk", i);
        if (!AccountExists(context, image.Habenkonto, image.HabenArt, found)) return false;
        if (!found) return Break(promises, Message::KontonummerUnzulaessig, habenkontoRefused, "Habenk", i);
    }
    return true;
}

bool ReferencesStillExist(ThreadContext &context, const Buchung &buchung, Promises &promises)
{
    if (!Holds(context.TransactionDepth > 0) || !Holds(promises.StapelPosition != 0)) return false;
    const BatRecord &bat = buchung.Bat;
    bool found = false;
    if (!StillExists(context, KeyOfNumber(bat.Stapel), found, TableStapel, promises.StapelPosition))
        return false;
    if (!found) return Break(promises, Message::ExistiertNicht, stapelUnknown, "Stapel", noPart);
    if (promises.Zahlungsziel != 0) {
        if (!StillExists(context, KeyOfNumber(promises.Zahlungsziel), found, TableZahlziel)) return false;
        if (!found)
            return Break(promises, Message::Unzulaessig, zahlungszielUnknown, "Das Zahlungsziel ist", noPart);
    }
    for (int32_t i = 0; i < bat.Anzahl; ++i) {
        const int32_t number = ImageAt(buchung, i).Kostenschablone;
        if (number == 0) continue;
        if (!StillExists(context, KeyOfNumber(number), found, TableKoscha)) return false;
        if (!found)
            return Break(promises, Message::Unzulaessig, kostenschabloneRefused, "Die Kostenschablone ist",
                         i);
    }
    return true;
}

int32_t ReportUnwritten(const ThreadContext &context, const Promises &promises)
{
    Holds(context.TransactionDepth == 0);
    Holds(promises.Code <= 0);
    if (promises.Code == 0) return engineFailure;
    return Report(context, promises.Message, promises.Code, promises.Word, promises.PartIndex);
}

} // namespace vark
