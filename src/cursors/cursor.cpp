#include "src/cursors/cursor.h"

#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

using text::CopyText;

namespace {

// The tables that a cursor holds open, ended by the one that it reads. A posting cursor looks up the kinds of
// its accounts.
struct CursorTables {
    TableId Tables[4];
    int Count;
};

CursorTables TablesOf(int32_t kind)
{
    if (kind == TableBube) return {{TableBube, TableKred, TableDebi, TableSako}, 4};
    return {{static_cast<TableId>(kind)}, 1};
}

bool IsOpenItemTable(int table) { return table == TableOpkred || table == TableOpdebi; }

// Takes back an opening. The account tables and bube belong to the selection of the Mandant, and a change of
// Mandant or year forgets what others have counted on top: the last count of these is never ours.
void Release(ThreadContext &context, int table)
{
    if (IsOpenItemTable(table) || context.OpenCounts[table] > 1) CloseTable(context, table);
}

} // namespace

bool BeginCursor(ThreadContext &context, TableId table)
{
    EndCursor(context);
    const CursorTables held = TablesOf(table);
    for (int i = 0; i < held.Count; ++i) {
        if (OpenTable(context, held.Tables[i])) continue;
        while (i > 0) {
            Release(context, held.Tables[--i]);
        }
        return false;
    }
    context.CursorKind = table;
    context.CursorMandant = context.CurrentMandant;
    CopyText(context.CursorYear, context.WorkYear);
    context.SplitPartCounter = 0;
    return true;
}

bool ResumeCursor(ThreadContext &context)
{
    if (context.CurrentMandant != context.CursorMandant) {
        FistaRecord fista;
        if (SelectMandant(context, context.CursorMandant, fista) < 1) return false;
    }
    if (!SelectYear(context, context.CursorYear)) return false;
    return context.OpenCounts[context.CursorKind] != 0 ||
           OpenTable(context, static_cast<TableKeyCode>(context.CursorKind));
}

void EndCursor(ThreadContext &context)
{
    if (context.CursorKind < 0) return;
    const CursorTables held = TablesOf(context.CursorKind);
    for (int i = 0; i < held.Count; ++i) {
        Release(context, held.Tables[i]);
    }
    context.CursorKind = -1;
}

int32_t EndCursorWith(ThreadContext &context, int32_t code)
{
    EndCursor(context);
    return code;
}

bool IsFormOrReport(const ThreadContext &context, int32_t form)
{
    if (form >= 1 && form <= 3) return true;
    Report(context, Message::Unzulaessig, formRefused, "Das Ausgabeformat ist", -1);
    return false;
}

void GiveText(char *out, const char *field, size_t width)
{
    if (out == nullptr) return;
    size_t length = strnlen(field, width);
    if (length == width) --length;
    std::memcpy(out, field, length);
    out[length] = 0;
}

void GiveAccount(char *out, const AccountNumber &konto)
{
    AccountNumber number;
    CopyText(number, konto);
    TrimLeft(number, sizeof number);
    GiveText(out, number);
}

void GiveDate(char *out, const PackedDate &date, int firstFiscalMonth)
{
    DateText dotted;
    FormatDate(date, dotted, true, firstFiscalMonth);
    GiveText(out, dotted);
}

void GiveAmount(char *out, const AmountText &amount, int32_t form)
{
    AmountText copy;
    CopyText(copy, amount);
    FormattedAmount formatted;
    FormatAmount(form, copy, formatted);
    GiveText(out, formatted);
}

void GiveRate(char *out, const RateText &rate, int32_t form)
{
    RateText copy;
    CopyText(copy, rate);
    FormattedAmount formatted;
    FormatAmount(form, copy, formatted);
    GiveText(out, formatted);
}

void GiveNumber(uint32_t *out, int32_t value)
{
    if (out != nullptr) *out = static_cast<uint32_t>(value);
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_BeendeHolen(void)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    EndCursor(*context);
    return 1;
}
