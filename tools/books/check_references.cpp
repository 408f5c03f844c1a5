#include "tools/books/year_check.h"

#include <algorithm>

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

} // namespace

std::string YearCheck::FaultOfReference(const FieldLayout &field, const char *record) const
{
    const char *bytes = record + field.Offset;
    const bool isNumber = IsNumber(field.Type);
    const bool isEmpty = isNumber ? NumberOf(bytes) == 0 : bytes[0] == 0;
    if (isEmpty && !field.IsNeeded) return {};
    const auto missing = [&](const char *what, bool isThere) {
        return isThere ? std::string() : what + FieldValue(field, record, Of.FirstMonth) + " gibt es nicht";
    };
    const auto account = [&](const char *what, std::initializer_list<AccountKind> kinds) {
        AccountNumber number;
        std::memcpy(number, bytes, sizeof number);
        const auto found = AccountOf.find(Packed(number));
        return missing(what, found != AccountOf.end() &&
                                 std::find(kinds.begin(), kinds.end(), Accounts[found->second].Kind) !=
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
        return missing("die Kostenstelle ", CostOf.count(Packed(number)) > 0);
    }
    case Reference::Zahlungsziel: return missing("das Zahlungsziel ", Terms.count(NumberOf(bytes)) > 0);
    case Reference::Kostenschablone:
        return missing("die Kostenschablone ", Templates.count(NumberOf(bytes)) > 0);
    case Reference::Stapel: return missing("den Stapel ", Batches.count(NumberOf(bytes)) > 0);
    case Reference::Benutzer:
        return missing("den Benutzer ", Users.count(FieldText(bytes, sizeof(UserRecord::Schluessel))) > 0);
    case Reference::Waehrung: {
        const std::string currency = FieldText(bytes, field.Width);
        if (Currencies.count(currency) > 0 || currency == FieldText(Of.Record.Waehrung)) return {};
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

void YearCheck::CheckReferences(const TableLayout &layout, const char *record)
{
    for (const FieldLayout &field : layout.Fields) {
        if (field.Target == Reference::None) continue;
        const std::string fault = FaultOfReference(field, record);
        if (!fault.empty()) Tell("verweis", layout.Stem, KeyText(layout, record), field.Name, fault);
    }
}

} // namespace books
