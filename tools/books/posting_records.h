// Final postings on their way into bube, with what they add to accounts and cost centres.
#pragma once

#include "tools/books/generator.h"

namespace books {

// The tax of a posting on `account` today, as its key says.
Tax TaxOf(Generator &maker, const Account &account, bool onHaben);

// One of the accounts; with `like` given, one with the same tax key, so that an invoice has one rate.
Account *Pick(Generator &maker, const std::vector<Account *> &accounts, const Account *like);

// A net amount in Pfennig, smaller ones more often.
int64_t Amount(Generator &maker, int64_t lowDm, int64_t highDm);

// Writes a line into the books, and what it makes of the sums of its accounts and of the day.
void Book(Generator &maker, Line line);
void BookPlain(Generator &maker, int soll, int haben, int64_t amount, const char *prefix, int64_t voucher,
               const char *text, uint16_t status = 0);
// Gross on Soll, net and turnover tax on Haben.
void BookTaxed(Generator &maker, int soll, int haben, int64_t net, const char *prefix, const char *text,
               uint8_t taxClass = 0);
// Net and input tax on Soll, gross on Haben.
void BookExpense(Generator &maker, Account &expense, Account &payer, int64_t net, const char *prefix,
                 int64_t voucher, const char *text);

} // namespace books
