#include "tools/vark/rates.h"

#include "src/model/company_records.h"
#include "src/values/amount_texts.h"
#include "src/values/currency.h"
#include "tools/common/calendar.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/key_value.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"
#include "tools/vark/rate_program.h"
#include "tools/vark/reasons.h"
#include "tools/vark/typed_text.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace cli {

using namespace tools;
using vark::KurseRecord;

namespace {

// Controls of the dialog, by their numbers in it.
constexpr const char *waehrungField = "30119";
constexpr const char *averageBox = "30126";
constexpr const char *dateField = "22994";
constexpr const char *kursField = "30125";
constexpr const char *unitsField = "30127";
constexpr const char *rateList = "30122";
constexpr const char *newButton = "1";
constexpr const char *deleteButton = "30121";

struct Rates {
    std::optional<Mandant> Of;
    std::filesystem::path Directory;

    explicit Rates(int mandant)
    {
        const std::filesystem::path data = ConfiguredDataPath();
        Of = FindMandant(data, mandant);
        if (Of) Directory = data / Of->Directory(Of->UpperYear);
    }

    template <typename Visit> void ForEach(Visit visit) const
    {
        TableFile kurse(LayoutOf(vark::TableKurse), Directory, OpenMode::ReadOnly);
        KurseRecord record{};
        for (bool found = kurse.First(&record, 0); found; found = kurse.Next(&record, 0)) {
            visit(record);
        }
    }
    int64_t Count() const
    {
        return TableFile(LayoutOf(vark::TableKurse), Directory, OpenMode::ReadOnly).Definition().Records;
    }
    std::string DayOf(const KurseRecord &record) const
    {
        Day day = 0;
        return DayOfSort(record.Datum, Of->FirstMonth, day) ? DisplayDay(day) : FieldText(record.Datum);
    }
};

int List(const Rates &rates, const RateOptions &options)
{
    RowWriter rows({{"Währung", "waehrung", 7},
                    {"Datum", "datum", 10},
                    {"Kurs", "kurs", 15, Align::Right},
                    {"für", "einheiten", 7, Align::Right},
                    {"Durchschnitt", "durchschnitt", 12}},
                   options.As);
    rates.ForEach([&](const KurseRecord &record) {
        const std::string waehrung = FieldText(record.Waehrung);
        if (!options.Waehrung.empty() && waehrung != options.Waehrung) return;
        rows.PutUtf8(waehrung);
        rows.PutUtf8(rates.DayOf(record));
        vark::AmountText kurs;
        std::memcpy(kurs, record.Kurs, sizeof kurs);
        vark::FormattedAmount shown;
        vark::FormatAmount(AmountFormOf(options.As), kurs, shown);
        rows.PutAmount(shown);
        rows.PutNumber(vark::UnitsOfCode(record.Einheit));
        rows.PutFlag(record.Durchschnitt != 0, "des Monats");
        rows.EndRow();
    });
    rows.End();
    return ExitGood;
}

void NeedPlainText(const std::string &value, const char *name)
{
    if (value.empty()) throw UsageError(std::string("Es fehlt die Angabe ") + name + ".");
    const auto isControl = [](char character) { return static_cast<unsigned char>(character) < 0x20; };
    if (std::any_of(value.begin(), value.end(), isControl) || Trimmed(value) != value) {
        throw UsageError(std::string("Unzulässiger Wert für ") + name + ".");
    }
}

// What a person does in the dialog to enter the rate.
std::string ScriptOfNew(const RateOptions &options)
{
    NeedPlainText(options.Waehrung, "--waehrung");
    NeedPlainText(options.Datum, "--datum");
    NeedPlainText(options.Kurs, "--kurs");
    NeedPlainText(options.Einheiten, "--einheiten");
    // The dialog cuts what is behind the last digit, which a person sees.
    if (options.Kurs.find_first_not_of("0123456789,.") != std::string::npos)
        throw UsageError("--kurs „" + options.Kurs + "“ ist keine Zahl.");
    if (Columns(options.Waehrung) > sizeof KurseRecord::Waehrung - 1)
        throw UsageError("Eine Währung hat bis zu 4 Zeichen.");
    const auto text = [](const char *id, const std::string &value) {
        return std::string("text ") + id + " " + value + "\n";
    };
    return "dialog 131\n" + text(waehrungField, options.Waehrung) + text(dateField, options.Datum) +
           text(kursField, options.Kurs) + text(unitsField, options.Einheiten) +
           (options.IsAverage ? std::string("check ") + averageBox + "\n" : "") + "press " + newButton + "\n";
}

// And to delete it. The list shows dates with two digits of the year.
std::string ScriptOfDelete(const RateOptions &options, const std::string &date)
{
    return std::string("dialog 131\ntext ") + waehrungField + " " + options.Waehrung + "\nselect " +
           rateList + " \"" + date.substr(0, 6) + date.substr(8) + "\"\npress " + deleteButton + "\n";
}

// The rate that is meant, as the books show its date; empty for none.
std::string FindDate(const Rates &rates, const RateOptions &options)
{
    NeedPlainText(options.Waehrung, "--waehrung");
    NeedPlainText(options.Datum, "--datum");
    const TableLayout &layout = LayoutOf(vark::TableKurse);
    const std::string key = options.Waehrung + "," + options.Datum;
    const KeyValue value = ParseKey(layout, layout.Keys.front(), key, rates.Of->FirstMonth);
    TableFile kurse(layout, rates.Directory, OpenMode::ReadOnly);
    KurseRecord record{};
    return kurse.Equal(&record, value.Bytes.data(), 0) ? rates.DayOf(record) : std::string();
}

// Plays the script. Whether it is done the books say: the library may have something to say to what is done,
// and the dialog's program may end behind it.
int Play(const RateOptions &options, const std::string &script, const char *done,
         const std::function<bool()> &isDone)
{
    ReasonCatcher catcher;
    int exitCode = ExitFailure;
    std::string fault = "Der Dialog ist nicht zustande gekommen.";
    try {
        exitCode = RunRateProgram(options.Mandant, script);
    } catch (const std::runtime_error &error) {
        fault = error.what();
    }
    const std::string reason = catcher.Take();
    if (!reason.empty() || exitCode != ExitGood) {
        if (!isDone()) {
            catcher.Pass("vark: " + (reason.empty() ? fault : reason) + "\n");
            return exitCode == ExitGood ? ExitRefused : exitCode;
        }
        catcher.Pass("vark: Die Bibliothek meldet dazu: " + (reason.empty() ? fault : reason) + "\n");
    }
    std::cout << "Kurs " << options.Waehrung << " vom " << options.Datum << ' ' << done << ".\n";
    return ExitGood;
}

} // namespace

int KeepRates(const RateOptions &typed)
{
    if (typed.Asks || typed.IsNew || typed.Deletes) {
        NeedRateProgram();
        AnswerByExitCode();
    }
    NeedLibrary();
    RateOptions options = typed;
    options.Waehrung = CurrencyOf(typed.Waehrung);
    const Rates rates(options.Mandant);
    if (!rates.Of) {
        std::cerr << "vark: Der Mandant existiert nicht!\n";
        return ExitRefused;
    }
    if (options.Asks) return RunRateProgram(options.Mandant, "");
    if (options.IsNew) {
        const std::string script = ScriptOfNew(options);
        const int64_t before = rates.Count();
        return Play(options, script, "erfaßt", [&] { return rates.Count() > before; });
    }
    if (!options.Deletes) return List(rates, options);
    const std::string date = FindDate(rates, options);
    if (date.empty()) {
        std::cerr << "vark: Einen Kurs " << options.Waehrung << " vom " << options.Datum
                  << " gibt es nicht.\n";
        return ExitRefused;
    }
    return Play(options, ScriptOfDelete(options, date), "gelöscht",
                [&] { return FindDate(rates, options).empty(); });
}

} // namespace cli
