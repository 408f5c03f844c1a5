// Arguments, files and neighbours that no host should have and some do.
#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "tests/booking/ledger.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace vark;
using namespace vark::test;

namespace {

namespace fs = std::filesystem;

const std::set<int32_t> postingCodes = {1,   0,   -2,  -3,  -5,  -6,  -8,  -9,  -10,
                                        -11, -12, -13, -14, -24, -25, -26, -27, -43};

struct BadInput : ::testing::Test {
    Ledger books;
};

// Another process that holds something of the books until it is told to let go.
class Neighbour {
public:
    explicit Neighbour(const std::function<int()> &take)
    {
        if (pipe(ready) != 0 || pipe(go) != 0) throw std::runtime_error("pipe");
        child = fork();
        if (child == 0) {
            close(go[1]);
            const int taken = take();
            [[maybe_unused]] ssize_t ignored = write(ready[1], &taken, sizeof taken);
            char end = 0;
            ignored = read(go[0], &end, 1); // until the other side is closed
            _exit(0);
        }
        close(go[0]);
        if (read(ready[0], &status, sizeof status) != sizeof status) status = -1;
    }
    ~Neighbour()
    {
        close(go[1]);
        waitpid(child, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
    }
    Neighbour(const Neighbour &) = delete;
    Neighbour &operator=(const Neighbour &) = delete;

    int status = -1; // what the child's call gave

private:
    int ready[2] = {};
    int go[2] = {};
    pid_t child = -1;
};

// Opens a file and reads its first record with `operation`; leaves both as they are.
int Take(const std::string &path, int8_t mode, uint16_t begin, uint16_t operation)
{
    static char block[128];
    static char data[1400];
    char key[255] = {};
    path.copy(key, 254);
    uint32_t length = 0;
    int status = 0;
    if (begin != 0) status = BTRCALL(begin, block, data, &length, key, 255, 0);
    if (status == 0) status = BTRCALL(BtrOpOpen, block, data, &length, key, 255, mode);
    length = sizeof data;
    if (status == 0 && operation != 0) status = BTRCALL(operation, block, data, &length, key, 255, 0);
    return status;
}

} // namespace

TEST_F(BadInput, ANullStructureIsAnUnknownMandant)
{
    EXPECT_EQ(-5, VARK_BuchungEinfuegen(nullptr, 1));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
}

TEST_F(BadInput, MandantenThatDoNotExistAreRefused)
{
    BuchungEingabe booking = PlainBooking();
    for (const int32_t mandant : {0, -1, 2, 32768, 65537, -65535, INT32_MAX, INT32_MIN}) {
        booking.Mandant = mandant;
        EXPECT_EQ(-5, VARK_BuchungEinfuegen(&booking, 0)) << mandant;
    }
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(BadInput, StapelThatDoNotExistAreRefused)
{
    BuchungEingabe booking = PlainBooking();
    for (const int32_t stapel : {0, -1, -16, 15, 18, INT32_MAX, INT32_MIN}) {
        booking.Stapel = stapel;
        EXPECT_EQ(-6, VARK_BuchungEinfuegen(&booking, 0)) << stapel;
    }
}

TEST_F(BadInput, FieldsWithoutANulEndBeforeTheirLastByte)
{
    BuchungEingabe booking = PlainBooking();
    const auto fill = [](auto &field, char character) { std::memset(field, character, sizeof field); };
    fill(booking.Beleg, 'b');
    fill(booking.Text, 't');
    std::memcpy(booking.Datum, "1505981", 7);
    std::memcpy(booking.Sollkonto, "   40009", 8);
    std::memcpy(booking.Habenkonto, "   12009", 8);
    std::memcpy(booking.Brutto, "000000001,005", 13);
    fill(booking.Rest, '\xFF');
    ASSERT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ("150518", TextOf(bat.Buchungsdatum));
    EXPECT_EQ("bbbbbbbb", TextOf(bat.Beleg));
    EXPECT_EQ(std::string(35, 't'), TextOf(bat.Teil.Text));
    EXPECT_EQ("   4000", TextOf(bat.Teil.Sollkonto));
    EXPECT_EQ("000000001,00", TextOf(bat.Teil.Brutto));
    fill(booking.Steuersatz, '1');
    EXPECT_EQ(-13, VARK_BuchungEinfuegen(&booking, 0));
    fill(booking.Steuerbetrag, '1');
    std::memset(booking.Steuersatz, 0, sizeof booking.Steuersatz);
    EXPECT_EQ(-14, VARK_BuchungEinfuegen(&booking, 0));
}

TEST_F(BadInput, ARecordOfTheBooksWithoutAnyNulDoesNoHarm)
{
    SakoRecord sako = MakeSako("4000", ZuordnungGuv);
    std::memset(&sako.Name, 'x', sizeof sako - offsetof(SakoRecord, Name));
    sako.Steuerflags = 2;
    sako.Kostenschablone = 0x01010101;
    sako.Zuordnung = ZuordnungGuv;
    books.ReplaceInYears(TableSako, sako);
    StekeRecord rate = MakeSteke(2, 0, "", "16,00", "1776", "1576");
    std::memset(rate.Satz, '9', sizeof rate.Satz);
    std::memset(rate.Umsatzsteuerkonto, '7', sizeof rate.Umsatzsteuerkonto);
    VARK_SchliesseDB();
    books.EmptyTable(1, TableSteke);
    books.Insert(1, TableSteke, rate);
    PersonalRecord debitor = MakePersonal("10000");
    std::memset(debitor.UstId, 'x', sizeof debitor.UstId);
    books.ReplaceInYears(TableDebi, debitor);
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Habenkonto, "10000");
    booking.HabenArt = 4;
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    EXPECT_EQ("99999", TextOf(books.OnlyPosting().Teil.Steuersatz));
    EXPECT_EQ("7777777", TextOf(books.OnlyPosting().Teil.Steuerkonto));
}

TEST_F(BadInput, RandomBytesAreRefusedWithACodeAndWriteNothing)
{
    std::mt19937 random(20260101); // NOLINT: the same bytes every time
    for (int round = 0; round < 3000; ++round) {
        BuchungEingabe booking{};
        SplitEingabe split{};
        PekoEingabe peko{};
        const auto scramble = [&random](void *bytes, size_t size) {
            for (size_t i = 0; i < size; ++i) {
                static_cast<unsigned char *>(bytes)[i] = static_cast<unsigned char>(random());
            }
        };
        scramble(&booking, sizeof booking);
        scramble(&split, sizeof split);
        scramble(&peko, sizeof peko);
        if (round % 2 == 0) booking.Mandant = split.Mandant = peko.Mandant = 1;
        if (round % 4 == 0) booking.Stapel = split.Stapel = 16;
        if (round % 8 == 0) {
            SetText(booking.Datum, "150598");
            SetText(split.Datum, "150598");
            split.Anzahl %= 12;
        }
        const int32_t single = VARK_BuchungEinfuegen(&booking, 0);
        EXPECT_TRUE(postingCodes.count(single) == 1 && single != 1) << single;
        const int32_t several = VARK_SplitBuchungEinfuegen(&split, 0);
        EXPECT_TRUE(postingCodes.count(several) == 1 && several != 1) << several;
        const int32_t account =
            VARK_Peko(static_cast<int32_t>(random() % 6), static_cast<int32_t>(random() % 6), &peko, 0);
        EXPECT_LT(account, 0);
    }
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(BadInput, TextsOfAnyLengthAreTaken)
{
    const std::string longText(1 << 20, '9');
    const char *const l = longText.c_str();
    EXPECT_EQ(-11, VARK_BuchungEinfuegenDirekt(0, 1, 16, l, l, l, l, 1, l, 1, l, l, l));
    EXPECT_EQ(-10, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", l, l, l, 1, l, 1, l, l, l));
    EXPECT_EQ(-8, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", l, l, l, 1, "1200", 1, l, l, l));
    EXPECT_EQ(-12, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", l, l, "4000", 1, "1200", 1, l, l, l));
    EXPECT_EQ(-11, VARK_SplitStart(1, 16, l, l, 0));
    EXPECT_EQ(1, VARK_SplitStart(1, 16, "150598", l, 0));
    EXPECT_EQ(1, VARK_SplitEinfuegen(l, 1, l, 1, l, l, l, l));
    EXPECT_EQ(-10, VARK_SplitEnde(1, 0));
}

TEST_F(BadInput, NumbersOfAnySizeAreTaken)
{
    for (const int32_t number : {-1, 3, 8, 16, INT32_MAX, INT32_MIN}) {
        BuchungEingabe booking = PlainBooking();
        booking.SollArt = number;
        EXPECT_EQ(-8, VARK_BuchungEinfuegen(&booking, 0)) << number;
        booking.SollArt = 1;
        booking.HabenArt = number;
        EXPECT_EQ(-9, VARK_BuchungEinfuegen(&booking, 0)) << number;
        booking.HabenArt = 1;
        booking.Kostenschablone = number;
        EXPECT_EQ(-43, VARK_BuchungEinfuegen(&booking, 0)) << number;
        booking.Zahlungsziel = number;
        EXPECT_EQ(-27, VARK_BuchungEinfuegen(&booking, 0)) << number;
    }
}

// ---- Files ----

TEST(MissingTables, AreAFailureThatIsAlwaysShown)
{
    // A table at a time, each in a Mandant of its own.
    Books books;
    const TableId tables[] = {TableSako, TableKred,     TableDebi,   TableBube,    TableSteke,
                              TableKore, TableKobu,     TableBat,    TableSplit,   TableStapel,
                              TableUser, TableZahlziel, TableKoscha, TableKoschaze};
    int mandant = 0;
    for (const TableId table : tables) {
        ++mandant;
        books.AddMandant(mandant, {.LowerYear = "", .Without = {table}});
        if (table != TableSako) {
            books.Insert(mandant, TableSako, MakeSako("4000", ZuordnungGuv));
            books.Insert(mandant, TableSako, MakeSako("1200", ZuordnungAktiva));
        }
        if (table != TableStapel) books.Insert(mandant, TableStapel, MakeStapel(16));
        BuchungEingabe booking = PlainBooking();
        booking.Mandant = mandant;
        booking.Zahlungsziel = table == TableZahlziel ? 5 : 0;
        booking.Kostenschablone = table == TableKoscha ? 5 : 0;
        EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0)) << tableCatalogue[table].Stem;
        EXPECT_EQ(Lines{"File " + books.TablePath(mandant, table) + " not found"}, books.TakeBoxes());
        if (table != TableBat) {
            EXPECT_EQ(0u, books.Count(mandant, TableBat)) << tableCatalogue[table].Stem;
        }
    }
}

TEST_F(BadInput, AMissingYearOfTheMandantIsAFailure)
{
    fs::remove_all(books.YearDirectory(1));
    const BuchungEingabe booking = PlainBooking();
    EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0));
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ("File " + books.TablePath(1, TableSako) + " not found", boxes[0]);
}

TEST_F(BadInput, ADirectoryWithoutPermissionIsAFailure)
{
    // What is loaded at first use has to be there before the rights go.
    EXPECT_EQ(-5, VARK_BuchungEinfuegen(nullptr, 1));
    VARK_SchliesseDB();
    books.TakeBoxes();
    fs::permissions(books.Directory(), fs::perms::all);
    fs::permissions(books.Directory() + "/ui.log", fs::perms::all);
    fs::permissions(books.Directory() + "/DB", fs::perms::all);
    for (const auto &entry : fs::directory_iterator(books.Directory() + "/DB")) {
        if (!entry.is_directory()) fs::permissions(entry.path(), fs::perms::all);
    }
    fs::permissions(books.YearDirectory(1), fs::perms::none);
    const bool isRoot = geteuid() == 0;
    if (isRoot && seteuid(65534) != 0) GTEST_SKIP() << "cannot give up the rights of the superuser";
    const BuchungEingabe booking = PlainBooking();
    EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0));
    VARK_SchliesseDB();
    if (isRoot && seteuid(0) != 0) FAIL() << "the rights are gone";
    fs::permissions(books.YearDirectory(1), fs::perms::owner_all);
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ("Permission error", boxes[0]);
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1)) << "and with the rights it goes on";
}

// ---- Neighbours ----

TEST_F(BadInput, ATableThatAnotherProcessHoldsAloneIsAFailure)
{
    Neighbour neighbour([this] { return Take(books.TablePath(1, TableBat), BtrModeExclusive, 0, 0); });
    ASSERT_EQ(0, neighbour.status);
    const BuchungEingabe booking = PlainBooking();
    EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0));
    EXPECT_EQ("Incompatible mode error", books.TakeBoxes().at(0));
}

TEST_F(BadInput, ATransactionOfAnotherProcessThatDoesNotEndIsAFailureAfterAWhile)
{
    const BuchungEingabe booking = PlainBooking();
    ASSERT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    {
        Neighbour neighbour(
            [this] { return Take(books.TablePath(1, TableBat), BtrModeNormal, BtrOpBegin, BtrOpGetFirst); });
        ASSERT_EQ(0, neighbour.status);
        EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0));
        EXPECT_EQ(Lines{"File in use"}, books.TakeBoxes());
    }
    EXPECT_EQ(1u, books.Postings().size());
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    EXPECT_EQ(2u, books.Postings().size());
}

TEST_F(BadInput, ARecordThatAnotherProcessLocksDoesNotHinderAPosting)
{
    Neighbour neighbour([this] {
        return Take(books.TablePath(1, TableSako), BtrModeNormal, 0, BtrOpGetFirst + BtrBiasLock);
    });
    ASSERT_EQ(0, neighbour.status);
    const BuchungEingabe booking = PlainBooking();
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
}

// A host may have a clock that strikes all the time, and none of its calls go on by themselves.
TEST_F(BadInput, SignalsThatArriveDuringPostingsDoNotDisturbThem)
{
    struct sigaction handled = {};
    handled.sa_handler = [](int) {};
    sigaction(SIGALRM, &handled, nullptr);
    const itimerval often = {{0, 300}, {0, 300}};
    const BuchungEingabe booking = PlainBooking();
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1)) << i;
        if (i % 10 == 0) VARK_SchliesseDB();
    }
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_EQ(100u, books.Postings().size());
}
