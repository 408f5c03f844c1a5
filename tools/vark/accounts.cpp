#include "tools/vark/accounts.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/texts.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/reasons.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace cli {

using namespace tools;

namespace {

int WalkSachkonten(const std::function<bool(const Account &)> &visit)
{
    // The last record comes with -3; a failure comes with it too, but without a record.
    for (int result = VARK_GUT; result == VARK_GUT;) {
        Account account{};
        account.Art = ArtSachkonto;
        result = VARK_HoleSako(account.Konto, account.Kuerzel, account.Name, &account.Zuordnung,
                               &account.FesterSatz, &account.MitKosten);
        if (account.Konto[0] == 0) return result;
        if (!visit(account)) break;
    }
    return 1;
}

int WalkPartners(int art, const std::function<bool(const Account &)> &visit)
{
    for (int result = VARK_GUT; result == VARK_GUT;) {
        Account account{};
        account.Art = art;
        result = VARK_HolePeko(account.Konto, account.Kuerzel, account.Name, account.Name2, account.UstId,
                               account.Land, account.Waehrung, account.Plz, account.Ort, account.Strasse,
                               account.Blz, account.Bankkonto, account.Bank, account.Gegenkonto,
                               &account.Wert1, &account.Wert2, VARK_FORM_EINFACH, account.Skonto,
                               &account.Mahnkennziffer, &account.Zahlungsziel);
        if (result < 1) return result;
        if (!visit(account)) break;
    }
    return 1;
}

int WalkKostenstellen(int mandant, const std::string &from, const std::function<bool(const Account &)> &visit)
{
    const std::filesystem::path data = ConfiguredDataPath();
    const auto found = FindMandant(data, mandant);
    if (!found) return VARK_FEHLER_MANDANT;
    TableFile kore(LayoutOf(vark::TableKore), data / found->Directory(found->UpperYear), OpenMode::ReadOnly);
    vark::KoreRecord record{};
    char key[sizeof record.Nummer] = {};
    const std::string padded = Right(from, kontoDigits);
    std::memcpy(key, padded.c_str(), std::min(padded.size(), kontoDigits));
    int result = 0;
    for (bool more = kore.GreaterEqual(&record, key, 0); more; more = kore.Next(&record, 0)) {
        Account account{};
        account.Art = ArtKostenstelle;
        const std::string_view number = Trimmed({record.Nummer, strnlen(record.Nummer, kontoDigits)});
        std::memcpy(account.Konto, number.data(), number.size());
        std::memcpy(account.Kuerzel, record.Kuerzel, sizeof record.Kuerzel - 1);
        std::memcpy(account.Name, record.Name, sizeof record.Name - 1);
        result = 1;
        if (!visit(account)) break;
    }
    return result;
}

std::vector<int> KindsOf(int art)
{
    return art != 0 ? std::vector<int>{art} : std::vector<int>{ArtSachkonto, ArtDebitor, ArtKreditor};
}

// A row is what one kind of account has to say; people get what they look for, machines everything.
struct AccountTable {
    const AccountOptions &Options;
    int Art; // 0: of several kinds, with what they have in common
    RowWriter Rows;

    AccountTable(const AccountOptions &options, int art)
        : Options(options), Art(art), Rows(ColumnsOf(options, art), options.As)
    {}

    static std::vector<RowColumn> ColumnsOf(const AccountOptions &options, int art)
    {
        std::vector<RowColumn> columns = {{"Konto", "konto", kontoDigits, Align::Right},
                                          {"Kürzel", "kuerzel", 9}};
        const auto add = [&columns](std::initializer_list<RowColumn> more) {
            columns.insert(columns.end(), more);
        };
        if (art == 0) columns.insert(columns.begin(), {"Art", "art", 12});
        if (art == ArtSachkonto) {
            add({{"Zuordnung", "zuordnung", 9}, {"Satz", "satzfest", 4}, {"Kosten", "mitkosten", 6}});
        }
        const bool isPartner = art == ArtKreditor || art == ArtDebitor;
        if (!isPartner) {
            columns.push_back({"Name", "name", 40});
        } else if (options.As == Output::Table) {
            add({{"Name", "name", 25},
                 {"Land", "land", 4},
                 {"PLZ", "plz", 6},
                 {"Ort", "ort", 20},
                 {"Straße", "strasse", 25},
                 {"Whg", "waehrung", 4},
                 {"Ziel", "zahlungsziel", 4, Align::Right}});
        } else {
            add({{"Name", "name", 0},
                 {"Name 2", "name2", 0},
                 {"Land", "land", 0},
                 {"PLZ", "plz", 0},
                 {"Ort", "ort", 0},
                 {"Straße", "strasse", 0},
                 {"USt-IdNr", "ustid", 0},
                 {"Währung", "waehrung", 0},
                 {"BLZ", "blz", 0},
                 {"Bankkonto", "bankkonto", 0},
                 {"Bank", "bank", 0},
                 {"Gegenkonto", "gegenkonto", 0},
                 {"Wert 1", "wert1", 0},
                 {"Wert 2", "wert2", 0},
                 {"Skonto", "skonto", 0},
                 {"Mahnkennziffer", "mahnkennziffer", 0},
                 {"Zahlungsziel", "zahlungsziel", 0}});
        }
        return columns;
    }

    void Put(const Account &account)
    {
        if (Art == 0) Rows.PutUtf8(KindName(account.Art));
        Rows.Put(account.Konto);
        Rows.Put(account.Kuerzel);
        if (Art == ArtSachkonto) {
            const uint32_t kind = account.Zuordnung;
            Rows.PutUtf8(kind == 2 ? "Aktiva" : kind == 4 ? "Passiva" : kind == 8 ? "GuV" : "");
            Rows.PutFlag(account.FesterSatz != 0, "fest");
            Rows.PutFlag(account.MitKosten != 0, "ja");
        }
        Rows.Put(account.Name);
        if (Art == ArtKreditor || Art == ArtDebitor) PutPartner(account);
        Rows.EndRow();
    }

    void PutPartner(const Account &account)
    {
        const bool isTable = Options.As == Output::Table;
        if (!isTable) Rows.Put(account.Name2);
        for (const char *text : {account.Land, account.Plz, account.Ort, account.Strasse}) {
            Rows.Put(text);
        }
        if (!isTable) Rows.Put(account.UstId);
        Rows.Put(account.Waehrung);
        if (!isTable) {
            for (const char *text : {account.Blz, account.Bankkonto, account.Bank, account.Gegenkonto}) {
                Rows.Put(text);
            }
            Rows.PutNumber(static_cast<int32_t>(account.Wert1));
            Rows.PutNumber(static_cast<int32_t>(account.Wert2));
            Rows.PutAmount(account.Skonto);
            Rows.PutNumber(static_cast<int32_t>(account.Mahnkennziffer));
        }
        if (isTable && account.Zahlungsziel == 0) {
            Rows.PutUtf8("");
        } else {
            Rows.PutNumber(account.Zahlungsziel);
        }
    }
};

int ShowSingle(const AccountOptions &options, int art)
{
    std::optional<Account> account;
    {
        ReasonCatcher catcher;
        account = FindAccount(options.Mandant, art, options.Single);
        if (!account) {
            std::string reason = catcher.Take();
            if (reason.empty()) reason = "Ein Konto „" + options.Single + "“ gibt es nicht.";
            catcher.Pass("vark: " + reason + "\n");
            return ExitRefused;
        }
    }
    AccountTable table(options, account->Art);
    table.Put(*account);
    table.Rows.End();
    return ExitGood;
}

} // namespace

int WalkAccounts(int mandant, int art, const std::string &from,
                 const std::function<bool(const Account &)> &visit)
{
    if (art == ArtKostenstelle) return WalkKostenstellen(mandant, from, visit);
    int result = VARK_InitHoleKonto(mandant, art, from.c_str(), 1);
    if (result != VARK_GUT) return result;
    result = art == ArtSachkonto ? WalkSachkonten(visit) : WalkPartners(art, visit);
    VARK_BeendeHolen();
    return result;
}

std::optional<Account> FindAccount(int mandant, int art, const std::string &text)
{
    const std::string wanted = FromUtf8(Trimmed(text));
    std::optional<Account> found;
    if (wanted.empty()) return found;
    if (wanted.size() <= kontoDigits) {
        for (const int kind : KindsOf(art)) {
            const int result = WalkAccounts(mandant, kind, wanted, [&](const Account &account) {
                if (wanted == account.Konto) found = account;
                return false;
            });
            if (found || result < 0) return found;
        }
    }
    for (const int kind : KindsOf(art)) {
        const int result = WalkAccounts(mandant, kind, "", [&](const Account &account) {
            if (wanted != account.Kuerzel) return true;
            found = account;
            return false;
        });
        if (found || result < 0) break;
    }
    return found;
}

int ListAccounts(const AccountOptions &options)
{
    const int art = options.Kind.empty() ? 0 : KontoartOf(options.Kind);
    if (!options.Single.empty()) return ShowSingle(options, art);
    const std::string order = Lower(options.Order);
    const bool byKuerzel = order == "kürzel" || order == "kuerzel";
    if (!byKuerzel && !order.empty() && order != "nummer") {
        throw UsageError("--nach ist Nummer oder Kürzel.");
    }
    const std::string from = FromUtf8(options.From);
    const std::string to = FromUtf8(options.To);
    const auto isBehind = [&to](const Account &account) {
        return !to.empty() && Right(account.Konto, kontoDigits) > Right(to, kontoDigits);
    };
    AccountTable table(options, art);
    std::vector<Account> sorted;
    for (const int kind : KindsOf(art)) {
        ReasonCatcher catcher;
        const int result =
            WalkAccounts(options.Mandant, kind, byKuerzel ? "" : from, [&](const Account &account) {
                if (!byKuerzel) {
                    if (isBehind(account)) return false;
                    table.Put(account);
                } else if (account.Kuerzel >= from &&
                           std::string_view(account.Kuerzel).substr(0, to.size()) <= to) {
                    sorted.push_back(account);
                }
                return true;
            });
        if (result < 0) return Refuse(catcher, result);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const Account &a, const Account &b) { return std::strcmp(a.Kuerzel, b.Kuerzel) < 0; });
    for (const Account &account : sorted) {
        table.Put(account);
    }
    table.Rows.End();
    return ExitGood;
}

} // namespace cli
