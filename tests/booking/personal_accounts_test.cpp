#include "src/booking/personal_accounts.h"

#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

constexpr int32_t neu = 1;
constexpr int32_t aendern = 2;
constexpr int32_t loeschen = 3;
constexpr int32_t kreditor = 2;
constexpr int32_t debitor = 4;

PekoEingabe NewAccount()
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "20000");
    SetText(peko.Kuerzel, "MÜLLER");
    SetText(peko.Name1, "Müller & Söhne");
    return peko;
}

PekoEingabe FullAccount()
{
    PekoEingabe peko = NewAccount();
    SetText(peko.Name2, "Handelsgesellschaft");
    SetText(peko.UstId, "FR1234567890123");
    SetText(peko.Land, "F");
    SetText(peko.Waehrung, "FRF");
    SetText(peko.Plz, "750001");
    SetText(peko.Adresse2, "Paris");
    SetText(peko.Adresse1, "1, rue de la Paix");
    SetText(peko.Blz, "12345678");
    SetText(peko.Bankkonto, "12345678901");
    SetText(peko.Bank, "Banque de France");
    SetText(peko.Gegenkonto, "4000");
    peko.Wert1 = 10;
    peko.Wert2 = -20;
    SetText(peko.Skonto, "2,5");
    peko.Zahlungsziel = 6;
    return peko;
}

// The record that a new account without anything but its names gets.
PersonalRecord EmptyRecord()
{
    PersonalRecord record{};
    SetText(record.Konto, "  20000");
    SetText(record.Kuerzel, "MÜLLER");
    record.Zustand = 1;
    SetText(record.Datum, "150618");
    for (const size_t at : {27u, 40u, 53u, 208u, 221u, 234u, 247u}) {
        SetText(reinterpret_cast<char *>(&record) + at, 13, "000000000,00");
    }
    for (size_t i = 0; i < 24; ++i) {
        SetText(reinterpret_cast<char *>(&record) + 260 + 13 * i, 13, "000000000,00");
    }
    for (size_t i = 0; i < 13; ++i) {
        SetText(reinterpret_cast<char *>(&record) + 709 + 13 * i, 13, "000000000,00");
    }
    reinterpret_cast<char *>(&record)[66] = 1;
    SetText(record.Name1, "Müller & Söhne");
    SetText(record.Land, "D");
    SetText(record.Skonto, "00,00");
    return record;
}

struct PersonalAccounts : ::testing::Test {
    int32_t Do(int32_t aktion, int32_t art, const PekoEingabe &peko)
    {
        return VARK_Peko(aktion, art, &peko, 1);
    }
    std::vector<PersonalRecord> Debitoren() { return books.Read<PersonalRecord>(1, TableDebi); }
    PersonalRecord Account(TableId table, const std::string &konto)
    {
        for (const PersonalRecord &record : books.Read<PersonalRecord>(1, table)) {
            if (TextOf(record.Konto) == Justified(konto)) return record;
        }
        throw std::runtime_error("no account " + konto);
    }

    Ledger books;
};

// Another client of the record manager, on a thread of its own, that holds the lock of one record.
struct LockHolder {
    LockHolder(const std::string &path, const std::string &konto)
    {
        holder = std::thread([this, path, konto] {
            char block[128] = {};
            char data[1400] = {};
            char key[255] = {};
            uint32_t length = 0;
            path.copy(key, 254);
            int answer = BTRCALL(BtrOpOpen, block, data, &length, key, 255, 0);
            std::memset(key, 0, sizeof key);
            Justified(konto).copy(key, 7);
            length = sizeof data;
            if (answer == 0) answer = BTRCALL(BtrOpGetEqual + BtrBiasLock, block, data, &length, key, 255, 0);
            locked.set_value(answer);
            release.get_future().wait();
            BTRCALL(BtrOpClose, block, data, &length, key, 255, 0);
        });
        status = locked.get_future().get();
    }
    ~LockHolder()
    {
        release.set_value();
        holder.join();
    }

    int status = -1;
    std::promise<int> locked;
    std::promise<void> release;
    std::thread holder;
};

const std::string accountMissing = "Das Konto existiert nicht!";

} // namespace

// ---- Order of the checks ----

TEST_F(PersonalAccounts, ChecksOfANewAccountComeInTheirOrder)
{
    PekoEingabe p{};
    int32_t art = 1;
    int32_t aktion = 4;
    p.Mandant = 9;
    SetText(p.Konto, "1200");
    SetText(p.Gegenkonto, "10000");
    SetText(p.Blz, "1234567x");
    SetText(p.Bankkonto, "1234567890x");
    SetText(p.Skonto, "100");
    p.Mahnkennziffer = 4;
    p.Zahlungsziel = 8;
    struct Row {
        const char *Repair;
        std::function<void()> Do;
        int32_t Code;
        std::string Box;
    };
    const std::vector<Row> rows = {
        {"nothing", [] {}, -5, "Der Mandant existiert nicht!"},
        {"Mandant", [&] { p.Mandant = 1; }, -7, "Die Kontoart ist unzulässig!"},
        {"art", [&] { art = debitor; }, -2, "unzulässige Aktion!"},
        {"aktion", [&] { aktion = neu; }, -29, "Fehlendes Kürzel!"},
        {"Kürzel", [&] { SetText(p.Kuerzel, "K4000"); }, -31, "Das Konto existiert bereits!"},
        {"Konto, to that of a Kreditor", [&] { SetText(p.Konto, "70000"); }, -31,
         "Das Konto existiert bereits!"},
        {"Konto, to that of a Debitor", [&] { SetText(p.Konto, "10000"); }, -31,
         "Das Konto existiert bereits!"},
        {"Konto", [&] { SetText(p.Konto, "10010"); }, -32, "Das Kürzel existiert bereits!"},
        {"Kürzel, to that of a Kreditor", [&] { SetText(p.Kuerzel, "K70000"); }, -32,
         "Das Kürzel existiert bereits!"},
        {"Kürzel, to that of a Debitor", [&] { SetText(p.Kuerzel, "K10000"); }, -32,
         "Das Kürzel existiert bereits!"},
        {"Kürzel", [&] { SetText(p.Kuerzel, "NEU"); }, -30, "Fehlender Name!"},
        {"Name", [&] { SetText(p.Name1, "Neu"); }, -15, "Das Gegenkonto ist unzulässig!"},
        {"Gegenkonto", [&] { SetText(p.Gegenkonto, "4000"); }, -16, "Die BLZ ist unzulässig!"},
        {"BLZ", [&] { SetText(p.Blz, ""); }, -16, "Die Bankkontonummer ist unzulässig!"},
        {"Bankkonto", [&] { SetText(p.Bankkonto, "12345678901"); }, -16,
         "Die Bankverbindung ist unzulässig!"},
        {"both", [&] { SetText(p.Blz, "12345678"); }, -17, "Die Skontoprozente sind unzulässig!"},
        {"Skonto", [&] { SetText(p.Skonto, "3"); }, -18, "Die Mahnkennziffer ist unzulässig!"},
        {"Mahnkennziffer", [&] { p.Mahnkennziffer = 3; }, -27, "Das Zahlungsziel ist unzulässig!"},
        {"Zahlungsziel", [&] { p.Zahlungsziel = 6; }, 1, ""},
    };
    const size_t before = Debitoren().size();
    for (const Row &row : rows) {
        row.Do();
        if (row.Code != 1) {
            const PekoEingabe copy = p;
            EXPECT_EQ(row.Code, VARK_Peko(aktion, art, &p, 0)) << row.Repair;
            EXPECT_EQ(Lines{}, books.TakeBoxes()) << row.Repair;
            EXPECT_EQ(row.Code, VARK_Peko(aktion, art, &p, 1)) << row.Repair;
            EXPECT_EQ(Lines{row.Box}, books.TakeBoxes()) << row.Repair;
            EXPECT_EQ(HexOf(copy), HexOf(p)) << "the caller's structure stays as it is";
            EXPECT_EQ(before, Debitoren().size()) << row.Repair;
        } else {
            EXPECT_EQ(1, VARK_Peko(aktion, art, &p, 1)) << row.Repair;
            EXPECT_EQ(Lines{}, books.TakeLog());
        }
    }
    EXPECT_EQ("Neu", TextOf(Account(TableDebi, "10010").Name1));
}

TEST_F(PersonalAccounts, ChecksOfAChangeComeInTheirOrder)
{
    PekoEingabe p{};
    p.Mandant = 1;
    const struct {
        const char *Konto;
        const char *Kuerzel;
        const char *Name;
        const char *Gegenkonto;
        int32_t Code;
        std::string Box;
    } rows[] = {
        {"", "", "", "1", -10, "Die Kontonummer ist unzulässig!"},
        {"20000", "", "", "1", -28, accountMissing},
        {"70000", "", "", "1", -28, accountMissing}, // a Kreditor
        {"", "NIE", "", "1", -28, accountMissing},
        {"10000", "K10001", "", "1", -19, "Das Kürzel ist unzulässig!"},
        {"10000", "K10000", "", "1", -30, "Fehlender Name!"},
        {"10000", "", "Neu", "1", -15, "Das Gegenkonto ist unzulässig!"},
        {"10000", "", "Neu", "4000", 1, ""},
    };
    for (const auto &row : rows) {
        SetText(p.Konto, row.Konto);
        SetText(p.Kuerzel, row.Kuerzel);
        SetText(p.Name1, row.Name);
        SetText(p.Gegenkonto, row.Gegenkonto);
        const std::string what = std::string(row.Konto) + "/" + row.Kuerzel;
        EXPECT_EQ(row.Code, Do(aendern, debitor, p)) << what;
        EXPECT_EQ(row.Box.empty() ? Lines{} : Lines{row.Box}, books.TakeBoxes()) << what;
    }
    EXPECT_EQ("Neu", TextOf(Account(TableDebi, "10000").Name1));
}

TEST_F(PersonalAccounts, ChecksOfADeletionComeInTheirOrder)
{
    PersonalRecord kept = MakePersonal("10009");
    kept.Zustand = 0;
    books.Insert(1, TableDebi, kept);
    PekoEingabe p{};
    p.Mandant = 1;
    const struct {
        const char *Konto;
        const char *Kuerzel;
        int32_t Code;
        std::string Box;
    } rows[] = {
        {"", "", -10, "Die Kontonummer ist unzulässig!"},
        {"20000", "", -28, accountMissing},
        {"10000", "K1", -19, "Das Kürzel ist unzulässig!"},
        {"10009", "K1", -19, "Das Kürzel ist unzulässig!"},
        {"10009", "", -33, "Das Konto ist nicht löschbar!"},
        {"", "K10009", -33, "Das Konto ist nicht löschbar!"},
    };
    const size_t before = Debitoren().size();
    for (const auto &row : rows) {
        SetText(p.Konto, row.Konto);
        SetText(p.Kuerzel, row.Kuerzel);
        EXPECT_EQ(row.Code, Do(loeschen, debitor, p)) << row.Konto << row.Kuerzel;
        EXPECT_EQ(Lines{row.Box}, books.TakeBoxes()) << row.Konto << row.Kuerzel;
    }
    EXPECT_EQ(before, Debitoren().size());
}

TEST_F(PersonalAccounts, OtherKindsAndActionsAreRefused)
{
    for (const int32_t art : {0, 1, 3, 8, 16, -2, INT32_MAX}) {
        EXPECT_EQ(-7, Do(neu, art, NewAccount())) << art;
    }
    for (const int32_t aktion : {0, 4, -1, INT32_MIN}) {
        EXPECT_EQ(-2, Do(aktion, debitor, NewAccount())) << aktion;
    }
    EXPECT_EQ(-5, VARK_Peko(neu, debitor, nullptr, 0));
}

// ---- New ----

TEST_F(PersonalAccounts, ANewAccountIsWrittenToTheByte)
{
    ASSERT_EQ(1, Do(neu, debitor, NewAccount()));
    EXPECT_EQ(HexOf(EmptyRecord()), HexOf(Account(TableDebi, "20000")));
    EXPECT_EQ(0u, books.Count(1, TableDebi, "1997") - 4) << "only in the year in use";
}

TEST_F(PersonalAccounts, ANewKreditorWithEverythingIsWrittenToTheByte)
{
    ASSERT_EQ(1, Do(neu, kreditor, FullAccount()));
    PersonalRecord expected = EmptyRecord();
    SetText(expected.Name2, "Handelsgesellschaft");
    SetText(expected.Adresse1, "1, rue de la Paix");
    SetText(expected.Plz, "750001");
    SetText(expected.Land, "F");
    SetText(expected.Adresse2, "Paris");
    SetText(expected.Gegenkonto, "   4000");
    SetText(expected.Blz, "12345678");
    SetText(expected.Bank, "Banque de France");
    expected.Wert1 = 10;
    expected.Wert2 = -20;
    SetText(expected.Skonto, "02,50");
    SetText(expected.UstId, "FR1234567890123");
    SetText(expected.Waehrung, "FRF");
    expected.Zahlungsziel = 6;
    SetText(expected.Bankkonto, "12345678901");
    EXPECT_EQ(HexOf(expected), HexOf(Account(TableKred, "20000")));
}

TEST_F(PersonalAccounts, ADebitorGetsNoCurrency)
{
    ASSERT_EQ(1, Do(neu, debitor, FullAccount()));
    EXPECT_EQ("", TextOf(Account(TableDebi, "20000").Waehrung));
}

TEST_F(PersonalAccounts, PaymentDayValuesKeepTheirLowHalf)
{
    PekoEingabe peko = NewAccount();
    peko.Wert1 = 0x12345678;
    peko.Wert2 = -1;
    ASSERT_EQ(1, Do(neu, debitor, peko));
    EXPECT_EQ(0x5678, +Account(TableDebi, "20000").Wert1);
    EXPECT_EQ(-1, +Account(TableDebi, "20000").Wert2);
}

TEST_F(PersonalAccounts, TheMahnkennzifferDependsOnTheKind)
{
    PekoEingabe peko = NewAccount();
    for (const int32_t value : {-2, 4, 65536, INT32_MIN}) {
        peko.Mahnkennziffer = value;
        EXPECT_EQ(-18, Do(neu, debitor, peko)) << value;
    }
    for (const int32_t value : {-1, 1, 3, 65536}) {
        peko.Mahnkennziffer = value;
        EXPECT_EQ(-18, Do(neu, kreditor, peko)) << value;
    }
    for (const int32_t value : {-1, 0, 3}) {
        peko.Mahnkennziffer = value;
        SetText(peko.Konto, std::to_string(20010 + value));
        SetText(peko.Kuerzel, std::to_string(20010 + value));
        EXPECT_EQ(1, Do(neu, debitor, peko)) << value;
        EXPECT_EQ(value, Account(TableDebi, std::to_string(20010 + value)).Mahnkennziffer);
    }
}

TEST_F(PersonalAccounts, BankDetailsAreDigitsAndComeTogether)
{
    const struct {
        const char *Blz;
        const char *Konto;
        int32_t Code;
    } rows[] = {
        {"1", "1", 1},    {"", "", 1},       {"1", "", -16},   {"", "1", -16},
        {"1 ", "1", -16}, {"1", "1,0", -16}, {"-1", "1", -16}, {"x", "1", -16},
    };
    int number = 30000;
    for (const auto &row : rows) {
        PekoEingabe peko = NewAccount();
        SetText(peko.Konto, std::to_string(++number));
        SetText(peko.Kuerzel, std::to_string(number));
        SetText(peko.Blz, row.Blz);
        SetText(peko.Bankkonto, row.Konto);
        EXPECT_EQ(row.Code, Do(neu, debitor, peko)) << row.Blz << "/" << row.Konto;
    }
}

TEST_F(PersonalAccounts, TheSameNumberIsNewOnlyOnce)
{
    ASSERT_EQ(1, Do(neu, debitor, NewAccount()));
    EXPECT_EQ(-31, Do(neu, debitor, NewAccount()));
    EXPECT_EQ(-31, Do(neu, kreditor, NewAccount()));
    PekoEingabe peko = NewAccount();
    SetText(peko.Konto, "  20000");
    EXPECT_EQ(-31, Do(neu, debitor, peko));
    SetText(peko.Konto, "20001");
    EXPECT_EQ(-32, Do(neu, kreditor, peko));
    SetText(peko.Kuerzel, "müller");
    EXPECT_EQ(1, Do(neu, kreditor, peko)) << "capital letters are others";
}

TEST_F(PersonalAccounts, DirektTakesTheFieldsAsArguments)
{
    ASSERT_EQ(1, VARK_PekoDirekt(neu, kreditor, 1, 1, "20000", "M\xDCLLER", "M\xFCller & S\xF6hne",
                                 "Handelsgesellschaft", "FR1234567890123", "F", "FRF", "750001", "Paris",
                                 "1, rue de la Paix", "12345678", "12345678901", "Banque de France", "4000",
                                 10, -20, "2,5", 0, 6));
    const PersonalRecord byArguments = Account(TableKred, "20000");
    PekoEingabe peko = FullAccount();
    ASSERT_EQ(1, Do(loeschen, kreditor, peko));
    ASSERT_EQ(1, Do(neu, kreditor, peko));
    EXPECT_EQ(HexOf(Account(TableKred, "20000")), HexOf(byArguments));
}

TEST_F(PersonalAccounts, DirektCutsLongTextsAndTakesNull)
{
    const std::string longText(200, 'L');
    const char *const l = longText.c_str();
    ASSERT_EQ(1, VARK_PekoDirekt(neu, debitor, 1, 1, "12345678", l, l, l, l, l, l, l, l, l, nullptr, nullptr,
                                 l, nullptr, 0, 0, "02,505", 0, 0));
    const PersonalRecord record = Account(TableDebi, "1234567");
    EXPECT_EQ(longText.substr(0, 8), TextOf(record.Kuerzel));
    EXPECT_EQ(longText.substr(0, 25), TextOf(record.Name1));
    EXPECT_EQ(longText.substr(0, 25), TextOf(record.Name2));
    EXPECT_EQ(longText.substr(0, 15), TextOf(record.UstId));
    EXPECT_EQ(longText.substr(0, 3), TextOf(record.Land));
    EXPECT_EQ(longText.substr(0, 6), TextOf(record.Plz));
    EXPECT_EQ(longText.substr(0, 30), TextOf(record.Adresse1));
    EXPECT_EQ(longText.substr(0, 30), TextOf(record.Adresse2));
    EXPECT_EQ(longText.substr(0, 27), TextOf(record.Bank));
    EXPECT_EQ("-17", std::to_string(VARK_PekoDirekt(neu, debitor, 0, 1, "1", "1", "1", nullptr, nullptr,
                                                    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                    nullptr, nullptr, nullptr, 0, 0, "100", 0, 0)));
    EXPECT_EQ(-5, VARK_PekoDirekt(neu, debitor, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                                  0, nullptr, 0, 0));
}

// ---- Change ----

TEST_F(PersonalAccounts, AChangeReplacesItsFieldsAndNoOtherByte)
{
    // Every byte of the record tells where it stood, but for the keys.
    PersonalRecord old{};
    for (size_t i = 0; i < sizeof old; ++i) {
        reinterpret_cast<unsigned char *>(&old)[i] = static_cast<unsigned char>(1 + i % 255);
    }
    SetText(old.Konto, "  20000");
    SetText(old.Kuerzel, "MÜLLER");
    books.Insert(1, TableKred, old);
    ASSERT_EQ(1, Do(aendern, kreditor, FullAccount()));
    PersonalRecord expected = old;
    SetText(expected.Datum, "150618");
    SetText(expected.Name1, "Müller & Söhne");
    SetText(expected.Name2, "Handelsgesellschaft");
    SetText(expected.Adresse1, "1, rue de la Paix");
    SetText(expected.Plz, "750001");
    SetText(expected.Land, "F");
    SetText(expected.Adresse2, "Paris");
    SetText(expected.Gegenkonto, "   4000");
    SetText(expected.Blz, "12345678");
    SetText(expected.Bank, "Banque de France");
    expected.Wert1 = 10;
    expected.Wert2 = -20;
    SetText(expected.Skonto, "02,50");
    expected.Mahnkennziffer = 0;
    SetText(expected.UstId, "FR1234567890123");
    SetText(expected.Waehrung, "FRF");
    expected.Zahlungsziel = 6;
    SetText(expected.Bankkonto, "12345678901");
    EXPECT_EQ(HexOf(expected), HexOf(Account(TableKred, "20000")));
}

TEST_F(PersonalAccounts, AChangedDebitorKeepsItsCurrency)
{
    PekoEingabe peko = FullAccount();
    SetText(peko.Konto, "10003");
    SetText(peko.Kuerzel, "");
    ASSERT_EQ(1, Do(aendern, debitor, peko));
    EXPECT_EQ("USD", TextOf(Account(TableDebi, "10003").Waehrung));
}

TEST_F(PersonalAccounts, AChangeFindsTheAccountByKuerzel)
{
    PekoEingabe peko = NewAccount();
    SetText(peko.Konto, "");
    SetText(peko.Kuerzel, "K10001");
    ASSERT_EQ(1, Do(aendern, debitor, peko));
    const PersonalRecord record = Account(TableDebi, "10001");
    EXPECT_EQ("Müller & Söhne", TextOf(record.Name1));
    EXPECT_EQ("", TextOf(record.UstId)) << "a change replaces every field";
    EXPECT_EQ("K10001", TextOf(record.Kuerzel));
}

TEST_F(PersonalAccounts, AChangeLeavesALongKuerzelAlone)
{
    PersonalRecord old = MakePersonal("20000");
    SetText(old.Kuerzel, "NEUNSTELL");
    books.Insert(1, TableDebi, old);
    PekoEingabe peko = NewAccount();
    EXPECT_EQ(-19, Do(aendern, debitor, peko));
    SetText(peko.Kuerzel, "");
    ASSERT_EQ(1, Do(aendern, debitor, peko));
    EXPECT_EQ("NEUNSTELL", TextOf(Account(TableDebi, "20000").Kuerzel));
}

TEST_F(PersonalAccounts, ALockedRecordIsLeftToItsHolder)
{
    const PersonalRecord old = Account(TableDebi, "10000");
    PekoEingabe peko = NewAccount();
    SetText(peko.Konto, "10000");
    SetText(peko.Kuerzel, "");
    {
        LockHolder holder(books.TablePath(1, TableDebi), "10000");
        ASSERT_EQ(0, holder.status);
        EXPECT_EQ(-3, VARK_Peko(aendern, debitor, &peko, 0));
        EXPECT_EQ(-3, VARK_Peko(loeschen, debitor, &peko, 0));
        const std::string text = "Der Datensatz wird von einer anderen Anwendung benutzt!";
        EXPECT_EQ((Lines{text, text}), books.TakeBoxes()) << "shown whatever the caller wished";
        EXPECT_EQ(HexOf(old), HexOf(Account(TableDebi, "10000")));
    }
    EXPECT_EQ(1, Do(aendern, debitor, peko));
}

TEST_F(PersonalAccounts, ARefusedChangeReleasesItsLock)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    for (const char *konto : {"10000", ""}) {
        SetText(peko.Konto, konto);
        SetText(peko.Kuerzel, "K10000");
        EXPECT_EQ(-30, Do(aendern, debitor, peko));
        EXPECT_EQ(Lines{"Fehlender Name!"}, books.TakeBoxes());
        EXPECT_EQ(0, LockHolder(books.TablePath(1, TableDebi), "10000").status);
    }
    SetText(peko.Konto, "10000");
    SetText(peko.Kuerzel, "NIE");
    EXPECT_EQ(-19, Do(aendern, debitor, peko));
    EXPECT_EQ(0, LockHolder(books.TablePath(1, TableDebi), "10000").status);
}

TEST_F(PersonalAccounts, ADoneChangeReleasesItsLock)
{
    PekoEingabe peko = NewAccount();
    SetText(peko.Konto, "10000");
    SetText(peko.Kuerzel, "");
    ASSERT_EQ(1, Do(aendern, debitor, peko));
    EXPECT_EQ(0, LockHolder(books.TablePath(1, TableDebi), "10000").status);
}

TEST_F(PersonalAccounts, ARefusalOfANewAccountShowsItsMessageAlone)
{
    PekoEingabe peko = NewAccount();
    SetText(peko.Name1, "");
    EXPECT_EQ(-30, Do(neu, debitor, peko));
    EXPECT_EQ(Lines{"Fehlender Name!"}, books.TakeBoxes());
}

// ---- Delete ----

TEST_F(PersonalAccounts, AnAccountIsDeletedByNumberOrKuerzel)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "10000");
    EXPECT_EQ(1, Do(loeschen, debitor, peko));
    EXPECT_EQ(-28, Do(loeschen, debitor, peko));
    SetText(peko.Konto, "");
    SetText(peko.Kuerzel, "K70000");
    EXPECT_EQ(1, Do(loeschen, kreditor, peko));
    EXPECT_EQ(3u, Debitoren().size());
    EXPECT_EQ(1u, books.Count(1, TableKred));
}

TEST_F(PersonalAccounts, AnAccountThatIsUsedIsDeletedAllTheSame)
{
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Sollkonto, "10000");
    booking.SollArt = 4;
    ASSERT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "10000");
    EXPECT_EQ(1, Do(loeschen, debitor, peko)) << "nothing but the mark is looked at";
}

// ---- Failures ----

TEST_F(PersonalAccounts, AnEngineFailureInTheSearchForTheSameIsShownLikeAKuerzelThatExists)
{
    ASSERT_EQ(1, Do(neu, debitor, NewAccount()));
    PekoEingabe peko = NewAccount();
    SetText(peko.Konto, "20001");
    for (int n = 2; n <= 7; ++n) { // after the Mandant's record: three numbers, three Kürzel
        SetText(peko.Kuerzel, "NEU");
        FailEngineOperation(BtrOpGetEqual, n, 2);
        EXPECT_EQ(-3, Do(neu, debitor, peko)) << n;
        StopEngineFaults();
        EXPECT_EQ((Lines{"I/O Error", "Das Kürzel existiert bereits!"}), books.TakeBoxes());
    }
}
