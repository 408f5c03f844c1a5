#include "src/walks/account_walk.h"

#include "src/frame/record_store.h"
#include "src/values/account_numbers.h"

namespace vark {

namespace {

bool Take(AccountScan &scan, bool isRead)
{
    scan.Found = isRead && scan.Found && !IsBehindLimit(scan.Record.Head.Konto, scan.Bis);
    return isRead;
}

} // namespace

bool BeginAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind,
                   const AccountNumber &von, const AccountNumber &bis)
{
    return BeginAccounts(scan, context, kind, von, bis, kind.Table);
}

bool BeginAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind,
                   const AccountNumber &von, const AccountNumber &bis, TableId slot)
{
    scan.Kind = &kind;
    scan.Found = false;
    scan.Context = &context;
    scan.Slot = slot;
    text::CopyText(scan.Bis, bis);
    return Take(scan, GetGreaterEqualF(context, &scan.Record, KeyOfText(von, sizeof von), scan.Found, slot));
}

bool BeginAllAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind)
{
    return BeginAccounts(scan, context, kind, AccountNumber{}, AccountNumber{});
}

bool NextAccount(AccountScan &scan)
{
    return Take(scan, GetNextF(*scan.Context, &scan.Record, scan.Found, scan.Slot));
}

bool ReadAccount(ThreadContext &context, TableId slot, const AccountNumber &number, AnyAccount &record,
                 bool &found)
{
    return GetEqual(context, &record, KeyOfText(number, sizeof number), found, slot);
}

void CopyAccountName(char *out, size_t size, const AccountKind &kind, const AnyAccount &record)
{
    text::CopyText(out, size, record.Bytes + kind.NameOffset, kind.NameWidth - 1);
}

void CopyNumberAndKuerzel(AccountNumber &number, char (&kuerzel)[9], const AnyAccount &record)
{
    StripNumber(number, record.Head.Konto);
    text::CopyText(kuerzel, record.Head.Kuerzel);
}

} // namespace vark
