// Bilanz and Eröffnungsbilanz: the accounts of the Bilanz with their balance at a day, or with what was
// carried forward, in the order of the trees of the Aktiva and the Passiva.
#include "src/booking/balances.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/reports/financial/group_lines.h"
#include "src/values/amounts.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace vark {

using namespace text;

namespace {

#pragma pack(push, 1)

struct BilanzHeader {
    char Mandant[41];
    char Titel[50];
    char Vergleichstitel[50];
    int32_t Eroeffnung; // as the caller gave it
    uint32_t Vergleich;
    uint32_t ErsteEbeneUnter;
    uint32_t Kontenstruktur;
    int32_t Ebene;
    uint32_t MitKonten;
};

struct BilanzAccount {
    AccountNumber Konto; // in the form of the key
    char Kuerzel[9];
    char Name[41];
    AmountText Betrag;
    AmountText Vergleichsbetrag;
};

#pragma pack(pop)

static_assert(offsetof(BilanzHeader, Titel) == 41);
static_assert(offsetof(BilanzHeader, Vergleichstitel) == 91);
static_assert(offsetof(BilanzHeader, Eroeffnung) == 141);
static_assert(offsetof(BilanzHeader, Vergleich) == 145);
static_assert(offsetof(BilanzHeader, ErsteEbeneUnter) == 149);
static_assert(offsetof(BilanzHeader, Kontenstruktur) == 153);
static_assert(offsetof(BilanzHeader, Ebene) == 157);
static_assert(offsetof(BilanzHeader, MitKonten) == 161);
static_assert(sizeof(BilanzHeader) == 165);
static_assert(offsetof(BilanzAccount, Kuerzel) == 8);
static_assert(offsetof(BilanzAccount, Name) == 17);
static_assert(offsetof(BilanzAccount, Betrag) == 58);
static_assert(offsetof(BilanzAccount, Vergleichsbetrag) == 71);
static_assert(sizeof(BilanzAccount) == 84);

constexpr int kindSide = 8;
constexpr int lastLeafKind = 7;

// The accounts of the Bilanz in the order of their numbers.
struct AccountList {
    BilanzAccount *Accounts = nullptr;
    int Count = 0;
    int Capacity = 0;

    AccountList() = default;
    AccountList(const AccountList &) = delete;
    AccountList &operator=(const AccountList &) = delete;
    ~AccountList() { std::free(Accounts); }
};

struct Bilanz {
    const ReportRun *Run;
    ThreadContext *Context;
    bool IsEroeffnung;
    StructureChoice Chosen;
    Comparison Compared;
    AccountList Accounts;
};

struct Side {
    TableId Own;
    TableId Other;
    uint32_t IsAktiva;
};

constexpr Side aktiva = {TableBilaktau, TableBilpasau, 1};
constexpr Side passiva = {TableBilpasau, TableBilaktau, 0};

int32_t EroeffnungOf(const ReportRun &run) { return *static_cast<const int32_t *>(run.State); }

bool SendHeader(const Bilanz &bilanz)
{
    const ReportRun &run = *bilanz.Run;
    BilanzHeader header{};
    CopyText(header.Mandant, run.Mandant.Name);
    FillTitles(run, bilanz.Compared, header.Titel, header.Vergleichstitel);
    header.Eroeffnung = EroeffnungOf(run);
    header.Vergleich = bilanz.Compared.Period != nullptr ? 1 : 0;
    header.ErsteEbeneUnter = bilanz.Chosen.ErsteEbeneUnter;
    header.Kontenstruktur = bilanz.Chosen.Kontenstruktur;
    header.Ebene = bilanz.Chosen.Ebene;
    header.MitKonten = bilanz.Chosen.MitKonten;
    return AddReportRecord(run.Report, 0, &header);
}

// ---- The list of accounts ----

// Room for one more. False for lack of memory.
bool Reserve(AccountList &list)
{
    if (list.Count < list.Capacity) return true;
    const int capacity = std::max(2 * list.Capacity, 256);
    void *const grown = std::realloc(list.Accounts, static_cast<size_t>(capacity) * sizeof(BilanzAccount));
    if (grown == nullptr) return false;
    list.Accounts = static_cast<BilanzAccount *>(grown);
    list.Capacity = capacity;
    return true;
}

// The balance of an account on the side that `zuordnung` gives it. False on overflow.
bool TakeBalance(AmountText &balance, int16_t zuordnung, const SollHaben &sums)
{
    const bool isAktiv = zuordnung == ZuordnungAktiva;
    CopyText(balance, isAktiv ? sums.Soll : sums.Haben);
    return DeductAmount(balance, isAktiv ? sums.Haben : sums.Soll);
}

bool BalanceToDate(const Bilanz &bilanz, const SakoRecord &record, int16_t zuordnung,
                   const PeriodSelection &period, TableId bube, AmountText &balance)
{
    SollHaben sums;
    return AccountSumsToDate(*bilanz.Context, record.Konto, record.Umsaetze, period.BisDatum,
                             SumEarlierMonths | SumVortrag, bube, sums) &&
           TakeBalance(balance, zuordnung, sums);
}

// What the account had in the period that is compared with; zero where that year has no such account.
bool CompareBalance(const Bilanz &bilanz, const SakoRecord &record, AmountText &balance)
{
    const Comparison &compared = bilanz.Compared;
    CopyText(balance, zeroAmount);
    if (compared.Period == nullptr) return true;
    AnyAccount then;
    bool found = false;
    if (!ReadAccount(*bilanz.Context, compared.Tables.Sako, record.Konto, then, found)) return false;
    return !found || BalanceToDate(bilanz, then.Sako, record.Zuordnung, *compared.Period,
                                   compared.Tables.Bube, balance);
}

bool AddAccount(Bilanz &bilanz, const AccountScan &scan)
{
    AccountList &list = bilanz.Accounts;
    if (!Reserve(list)) return false;
    const SakoRecord &record = scan.Record.Sako;
    BilanzAccount &account = list.Accounts[list.Count++];
    CopyText(account.Konto, record.Konto);
    CopyText(account.Kuerzel, record.Kuerzel);
    CopyText(account.Name, record.Name);
    const bool isGood = bilanz.IsEroeffnung
                            ? TakeBalance(account.Betrag, record.Zuordnung, record.Umsaetze.Vortrag)
                            : BalanceToDate(bilanz, record, record.Zuordnung, bilanz.Run->Choice.Period,
                                            TableBube, account.Betrag);
    return isGood && CompareBalance(bilanz, record, account.Vergleichsbetrag);
}

bool CollectAccounts(Bilanz &bilanz)
{
    AccountScan scan;
    bool isGood = BeginAllAccounts(scan, *bilanz.Context, KindOfTable(TableSako));
    while (isGood && scan.Found) {
        const int16_t zuordnung = scan.Record.Sako.Zuordnung;
        if (zuordnung == ZuordnungAktiva || zuordnung == ZuordnungPassiva) isGood = AddAccount(bilanz, scan);
        isGood = isGood && NextAccount(scan);
    }
    return isGood;
}

// The last account with this number or a lower one; null when all are higher.
BilanzAccount *FindAccount(const AccountList &list, const AccountNumber &number)
{
    BilanzAccount *const end = list.Accounts + list.Count;
    BilanzAccount *const behind =
        std::upper_bound(list.Accounts, end, number, [](const AccountNumber &a, const BilanzAccount &b) {
            return std::memcmp(a, b.Konto, accountDigits) < 0;
        });
    return behind != list.Accounts ? behind - 1 : nullptr;
}

// ---- The trees ----

// Whether a table holds the account as a Gegenposten. A plain leaf or a title may read the same: those are
// passed over.
bool FindGegenposten(const Bilanz &bilanz, TableId table, const AccountNumber &number, bool &found)
{
    const TableKeyCode code = KeyCode(table, 1);
    StructureRecord node;
    bool isRead = GetEqual(*bilanz.Context, &node, KeyOfText(number, sizeof number), found, code);
    while (isRead && found && std::memcmp(node.Text, number, sizeof number) == 0) {
        if ((node.Art & (StructureGruppe | StructureGegenposten)) == StructureGegenposten) return true;
        isRead = GetNextF(*bilanz.Context, &node, found, code);
    }
    found = false;
    return isRead;
}

// Turns a negative account over for the side on which its Gegenposten stands, and sends it. What it has to
// compare with stays turned over: an account is printed on one side only.
bool SendGegenposten(const Bilanz &bilanz, BilanzAccount &account, int kind)
{
    AmountText kept;
    CopyText(kept, account.Betrag);
    SubtractAmounts(account.Betrag, zeroAmount, kept);
    if (bilanz.Compared.Period != nullptr) {
        SubtractAmounts(account.Vergleichsbetrag, zeroAmount, account.Vergleichsbetrag);
    }
    const bool isSent = AddReportRecord(bilanz.Run->Report, kind, &account);
    CopyText(account.Betrag, kept);
    return isSent;
}

// A leaf takes the next lower account where its own is none of the Bilanz; an account outside the tree is
// passed over then.
bool SendLeaf(const Bilanz &bilanz, const Side &side, const TreeScan &scan)
{
    const bool isUngrouped = scan.Place == TreePlace::Ungrouped;
    BilanzAccount *const account = FindAccount(bilanz.Accounts, scan.Konto);
    if (account == nullptr) return isUngrouped;
    if (isUngrouped && std::memcmp(account->Konto, scan.Konto, accountDigits) != 0) return true;
    const bool isEmpty = IsZeroAmount(account->Betrag) &&
                         (bilanz.Compared.Period == nullptr || IsZeroAmount(account->Vergleichsbetrag));
    if (bilanz.Chosen.NurBebuchte != 0 && isEmpty) return true;

    const int kind = KindOfLeaf(scan.Depth, lastLeafKind);
    const bool isNegative = IsNegativeAmount(account->Betrag);
    if ((scan.Node.Art & StructureGegenposten) != 0) {
        return !isNegative || SendGegenposten(bilanz, *account, kind);
    }
    bool standsOpposite = false;
    if (isNegative && !FindGegenposten(bilanz, side.Other, scan.Konto, standsOpposite)) return false;
    return standsOpposite || AddReportRecord(bilanz.Run->Report, kind, account);
}

bool SendSide(const Bilanz &bilanz, const Side &side)
{
    if (!AddReportRecord(bilanz.Run->Report, kindSide, &side.IsAktiva)) return false;
    TreeScan scan(*bilanz.Context);
    bool isGood = BeginTree(scan, side.Own);
    while (isGood && scan.Found) {
        isGood = scan.Place == TreePlace::Group ? SendGroup(*bilanz.Run, scan) : SendLeaf(bilanz, side, scan);
        isGood = isGood && NextNode(scan);
    }
    return isGood;
}

bool SendRecords(ReportRun &run)
{
    ThreadContext &context = *run.Context;
    if (!SelectYear(context, run.Choice.Period.JahrText)) return false;
    Bilanz bilanz{};
    bilanz.Run = &run;
    bilanz.Context = &context;
    bilanz.IsEroeffnung = EroeffnungOf(run) != 0;
    bilanz.Chosen = StructureChoiceOf(run);
    HeldTables held(context);
    return Hold(held, TableSako) && Hold(held, aktiva.Own) && Hold(held, passiva.Own) &&
           HoldComparison(held, run, bilanz.Compared) && SendHeader(bilanz) && CollectAccounts(bilanz) &&
           SendSide(bilanz, aktiva) && SendSide(bilanz, passiva);
}

ReportRow RowOf(const ReportRun &) { return ReportBilanz; }

constexpr ReportKind bilanzKind = {
    .Dialog = {.Id = 127,
               .Title = "Bilanz",
               .HelpContext = 3044,
               .Pages = PeriodPages::Bilanz,
               .Options = structureOptions},
    .RowOf = RowOf,
    .Before = StartStructureOptions,
    .Send = SendRecords,
};

constexpr ReportKind eroeffnungKind = {
    .Dialog = {.Id = 130,
               .Title = "Eröffnungsbilanz"_w,
               .HelpContext = 3044,
               .PeriodOptions = PeriodYear,
               .Options = structureOptions},
    .RowOf = RowOf,
    .Before = StartStructureOptions,
    .Send = SendRecords,
};

} // namespace

} // namespace vark

VarkWindow VARK_CALL VARK_Bilanz(int32_t mandant, int32_t eroeffnung, VarkWindow parent, ReportParams *params)
{
    const vark::ReportKind &kind = eroeffnung != 0 ? vark::eroeffnungKind : vark::bilanzKind;
    return vark::RunReport(kind, mandant, parent, params, &eroeffnung);
}
