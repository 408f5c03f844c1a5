#include "tests/bindings/cpp_host.h"

using namespace vark40;

std::vector<std::string> ForeignDebitoren(const Buecher &books)
{
    std::vector<std::string> numbers;
    auto debitoren = books.Debitoren();
    if (!debitoren) return numbers;
#if defined(__clang__) && __clang_major__ < 16
    // These read no views of the standard library beside them.
    for (const auto &konto : *debitoren) {
        if (konto && konto->Land != "D") numbers.push_back(konto->Konto);
    }
#else
    const auto isForeign = [](const Result<Personenkonto> &konto) { return konto && konto->Land != "D"; };
    const auto number = [](const Result<Personenkonto> &konto) { return konto->Konto; };
    for (std::string konto :
         std::move(*debitoren) | std::views::filter(isForeign) | std::views::transform(number)) {
        numbers.push_back(std::move(konto));
    }
#endif
    return numbers;
}

Result<Betrag> SumOfOpenItems(const Buecher &books, Kontoart art)
{
    auto posten = books.OffenePosten(art);
    if (!posten) return posten.error();
    Betrag sum;
    for (const auto &each : *posten) {
        if (!each) return each.error();
        sum += each->Offen;
    }
    return sum;
}
