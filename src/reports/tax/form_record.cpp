#include "src/reports/tax/form_record.h"

#include "src/reports/tax/kennzahlen.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <charconv>
#include <cstring>

namespace vark {

using namespace text;

namespace {

struct FormBox {
    int32_t Kennzahl;
    bool IsWhole; // its Pfennigs are dropped in the form with whole amounts
};

constexpr bool whole = true;
constexpr bool exact = false;

// In the order of the record. 72 and 79 stand there twice.
constexpr FormBox formBoxes[] = {
    {41, whole}, {42, whole}, {44, whole}, {49, whole}, {43, whole}, {48, whole}, {50, whole}, {86, whole},
    {35, whole}, {36, exact}, {77, whole}, {76, exact}, {80, exact}, {91, whole}, {92, whole}, {93, whole},
    {94, whole}, {65, exact}, {66, exact}, {61, exact}, {62, exact}, {63, exact}, {64, exact}, {59, exact},
    {58, exact}, {69, exact}, {39, exact}, {57, whole}, {71, whole}, {72, whole}, {72, whole}, {78, whole},
    {79, whole}, {79, whole}, {75, exact}, {45, exact}, {46, exact}, {87, exact}, {88, exact}, {37, exact},
    {38, exact}, {95, exact}, {70, exact}, {73, exact}, {74, exact},
};

static_assert(sizeof formBoxes / sizeof formBoxes[0] == formBoxCount);

constexpr uint8_t secondLayout = 10; // Vordruckcode

// A text that is put together in a field and stays empty if it does not fit.
template <size_t Size> struct FieldText {
    char (&Field)[Size];
    size_t Length = 0;
    bool Fits = true;

    void Add(const char *part)
    {
        const size_t length = std::strlen(part);
        Fits = Fits && Length + length < Size;
        if (!Fits) return;
        std::memcpy(Field + Length, part, length);
        Length += length;
    }
    void AddNumber(int number)
    {
        char digits[12] = {};
        std::to_chars(digits, digits + sizeof digits - 1, number);
        Add(digits);
    }
    void AddTwoDigits(int number)
    {
        const char digits[3] = {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10),
                                0};
        Add(digits);
    }
    void Finish() { std::memset(Field + (Fits ? Length : 0), 0, Size - (Fits ? Length : 0)); }
};

// The two digits that name the period on the form: the calendar's month, "41" to "44", "19" for the year.
int CodeOfPeriod(const ThreadContext &context, const PeriodSelection &period)
{
    const int first = context.FirstFiscalMonth;
    if (period.Code == periodWholeYear) return 19;
    if (period.Code >= periodFirstQuarter)
        return 41 + (period.Code - periodFirstQuarter + (first - 1) / 3) % 4;
    return (period.Code - 2 + first) % 12 + 1;
}

// The line that the tax office's machine reads. Its year is the fiscal one, wherever in it the period lies.
void FillKodierzeile(const ThreadContext &context, const FistaRecord &mandant, const PeriodSelection &period,
                     FormRecord &form)
{
    if (mandant.Vordruckcode == 0) return;
    const bool isSecond = mandant.Vordruckcode == secondLayout;
    char number[sizeof form.Steuernummer];
    CopyText(number, form.Steuernummer);
    for (char &character : number) {
        if (character == '/') character = ' ';
    }
    FieldText<sizeof form.Kodierzeile> line{form.Kodierzeile};
    line.Add("    ");
    line.Add(isSecond ? "  " : "11");
    line.Add(" ");
    line.Add(number);
    line.Add(" ");
    line.Add(isSecond ? "21" : "  ");
    line.Add("57");
    line.Add(isSecond ? "11" : "  ");
    line.Add(" ");
    line.AddTwoDigits((period.Jahr + firstYear) % 100);
    line.AddTwoDigits(CodeOfPeriod(context, period));
    line.Finish();
}

void FillZeitraum(const ThreadContext &context, const PeriodSelection &period, bool isExact, FormRecord &form)
{
    PeriodTitle title;
    BuildPeriodTitle(context, period, title, false, true);
    FieldText<sizeof form.Zeitraum> line{form.Zeitraum};
    if (period.Code == periodWholeYear) {
        line.AddNumber(form.Jahr);
    } else if (!isExact) {
        line.Add(title);
    } else if (period.Code < periodFirstQuarter) {
        line.Add("für den Kalendermonat "_w);
        line.Add(title);
    } else {
        line.Add("für das "_w);
        line.AddNumber(period.Code - periodFirstQuarter + 1);
        line.Add(". Kalendervierteljahr ");
        line.AddNumber(form.Jahr);
    }
    line.Finish();
}

} // namespace

int FormYear(const ThreadContext &context, const PeriodSelection &period)
{
    return CalendarYearOf(period.VonPeriode, period.Jahr, context.FirstFiscalMonth);
}

bool FillForm(const ThreadContext &context, const FistaRecord &mandant, const PeriodSelection &period,
              const Kennzahlliste &list, bool isBerichtigt, FormRecord &form)
{
    const bool isExact = HasExactForm(mandant);
    form = {};
    CopyText(form.Name, mandant.Name);
    CopyText(form.Name2, mandant.Name2);
    CopyText(form.Anschrift1, mandant.Anschrift1);
    CopyText(form.Anschrift2, mandant.Anschrift2);
    CopyText(form.Anschrift3, mandant.Anschrift3);
    CopyText(form.Anschrift4, mandant.Anschrift4);
    CopyText(form.Anschrift5, mandant.Anschrift5);
    CopyText(form.Anschrift6, mandant.Anschrift6);
    CopyText(form.Steuernummer, mandant.Steuernummer);
    form.Periode = period.Code;
    form.Jahr = FormYear(context, period);
    form.IsBerichtigt = isBerichtigt && !isExact ? 1 : 0;
    if (isExact) {
        CopyText(form.Kodierzeile, mandant.Steuernummer);
    } else {
        FillKodierzeile(context, mandant, period, form);
    }
    FillZeitraum(context, period, isExact, form);
    for (int i = 0; i < formBoxCount; ++i) {
        AmountText &box = form.Kennzahlen[i];
        if (!SumOfKennzahl(list, formBoxes[i].Kennzahl, box)) return false;
        if (formBoxes[i].IsWhole && !isExact) box[amountMark + 1] = box[amountMark + 2] = '0';
    }
    return true;
}

} // namespace vark
