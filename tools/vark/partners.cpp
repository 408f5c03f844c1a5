#include "tools/vark/partners.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/vark/accounts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/reasons.h"
#include "tools/vark/typed_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>

namespace cli {

using namespace tools;

namespace {

constexpr CsvColumn<PartnerText> partnerColumns[] = {
    {"Konto", &PartnerText::Konto, false},
    {"Kürzel", &PartnerText::Kuerzel, false},
    {"Name", &PartnerText::Name, false},
    {"Name 2", &PartnerText::Name2, false},
    {"USt-IdNr", &PartnerText::UstId, false},
    {"Land", &PartnerText::Land, false},
    {"Währung", &PartnerText::Waehrung, false},
    {"PLZ", &PartnerText::Plz, false},
    {"Ort", &PartnerText::Ort, false},
    {"Straße", &PartnerText::Strasse, false},
    {"BLZ", &PartnerText::Blz, false},
    {"Bankkonto", &PartnerText::Bankkonto, false},
    {"Bank", &PartnerText::Bank, false},
    {"Gegenkonto", &PartnerText::Gegenkonto, false},
    {"Wert 1", &PartnerText::Wert1, false},
    {"Wert 2", &PartnerText::Wert2, false},
    {"Skonto", &PartnerText::Skonto, false},
    {"Mahnkennziffer", &PartnerText::Mahnkennziffer, false},
    {"Zahlungsziel", &PartnerText::Zahlungsziel, false},
};

const TaskWords words[] = {
    {"Konto", "Konten", "angelegt", "Nicht angelegt", "angelegt", "Anlegen"},
    {"Konto", "Konten", "geändert", "Nicht geändert", "geaendert", "Ändern"},
    {"Konto", "Konten", "gelöscht", "Nicht gelöscht", "geloescht", "Löschen"},
};

const TaskWords &WordsOf(PartnerAction action) { return words[static_cast<int>(action) - 1]; }

// One text of a record: what there was, what it becomes, and the width that the library keeps.
struct TextField {
    std::string PartnerText::*From;
    const char *Was;
    size_t Max;
    const char *TooLong; // where a cut text would mean something else: what is said then
};

struct NumberField {
    std::string PartnerText::*From;
    const char *Name;
    uint32_t Was;
};

constexpr const char *empties = "-";

// The fields in the order of the export's arguments.
enum TextIndex {
    Konto,
    Kuerzel,
    Name,
    Name2,
    UstId,
    Land,
    Waehrung,
    Plz,
    Ort,
    Strasse,
    Blz,
    Bankkonto,
    Bank,
    Gegenkonto,
    Skonto,
    TextCount
};
enum NumberIndex { Wert1, Wert2, Mahnkennziffer, Zahlungsziel, NumberCount };

struct PreparedPartner {
    std::string Texts[TextCount]; // Windows-1252
    int Numbers[NumberCount] = {};
    bool IsCut = false;
};

// Brings what a person has written over what there was. The first fault that the library cannot see; German.
std::string Prepare(const PartnerText &text, const Account &was, PreparedPartner &out)
{
    const TextField texts[TextCount] = {
        {&PartnerText::Konto, was.Konto, 7, "Die Kontonummer ist zu lang."},
        {&PartnerText::Kuerzel, was.Kuerzel, 8, "Das Kürzel ist zu lang."},
        {&PartnerText::Name, was.Name, 25, nullptr},
        {&PartnerText::Name2, was.Name2, 25, nullptr},
        {&PartnerText::UstId, was.UstId, 15, "Die USt-IdNr ist zu lang."},
        {&PartnerText::Land, was.Land, 3, "Das Land ist zu lang."},
        {&PartnerText::Waehrung, was.Waehrung, 4, "Die Währung ist zu lang."},
        {&PartnerText::Plz, was.Plz, 6, "Die PLZ ist zu lang."},
        {&PartnerText::Ort, was.Ort, 30, nullptr},
        {&PartnerText::Strasse, was.Strasse, 30, nullptr},
        {&PartnerText::Blz, was.Blz, 8, "Die BLZ ist zu lang."},
        {&PartnerText::Bankkonto, was.Bankkonto, 11, "Die Bankkontonummer ist zu lang."},
        {&PartnerText::Bank, was.Bank, 27, nullptr},
        {&PartnerText::Gegenkonto, was.Gegenkonto, 7, "Das Gegenkonto ist zu lang."},
        {&PartnerText::Skonto, was.Skonto, 5, "Der Skontosatz ist zu lang."},
    };
    const NumberField numbers[NumberCount] = {
        {&PartnerText::Wert1, "Wert 1", was.Wert1},
        {&PartnerText::Wert2, "Wert 2", was.Wert2},
        {&PartnerText::Mahnkennziffer, "Mahnkennziffer", was.Mahnkennziffer},
        {&PartnerText::Zahlungsziel, "Zahlungsziel", was.Zahlungsziel},
    };
    for (int i = 0; i < TextCount; ++i) {
        const TextField &field = texts[i];
        const std::string &written = text.*field.From;
        std::string &value = out.Texts[i];
        const bool isCurrency = field.From == &PartnerText::Waehrung;
        value = written.empty()      ? field.Was
                : written == empties ? ""
                                     : FromUtf8(isCurrency ? CurrencyOf(written) : written);
        if (std::string fault = FaultOfText(written); !fault.empty()) return fault;
        if (value.size() <= field.Max) continue;
        if (field.TooLong != nullptr) return field.TooLong;
        out.IsCut = true;
    }
    for (int i = 0; i < NumberCount; ++i) {
        const NumberField &field = numbers[i];
        const std::string &written = text.*field.From;
        out.Numbers[i] = static_cast<int>(field.Was);
        if (written.empty()) continue;
        out.Numbers[i] = 0;
        const char *const end = written.data() + written.size();
        const auto read = std::from_chars(written.data(), end, out.Numbers[i]);
        if (written != empties && (read.ec != std::errc() || read.ptr != end)) {
            return std::string(field.Name) + " „" + written + "“ ist keine Zahl.";
        }
    }
    return {};
}

// A number that cannot be typed or sorted: "-", blanks, signs alone.
bool IsAccountNumber(const std::string &konto)
{
    const std::string_view number = Trimmed(konto);
    return std::any_of(number.begin(), number.end(),
                       [](unsigned char c) { return c >= 0x80 || std::isalnum(c) != 0; });
}

Outcome Keep(const PartnerOptions &options, int art, const PartnerText &text)
{
    Outcome outcome;
    ReasonCatcher catcher;
    // A change writes every field: what is not given is taken from the books.
    Account was{};
    if (options.Action == PartnerAction::Change) {
        const std::string &who = text.Konto.empty() ? text.Kuerzel : text.Konto;
        const auto found = FindAccount(options.Mandant, art, who);
        if (found) was = *found;
        catcher.Take(); // the change itself says what is wrong
        // What the person names must fit; what he does not name is not to be compared.
        if (text.Kuerzel.empty()) was.Kuerzel[0] = 0;
    }
    PreparedPartner partner;
    outcome.Reason = Prepare(text, was, partner);
    if (!outcome.Reason.empty()) return outcome;
    outcome.IsCut = partner.IsCut;
    if (!text.Konto.empty() && !IsAccountNumber(partner.Texts[Konto])) {
        outcome.Reason = "Eine Kontonummer braucht wenigstens eine Ziffer oder einen Buchstaben.";
        return outcome;
    }

    std::string(&t)[TextCount] = partner.Texts;
    const int(&n)[NumberCount] = partner.Numbers;
    outcome.Code = VARK_GUT;
    if (options.Action == PartnerAction::New && t[Konto].empty()) {
        char number[8] = {};
        outcome.Code = VARK_HoleFreieKontonr(options.Mandant, art, number);
        t[Konto] = number;
    }
    if (outcome.Code == VARK_GUT) {
        outcome.Code = VARK_PekoDirekt(
            static_cast<int>(options.Action), art, 1, options.Mandant, t[Konto].c_str(), t[Kuerzel].c_str(),
            t[Name].c_str(), t[Name2].c_str(), t[UstId].c_str(), t[Land].c_str(), t[Waehrung].c_str(),
            t[Plz].c_str(), t[Ort].c_str(), t[Strasse].c_str(), t[Blz].c_str(), t[Bankkonto].c_str(),
            t[Bank].c_str(), t[Gegenkonto].c_str(), n[Wert1], n[Wert2], t[Skonto].c_str(), n[Mahnkennziffer],
            n[Zahlungsziel]);
    }
    if (outcome.Code != VARK_GUT) {
        outcome.Reason = catcher.Take();
        if (outcome.Reason.empty()) outcome.Reason = TextOfCode(outcome.Code);
        return outcome;
    }
    outcome.Remark = catcher.Take();
    const std::string &name = t[Konto].empty() ? t[Kuerzel] : t[Konto];
    outcome.Result = std::string(KindName(art)) + " " + ToUtf8(name);
    return outcome;
}

void NeedOptions(const PartnerOptions &options)
{
    const PartnerText &text = options.Defaults;
    if (options.Action != PartnerAction::New) {
        if (text.Konto.empty() && text.Kuerzel.empty())
            throw UsageError("Es fehlt die Angabe --konto oder --kuerzel.");
        return;
    }
    if (text.Kuerzel.empty()) throw UsageError("Es fehlt die Angabe --kuerzel.");
    if (text.Name.empty()) throw UsageError("Es fehlt die Angabe --name.");
}

} // namespace

int KeepPartners(const PartnerOptions &options)
{
    const int art = KontoartOf(options.Kind);
    if (art != ArtDebitor && art != ArtKreditor) {
        throw UsageError("--art ist Debitor oder Kreditor: Andere Konten legt VARK40 nicht an.");
    }
    if (options.Task.File.empty()) NeedOptions(options);
    AnswerByExitCode();
    NeedLibrary();
    const TaskWords &taskWords = WordsOf(options.Action);
    if (!options.Task.File.empty()) {
        return RunCsv<PartnerText>(
            {options.Task,
             taskWords,
             partnerColumns,
             options.Defaults,
             {},
             [&](const std::vector<PartnerText> &lines) { return Keep(options, art, lines.front()); }});
    }
    TaskReport report(options.Task, taskWords);
    report.Add(Keep(options, art, options.Defaults), {});
    return report.End(0);
}

} // namespace cli
