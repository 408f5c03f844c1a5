#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationOpen = 0;
constexpr uint16_t operationGetEqual = 5;
constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationGetGreaterEqual = 9;
constexpr uint16_t operationGetFirst = 12;

const Lines kindMessage = {"Die Kontoart ist unzulässig!"};
const Lines formMessage = {"Das Ausgabeformat ist unzulässig!"};
const Lines mandantMessage = {"Der Mandant existiert nicht!"};

struct Sako {
    int32_t Code = 0;
    char Konto[8] = "-";
    char Kuerzel[10] = "-";
    char Name[50] = "-";
    uint32_t Zuordnung = 77;
    uint32_t Fest = 77;
    uint32_t MitKosten = 77;
};

Sako NextSako()
{
    Sako d;
    d.Code = VARK_HoleSako(d.Konto, d.Kuerzel, d.Name, &d.Zuordnung, &d.Fest, &d.MitKosten);
    return d;
}

struct Peko {
    int32_t Code = 0;
    char Konto[8] = "-";
    char Kuerzel[10] = "-";
    char Name1[26] = "-";
    char Name2[26] = "-";
    char Freitext[47] = "-";
    char Land[4] = "-";
    char Waehrung[5] = "-";
    char Plz[7] = "-";
    char Adresse2[31] = "-";
    char Adresse1[31] = "-";
    char Blz[9] = "-";
    char Bankkonto[12] = "-";
    char Bank[28] = "-";
    char Gegenkonto[8] = "-";
    uint32_t Wert1 = 77;
    uint32_t Wert2 = 77;
    char Skonto[8] = "-";
    uint32_t Mahnkennziffer = 77;
    uint32_t Zahlungsziel = 77;
};

Peko NextPeko(int32_t form = 2)
{
    Peko d;
    d.Code = VARK_HolePeko(d.Konto, d.Kuerzel, d.Name1, d.Name2, d.Freitext, d.Land, d.Waehrung, d.Plz,
                           d.Adresse2, d.Adresse1, d.Blz, d.Bankkonto, d.Bank, d.Gegenkonto, &d.Wert1,
                           &d.Wert2, form, d.Skonto, &d.Mahnkennziffer, &d.Zahlungsziel);
    return d;
}

int32_t StepPeko()
{
    return VARK_HolePeko(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                         nullptr);
}

struct AccountCursor : testing::Test {
    Books books;

    void SetUp() override { books.AddMandant(1); }
    void TearDown() override { VARK_SchliesseDB(); }

    void AddSako(const std::string &konto) { books.Insert(1, TableSako, MakeSako(konto)); }
    static int32_t Init(int32_t kontoart, const char *from = "", bool showMessages = true,
                        int32_t mandant = 1)
    {
        return VARK_InitHoleKonto(mandant, kontoart, from, showMessages ? 1 : 0);
    }
    static Lines AllSako(const char *from)
    {
        Lines lines;
        if (Init(1, from) != 1) return lines;
        Sako d;
        do {
            d = NextSako();
            lines.push_back(d.Konto);
        } while (d.Code == 1);
        EXPECT_EQ(-3, d.Code) << "the end of the Sachkonten";
        return lines;
    }
    static Lines AllPeko(int32_t kontoart, const char *from)
    {
        Lines lines;
        if (Init(kontoart, from) != 1) return lines;
        Peko d;
        do {
            d = NextPeko();
            lines.push_back(d.Konto);
        } while (d.Code == 1);
        EXPECT_EQ(2, d.Code);
        return lines;
    }
    static PersonalRecord FullPersonal()
    {
        PersonalRecord record = MakePersonal("10000");
        SetText(record.Kuerzel, "MÜLLER");
        SetText(record.Name1, "Müller GmbH");
        SetText(record.Name2, "Werk II");
        SetText(record.UstId, "DE123456789");
        SetText(record.Land, "A");
        SetText(record.Waehrung, "ATS");
        SetText(record.Plz, "12345");
        SetText(record.Adresse1, "Hauptstr. 1");
        SetText(record.Adresse2, "Köln");
        SetText(record.Blz, "37050198");
        SetText(record.BankkontoAlt, "1111111111");
        SetText(record.Bankkonto, "22222222222");
        SetText(record.Bank, "Sparkasse");
        SetText(record.Gegenkonto, Justified("8400"));
        record.Wert1 = 14;
        record.Wert2 = -30;
        SetText(record.Skonto, "02,50");
        record.Mahnkennziffer = -1;
        record.Zahlungsziel = 1234567;
        return record;
    }
    // Takes a record away as another program does.
    static void Remove(Books &books, TableId table)
    {
        VARK_SchliesseDB();
        books.EmptyTable(1, table);
    }
};

} // namespace

TEST_F(AccountCursor, SachkontenInTheOrderOfTheirNumbers)
{
    for (const char *konto : {"8400", "1200", "10", "1000"}) {
        AddSako(konto);
    }
    EXPECT_EQ((Lines{"10", "1000", "1200", "8400"}), AllSako(""));
    EXPECT_EQ((Lines{"10", "1000", "1200", "8400"}), AllSako(nullptr));
    EXPECT_EQ((Lines{"1200", "8400"}), AllSako("1200"));
    EXPECT_EQ((Lines{"1200", "8400"}), AllSako("1001"));
    EXPECT_EQ((Lines{"1200", "8400"}), AllSako("   1001"));
    EXPECT_EQ((Lines{}), AllSako("8401"));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(AccountCursor, SakoFillsEveryOutput)
{
    SakoRecord record = MakeSako("1200", ZuordnungGuv);
    SetText(record.Kuerzel, "BANK");
    SetText(record.Name, "Girokonto für Löhne");
    record.FesterSatz = 7;
    record.MitKosten = 0;
    books.Insert(1, TableSako, record);
    record = MakeSako("1300", -2);
    record.MitKosten = 9;
    books.Insert(1, TableSako, record);
    ASSERT_EQ(1, Init(1));
    Sako d = NextSako();
    EXPECT_EQ(1, d.Code);
    EXPECT_STREQ("1200", d.Konto);
    EXPECT_STREQ("BANK", d.Kuerzel);
    EXPECT_EQ("Girokonto für Löhne", TextOf(d.Name));
    EXPECT_EQ(8u, d.Zuordnung);
    EXPECT_EQ(1u, d.Fest);
    EXPECT_EQ(0u, d.MitKosten);
    d = NextSako();
    EXPECT_EQ(static_cast<uint32_t>(-2), d.Zuordnung) << "widened with its sign";
    EXPECT_EQ(0u, d.Fest);
    EXPECT_EQ(1u, d.MitKosten);
}

TEST_F(AccountCursor, TheOnlySachkontoIsDeliveredWithAFailure)
{
    AddSako("1200");
    ASSERT_EQ(1, Init(1));
    const Sako d = NextSako();
    EXPECT_EQ(-3, d.Code);
    EXPECT_STREQ("1200", d.Konto);
    EXPECT_EQ(-40, NextSako().Code);
    EXPECT_EQ(Lines{}, books.TakeBoxes()) << "the end of a table is shown to nobody";
}

TEST_F(AccountCursor, PersonalAccountsInTheOrderOfTheirNumbers)
{
    for (const char *konto : {"10002", "10000", "10001"}) {
        books.Insert(1, TableDebi, MakePersonal(konto));
    }
    books.Insert(1, TableKred, MakePersonal("70000"));
    EXPECT_EQ((Lines{"10000", "10001", "10002"}), AllPeko(4, ""));
    EXPECT_EQ((Lines{"10001", "10002"}), AllPeko(4, "10001"));
    EXPECT_EQ((Lines{}), AllPeko(4, "20000"));
    EXPECT_EQ((Lines{"70000"}), AllPeko(2, nullptr));
}

TEST_F(AccountCursor, PekoFillsEveryOutput)
{
    books.Insert(1, TableDebi, FullPersonal());
    ASSERT_EQ(1, Init(4));
    const Peko d = NextPeko();
    EXPECT_EQ(2, d.Code);
    EXPECT_STREQ("10000", d.Konto);
    EXPECT_EQ("MÜLLER", TextOf(d.Kuerzel));
    EXPECT_EQ("Müller GmbH", TextOf(d.Name1));
    EXPECT_STREQ("Werk II", d.Name2);
    EXPECT_STREQ("DE123456789", d.Freitext);
    EXPECT_STREQ("A", d.Land);
    EXPECT_STREQ("ATS", d.Waehrung);
    EXPECT_STREQ("12345", d.Plz);
    EXPECT_EQ("Köln", TextOf(d.Adresse2));
    EXPECT_STREQ("Hauptstr. 1", d.Adresse1);
    EXPECT_STREQ("37050198", d.Blz);
    EXPECT_STREQ("22222222222", d.Bankkonto);
    EXPECT_STREQ("Sparkasse", d.Bank);
    EXPECT_STREQ("8400", d.Gegenkonto);
    EXPECT_EQ(14u, d.Wert1);
    EXPECT_EQ(static_cast<uint32_t>(-30), d.Wert2);
    EXPECT_STREQ("2,50", d.Skonto);
    EXPECT_EQ(static_cast<uint32_t>(-1), d.Mahnkennziffer);
    EXPECT_EQ(1234567u, d.Zahlungsziel);
    EXPECT_EQ(-40, NextPeko().Code);
}

TEST_F(AccountCursor, TheOlderBankAccountStandsInForAnEmptyOne)
{
    PersonalRecord record = FullPersonal();
    SetText(record.Bankkonto, "");
    books.Insert(1, TableDebi, record);
    ASSERT_EQ(1, Init(4));
    EXPECT_STREQ("1111111111", NextPeko().Bankkonto);
}

TEST_F(AccountCursor, AKreditorHasNoMahnkennziffer)
{
    books.Insert(1, TableKred, FullPersonal());
    ASSERT_EQ(1, Init(2));
    const Peko d = NextPeko();
    EXPECT_EQ(77u, d.Mahnkennziffer) << "unwritten";
    EXPECT_EQ(1234567u, d.Zahlungsziel);
}

TEST_F(AccountCursor, OutputsMayBeLeftOut)
{
    AddSako("1000");
    AddSako("1200");
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableDebi, MakePersonal("10001"));
    ASSERT_EQ(1, Init(1));
    EXPECT_EQ(1, VARK_HoleSako(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(-3, VARK_HoleSako(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    ASSERT_EQ(1, Init(4));
    EXPECT_EQ(1, StepPeko());
    EXPECT_EQ(2, StepPeko());
}

TEST_F(AccountCursor, FieldsWithoutTheirNulAreCut)
{
    PersonalRecord record = MakePersonal("10000");
    std::memset(record.Name1, 'x', sizeof record.Name1);
    std::memset(record.Land, 'y', sizeof record.Land);
    books.Insert(1, TableDebi, record);
    ASSERT_EQ(1, Init(4));
    const Peko d = NextPeko();
    EXPECT_EQ(std::string(25, 'x'), d.Name1);
    EXPECT_STREQ("yyy", d.Land);
}

TEST_F(AccountCursor, ABadFormEndsTheCursorAfterTheTexts)
{
    books.Insert(1, TableDebi, FullPersonal());
    for (const int32_t form : {0, 4}) {
        ASSERT_EQ(1, Init(4));
        const Peko d = NextPeko(form);
        EXPECT_EQ(-20, d.Code);
        EXPECT_EQ(formMessage, books.TakeBoxes());
        EXPECT_STREQ("8400", d.Gegenkonto);
        EXPECT_EQ(14u, d.Wert1);
        EXPECT_STREQ("-", d.Skonto);
        EXPECT_EQ(77u, d.Zahlungsziel);
        EXPECT_EQ(-40, NextPeko().Code);
    }
}

TEST_F(AccountCursor, EveryFormOfTheSkonto)
{
    books.Insert(1, TableDebi, FullPersonal());
    const char *const expected[] = {"+02,50", "2,50", "2,50"};
    for (int32_t form = 1; form <= 3; ++form) {
        ASSERT_EQ(1, Init(4));
        EXPECT_STREQ(expected[form - 1], NextPeko(form).Skonto);
    }
}

TEST_F(AccountCursor, EmptyTablesGiveNothing)
{
    for (const int32_t kontoart : {1, 2, 4}) {
        EXPECT_EQ(0, Init(kontoart));
        EXPECT_EQ(0, Init(kontoart, "1"));
        EXPECT_EQ(-40, NextSako().Code);
        EXPECT_EQ(-40, NextPeko().Code);
    }
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(AccountCursor, RefusesAKindBeforeTheMandant)
{
    for (const int32_t kontoart : {0, 3, 8, 16, -1}) {
        EXPECT_EQ(-7, Init(kontoart, "", true, 9));
        EXPECT_EQ(kindMessage, books.TakeBoxes());
    }
    EXPECT_EQ(-5, Init(1, "", true, 9));
    EXPECT_EQ(mandantMessage, books.TakeBoxes());
    EXPECT_EQ(-7, Init(8, "", false));
    EXPECT_EQ(-5, Init(1, "", false, 9));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(AccountCursor, EachReaderWantsItsOwnCursor)
{
    AddSako("1000");
    AddSako("1200");
    books.Insert(1, TableDebi, MakePersonal("10000"));
    ASSERT_EQ(1, Init(1));
    EXPECT_EQ(-40, NextPeko().Code);
    EXPECT_EQ(1, NextSako().Code) << "the cursor goes on";
    ASSERT_EQ(1, Init(4));
    EXPECT_EQ(-40, NextSako().Code);
    EXPECT_EQ(2, NextPeko().Code);
}

TEST_F(AccountCursor, AVanishedAccountEndsIt)
{
    AddSako("1000");
    books.Insert(1, TableKred, MakePersonal("70000"));
    ASSERT_EQ(1, Init(1));
    Remove(books, TableSako);
    EXPECT_EQ(-39, NextSako().Code);
    EXPECT_EQ(-40, NextSako().Code);
    ASSERT_EQ(1, Init(2));
    Remove(books, TableKred);
    EXPECT_EQ(-39, NextPeko().Code);
    EXPECT_EQ(-40, NextPeko().Code);
}

TEST_F(AccountCursor, OtherCallsMayComeInBetween)
{
    books.AddMandant(2);
    for (const char *konto : {"10000", "10001", "10002"}) {
        books.Insert(1, TableDebi, MakePersonal(konto));
    }
    ASSERT_EQ(1, Init(4));
    EXPECT_STREQ("10000", NextPeko().Konto);
    EXPECT_EQ(0, VARK_ExistiertKonto(2, "10001", 4));
    EXPECT_STREQ("10001", NextPeko().Konto);
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "10000", 4));
    EXPECT_EQ(2, NextPeko().Code);
}

TEST_F(AccountCursor, LeavesTheTablesAsItFoundThem)
{
    AddSako("1000");
    books.Insert(1, TableDebi, MakePersonal("10000"));
    ThreadContext *context = nullptr;
    ASSERT_EQ(1, EnterExport(context));
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1000", 1));
    const auto counts = [&] {
        std::vector<int32_t> all(context->OpenCounts, context->OpenCounts + slotCount);
        all[TableFista] = 0; // comes and goes with the selection of the Mandant
        return all;
    };
    const std::vector<int32_t> before = counts();
    ASSERT_EQ(1, Init(1));
    ASSERT_EQ(-3, NextSako().Code);
    ASSERT_EQ(1, Init(4));
    ASSERT_EQ(2, NextPeko().Code);
    ASSERT_EQ(0, Init(2));
    ASSERT_EQ(1, Init(4));
    VARK_BeendeHolen();
    EXPECT_EQ(before, counts());
}

TEST_F(AccountCursor, FailuresOfTheRecordStoreAtTheStart)
{
    AddSako("1000");
    EXPECT_EQ(1, Init(1));
    FailEngineOperation(operationGetGreaterEqual, 1, 2);
    EXPECT_EQ(-3, Init(1, "1000"));
    StopEngineFaults();
    FailEngineOperation(operationGetFirst, 1, 2);
    EXPECT_EQ(0, Init(1)) << "from the first one on, a failure counts as an empty table";
    StopEngineFaults();
    FailEngineOperation(operationGetEqual, 1, 2);
    EXPECT_EQ(-3, Init(1)) << "the Mandant";
    StopEngineFaults();
    VARK_SchliesseDB();
    FailEngineOperation(operationOpen, 2, 2);
    EXPECT_EQ(-3, Init(1));
    StopEngineFaults();
    EXPECT_EQ(1, Init(1));
}

TEST_F(AccountCursor, FailuresOfTheRecordStoreInBetweenEndIt)
{
    for (const char *konto : {"10000", "10001"}) {
        AddSako(konto);
        books.Insert(1, TableDebi, MakePersonal(konto));
    }
    for (const uint16_t operation : {operationGetEqual, operationGetNext}) {
        ASSERT_EQ(1, Init(1));
        FailEngineOperation(operation, 1, 2);
        EXPECT_EQ(-3, NextSako().Code);
        StopEngineFaults();
        EXPECT_EQ(-40, NextSako().Code);
        ASSERT_EQ(1, Init(4));
        FailEngineOperation(operation, 1, 2);
        EXPECT_EQ(-3, NextPeko().Code);
        StopEngineFaults();
        EXPECT_EQ(-40, NextPeko().Code);
    }
}
