// The rate dialog in a real window, opened by itself and by a posting that needs a rate: used by keyboard and
// by mouse, what it holds read back from the model and from the books.
#include "tests/pickers/rate_books.h"
#include "tests/pickers/screen_dialogs.h"

using namespace vark;
using namespace vark::test;

namespace {

constexpr const char *title = "Fremdwährungsverwaltung";
constexpr int waehrung = 30119;
constexpr int deletes = 30121;
constexpr int rates = 30122;
constexpr int kurs = 30125;
constexpr int average = 30126;
constexpr int einheiten = 30127;
constexpr int datum = 22994;

struct RatesOnScreen : OnScreen {
    std::string Shown(int id) const
    {
        char text[64] = "";
        GetDlgItemTextA(Topmost(), id, text, sizeof text);
        return text;
    }

    LRESULT Rows() const { return SendDlgItemMessageA(Topmost(), rates, LB_GETCOUNT, 0, 0); }

    bool Comes(int id, const std::string &text) const
    {
        return Eventually([&] { return Shown(id) == text; });
    }
    bool ComeRows(LRESULT count) const
    {
        return Eventually([&] { return Rows() == count; });
    }

    // Types into the control that has the keyboard, over what is selected there.
    static void Type(const std::string &text) { Display::Do("type --delay 5 '" + text + "'"); }

    // Clicks into a field and types over what is there, until that has come: a click moves the keyboard
    // in its own time.
    static bool TypeInto(HWND dialog, int id, const std::string &text)
    {
        constexpr std::chrono::seconds afterTyping(2);
        return Eventually([&] {
            Display::Click(dialog, id, 20, 14);
            Display::Do("key ctrl+a");
            Type(text);
            return Eventually(
                [&] {
                    char shown[64] = "";
                    GetDlgItemTextA(dialog, id, shown, sizeof shown);
                    return shown == text;
                },
                afterTyping);
        });
    }

    void Open(const std::function<void()> &person)
    {
        ThreadContext &context = Bound();
        Run(
            title,
            [&] {
                RunRateDialog(context, owner);
                return 0;
            },
            person);
        EXPECT_EQ(0, context.OpenCounts[TableKurse]);
    }

    int32_t Post(const std::function<void()> &person)
    {
        return Run(
            "MERIDA", [] { return PostForeign(0); }, person);
    }
};

} // namespace

TEST_F(RatesOnScreen, AreEnteredAndDeletedByKeyboard)
{
    AddRates(books);
    Open([this] {
        EXPECT_EQ(3, SendDlgItemMessageA(Topmost(), waehrung, CB_GETCOUNT, 0, 0));
        Type("USD");
        ASSERT_TRUE(ComeRows(2));
        EXPECT_EQ("USD", Shown(waehrung));
        EXPECT_TRUE(Comes(einheiten, "1"));
        Display::Do("key alt+d");
        Type("15.03.1998");
        ASSERT_TRUE(Comes(datum, "15.03.1998"));
        Display::Do("key alt+k");
        Type("1,81");
        ASSERT_TRUE(Comes(kurs, "1,81"));
        Display::Do("key Return");
        ASSERT_TRUE(ComeRows(3));
        // The first of the month is the first row; the list has the keyboard after its mnemonic.
        Display::Do("key alt+r Home alt+l");
        ASSERT_TRUE(ComeRows(2));
        // A date that is none is refused, and the keyboard stays with its field.
        Display::Do("key alt+d");
        Type("32.03.1998");
        ASSERT_TRUE(Comes(datum, "32.03.1998"));
        Display::Do("key alt+n");
        ASSERT_TRUE(Display::HasKeyboard("MERIDA"));
        Display::Do("key Return");
        ASSERT_TRUE(Display::HasKeyboard(title));
        Type("31.03.1998");
        EXPECT_TRUE(Comes(datum, "31.03.1998"));
        Display::Do("key Escape");
    });
    EXPECT_EQ(
        (Lines{"FRF 170601 000000029,83 0 2", "FRF 180105 000000029,79 0 2", "FRF 180401 000000029,81 0 10",
               "ITL 180228 000000001,01 1 3", "USD 180310 000000001,80 0 1", "USD 180315 000000001,81 0 1"}),
        RatesOf(books));
    EXPECT_EQ((Lines{std::string("dialog 131 ") + title, "box Unzulässige Tagesangabe!"}), books.TakeLog());
}

TEST_F(RatesOnScreen, AreEnteredAndDeletedByMouse)
{
    AddRates(books);
    Open([this] {
        HWND dialog = Topmost();
        const auto isAverage = [dialog] { return IsDlgButtonChecked(dialog, average) == BST_CHECKED; };
        ASSERT_TRUE(Display::ClickUntil(isAverage, dialog, average, 8, 8));
        ASSERT_TRUE(TypeInto(dialog, waehrung, "FRF"));
        ASSERT_TRUE(ComeRows(3));
        ASSERT_TRUE(ClickRow(rates, 1));
        Display::Click(dialog, deletes, 20, 14);
        ASSERT_TRUE(ComeRows(2));
        ASSERT_TRUE(TypeInto(dialog, datum, "30.06.1998"));
        ASSERT_TRUE(TypeInto(dialog, kurs, "29,85"));
        Display::Click(dialog, IDOK, 20, 14);
        ASSERT_TRUE(ComeRows(3));
        Display::Click(dialog, IDCANCEL, 20, 14);
    });
    EXPECT_EQ(
        (Lines{"FRF 170601 000000029,83 0 2", "FRF 180401 000000029,81 0 10", "FRF 180630 000000029,85 1 10",
               "ITL 180228 000000001,01 1 3", "USD 180301 000000001,79 0 1", "USD 180310 000000001,80 0 1"}),
        RatesOf(books));
}

TEST_F(RatesOnScreen, MissingAreAskedForAndUsedByAPosting)
{
    AddForeignDebitor(books);
    EXPECT_EQ(1, Post([this] {
                  Display::Do("key alt+j");
                  ASSERT_TRUE(Display::HasKeyboard(title));
                  EXPECT_EQ("15.03.1998", Shown(datum));
                  EXPECT_EQ("SEK", Shown(waehrung));
                  EXPECT_EQ("100", Shown(einheiten));
                  Type("22,07"); // the rate has the keyboard
                  ASSERT_TRUE(Comes(kurs, "22,07"));
                  Display::Do("key Return");
                  ASSERT_TRUE(ComeRows(1));
                  Display::Do("key Escape");
              }));
    EXPECT_EQ((Lines{std::string("box ") + rateQuestion, std::string("dialog 131 ") + title}),
              books.TakeLog());
    const std::vector<BatRecord> postings = books.Read<BatRecord>(1, TableBat);
    ASSERT_EQ(1u, postings.size());
    EXPECT_EQ("SEK", TextOf(postings[0].Waehrung));
    EXPECT_EQ("000000025,60", TextOf(postings[0].Waehrungsbetrag)); // 116 x 22,07 / 100 = 25,6012
}

TEST_F(RatesOnScreen, MissingAreAskedForAgainUntilDeclined)
{
    AddForeignDebitor(books);
    EXPECT_EQ(0, Post([this] {
                  Display::Do("key alt+j");
                  ASSERT_TRUE(Display::HasKeyboard(title));
                  ASSERT_TRUE(Comes(waehrung, "SEK"));
                  HWND dialog = Topmost();
                  ASSERT_TRUE(Display::ClickUntil([dialog] { return IsWindow(dialog) == FALSE; }, dialog,
                                                  IDCANCEL, 20, 14));
                  ASSERT_TRUE(Display::HasKeyboard("MERIDA"));
                  Display::Do("key alt+n");
              }));
    EXPECT_EQ((Lines{std::string("box ") + rateQuestion, std::string("dialog 131 ") + title,
                     std::string("box ") + rateQuestion}),
              books.TakeLog());
    EXPECT_EQ(0u, books.Count(1, TableBat));
    EXPECT_EQ(6u, books.Count(1, TableKurse));
}
