// The accounts of one kind in the order of their numbers.
//
//     AccountScan scan;
//     bool isGood = BeginAccounts(scan, context, kind, von, bis);
//     while (isGood && scan.Found) {
//         isGood = Send(scan) && NextAccount(scan);
//     }
//
// Whatever calls come between two accounts may read other records and other tables, but no record of this
// slot except by the scan.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/accounts.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

struct AccountScan {
    AnyAccount Record;       // the account that the scan stands at, while Found
    const AccountKind *Kind; // of all of them
    bool Found;              // false: the range has ended

    ThreadContext *Context;
    TableId Slot;
    AccountNumber Bis;
};

// Goes to the first account of a kind at or behind `von` and not behind `bis`, numbers in the form of the
// key (right-justified); an empty one is no limit. `slot` is the free slot under which the table of another
// year is open, the kind's own table by default. False when the record store failed, which has been shown.
bool BeginAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind,
                   const AccountNumber &von, const AccountNumber &bis);
bool BeginAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind,
                   const AccountNumber &von, const AccountNumber &bis, TableId slot);

// The same for all accounts of a kind.
bool BeginAllAccounts(AccountScan &scan, ThreadContext &context, const AccountKind &kind);

// Goes to the next one. False when the record store failed.
bool NextAccount(AccountScan &scan);

// Reads one account by its number (right-justified) from a table of accounts or a free slot. False when the
// record store failed; `found` tells whether there is one.
bool ReadAccount(ThreadContext &context, TableId slot, const AccountNumber &number, AnyAccount &record,
                 bool &found);

// The name of an account, cut to the width of `out`; of a personal account its first line.
void CopyAccountName(char *out, size_t size, const AccountKind &kind, const AnyAccount &record);

// The number of an account without blanks, and its Kürzel cut to 8 characters.
void CopyNumberAndKuerzel(AccountNumber &number, char (&kuerzel)[9], const AnyAccount &record);

// What every report's line on an account begins with: number without blanks, Kürzel cut to 8 characters, and
// the name cut to its field, all with NUL to the end of their fields.
template <size_t NameWidth>
void FillAccount(AccountNumber &number, char (&kuerzel)[9], char (&name)[NameWidth], const AccountKind &kind,
                 const AnyAccount &record)
{
    CopyNumberAndKuerzel(number, kuerzel, record);
    CopyAccountName(name, NameWidth, kind, record);
}

} // namespace vark
