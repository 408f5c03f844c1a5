#include "tools/vark/report_period.h"

#include "tools/common/exit_codes.h"
#include "tools/vark/reasons.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace cli {

using namespace tools;

namespace {

constexpr int firstBookYear = 1980; // the year that the books count from

// Controls of every dialog with a period.
constexpr int yearField = 20000;
constexpr int firstMonthButton = 20001;
constexpr int firstQuarterButton = 20013;
constexpr int yearButton = 20017;
constexpr int daysButton = 20018;
constexpr int fromField = 22990;
constexpr int toField = 22991;

bool TakeInteger(const char *&at, const char *end, int &number)
{
    const auto [rest, error] = std::from_chars(at, end, number);
    if (error != std::errc() || number < 0) return false;
    at = rest;
    return true;
}

// "31.3.98" or "31.03.1998".
CalendarDay ReadDate(const std::string &text, const std::string &option)
{
    const auto refuse = [&](const char *why) -> UsageError {
        return UsageError(option + ": „" + text + "“ " + why);
    };
    int parts[3] = {};
    const char *at = text.data();
    const char *const end = at + text.size();
    for (int i = 0; i < 3; ++i) {
        if (i > 0 && (at == end || *at++ != '.')) throw refuse("ist kein Datum der Form TT.MM.JJJJ.");
        if (!TakeInteger(at, end, parts[i])) throw refuse("ist kein Datum der Form TT.MM.JJJJ.");
    }
    if (at != end) throw refuse("ist kein Datum der Form TT.MM.JJJJ.");
    CalendarDay day = {parts[2], parts[1], parts[0]};
    if (day.Year < 100) day.Year += day.Year >= firstBookYear % 100 ? 1900 : 2000;
    if (day.Year < firstBookYear || day.Year >= firstBookYear + 100)
        throw refuse("liegt außerhalb der Bücher.");
    if (day.Month < 1 || day.Month > 12) throw refuse("nennt einen Monat, den es nicht gibt.");
    if (day.DayOfMonth < 1 || day.DayOfMonth > DaysInMonth(day.Year, day.Month))
        throw refuse("nennt einen Tag, den es nicht gibt.");
    return day;
}

int ReadNumber(const std::string &text, const std::string &option, int low, int high)
{
    int number = 0;
    const char *at = text.data();
    const char *const end = at + text.size();
    if (TakeInteger(at, end, number) && at == end && number >= low && number <= high) return number;
    throw UsageError(option + ": „" + text + "“ ist keine Zahl von " + std::to_string(low) + " bis " +
                     std::to_string(high) + ".");
}

Day DayOf(const CalendarDay &day) { return tools::DayOf(day.Year, day.Month, day.DayOfMonth); }

int FiscalYearOf(const CalendarDay &day, const Mandant &mandant)
{
    return FiscalOf(DayOf(day), mandant.FirstMonth).Year;
}

int YearNumber(const std::string &text)
{
    int year = 0;
    std::from_chars(text.data(), text.data() + text.size(), year);
    return year;
}

// The years that reports can be made of.
std::string YearsOf(const PeriodRules &rules)
{
    if (rules.ArchiveYear != 0) return std::to_string(rules.ArchiveYear);
    const Mandant &mandant = rules.Of;
    return mandant.LowerYear.empty() || mandant.LowerYear == mandant.UpperYear
               ? mandant.UpperYear
               : mandant.LowerYear + " und " + mandant.UpperYear;
}

bool HasYear(const PeriodRules &rules, int fiscalYear)
{
    if (rules.ArchiveYear != 0) return fiscalYear == rules.ArchiveYear;
    const int upper = YearNumber(rules.Of.UpperYear);
    const int lower = rules.Of.LowerYear.empty() ? upper : YearNumber(rules.Of.LowerYear);
    return fiscalYear >= lower && fiscalYear <= upper;
}

void NeedYear(const PeriodRules &rules, int fiscalYear, const std::string &option)
{
    if (HasYear(rules, fiscalYear)) return;
    const char *const which = rules.ArchiveYear != 0 ? "Archivjahres" : "bebuchbaren Geschäftsjahre";
    throw Refusal(option + ": Das Datum muß innerhalb " + (rules.ArchiveYear != 0 ? "des " : "der ") + which +
                  " liegen (" + YearsOf(rules) + ").");
}

struct PeriodWay {
    const std::string &Value;
    const char *Name;
    unsigned Form;
};

void ReadDays(const PeriodText &text, const PeriodRules &rules, ReportPeriod &period)
{
    const std::string prefix = rules.Prefix;
    if (!text.Per.empty()) {
        period.Option = prefix + "per";
        period.IsPer = true;
        period.To = ReadDate(text.Per, period.Option);
        const Day start = FiscalYearStart(FiscalYearOf(period.To, rules.Of), rules.Of.FirstMonth);
        period.From = CalendarOf(start);
    } else {
        if (text.VonDatum.empty() || text.BisDatum.empty())
            throw UsageError(prefix + "von-datum und " + prefix + "bis-datum gehören zusammen.");
        period.Option = prefix + "von-datum";
        period.From = ReadDate(text.VonDatum, period.Option);
        period.To = ReadDate(text.BisDatum, prefix + "bis-datum");
        if (DayOf(period.From) > DayOf(period.To))
            throw UsageError(prefix + "von-datum liegt hinter " + prefix + "bis-datum.");
    }
    NeedYear(rules, FiscalYearOf(period.From, rules.Of), period.Option);
    if (FiscalYearOf(period.From, rules.Of) != FiscalYearOf(period.To, rules.Of))
        throw Refusal(prefix + "von-datum und " + prefix +
                      "bis-datum müssen im gleichen Geschäftsjahr liegen.");
}

void ReadMonth(const PeriodText &text, const PeriodRules &rules, ReportPeriod &period)
{
    const int first = rules.Of.FirstMonth;
    period.Option = std::string(rules.Prefix) + "monat";
    period.Month = ReadNumber(text.Monat, period.Option, 1, 12);
    period.Code = (period.Month - first + 12) % 12 + 1;
    const int isLater = period.Month < first ? 1 : 0; // in the calendar year behind the one it begins in
    const int last = rules.ArchiveYear != 0 ? rules.ArchiveYear : YearNumber(rules.Of.UpperYear);
    period.Year = text.Jahr.empty()
                      ? last
                      : ReadNumber(text.Jahr, std::string(rules.Prefix) + "jahr", 0, 9999) - isLater;
    period.ShownYear = period.Year + isLater;
    NeedYear(rules, period.Year, period.Option);
}

// A quarter, or the whole year.
void ReadLong(const PeriodText &text, const PeriodRules &rules, ReportPeriod &period)
{
    const std::string yearOption = std::string(rules.Prefix) + "jahr";
    const int last = rules.ArchiveYear != 0 ? rules.ArchiveYear : YearNumber(rules.Of.UpperYear);
    period.Option = text.Quartal.empty() ? yearOption : std::string(rules.Prefix) + "quartal";
    const int quarter = text.Quartal.empty() ? 0 : ReadNumber(text.Quartal, period.Option, 1, 4);
    period.Code = quarter == 0 ? VARK_ZEITRAUM_JAHR : VARK_ZEITRAUM_QUARTAL_1 + quarter - 1;
    period.Year = text.Jahr.empty() ? last : ReadNumber(text.Jahr, yearOption, 0, 9999);
    period.ShownYear = period.Year;
    if ((rules.Forms & PeriodCalendar) == 0) {
        NeedYear(rules, period.Year, period.Option);
        return;
    }
    const int firstMonth = quarter == 0 ? 1 : 3 * quarter - 2;
    const int lastMonth = quarter == 0 ? 12 : 3 * quarter;
    const int begins = FiscalYearOf({period.Year, firstMonth, 1}, rules.Of);
    const int ends = FiscalYearOf({period.Year, lastMonth, 1}, rules.Of);
    if (!HasYear(rules, begins)) NeedYear(rules, ends, period.Option);
}

std::string SixDigits(const CalendarDay &day)
{
    char digits[8];
    std::snprintf(digits, sizeof digits, "%02u%02u%02u", static_cast<unsigned>(day.DayOfMonth) % 100,
                  static_cast<unsigned>(day.Month) % 100, static_cast<unsigned>(day.Year) % 100);
    return digits;
}

[[noreturn]] void RefuseBoth(const std::string &one, const std::string &other)
{
    throw UsageError("Diese Angaben passen nicht zusammen: " + one + " und " + other + ".");
}

} // namespace

ReportPeriod ReadPeriod(const PeriodText &text, const PeriodRules &rules)
{
    const std::string prefix = rules.Prefix;
    const PeriodWay ways[] = {
        {text.Monat, "monat", PeriodMonth},
        {text.Quartal, "quartal", PeriodQuarter},
        {text.VonDatum.empty() ? text.BisDatum : text.VonDatum, "von-datum", PeriodDays},
        {text.Per, "per", PeriodPer}};
    ReportPeriod period;
    const PeriodWay *chosen = nullptr;
    for (const PeriodWay &way : ways) {
        if (way.Value.empty()) continue;
        if (chosen != nullptr) RefuseBoth(prefix + chosen->Name, prefix + way.Name);
        chosen = &way;
    }
    const unsigned form = chosen != nullptr ? chosen->Form : PeriodYear;
    const bool hasDays = form == PeriodDays || form == PeriodPer;
    if (hasDays && !text.Jahr.empty()) RefuseBoth(prefix + chosen->Name, prefix + "jahr");
    if (chosen == nullptr && text.Jahr.empty()) return period;
    period.IsGiven = true;
    if (hasDays) {
        ReadDays(text, rules, period);
    } else if (form == PeriodMonth) {
        ReadMonth(text, rules, period);
    } else {
        ReadLong(text, rules, period);
    }
    return period;
}

void PutPeriod(const ReportPeriod &period, ReportParams &params)
{
    if (!period.IsGiven) return;
    params.ParamFlags |= VARK_PARAM_ZEITRAUM;
    params.Zeitraum = period.Code;
    if (period.Code != 0) {
        params.ParamFlags |= VARK_PARAM_JAHR;
        params.JahrIndex = period.Year - firstBookYear;
        return;
    }
    params.ParamFlags |= VARK_PARAM_DATEN;
    std::memcpy(params.VonDatum, SixDigits(period.From).c_str(), sizeof params.VonDatum);
    std::memcpy(params.BisDatum, SixDigits(period.To).c_str(), sizeof params.BisDatum);
}

bool IsPeriodKept(const ReportPeriod &period, unsigned forms, const ReportParams &params)
{
    if (!period.IsGiven) return true;
    if (params.Zeitraum != period.Code) return false;
    if (period.Code == 0) {
        const bool isFromKept = period.IsPer || SixDigits(period.From) == params.VonDatum;
        return isFromKept && SixDigits(period.To) == params.BisDatum;
    }
    // A calendar period comes back with the fiscal year of its first day.
    const bool isCalendar = (forms & PeriodCalendar) != 0 && period.Code >= VARK_ZEITRAUM_QUARTAL_1;
    return isCalendar || (params.ParamFlags & VARK_PARAM_JAHR) == 0 ||
           params.JahrIndex == period.Year - firstBookYear;
}

void PlayPeriod(const ReportPeriod &period, PlayedDialog &dialog)
{
    const auto check = [&](int control) { dialog.Add("check " + std::to_string(control), period.Option); };
    const auto type = [&](int control, const std::string &text) {
        dialog.Add("text " + std::to_string(control) + " " + text, period.Option);
    };
    if (period.Code == 0) {
        check(daysButton);
        type(fromField, DisplayDay(DayOf(period.From)));
        type(toField, DisplayDay(DayOf(period.To)));
        return;
    }
    check(period.Code == VARK_ZEITRAUM_JAHR ? yearButton
          : period.Code >= VARK_ZEITRAUM_QUARTAL_1
              ? firstQuarterButton + period.Code - VARK_ZEITRAUM_QUARTAL_1
              : firstMonthButton + period.Month - 1);
    type(yearField, std::to_string(period.ShownYear));
}

} // namespace cli
