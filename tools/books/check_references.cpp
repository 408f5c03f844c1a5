#include "tools/books/check_references.h"

#include "tools/common/fields.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

namespace {

int32_t NumberOf(const char *bytes)
{
    int32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

// Whether the tables in which a field's value must be found were read.
bool AreTargetsRead(const YearCheck &year, Reference target)
{
    switch (target) {
    case Reference::Sachkonto: return year.AreRead({TableSako});
    case Reference::Personenkonto: return year.AreRead({TableDebi, TableKred});
    case Reference::Debitor: return year.AreRead({TableDebi});
    case Reference::Kreditor: return year.AreRead({TableKred});
    case Reference::Konto: return year.AreRead({TableSako, TableDebi, TableKred});
    case Reference::Kostenobjekt: return year.AreRead({TableKore});
    case Reference::Zahlungsziel: return year.AreRead({TableZahlziel});
    case Reference::Kostenschablone: return year.AreRead({TableKoscha});
    case Reference::Stapel: return year.AreRead({TableStapel});
    case Reference::Benutzer: return year.AreRead({TableUser});
    case Reference::Waehrung: return year.AreRead({TableKurse});
    case Reference::Knoten:
    case Reference::Buchung:
    case Reference::Teil:
    case Reference::Final:
    case Reference::None: return true;
    }
    return true;
}

// What is missing of it; empty for nothing.
std::string FaultOfReference(const YearCheck &year, const FieldLayout &field, const char *record)
{
    const char *bytes = record + field.Offset;
    const bool isNumber = IsNumber(field.Type);
    const bool isEmpty = isNumber ? NumberOf(bytes) == 0 : bytes[0] == 0;
    if (isEmpty && !field.IsNeeded) return {};
    const auto missing = [&](const char *what, bool isThere) {
        return isThere ? std::string()
                       : what + FieldValue(field, record, year.Of.FirstMonth) + " gibt es nicht";
    };
    const auto account = [&](const char *what, std::initializer_list<AccountKind> kinds) {
        AccountNumber number;
        std::memcpy(number, bytes, sizeof number);
        const auto found = year.AccountOf.find(Packed(number));
        return missing(what, found != year.AccountOf.end() &&
                                 std::find(kinds.begin(), kinds.end(), year.Accounts[found->second].Kind) !=
                                     kinds.end());
    };
    constexpr AccountKind sako = AccountKind::Sachkonto;
    constexpr AccountKind debi = AccountKind::Debitor;
    constexpr AccountKind kred = AccountKind::Kreditor;
    switch (field.Target) {
    case Reference::Sachkonto: return account("das Sachkonto ", {sako});
    case Reference::Personenkonto: return account("das Konto ", {debi, kred});
    case Reference::Debitor: return account("das Konto ", {debi});
    case Reference::Kreditor: return account("das Konto ", {kred});
    case Reference::Konto: return account("das Konto ", {sako, debi, kred});
    case Reference::Kostenobjekt: {
        AccountNumber number;
        std::memcpy(number, bytes, sizeof number);
        return missing("die Kostenstelle ", year.CostOf.count(Packed(number)) > 0);
    }
    case Reference::Zahlungsziel: return missing("das Zahlungsziel ", year.Terms.count(NumberOf(bytes)) > 0);
    case Reference::Kostenschablone:
        return missing("die Kostenschablone ", year.Templates.count(NumberOf(bytes)) > 0);
    case Reference::Stapel: return missing("den Stapel ", year.Batches.count(NumberOf(bytes)) > 0);
    case Reference::Benutzer:
        return missing("den Benutzer ",
                       year.Users.count(FieldText(bytes, sizeof(UserRecord::Schluessel))) > 0);
    case Reference::Waehrung: {
        const std::string currency = FieldText(bytes, field.Width);
        if (year.Currencies.count(currency) > 0 || currency == FieldText(year.Of.Record.Waehrung)) return {};
        return "zur Währung " + currency + " gibt es keinen Kurs";
    }
    case Reference::Knoten:
    case Reference::Buchung:
    case Reference::Teil:
    case Reference::Final:
    case Reference::None: return {};
    }
    return {};
}

} // namespace

void CheckReferences(YearCheck &year, const TableLayout &layout, const char *record)
{
    for (const FieldLayout &field : layout.Fields) {
        if (field.Target == Reference::None || !AreTargetsRead(year, field.Target)) continue;
        const std::string fault = FaultOfReference(year, field, record);
        if (fault.empty()) continue;
        // A currency that has no rate yet is taken when an account is made.
        if (field.Target == Reference::Waehrung) {
            year.Out.Remark("verweis", layout.Stem, KeyText(layout, record), field.Name, fault);
        } else {
            year.Tell("verweis", layout.Stem, KeyText(layout, record), field.Name, fault);
        }
    }
}

} // namespace books
