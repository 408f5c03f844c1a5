// VARK40 for C++20: the books of MERIDA as values, results and ranges over the C interface of vark40.h.
//
//   auto books = vark40::Buecher::Oeffnen(1);
//   if (!books) return Tell(books.error());
//   if (const auto saldo = books->Saldo("1840")) std::cout << saldo->Text() << '\n';
//   auto debitoren = books->Debitoren();
//   if (!debitoren) return Tell(debitoren.error());
//   for (const auto &konto : *debitoren) {
//       if (!konto) return Tell(konto.error());
//       std::cout << konto->Konto << ' ' << konto->Name1 << '\n';
//   }
//
// Everything that can fail returns a Result, which the compiler does not let be dropped; nothing here throws
// but what the standard library throws for lack of memory, and the header compiles without exceptions and
// without types at run time. Texts are UTF-8. What the books cannot hold - a text that is too long, a
// character that Windows-1252 lacks, an amount of ten digits - is refused before the call, never cut.
//
// Books and ranges belong to the thread that made them; on another one they answer with an Error. A thread
// has one cursor: the next range that begins ends the one before, which says so if it goes on.
#ifndef VARK40_HPP
#define VARK40_HPP

#include <array>
#include <charconv>
#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "vark40.h"

#ifdef __linux__
#include <dlfcn.h>
#endif

namespace vark40 {

// ---- Names and texts of the numbers: from here on made by bindings/declare ----
// clang-format off

enum class Kontoart : std::int32_t {
    Sachkonto = VARK_SACHKONTO,
    Kreditor = VARK_KREDITOR,
    Debitor = VARK_DEBITOR,
    Kostenstelle = VARK_KOSTENSTELLE,
    OhneKonto = VARK_OHNE_KONTO,
};

enum class Form : std::int32_t {
    Fest = VARK_FORM_FEST,
    Einfach = VARK_FORM_EINFACH,
    Gruppiert = VARK_FORM_GRUPPIERT,
};

enum class Ergebnis : std::int32_t {
    Letzter = VARK_LETZTER,
    Gut = VARK_GUT,
    Abgebrochen = VARK_ABGEBROCHEN,
    FehlerUmrechnung = VARK_FEHLER_UMRECHNUNG,
    FehlerAktion = VARK_FEHLER_AKTION,
    FehlerTeilSpeicher = VARK_FEHLER_TEIL_SPEICHER,
    FehlerDatenbank = VARK_FEHLER_DATENBANK,
    FehlerMandant = VARK_FEHLER_MANDANT,
    FehlerStapel = VARK_FEHLER_STAPEL,
    FehlerKontoart = VARK_FEHLER_KONTOART,
    FehlerSollkonto = VARK_FEHLER_SOLLKONTO,
    FehlerHabenkonto = VARK_FEHLER_HABENKONTO,
    FehlerKonto = VARK_FEHLER_KONTO,
    FehlerDatum = VARK_FEHLER_DATUM,
    FehlerBrutto = VARK_FEHLER_BRUTTO,
    FehlerSteuersatz = VARK_FEHLER_STEUERSATZ,
    FehlerSteuerbetrag = VARK_FEHLER_STEUERBETRAG,
    FehlerGegenkonto = VARK_FEHLER_GEGENKONTO,
    FehlerBank = VARK_FEHLER_BANK,
    FehlerSkonto = VARK_FEHLER_SKONTO,
    FehlerMahnkennziffer = VARK_FEHLER_MAHNKENNZIFFER,
    FehlerKuerzelAnders = VARK_FEHLER_KUERZEL_ANDERS,
    FehlerForm = VARK_FEHLER_FORM,
    FehlerKostenstelle = VARK_FEHLER_KOSTENSTELLE,
    FehlerKostenFehlen = VARK_FEHLER_KOSTEN_FEHLEN,
    FehlerAnzahlTeile = VARK_FEHLER_ANZAHL_TEILE,
    FehlerSeiten = VARK_FEHLER_SEITEN,
    FehlerZahlungsziel = VARK_FEHLER_ZAHLUNGSZIEL,
    FehlerKeinKonto = VARK_FEHLER_KEIN_KONTO,
    FehlerKuerzelFehlt = VARK_FEHLER_KUERZEL_FEHLT,
    FehlerNameFehlt = VARK_FEHLER_NAME_FEHLT,
    FehlerKontoBesteht = VARK_FEHLER_KONTO_BESTEHT,
    FehlerKuerzelBesteht = VARK_FEHLER_KUERZEL_BESTEHT,
    FehlerNichtLoeschbar = VARK_FEHLER_NICHT_LOESCHBAR,
    FehlerKeinDatenpfad = VARK_FEHLER_KEIN_DATENPFAD,
    FehlerNummernAufgebraucht = VARK_FEHLER_NUMMERN_AUFGEBRAUCHT,
    FehlerSatzFort = VARK_FEHLER_SATZ_FORT,
    FehlerNichtBegonnen = VARK_FEHLER_NICHT_BEGONNEN,
    FehlerKeinSpeicher = VARK_FEHLER_KEIN_SPEICHER,
    FehlerKostenschablone = VARK_FEHLER_KOSTENSCHABLONE,
};

enum class ParamFlag : std::int32_t {
    Zeitraum = VARK_PARAM_ZEITRAUM,
    Daten = VARK_PARAM_DATEN,
    Jahr = VARK_PARAM_JAHR,
    Kontoart = VARK_PARAM_KONTOART,
    Konten = VARK_PARAM_KONTEN,
    Einzeln = VARK_PARAM_EINZELN,
    Ausgabe = VARK_PARAM_AUSGABE,
    Archivjahr = VARK_PARAM_ARCHIVJAHR,
};

enum class Zeitraum : std::int32_t {
    Tage = VARK_ZEITRAUM_TAGE,
    Quartal1 = VARK_ZEITRAUM_QUARTAL_1,
    Quartal4 = VARK_ZEITRAUM_QUARTAL_4,
    Jahr = VARK_ZEITRAUM_JAHR,
};

enum class Ausgabe : std::int32_t {
    Bildschirm = VARK_AUSGABE_BILDSCHIRM,
    Drucker = VARK_AUSGABE_DRUCKER,
};

enum class Aktion : std::int32_t {
    Anlegen = VARK_ANLEGEN,
    Aendern = VARK_AENDERN,
    Loeschen = VARK_LOESCHEN,
};

// The member that is at fault, and the text of each result; UTF-8.
struct ResultText {
    Ergebnis Code;
    const char *Field;
    const char *Message;
};

inline constexpr ResultText resultTexts[] = {
    {Ergebnis::Letzter, "", "Das war der letzte Satz."},
    {Ergebnis::Gut, "", "Gut."},
    {Ergebnis::Abgebrochen, "", "Der Vorgang wurde abgebrochen."},
    {Ergebnis::FehlerUmrechnung, "", "Der Betrag kann nicht umgerechnet werden!"},
    {Ergebnis::FehlerDatenbank, "", "Die Datenbank läßt sich nicht benutzen."},
    {Ergebnis::FehlerMandant, "Mandant", "Der Mandant existiert nicht!"},
    {Ergebnis::FehlerStapel, "Stapel", "Der Stapel existiert nicht!"},
    {Ergebnis::FehlerKontoart, "Art", "Die Kontoart ist unzulässig!"},
    {Ergebnis::FehlerSollkonto, "Sollkonto", "Die Sollkontonummer ist unzulässig!"},
    {Ergebnis::FehlerHabenkonto, "Habenkonto", "Die Habenkontonummer ist unzulässig!"},
    {Ergebnis::FehlerKonto, "Konto", "Die Kontonummer ist unzulässig!"},
    {Ergebnis::FehlerDatum, "Datum", "Das Buchungsdatum ist unzulässig!"},
    {Ergebnis::FehlerBrutto, "Brutto", "Der Bruttobetrag ist unzulässig!"},
    {Ergebnis::FehlerSteuersatz, "Steuersatz", "Der Steuersatz ist unzulässig!"},
    {Ergebnis::FehlerSteuerbetrag, "Steuerbetrag", "Der Steuerbetrag ist unzulässig!"},
    {Ergebnis::FehlerGegenkonto, "Gegenkonto", "Das Gegenkonto ist unzulässig!"},
    {Ergebnis::FehlerBank, "Bankkonto", "Die Bankverbindung ist unzulässig!"},
    {Ergebnis::FehlerSkonto, "Skonto", "Die Skontoprozente sind unzulässig!"},
    {Ergebnis::FehlerMahnkennziffer, "Mahnkennziffer", "Die Mahnkennziffer ist unzulässig!"},
    {Ergebnis::FehlerKuerzelAnders, "Kuerzel", "Das Kürzel ist unzulässig!"},
    {Ergebnis::FehlerForm, "Form", "Das Ausgabeformat ist unzulässig!"},
    {Ergebnis::FehlerKostenstelle, "Konto", "Die Kostenstelle ist unzulässig!"},
    {Ergebnis::FehlerKostenFehlen, "Kostenschablone", "Ein Konto der GuV verlangt eine Kostenstelle."},
    {Ergebnis::FehlerAnzahlTeile, "Teile", "Die Anzahl der Teilbuchungen ist nicht korrekt!"},
    {Ergebnis::FehlerSeiten, "Teile", "Genau eine Seite muß in allen Teilbuchungen gleich sein."},
    {Ergebnis::FehlerZahlungsziel, "Zahlungsziel", "Das Zahlungsziel ist unzulässig!"},
    {Ergebnis::FehlerKeinKonto, "Konto", "Das Konto existiert nicht!"},
    {Ergebnis::FehlerKuerzelFehlt, "Kuerzel", "Fehlendes Kürzel!"},
    {Ergebnis::FehlerNameFehlt, "Name1", "Fehlender Name!"},
    {Ergebnis::FehlerKontoBesteht, "Konto", "Das Konto existiert bereits!"},
    {Ergebnis::FehlerKuerzelBesteht, "Kuerzel", "Das Kürzel existiert bereits!"},
    {Ergebnis::FehlerNichtLoeschbar, "Konto", "Das Konto ist nicht löschbar!"},
    {Ergebnis::FehlerKeinDatenpfad, "",
     "In keiner lesbaren Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…)."},
    {Ergebnis::FehlerNummernAufgebraucht, "Konto", "Es ist keine Nummer mit 7 Zeichen mehr frei."},
    {Ergebnis::FehlerSatzFort, "", "Der nächste Satz ist inzwischen gelöscht worden."},
    {Ergebnis::FehlerNichtBegonnen, "", "Es wird nicht gelesen."},
    {Ergebnis::FehlerKeinSpeicher, "", "Die Bibliothek hat keinen Speicher für diesen Aufruf."},
    {Ergebnis::FehlerKostenschablone, "Kostenschablone", "Die Kostenschablone ist unzulässig!"},
};

// clang-format on
// ---- To here ----

[[nodiscard]] constexpr Kontoart operator|(Kontoart left, Kontoart right)
{
    return static_cast<Kontoart>(static_cast<std::int32_t>(left) | static_cast<std::int32_t>(right));
}

// ---- Results ----

// Who found the fault: the library, which gave Code, or this header before the call or instead of it.
enum class Fault {
    Library,     // the books are as they were
    Value,       // a value that the books cannot hold, or one in them that is none
    WrongThread, // books or a range of another thread
    CursorEnded, // a range that another one of its thread has ended
    Closed,      // books that were moved away
};

struct Error {
    Fault Kind = Fault::Library;
    Ergebnis Code = Ergebnis::Gut; // of the library; what it would say for the others, Gut where nothing
    std::string Field;   // the member or argument at fault, "Teile[2].Brutto" in a part; may be empty
    std::string Message; // German, for people
};

// The German text of a result code.
[[nodiscard]] inline std::string_view TextOf(Ergebnis code)
{
    for (const ResultText &each : resultTexts) {
        if (each.Code == code) return each.Message;
    }
    return "Abgelehnt.";
}

namespace detail {

[[noreturn]] inline void StopUse() { std::abort(); } // of a value that is none: a mistake of the host

inline std::string FromBooks(std::string_view text);

// What belongs to a thread: how many of its books hear messages and how many there are, which range its
// cursor serves, and what the library has said since its last call began, UTF-8.
struct OfThread {
    int Opened = 0;
    int Hearing = 0;
    std::uint64_t Cursor = 0;
    std::uint64_t LastCursor = 0;
    std::string Said;
};

inline OfThread &ThisThread()
{
    thread_local OfThread state;
    return state;
}

// Answers a message box: with the button that does the least.
inline int HearBox(const char *text, unsigned, void *) noexcept
{
    std::string &said = ThisThread().Said;
    if (!said.empty()) said += ' ';
    said += FromBooks(text);
    return 0;
}

using AnswerBoxes = int (*)(int (*answer)(const char *, unsigned, void *), void *context);

// The call of the library's window system by which a host answers boxes; null where there is none of ours.
inline AnswerBoxes FindAnswerBoxes()
{
#ifdef __linux__
    // The ready library has loaded the report engine; the window system lies beside that.
    void *reports = dlopen("librs.so", RTLD_NOW | RTLD_NOLOAD);
    void *entry =
        reports != nullptr ? dlsym(reports, "RSOpenReport") : reinterpret_cast<void *>(&VARK_Status);
    Dl_info info = {};
    if (entry == nullptr || dladdr(entry, &info) == 0 || info.dli_fname == nullptr) return nullptr;
    const std::string path = info.dli_fname;
    const std::string beside = path.substr(0, path.rfind('/') + 1);
    void *windows = dlopen((beside + "libvarkui.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (windows == nullptr) return nullptr;
    return reinterpret_cast<AnswerBoxes>(dlsym(windows, "VarkUiAnswerBoxes"));
#else
    return nullptr;
#endif
}

// Begins or ends hearing on this thread; false where messages cannot be heard.
inline bool Hear(bool begin)
{
    static const AnswerBoxes answerBoxes = FindAnswerBoxes();
    return answerBoxes != nullptr && answerBoxes(begin ? HearBox : nullptr, nullptr) != 0;
}

// "Teilbuchung 3: ..." is about Teile[2].
inline std::string PartOf(std::string_view said)
{
    constexpr std::string_view begin = "Teilbuchung ";
    unsigned number = 0;
    if (!said.starts_with(begin)) return {};
    std::from_chars(said.data() + begin.size(), said.data() + said.size(), number);
    return number > 0 ? "Teile[" + std::to_string(number - 1) + "]." : std::string();
}

inline Error Failure(std::int32_t code, std::string_view field = {})
{
    const std::string &said = ThisThread().Said;
    Error error;
    error.Code = static_cast<Ergebnis>(code);
    error.Message = said.empty() ? std::string(TextOf(error.Code)) : said;
    for (const ResultText &each : resultTexts) {
        if (each.Code == error.Code && field.empty()) field = each.Field;
    }
    error.Field = PartOf(said) + std::string(field);
    return error;
}

inline Error Misuse(Fault kind, std::string message)
{
    return {kind, Ergebnis::FehlerNichtBegonnen, {}, std::move(message)};
}

} // namespace detail

// A value or an Error, in the manner of std::expected. Taking a value that is not there ends the program.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : content(std::in_place_index<0>, std::move(value)) {}
    Result(Error failure) : content(std::in_place_index<1>, std::move(failure)) {}

    [[nodiscard]] bool has_value() const noexcept { return content.index() == 0; }
    [[nodiscard]] explicit operator bool() const noexcept { return has_value(); }

    [[nodiscard]] T &value() & { return *Get(); }
    [[nodiscard]] const T &value() const & { return *Get(); }
    // By value, so that a range-for over `*books.Debitoren()` keeps it.
    [[nodiscard]] T value() && { return std::move(*Get()); }
    [[nodiscard]] T &operator*() & { return *Get(); }
    [[nodiscard]] const T &operator*() const & { return *Get(); }
    [[nodiscard]] T operator*() && { return std::move(*Get()); }
    [[nodiscard]] T *operator->() { return Get(); }
    [[nodiscard]] const T *operator->() const { return Get(); }

    template <typename U> [[nodiscard]] T value_or(U &&other) const &
    {
        return has_value() ? *Get() : static_cast<T>(std::forward<U>(other));
    }

    [[nodiscard]] const Error &error() const
    {
        const Error *failure = std::get_if<1>(&content);
        if (failure == nullptr) detail::StopUse();
        return *failure;
    }

private:
    T *Get()
    {
        T *found = std::get_if<0>(&content);
        if (found == nullptr) detail::StopUse();
        return found;
    }
    const T *Get() const
    {
        const T *found = std::get_if<0>(&content);
        if (found == nullptr) detail::StopUse();
        return found;
    }

    std::variant<T, Error> content;
};

template <> class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : failure(std::move(error)) {}

    [[nodiscard]] bool has_value() const noexcept { return !failure.has_value(); }
    [[nodiscard]] explicit operator bool() const noexcept { return has_value(); }
    [[nodiscard]] const Error &error() const
    {
        if (!failure) detail::StopUse();
        return *failure;
    }

private:
    std::optional<Error> failure;
};

// ---- Values ----

using Datum = std::chrono::year_month_day;

// An amount, exact to the Pfennig. There is no way to one from a floating-point number.
struct Betrag {
    std::int64_t Pfennig = 0;

    constexpr Betrag() = default;
    // Betrag::Von(1234, 50) is 1234,50; of a negative amount both numbers are negative.
    [[nodiscard]] static constexpr Betrag Von(std::int64_t ganze, int hundertstel = 0)
    {
        return InPfennig(ganze * 100 + hundertstel);
    }
    [[nodiscard]] static constexpr Betrag InPfennig(std::int64_t pfennig)
    {
        Betrag betrag;
        betrag.Pfennig = pfennig;
        return betrag;
    }
    // "1234,50", "-7", "+000001234,50"; nothing for any other text, one with dots among them.
    [[nodiscard]] static constexpr std::optional<Betrag> AusText(std::string_view text);

    // "1234,50", "-0,05"
    [[nodiscard]] std::string Text() const
    {
        const std::uint64_t size =
            Pfennig < 0 ? 0 - static_cast<std::uint64_t>(Pfennig) : static_cast<std::uint64_t>(Pfennig);
        const std::string digits = std::to_string(size % 100);
        return (Pfennig < 0 ? "-" : "") + std::to_string(size / 100) + "," + (digits.size() < 2 ? "0" : "") +
               digits;
    }

    friend constexpr auto operator<=>(const Betrag &, const Betrag &) = default;
    friend constexpr Betrag operator+(Betrag left, Betrag right)
    {
        return InPfennig(left.Pfennig + right.Pfennig);
    }
    friend constexpr Betrag operator-(Betrag left, Betrag right)
    {
        return InPfennig(left.Pfennig - right.Pfennig);
    }
    friend constexpr Betrag operator-(Betrag one) { return InPfennig(-one.Pfennig); }
    constexpr Betrag &operator+=(Betrag other) { return *this = *this + other; }
    constexpr Betrag &operator-=(Betrag other) { return *this = *this - other; }
};

constexpr std::optional<Betrag> Betrag::AusText(std::string_view text)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t comma = text.find(',');
    const std::string_view whole = text.substr(0, comma);
    const std::string_view rest = comma == text.npos ? std::string_view() : text.substr(comma + 1);
    if (whole.empty() || whole.size() > 15 || rest.size() > 2) return std::nullopt;
    std::int64_t pfennig = 0;
    for (std::size_t i = 0; i < whole.size() + 2; ++i) {
        const char digit = i < whole.size()                 ? whole[i]
                           : i - whole.size() < rest.size() ? rest[i - whole.size()]
                                                            : '0';
        if (digit < '0' || digit > '9') return std::nullopt;
        pfennig = pfennig * 10 + (digit - '0');
    }
    return InPfennig(isNegative ? -pfennig : pfennig);
}

// A percentage with two decimals: Satz::Von(7, 50) is 7,50.
struct Satz {
    std::int32_t Hundertstel = 0;

    constexpr Satz() = default;
    [[nodiscard]] static constexpr Satz Von(std::int32_t ganze, std::int32_t hundertstel = 0)
    {
        Satz satz;
        satz.Hundertstel = ganze * 100 + hundertstel;
        return satz;
    }
    [[nodiscard]] std::string Text() const { return Betrag::InPfennig(Hundertstel).Text(); }

    friend constexpr auto operator<=>(const Satz &, const Satz &) = default;
};

// A booking for a Stapel. Without rate and amount of tax those of the accounts apply; Kostenschablone and
// Zahlungsziel are numbers, 0 for none and for that of the personal account.
struct Buchung {
    std::int32_t Stapel = 0;
    Datum Tag = {};
    std::string Sollkonto;
    std::string Habenkonto;
    Betrag Brutto;
    std::string Beleg = {};
    std::string Text = {};
    Kontoart SollArt = Kontoart::Sachkonto;
    Kontoart HabenArt = Kontoart::Sachkonto;
    std::optional<Satz> Steuersatz = {};
    std::optional<Betrag> Steuerbetrag = {};
    std::uint8_t Kennzeichen = 0;
    std::int32_t Kostenschablone = 0;
    std::int32_t Zahlungsziel = 0;
};

struct Teilbuchung {
    std::string Sollkonto;
    std::string Habenkonto;
    Betrag Brutto;
    std::string Text = {};
    Kontoart SollArt = Kontoart::Sachkonto;
    Kontoart HabenArt = Kontoart::Sachkonto;
    std::optional<Satz> Steuersatz = {};
    std::optional<Betrag> Steuerbetrag = {};
    std::int32_t Kostenschablone = 0;
};

// A booking of any number of parts that have the Sollkonto or the Habenkonto in common.
struct Splitbuchung {
    std::int32_t Stapel = 0;
    Datum Tag = {};
    std::vector<Teilbuchung> Teile;
    std::string Beleg = {};
    std::uint8_t Kennzeichen = 0;
    std::int32_t Zahlungsziel = 0;
};

// A Kreditor or Debitor, to be written and as it is read. Mahnkennziffer is -1 (never reminded) to 3 for a
// Debitor, 0 for a Kreditor.
struct Personenkonto {
    Kontoart Art = Kontoart::Debitor;
    std::string Konto;
    std::string Kuerzel = {};
    std::string Name1 = {};
    std::string Name2 = {};
    std::string UstId = {};
    std::string Land = {};
    std::string Waehrung = {};
    std::string Plz = {};
    std::string Adresse1 = {};
    std::string Adresse2 = {};
    std::string Blz = {};
    std::string Bankkonto = {};
    std::string Bank = {};
    std::string Gegenkonto = {};
    std::uint16_t Wert1 = 0;
    std::uint16_t Wert2 = 0;
    std::optional<Satz> Skonto = {};
    std::int32_t Mahnkennziffer = 0;
    std::int32_t Zahlungsziel = 0;

    friend bool operator==(const Personenkonto &, const Personenkonto &) = default;
};

// Zuordnung tells where the account is closed: 0 nowhere, 2 Aktiva, 4 Passiva, 8 GuV.
struct Sachkonto {
    std::string Konto;
    std::string Kuerzel;
    std::string Name;
    std::uint32_t Zuordnung = 0;
    bool FesterSatz = false;
    bool MitKosten = false;
};

// A final booking. Teil is 0 for one that stands alone, else the number of the part of a split booking.
struct Buchungssatz {
    std::uint32_t Teil = 0;
    std::optional<Datum> Tag;
    std::string Beleg;
    std::string Text;
    std::string Sollkonto;
    Kontoart SollArt = Kontoart::OhneKonto;
    std::string Habenkonto;
    Kontoart HabenArt = Kontoart::OhneKonto;
    Betrag Brutto;
    std::optional<Satz> Steuersatz; // nothing where it cannot be told
    Betrag Steuerbetrag;
};

// An open item. Offen is what is still open, Zweiter a second amount, in books of our own making the discount
// that may be taken, both in the currency of the Mandant; Waehrung is that of the item.
struct OffenerPosten {
    std::string Konto;
    std::string Referenz1;
    std::string Referenz2;
    std::optional<Datum> Tag;
    std::optional<Datum> Termin;
    std::optional<Datum> SkontoBis;
    std::string Name;
    std::string Text;
    Betrag Offen;
    Betrag Zweiter;
    std::string Waehrung;
};

// ---- Texts ----

namespace detail {

// What the bytes 0x80 to 0x9F of Windows-1252 stand for; the five that it leaves open are themselves.
inline constexpr std::array<char16_t, 32> upperHalf = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

inline std::string FromBooks(std::string_view text)
{
    std::string utf8;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const unsigned point = byte >= 0x80 && byte < 0xA0 ? upperHalf[byte - 0x80U] : byte;
        if (point < 0x80) {
            utf8 += static_cast<char>(point);
        } else if (point < 0x800) {
            utf8 += static_cast<char>(0xC0U | (point >> 6U));
            utf8 += static_cast<char>(0x80U | (point & 0x3FU));
        } else {
            utf8 += static_cast<char>(0xE0U | (point >> 12U));
            utf8 += static_cast<char>(0x80U | ((point >> 6U) & 0x3FU));
            utf8 += static_cast<char>(0x80U | (point & 0x3FU));
        }
    }
    return utf8;
}

// The next character of UTF-8, taken off `text`; nothing for bytes that are none.
inline std::optional<char32_t> TakeCharacter(std::string_view &text)
{
    const auto byte = [&](std::size_t at) {
        return static_cast<char32_t>(static_cast<unsigned char>(text[at]));
    };
    const char32_t first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 0;
    if (length == 0 || text.size() < length) return std::nullopt;
    char32_t point = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return std::nullopt;
        point = (point << 6U) | (byte(i) & 0x3FU);
    }
    text.remove_prefix(length);
    return point;
}

inline std::optional<char> ByteOf(char32_t point)
{
    for (std::size_t i = 0; i < upperHalf.size(); ++i) {
        if (upperHalf[i] == point) return static_cast<char>(0x80U + i);
    }
    if (point == 0 || point > 0xFF || (point >= 0x80 && point < 0xA0)) return std::nullopt;
    return static_cast<char>(static_cast<unsigned char>(point));
}

inline Error BadValue(Ergebnis code, std::string_view field, std::string message)
{
    return {Fault::Value, code, std::string(field), std::move(message)};
}

// Collects the values of one call; the first that does not fit is kept as the error.
struct Filling {
    std::string Prefix;
    std::optional<Error> Failure;

    void Refuse(Ergebnis code, std::string_view field, std::string message)
    {
        if (!Failure) Failure = BadValue(code, Prefix + std::string(field), std::move(message));
    }

    void Text(std::span<char> out, std::string_view utf8, std::string_view field)
    {
        std::size_t length = 0;
        for (std::string_view rest = utf8; !rest.empty(); ++length) {
            const std::optional<char32_t> point = TakeCharacter(rest);
            const std::optional<char> byte = point ? ByteOf(*point) : std::nullopt;
            if (!byte) {
                Refuse(Ergebnis::Gut, field, "Der Text enthält Zeichen, die es in den Büchern nicht gibt.");
                return;
            }
            if (length + 1 >= out.size()) {
                Refuse(Ergebnis::Gut, field,
                       "Der Text ist zu lang, Platz ist für " + std::to_string(out.size() - 1) + " Zeichen.");
                return;
            }
            out[length] = *byte;
        }
        out[length] = '\0';
    }

    void Amount(std::span<char> out, Betrag betrag, std::string_view field, Ergebnis code)
    {
        constexpr std::int64_t end = 100'000'000'000; // nine digits before the comma
        if (betrag.Pfennig <= -end || betrag.Pfennig >= end) {
            Refuse(code, field, "Der Betrag hat mehr als 9 Stellen vor dem Komma.");
            return;
        }
        Text(out, betrag.Text(), field);
    }

    void Rate(std::span<char> out, const std::optional<Satz> &satz, std::string_view field, Ergebnis code)
    {
        if (!satz) return;
        if (satz->Hundertstel < 0 || satz->Hundertstel > 99'99) {
            Refuse(code, field, "Der Satz liegt nicht zwischen 0,00 und 99,99.");
            return;
        }
        Text(out, satz->Text(), field);
    }

    void Day(std::span<char> out, Datum day, std::string_view field)
    {
        const int year = static_cast<int>(day.year());
        if (!day.ok() || year < 1980 || year > 2079) {
            Refuse(Ergebnis::FehlerDatum, field, "Das ist kein Tag der Jahre 1980 bis 2079.");
            return;
        }
        const unsigned parts[] = {static_cast<unsigned>(day.day()), static_cast<unsigned>(day.month()),
                                  static_cast<unsigned>(year) % 100};
        char *at = out.data();
        for (const unsigned part : parts) {
            *at++ = static_cast<char>('0' + part / 10);
            *at++ = static_cast<char>('0' + part % 10);
        }
        *at = '\0';
    }
};

inline std::string Given(const char *text) { return FromBooks(text); }

// Takes the values of one record; the first that is none is kept as the error.
struct Taking {
    std::optional<Error> Failure;

    void Refuse(std::string_view field, const char *what, std::string_view text)
    {
        if (Failure) return;
        std::string message = std::string("In den Büchern steht ") + what + ": „" + FromBooks(text) + "“.";
        Failure = BadValue(Ergebnis::Gut, field, std::move(message));
    }

    // "TT.MM.JJJJ"; nothing for an empty text.
    std::optional<Datum> Day(std::string_view text, std::string_view field)
    {
        if (text.empty()) return std::nullopt;
        int year = 0;
        unsigned month = 0;
        unsigned day = 0;
        if (text.size() == 10) {
            std::from_chars(text.data() + 6, text.data() + 10, year);
            std::from_chars(text.data() + 3, text.data() + 5, month);
            std::from_chars(text.data(), text.data() + 2, day);
        }
        const Datum read{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
        if (!read.ok()) Refuse(field, "kein Datum", text);
        return read;
    }

    Betrag Amount(std::string_view text, std::string_view field)
    {
        const std::optional<Betrag> read = Betrag::AusText(text);
        if (!read) Refuse(field, "kein Betrag", text);
        return read.value_or(Betrag());
    }

    // Nothing where the books cannot tell it.
    std::optional<Satz> Rate(std::string_view text, std::string_view field)
    {
        const std::size_t first = text.find_first_not_of(' ');
        if (first == text.npos || text.substr(first) == "-") return std::nullopt;
        return Satz::Von(0, static_cast<std::int32_t>(Amount(text, field).Pfennig));
    }

    // The record, unless one of its values is none.
    template <typename T> Result<T> Give(T record)
    {
        if (Failure) return std::move(*Failure);
        return record;
    }
};

} // namespace detail

// ---- Ranges ----

// A range over records of the books, to be gone through once: each element is a Result, since a record can
// fail to be read; a failure of the library is the last element, behind a value that is none others follow.
template <typename T> class Bereich {
public:
    using Deliver = Result<T> (*)(bool &isLast, std::int32_t hint);

    Bereich(Deliver function, std::int32_t argument, bool isEmpty)
        : deliver(function), hint(argument), isOver(isEmpty), number(++detail::ThisThread().LastCursor)
    {
        detail::ThisThread().Cursor = isEmpty ? 0 : number;
    }
    Bereich(Bereich &&other) noexcept = default;
    Bereich &operator=(Bereich &&other) noexcept
    {
        if (this == &other) return *this;
        End();
        deliver = other.deliver;
        hint = other.hint;
        isOver = std::move(other.isOver);
        number = other.number;
        thread = other.thread;
        current = std::move(other.current);
        return *this;
    }
    Bereich(const Bereich &) = delete;
    Bereich &operator=(const Bereich &) = delete;
    ~Bereich() { End(); }

    class Iterator {
    public:
        using value_type = Result<T>;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        Iterator() = default;
        explicit Iterator(Bereich *of) : range(of) {}
        [[nodiscard]] const Result<T> &operator*() const { return *range->current; }
        [[nodiscard]] const Result<T> *operator->() const { return &*range->current; }
        Iterator &operator++()
        {
            range->Advance();
            return *this;
        }
        void operator++(int) { range->Advance(); }
        [[nodiscard]] bool operator==(std::default_sentinel_t) const
        {
            return range == nullptr || !range->current.has_value();
        }

    private:
        Bereich *range = nullptr;
    };

    [[nodiscard]] Iterator begin()
    {
        if (!current) Advance();
        return Iterator(this);
    }
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }

private:
    [[nodiscard]] bool IsCurrent() const
    {
        return thread == std::this_thread::get_id() && detail::ThisThread().Cursor == number;
    }

    void End()
    {
        if (isOver || !IsCurrent()) return;
        VARK_BeendeHolen();
        detail::ThisThread().Cursor = 0;
    }

    void Advance()
    {
        current.reset();
        if (isOver) return;
        if (thread != std::this_thread::get_id()) {
            // It goes on where it belongs: nothing has been read.
            current.emplace(detail::Misuse(Fault::WrongThread, "Der Bereich gehört einem anderen Thread."));
            return;
        }
        if (!IsCurrent()) {
            isOver = true;
            current.emplace(
                detail::Misuse(Fault::CursorEnded, "Inzwischen wurde in diesem Thread anderes gelesen."));
            return;
        }
        bool isLast = false;
        detail::ThisThread().Said.clear();
        current.emplace(deliver(isLast, hint));
        isOver = isLast || (!*current && current->error().Kind == Fault::Library);
        if (isOver) detail::ThisThread().Cursor = 0;
    }

    // True in what was moved away, so that the cursor is ended once.
    struct Over {
        bool Is;
        Over(bool is) : Is(is) {}
        Over(Over &&other) noexcept : Is(std::exchange(other.Is, true)) {}
        Over &operator=(Over &&other) noexcept
        {
            Is = std::exchange(other.Is, true);
            return *this;
        }
        Over &operator=(bool is)
        {
            Is = is;
            return *this;
        }
        operator bool() const { return Is; }
    };

    Deliver deliver;
    std::int32_t hint;
    Over isOver;
    std::uint64_t number;
    std::thread::id thread = std::this_thread::get_id();
    std::optional<Result<T>> current;
};

// ---- Books ----

// The reports.
enum class Bericht {
    Kontenplan,
    SummenSaldenListe,
    HauptAbschluss,
    Bilanz,
    Eroeffnungsbilanz,
    Guv,
    Buchungsjournal,
    Kontenblatt,
    Kostenblatt,
    OpListe,
    UmsatzStatistik,
    UmsatzSteuerVoranmeldung,
    UmsatzSteuerVerprobung,
    ZusammenfassendeMeldung,
    KostenSaldenListe,
    KostenstellenListe,
    Kostenjournal,
    KostenAufteilung,
};

// What becomes of the library's messages while books are open on a thread: they are the Message of an Error
// and nothing is shown, questions get the answer that does the least (without the window system beside the
// library Message is the text of the code); or the library shows them to the person in boxes.
enum class Meldungen { Fangen, Zeigen };

// The books of a Mandant, for the thread that opened them. With the last books of a thread its tables close.
class Buecher {
public:
    [[nodiscard]] static Result<Buecher> Oeffnen(std::int32_t mandant,
                                                 Meldungen meldungen = Meldungen::Fangen)
    {
        const std::int32_t state = VARK_Status();
        detail::ThisThread().Said.clear();
        if (state != VARK_GUT) return detail::Failure(state);
        const bool hears = meldungen == Meldungen::Fangen && detail::Hear(true);
        return Buecher(mandant, hears, hears || meldungen == Meldungen::Zeigen);
    }

    Buecher(Buecher &&other) noexcept
        : mandant(other.mandant), shown(other.shown), hears(other.hears),
          isOpen(std::exchange(other.isOpen, false)), thread(other.thread)
    {}
    Buecher &operator=(Buecher &&) = delete;
    Buecher(const Buecher &) = delete;
    Buecher &operator=(const Buecher &) = delete;
    ~Buecher()
    {
        if (!isOpen || thread != std::this_thread::get_id()) return;
        detail::OfThread &state = detail::ThisThread();
        if (--state.Opened == 0) VARK_SchliesseDB();
        if (hears && --state.Hearing == 0) detail::Hear(false);
    }

    // ---- Booking ----

    // Writes a booking into its Stapel, whole or not at all; it is on disk when this returns.
    [[nodiscard]] Result<void> Buchen(const Buchung &buchung) const
    {
        BuchungEingabe record = {};
        detail::Filling filling;
        Fill(record, buchung, filling);
        record.Mandant = mandant;
        record.Stapel = buchung.Stapel;
        filling.Day(record.Datum, buchung.Tag, "Tag");
        filling.Text(record.Beleg, buchung.Beleg, "Beleg");
        record.Kennzeichen = buchung.Kennzeichen;
        record.Zahlungsziel = buchung.Zahlungsziel;
        if (auto error = Check(filling)) return *error;
        return Written(VARK_BuchungEinfuegen(&record, shown));
    }

    // Take care where messages are not heard: an unknown Kostenschablone in a part then writes nothing and is
    // a success all the same.
    [[nodiscard]] Result<void> Buchen(const Splitbuchung &split) const
    {
        detail::Filling filling;
        std::vector<TeilbuchungEingabe> teile(split.Teile.size());
        for (std::size_t i = 0; i < teile.size(); ++i) {
            filling.Prefix = "Teile[" + std::to_string(i) + "].";
            Fill(teile[i], split.Teile[i], filling);
        }
        filling.Prefix.clear();
        SplitEingabe record = {};
        filling.Day(record.Datum, split.Tag, "Tag");
        filling.Text(record.Beleg, split.Beleg, "Beleg");
        if (auto error = Check(filling)) return *error;
        if (teile.size() > std::size(record.Teil)) return BuchenEinzeln(split, record, teile);
        record.Mandant = mandant;
        record.Stapel = split.Stapel;
        record.Anzahl = static_cast<std::int32_t>(teile.size());
        for (std::size_t i = 0; i < teile.size(); ++i) {
            record.Teil[i] = teile[i];
        }
        record.Kennzeichen = split.Kennzeichen;
        record.Zahlungsziel = split.Zahlungsziel;
        return WrittenInParts(VARK_SplitBuchungEinfuegen(&record, shown));
    }

    // ---- Personal accounts ----

    [[nodiscard]] Result<void> KontoAnlegen(const Personenkonto &konto) const
    {
        return Peko(Aktion::Anlegen, konto);
    }
    // Replaces every field of the account of that number, or of that Kuerzel if the number is empty.
    [[nodiscard]] Result<void> KontoAendern(const Personenkonto &konto) const
    {
        return Peko(Aktion::Aendern, konto);
    }
    // By number, or by Kuerzel if that is empty.
    [[nodiscard]] Result<void> KontoLoeschen(Kontoart art, std::string konto, std::string kuerzel = {}) const
    {
        Personenkonto deleted;
        deleted.Art = art;
        deleted.Konto = std::move(konto);
        deleted.Kuerzel = std::move(kuerzel);
        return Peko(Aktion::Loeschen, deleted);
    }

    // ---- Asking ----

    // The next free number for a new Kreditor or Debitor.
    [[nodiscard]] Result<std::string> FreieKontonummer(Kontoart art) const
    {
        if (auto error = Misused()) return *error;
        char out[8] = "";
        const std::int32_t code = VARK_HoleFreieKontonr(mandant, static_cast<std::int32_t>(art), out);
        if (code != VARK_GUT) return detail::Failure(code);
        return detail::Given(out);
    }

    [[nodiscard]] Result<bool> Existiert(std::string_view konto, Kontoart art = Kontoart::Sachkonto) const
    {
        Konto number;
        if (auto error = Read(number, konto)) return *error;
        const std::int32_t code = VARK_ExistiertKonto(mandant, number, static_cast<std::int32_t>(art));
        if (code < 0) return detail::Failure(code);
        return code == VARK_GUT;
    }

    // The balance over the fiscal year with what was carried forward, positive on the Soll side.
    [[nodiscard]] Result<Betrag> Saldo(std::string_view konto, Kontoart art = Kontoart::Sachkonto) const
    {
        Konto number;
        if (auto error = Read(number, konto)) return *error;
        char out[17] = "";
        const std::int32_t code =
            VARK_HoleSaldo(mandant, number, static_cast<std::int32_t>(art), shown, VARK_FORM_FEST, out);
        if (code != VARK_GUT) return detail::Failure(code);
        detail::Taking taking;
        const Betrag saldo = taking.Amount(out, "Saldo");
        return taking.Give(saldo);
    }

    // ---- Reading ----

    // The final bookings of a fiscal year in the order of their dates: of the year of `ab` from that day on,
    // without it of the year that is selected.
    [[nodiscard]] Result<Bereich<Buchungssatz>> Buchungen(std::optional<Datum> ab = {}) const
    {
        char since[7] = "";
        detail::Filling filling;
        if (ab) filling.Day(since, *ab, "ab");
        if (auto error = Check(filling)) return *error;
        const std::int32_t code = VARK_InitHoleBube(mandant, since, shown);
        if (code < 0) return detail::Failure(code, code == VARK_FEHLER_DATUM ? "ab" : "");
        return Bereich<Buchungssatz>(NextBuchung, 0, code == VARK_ABGEBROCHEN);
    }

    // Accounts in the order of their numbers, from `ab` on.
    [[nodiscard]] Result<Bereich<Sachkonto>> Sachkonten(std::string_view ab = {}) const
    {
        const Result<bool> begun = BeginAccounts(Kontoart::Sachkonto, ab);
        if (!begun) return begun.error();
        return Bereich<Sachkonto>(NextSachkonto, 0, !*begun);
    }
    [[nodiscard]] Result<Bereich<Personenkonto>> Kreditoren(std::string_view ab = {}) const
    {
        return PersonalAccounts(Kontoart::Kreditor, ab);
    }
    [[nodiscard]] Result<Bereich<Personenkonto>> Debitoren(std::string_view ab = {}) const
    {
        return PersonalAccounts(Kontoart::Debitor, ab);
    }

    // Open items of all Kreditoren or Debitoren, or of one.
    [[nodiscard]] Result<Bereich<OffenerPosten>> OffenePosten(Kontoart art, std::string_view konto = {}) const
    {
        Konto number;
        if (auto error = Read(number, konto)) return *error;
        const std::int32_t code = VARK_InitHoleOP(mandant, number, static_cast<std::int32_t>(art), shown);
        if (code < 0) return detail::Failure(code);
        return Bereich<OffenerPosten>(NextPosten, 0, code == VARK_ABGEBROCHEN);
    }

    // ---- Choosing: nothing for a cancel ----

    [[nodiscard]] static Result<std::optional<std::int32_t>> WaehleMandant(VarkWindow owner = nullptr)
    {
        const std::int32_t chosen = VARK_HoleMandantenNr(owner);
        if (chosen == -1 || chosen == -2) return std::optional<std::int32_t>(); // nothing to choose from
        return Chosen(chosen);
    }
    // With `verwalten` the person may make, change and delete Stapel as well.
    [[nodiscard]] Result<std::optional<std::int32_t>> WaehleStapel(VarkWindow owner = nullptr,
                                                                   bool verwalten = false) const
    {
        if (auto error = Misused()) return *error;
        return Chosen(VARK_HoleStapelNr(owner, verwalten ? -mandant : mandant));
    }
    [[nodiscard]] Result<std::optional<std::int32_t>> WaehleZahlungsziel(VarkWindow owner = nullptr) const
    {
        if (auto error = Misused()) return *error;
        return Chosen(VARK_HoleZahlungsziel(owner, mandant));
    }
    [[nodiscard]] Result<std::optional<std::int32_t>> WaehleKostenschablone(VarkWindow owner = nullptr) const
    {
        if (auto error = Misused()) return *error;
        return Chosen(VARK_HoleKostenschablone(owner, mandant));
    }
    [[nodiscard]] Result<std::optional<std::string>> WaehleKonto(Kontoart art, std::string_view von = {},
                                                                 std::string_view bis = {},
                                                                 VarkWindow owner = nullptr) const
    {
        Konto low;
        Konto high;
        if (auto error = Read(low, von, "von")) return *error;
        if (auto error = Read(high, bis, "bis")) return *error;
        char out[8] = "";
        const std::int32_t code =
            VARK_HoleKonto(owner, mandant, static_cast<std::int32_t>(art), low, high, out);
        if (code == -1 || code == -2) {
            Error error = detail::Failure(code, "von");
            error.Message =
                code == -1 ? "In diesem Bereich gibt es kein Konto." : "Das sind zu viele Konten.";
            return error;
        }
        if (code < 0) return detail::Failure(code);
        return code == VARK_GUT ? std::optional(detail::Given(out)) : std::nullopt;
    }

    // ---- Reports ----

    // Makes a report of what `params` asks for, which keeps what was chosen. The window belongs to the
    // caller, who destroys it; null, with ViewResult 1, is a report that was printed.
    [[nodiscard]] Result<VarkWindow> Berichte(Bericht bericht, ReportParams &params,
                                              VarkWindow parent = nullptr) const
    {
        if (auto error = Misused()) return *error;
        params.ViewResult = 0;
        VarkWindow window = Make(bericht, params, parent);
        if (window != nullptr || params.ViewResult == 1) return window;
        Error error = detail::Failure(VARK_ABGEBROCHEN);
        if (detail::ThisThread().Said.empty()) error.Message = "Der Bericht wurde nicht erstellt.";
        return error;
    }

    // How the report windows of this thread look (VARK_InitReports).
    [[nodiscard]] Result<void> BerichteAls(std::uint32_t style, std::uint32_t exStyle, std::string_view title,
                                           VarkWindow frame = nullptr) const
    {
        char text[128] = "";
        detail::Filling filling;
        filling.Text(text, title, "title");
        if (auto error = Check(filling)) return *error;
        if (VARK_InitReports(style, exStyle, text, frame) != VARK_GUT)
            return detail::Failure(VARK_FEHLER_KEIN_SPEICHER);
        return {};
    }

private:
    using Konto = char[8];

    Buecher(std::int32_t number, bool isHearing, bool isShowing)
        : mandant(number), shown(isShowing ? 1 : 0), hears(isHearing)
    {
        ++detail::ThisThread().Opened;
        if (hears) ++detail::ThisThread().Hearing;
    }

    // Every call begins here.
    [[nodiscard]] std::optional<Error> Misused() const
    {
        if (thread != std::this_thread::get_id())
            return detail::Misuse(Fault::WrongThread, "Die Bücher gehören einem anderen Thread.");
        if (!isOpen) return detail::Misuse(Fault::Closed, "Die Bücher sind geschlossen.");
        detail::ThisThread().Said.clear();
        return std::nullopt;
    }

    [[nodiscard]] std::optional<Error> Check(const detail::Filling &filling) const
    {
        if (auto error = Misused()) return error;
        return filling.Failure;
    }

    [[nodiscard]] std::optional<Error> Read(Konto &out, std::string_view konto,
                                            std::string_view field = "Konto") const
    {
        out[0] = '\0';
        detail::Filling filling;
        filling.Text(out, konto, field);
        return Check(filling);
    }

    static Result<void> Written(std::int32_t code)
    {
        if (code == VARK_GUT) return {};
        return detail::Failure(code, code == VARK_FEHLER_KONTO ? "Habenkonto" : "");
    }

    // An unknown Kostenschablone in a part is told to the person alone: the result is that of a booking.
    [[nodiscard]] Result<void> WrittenInParts(std::int32_t code) const
    {
        const bool isRefused = code == VARK_GUT && hears && !detail::ThisThread().Said.empty();
        return Written(isRefused ? static_cast<std::int32_t>(VARK_FEHLER_KOSTENSCHABLONE) : code);
    }

    static Result<std::optional<std::int32_t>> Chosen(std::int32_t number)
    {
        if (number < 0) return detail::Failure(number);
        return number > 0 ? std::optional(number) : std::nullopt;
    }

    // What a booking and one of its parts have in common.
    template <typename Record, typename Values>
    static void Fill(Record &record, const Values &values, detail::Filling &filling)
    {
        filling.Text(record.Sollkonto, values.Sollkonto, "Sollkonto");
        record.SollArt = static_cast<std::int32_t>(values.SollArt);
        filling.Text(record.Habenkonto, values.Habenkonto, "Habenkonto");
        record.HabenArt = static_cast<std::int32_t>(values.HabenArt);
        filling.Amount(record.Brutto, values.Brutto, "Brutto", Ergebnis::FehlerBrutto);
        filling.Rate(record.Steuersatz, values.Steuersatz, "Steuersatz", Ergebnis::FehlerSteuersatz);
        if (values.Steuerbetrag)
            filling.Amount(record.Steuerbetrag, *values.Steuerbetrag, "Steuerbetrag",
                           Ergebnis::FehlerSteuerbetrag);
        filling.Text(record.Text, values.Text, "Text");
        record.Kostenschablone = values.Kostenschablone;
    }

    [[nodiscard]] Result<void> BuchenEinzeln(const Splitbuchung &split, const SplitEingabe &head,
                                             const std::vector<TeilbuchungEingabe> &teile) const
    {
        const std::int32_t begun = VARK_SplitStartEx(mandant, split.Stapel, head.Datum, head.Beleg,
                                                     split.Kennzeichen, split.Zahlungsziel);
        if (begun != VARK_GUT) return detail::Failure(begun);
        for (const TeilbuchungEingabe &teil : teile) {
            const std::int32_t added = VARK_SplitEinfuegenEx(
                teil.Sollkonto, teil.SollArt, teil.Habenkonto, teil.HabenArt, teil.Brutto, teil.Steuersatz,
                teil.Steuerbetrag, teil.Text, teil.Kostenschablone);
            if (added == VARK_GUT) continue;
            VARK_SplitEnde(0, 0);
            return detail::Failure(VARK_FEHLER_KEIN_SPEICHER);
        }
        return WrittenInParts(VARK_SplitEnde(1, shown));
    }

    [[nodiscard]] Result<void> Peko(Aktion aktion, const Personenkonto &konto) const
    {
        PekoEingabe record = {};
        detail::Filling filling;
        record.Mandant = mandant;
        filling.Text(record.Konto, konto.Konto, "Konto");
        filling.Text(record.Kuerzel, konto.Kuerzel, "Kuerzel");
        filling.Text(record.Name1, konto.Name1, "Name1");
        filling.Text(record.Name2, konto.Name2, "Name2");
        filling.Text(record.UstId, konto.UstId, "UstId");
        filling.Text(record.Land, konto.Land, "Land");
        filling.Text(record.Waehrung, konto.Waehrung, "Waehrung");
        filling.Text(record.Plz, konto.Plz, "Plz");
        filling.Text(record.Adresse2, konto.Adresse2, "Adresse2");
        filling.Text(record.Adresse1, konto.Adresse1, "Adresse1");
        filling.Text(record.Blz, konto.Blz, "Blz");
        filling.Text(record.Bankkonto, konto.Bankkonto, "Bankkonto");
        filling.Text(record.Bank, konto.Bank, "Bank");
        filling.Text(record.Gegenkonto, konto.Gegenkonto, "Gegenkonto");
        record.Wert1 = konto.Wert1;
        record.Wert2 = konto.Wert2;
        filling.Rate(record.Skonto, konto.Skonto, "Skonto", Ergebnis::FehlerSkonto);
        record.Mahnkennziffer = konto.Mahnkennziffer;
        record.Zahlungsziel = konto.Zahlungsziel;
        if (auto error = Check(filling)) return *error;
        const std::int32_t code = VARK_Peko(static_cast<std::int32_t>(aktion),
                                            static_cast<std::int32_t>(konto.Art), &record, shown);
        if (code != VARK_GUT) return detail::Failure(code);
        return {};
    }

    [[nodiscard]] Result<bool> BeginAccounts(Kontoart art, std::string_view ab) const
    {
        Konto since;
        if (auto error = Read(since, ab, "ab")) return *error;
        const std::int32_t code = VARK_InitHoleKonto(mandant, static_cast<std::int32_t>(art), since, shown);
        if (code < 0) return detail::Failure(code);
        return code != VARK_ABGEBROCHEN;
    }

    [[nodiscard]] Result<Bereich<Personenkonto>> PersonalAccounts(Kontoart art, std::string_view ab) const
    {
        const Result<bool> begun = BeginAccounts(art, ab);
        if (!begun) return begun.error();
        return Bereich<Personenkonto>(NextPersonal, static_cast<std::int32_t>(art), !*begun);
    }

    static Result<Buchungssatz> NextBuchung(bool &isLast, std::int32_t)
    {
        std::uint32_t teil = 0, sollArt = 0, habenArt = 0;
        char datum[11] = "", beleg[9] = "", text[40] = "", soll[8] = "", haben[8] = "", betrag[17] = "",
             satz[8] = "", steuer[17] = "";
        const std::int32_t code = VARK_HoleBube(&teil, datum, beleg, text, soll, &sollArt, haben, &habenArt,
                                                VARK_FORM_FEST, betrag, satz, steuer);
        if (code < VARK_GUT) return detail::Failure(code);
        isLast = code == VARK_LETZTER;
        detail::Taking taking;
        Buchungssatz record{teil,
                            taking.Day(datum, "Tag"),
                            detail::Given(beleg),
                            detail::Given(text),
                            detail::Given(soll),
                            static_cast<Kontoart>(sollArt),
                            detail::Given(haben),
                            static_cast<Kontoart>(habenArt),
                            taking.Amount(betrag, "Brutto"),
                            taking.Rate(satz, "Steuersatz"),
                            taking.Amount(steuer, "Steuerbetrag")};
        return taking.Give(std::move(record));
    }

    static Result<Sachkonto> NextSachkonto(bool &isLast, std::int32_t)
    {
        char konto[8] = "", kuerzel[10] = "", name[50] = "";
        std::uint32_t zuordnung = 0, fest = 0, kosten = 0;
        const std::int32_t code = VARK_HoleSako(konto, kuerzel, name, &zuordnung, &fest, &kosten);
        // The last Sachkonto comes with the code of a failure; a failure has been told, or has given nothing.
        isLast = code == VARK_FEHLER_DATENBANK && konto[0] != '\0' && detail::ThisThread().Said.empty();
        if (code != VARK_GUT && !isLast) return detail::Failure(code);
        return Sachkonto{
            detail::Given(konto), detail::Given(kuerzel), detail::Given(name), zuordnung, fest != 0,
            kosten != 0};
    }

    static Result<Personenkonto> NextPersonal(bool &isLast, std::int32_t art)
    {
        char konto[8] = "", kuerzel[10] = "", name1[26] = "", name2[26] = "", freitext[47] = "", land[4] = "",
             waehrung[5] = "", plz[7] = "", adresse2[31] = "", adresse1[31] = "", blz[9] = "",
             bankkonto[12] = "", bank[28] = "", gegenkonto[8] = "", skonto[8] = "";
        std::uint32_t wert1 = 0, wert2 = 0, mahnkennziffer = 0, zahlungsziel = 0;
        const std::int32_t code = VARK_HolePeko(
            konto, kuerzel, name1, name2, freitext, land, waehrung, plz, adresse2, adresse1, blz, bankkonto,
            bank, gegenkonto, &wert1, &wert2, VARK_FORM_FEST, skonto, &mahnkennziffer, &zahlungsziel);
        if (code < VARK_GUT) return detail::Failure(code);
        isLast = code == VARK_LETZTER;
        detail::Taking taking;
        Personenkonto record{static_cast<Kontoart>(art),
                             detail::Given(konto),
                             detail::Given(kuerzel),
                             detail::Given(name1),
                             detail::Given(name2),
                             detail::Given(freitext),
                             detail::Given(land),
                             detail::Given(waehrung),
                             detail::Given(plz),
                             detail::Given(adresse1),
                             detail::Given(adresse2),
                             detail::Given(blz),
                             detail::Given(bankkonto),
                             detail::Given(bank),
                             detail::Given(gegenkonto),
                             static_cast<std::uint16_t>(wert1),
                             static_cast<std::uint16_t>(wert2),
                             taking.Rate(skonto, "Skonto"),
                             static_cast<std::int32_t>(mahnkennziffer),
                             static_cast<std::int32_t>(zahlungsziel)};
        return taking.Give(std::move(record));
    }

    static Result<OffenerPosten> NextPosten(bool &isLast, std::int32_t)
    {
        char konto[8] = "", referenz1[10] = "", referenz2[10] = "", datum[11] = "", termin[11] = "",
             skontoBis[11] = "", name[26] = "", text[26] = "", betrag1[17] = "", betrag2[17] = "",
             waehrung[5] = "";
        const std::int32_t code = VARK_HoleOP(konto, referenz1, referenz2, datum, termin, skontoBis, name,
                                              text, VARK_FORM_FEST, betrag1, betrag2, waehrung);
        if (code < VARK_GUT) return detail::Failure(code);
        isLast = code == VARK_LETZTER;
        detail::Taking taking;
        OffenerPosten record{detail::Given(konto),
                             detail::Given(referenz1),
                             detail::Given(referenz2),
                             taking.Day(datum, "Tag"),
                             taking.Day(termin, "Termin"),
                             taking.Day(skontoBis, "SkontoBis"),
                             detail::Given(name),
                             detail::Given(text),
                             taking.Amount(betrag1, "Offen"),
                             taking.Amount(betrag2, "Zweiter"),
                             detail::Given(waehrung)};
        return taking.Give(std::move(record));
    }

    [[nodiscard]] VarkWindow Make(Bericht bericht, ReportParams &params, VarkWindow parent) const
    {
        switch (bericht) {
        case Bericht::Kontenplan: return VARK_Kontenplan(mandant, parent, &params);
        case Bericht::SummenSaldenListe: return VARK_SummenSaldenListe(mandant, parent, &params);
        case Bericht::HauptAbschluss: return VARK_HauptAbschluss(mandant, parent, &params);
        case Bericht::Bilanz: return VARK_Bilanz(mandant, 0, parent, &params);
        case Bericht::Eroeffnungsbilanz: return VARK_Bilanz(mandant, 1, parent, &params);
        case Bericht::Guv: return VARK_GUV(mandant, parent, &params);
        case Bericht::Buchungsjournal: return VARK_Buchungsjournal(mandant, parent, &params);
        case Bericht::Kontenblatt: return VARK_Kontenblatt(mandant, 0, parent, &params);
        case Bericht::Kostenblatt: return VARK_Kontenblatt(mandant, 1, parent, &params);
        case Bericht::OpListe: return VARK_OPListe(mandant, parent, &params);
        case Bericht::UmsatzStatistik: return VARK_UmsatzStatistik(mandant, parent, &params);
        case Bericht::UmsatzSteuerVoranmeldung:
            return VARK_UmsatzSteuerVoranmeldung(mandant, parent, &params);
        case Bericht::UmsatzSteuerVerprobung: return VARK_UmsatzSteuerVerprobung(mandant, parent, &params);
        case Bericht::ZusammenfassendeMeldung: return VARK_ZusammenfassendeMeldung(mandant, parent, &params);
        case Bericht::KostenSaldenListe: return VARK_KostenSaldenListe(mandant, parent, &params);
        case Bericht::KostenstellenListe: return VARK_KostenstellenListe(mandant, parent, &params);
        case Bericht::Kostenjournal: return VARK_Kostenjournal(mandant, parent, &params);
        case Bericht::KostenAufteilung: return VARK_KostenAufteilung(mandant, parent, &params);
        }
        return nullptr;
    }

    std::int32_t mandant;
    std::int32_t shown;
    bool hears;
    bool isOpen = true;
    std::thread::id thread = std::this_thread::get_id();
};

} // namespace vark40

#endif
