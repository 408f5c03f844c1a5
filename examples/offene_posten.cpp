// Lists what Debitoren of Mandant 1 owe on a day, and books the rent of a month.
#include <iostream>
#include <map>

#include <vark40.hpp>

using namespace std::chrono_literals;
using namespace vark40;

constexpr Datum stichtag = 1998y / 4 / 30;

static int Tell(const Error &error)
{
    std::cerr << error.Field << ": " << error.Message << " (" << static_cast<int>(error.Code) << ")\n";
    return 1;
}

int main()
{
    const Result<Buecher> buecher = Buecher::Oeffnen(1);
    if (!buecher) return Tell(buecher.error());

    auto offen = buecher->OffenePosten(Kontoart::Debitor);
    if (!offen) return Tell(offen.error());
    std::map<std::string, std::pair<std::string, Betrag>> faellig;
    for (const auto &posten : *offen) {
        if (!posten) return Tell(posten.error());
        if (!posten->Termin || *posten->Termin > stichtag) continue;
        auto &[name, betrag] = faellig[posten->Konto];
        name = posten->Name;
        betrag += posten->Offen;
    }
    for (const auto &[konto, was] : faellig) {
        std::string betrag = was.second.Text();
        betrag[betrag.find(',')] = '.';
        std::cout << konto << ';' << was.first << ';' << betrag << '\n';
    }

    const Result<void> gebucht = buecher->Buchen({.Stapel = 16,
                                                  .Tag = 1998y / 4 / 15,
                                                  .Sollkonto = "8010",
                                                  .Habenkonto = "1840",
                                                  .Brutto = Betrag::Von(1500),
                                                  .Beleg = "M-0498",
                                                  .Text = "Miete April"});
    if (!gebucht) return Tell(gebucht.error());
    std::cout << "gebucht\n";
}
