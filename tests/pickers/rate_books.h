// Books with rates, and a posting that needs one they do not have.
#pragma once

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/pickers/rate_entry.h"
#include "tests/pickers/pick_books.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vark::test {

// Rates are kept by fiscal date; with a fiscal year from January "180315" is the 15 March 1998.
inline void AddRates(Books &books, int16_t firstFiscalMonth = 1)
{
    MandantOptions options;
    options.FirstFiscalMonth = firstFiscalMonth;
    books.AddMandant(1, options);
    books.Insert(1, TableKurse, MakeKurs("USD", "180310", "000000001,80", 1));
    books.Insert(1, TableKurse, MakeKurs("USD", "180301", "000000001,79", 1));
    books.Insert(1, TableKurse, MakeKurs("ITL", "180228", "000000001,01", 3, true));
    books.Insert(1, TableKurse, MakeKurs("FRF", "170601", "000000029,83", 2));
    books.Insert(1, TableKurse, MakeKurs("FRF", "180105", "000000029,79", 2));
    books.Insert(1, TableKurse, MakeKurs("FRF", "180401", "000000029,81", 10));
}

inline ThreadContext &Bound()
{
    ThreadContext *context = nullptr;
    if (EnterExport(context) != ready) throw std::logic_error("the library is not ready");
    FistaRecord fista;
    if (SelectMandant(*context, 1, fista) != 1) throw std::logic_error("no Mandant");
    return *context;
}

inline std::vector<std::string> RatesOf(const Books &books)
{
    std::vector<std::string> rates;
    for (const KurseRecord &record : books.Read<KurseRecord>(1, TableKurse)) {
        rates.push_back(TextOf(record.Waehrung) + " " + TextOf(record.Datum) + " " + TextOf(record.Kurs) +
                        " " + std::to_string(record.Durchschnitt) + " " + std::to_string(record.Einheit));
    }
    return rates;
}

inline constexpr const char *rateQuestion =
    "Zu dem angegebenen Datum wurde noch kein Wechselkurs erfaßt. Wollen Sie diesen gleich erfassen?";

// Accounts for 116,00 from 8400 without tax to Debitor 10000, who pays in SEK.
inline void AddForeignDebitor(Books &books)
{
    AddRates(books);
    for (const char *year : {"1997", "1998"}) {
        books.Insert(1, TableSako, MakeSako("8400"), year);
        PersonalRecord debitor = MakePersonal("10000");
        SetText(debitor.Waehrung, "SEK");
        books.Insert(1, TableDebi, debitor, year);
    }
    books.Insert(1, TableStapel, MakeStapel(16));
}

inline int32_t PostForeign(int32_t showMessages)
{
    return VARK_BuchungEinfuegenDirekt(showMessages, 1, 16, "150398", "RE1", "Text", "10000", 4, "8400", 1,
                                       "116", "", "");
}

} // namespace vark::test
