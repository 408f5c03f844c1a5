// The entries as a host calls them: handles, kinds, the life of a report from open to close.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>
#include <thread>

#include "report_support.h"
#include "window-system/include/varkui.h"

using namespace reports;

TEST(Entries, AReportRunsFromTemplateToFile)
{
    const Directory directory;
    const int32_t report = OpenShipped("or_slist.rs", susaId);
    ASSERT_GT(report, 0);
    EXPECT_EQ(AddSusaHeader(report), 1);
    EXPECT_EQ(AddSusaLine(report, {.Konto = "1000", .Name = "Kasse", .KumSoll = 123456}), 1);
    RSWindow view = OpenView(report);
    ASSERT_NE(view, nullptr);
    for (const char *name : {"a.pdf", "a.csv", "a.json", "a.html", "a.txt"}) {
        EXPECT_EQ(RSExportView(view, directory.At(name).c_str()), 1) << name;
    }
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"a.csv", "a.html", "a.json", "a.pdf", "a.txt"}));
    RSCloseReport(report);
}

TEST(Entries, HandlesAreSixteenBitsAndTheirHighWordIsIgnored)
{
    const int32_t report = OpenShipped("or_slist.rs", susaId);
    ASSERT_GT(report, 0);
    ASSERT_LE(report, 0x7FFF);
    const auto marked = static_cast<int32_t>(0xABCD0000u | static_cast<uint32_t>(report));
    EXPECT_EQ(AddSusaHeader(marked), 1);
    EXPECT_NE(OpenView(marked), nullptr);
    RSCloseReport(marked);
    EXPECT_EQ(OpenView(report), nullptr);
}

TEST(Entries, AClosedHandleIsRefusedEverywhere)
{
    const int32_t report = OpenShipped("or_slist.rs", susaId);
    RSWindow view = OpenView(report);
    ASSERT_NE(view, nullptr);
    DestroyWindow(static_cast<HWND>(view));
    EXPECT_EQ(AddSusaHeader(report), 0);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
    EXPECT_EQ(RSOpenVirtualReport(report), 0);
    EXPECT_EQ(OpenView(report), nullptr);
    EXPECT_EQ(RSExportView(view, "/tmp/never.pdf"), 0) << "the view has ended with its report";
    EXPECT_EQ(RSPrintView(view, 0), 0);
    RSCloseReport(report);
}

TEST(Entries, HandlesThatNobodyGaveOutAreRefused)
{
    for (const int32_t handle : {0, 1, -1, 0x7FFF, 0x8000, 0xFFFF, 0x10000, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(AddSusaHeader(handle), 0) << handle;
        EXPECT_EQ(OpenView(handle), nullptr) << handle;
        EXPECT_EQ(RSOpenVirtualReport(handle), 0) << handle;
        EXPECT_EQ(RSAddVirtualData(handle, 0, 1), 0) << handle;
        EXPECT_EQ(RSGetVirtualPages(handle), 0) << handle;
        EXPECT_EQ(RSCopyReport(handle, susaId, 0), 0) << handle;
        RSCloseReport(handle);
        RSCloseVirtualReport(handle);
        RSWindow window = reinterpret_cast<RSWindow>(static_cast<intptr_t>(handle)); // NOLINT: no pointer
        EXPECT_EQ(RSExportView(window, "/tmp/never.csv"), 0) << handle;
        EXPECT_EQ(RSPrintView(window, 0), 0) << handle;
        EXPECT_EQ(RSCopyView(handle, window, 0, 0, 0, 0, 0, 0, 0, 0), nullptr) << handle;
    }
}

TEST(Entries, AClosedHandleDoesNotComeBackAtOnce)
{
    std::set<int32_t> seen;
    for (int i = 0; i < 50; ++i) {
        const int32_t report = OpenShipped("or_slist.rs", susaId);
        ASSERT_GT(report, 0);
        EXPECT_TRUE(seen.insert(report).second);
        RSCloseReport(report);
    }
}

TEST(Entries, KindsThatTheReportDoesNotHaveAreRefusedAndTheReportGoesOn)
{
    const int32_t report = OpenShipped("or_slist.rs", susaId);
    const char record[1000] = {};
    const std::string errors = Errors([&] {
        for (const int32_t kind : {-1, 2, 8, 9, INT32_MIN, INT32_MAX}) {
            EXPECT_EQ(RSAddData(report, kind, record), 0) << kind;
        }
    });
    EXPECT_NE(errors.find("or_slist.rs: Sätze der Art 2 gibt es nicht.\n"), std::string::npos) << errors;
    EXPECT_EQ(Errors([&] { EXPECT_EQ(RSAddData(report, 1, nullptr), 0); }),
              "librs: " + ShippedTemplate("or_slist.rs") + ": Der Satz fehlt.\n");
    EXPECT_EQ(AddSusaLine(report, {.Konto = "1000"}), 1);
    RSCloseReport(report);
}

TEST(Entries, NothingIsAddedOnceAViewIsOpen)
{
    const int32_t report = OpenShipped("or_slist.rs", susaId);
    ASSERT_EQ(AddSusaHeader(report), 1);
    ASSERT_NE(OpenView(report), nullptr);
    EXPECT_EQ(Errors([&] { EXPECT_EQ(AddSusaLine(report, {.Konto = "1000"}), 0); }),
              "librs: " + ShippedTemplate("or_slist.rs") +
                  ": Ein Satz kommt noch, nachdem der Bericht abgeschlossen wurde.\n");
    EXPECT_NE(OpenView(report), nullptr) << "a second view of the same report";
    RSCloseReport(report);
}

TEST(Entries, ATemplateIsForItsOwnReport)
{
    struct {
        const char *id;
        const char *said;
    } const cases[] = {
        {"tervoKTOBLATT0.0", ":4: this is a template for 'tervoSUSALIST0.0', not for 'tervoKTOBLATT0.0'\n"},
        {"tervoNICHTS0.0", ": Einen Bericht „tervoNICHTS0.0“ gibt es nicht.\n"},
        {"", ": Einen Bericht „“ gibt es nicht.\n"},
        {nullptr, ": Einen Bericht „“ gibt es nicht.\n"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(Errors([&] { EXPECT_EQ(OpenShipped("or_slist.rs", row.id), 0); }),
                  "librs: " + ShippedTemplate("or_slist.rs") + row.said);
    }
}

TEST(Entries, ACopyIsASecondEmptyReportOnTheTemplateAsItWas)
{
    const Directory directory;
    const std::string path = directory.Write("or_slist.rs", ReadFile(ShippedTemplate("or_slist.rs")));
    directory.Write("or_page.lua", ReadFile(ShippedTemplate("or_page.lua")));
    const int32_t first = RSOpenReport(path.c_str(), susaId, 0);
    ASSERT_GT(first, 0);
    ASSERT_EQ(AddSusaLine(first, {.Konto = "1111"}), 1);
    directory.Write("or_slist.rs", "this is no template");
    const int32_t second = RSCopyReport(first, susaId, 0);
    ASSERT_GT(second, 0);
    EXPECT_NE(second, first);
    ASSERT_EQ(AddSusaLine(second, {.Konto = "2222"}), 1);
    RSWindow firstView = OpenView(first);
    RSWindow secondView = RSCopyView(second, firstView, 7, 1, 2, 3, 4, 5, 6, 0);
    ASSERT_NE(secondView, nullptr);
    EXPECT_NE(secondView, firstView);
    RSCloseReport(first);
    ASSERT_EQ(RSExportView(secondView, directory.At("b.csv").c_str()), 1)
        << "the copy lives without the first";
    const std::string csv = ReadFile(directory.At("b.csv"));
    EXPECT_NE(csv.find("Zeile;2222"), std::string::npos);
    EXPECT_EQ(csv.find("1111"), std::string::npos);
    EXPECT_EQ(Errors([&] { EXPECT_EQ(RSCopyReport(second, kontenblattId, 0), 0); }),
              "librs: " + path + ": Das ist nicht der Bericht „tervoKTOBLATT0.0“.\n");
    RSCloseReport(second);
}

TEST(Entries, ManyReportsRunAtOnce)
{
    const Directory directory;
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> written = 0;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            const int32_t report = OpenShipped("or_slist.rs", susaId);
            AddSusaHeader(report);
            for (int line = 0; line < 300; ++line) {
                AddSusaLine(report, {.Konto = std::to_string(1000 * (number + 1) + line), .KumSoll = 100});
            }
            RSWindow view = OpenView(report);
            const std::string stem = directory.At(std::to_string(number));
            written += RSExportView(view, (stem + ".csv").c_str());
            written += RSExportView(view, (stem + ".pdf").c_str());
            RSCloseReport(report);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(written, 8);
    for (int number = 0; number < 4; ++number) {
        const std::string csv = ReadFile(directory.At(std::to_string(number) + ".csv"));
        EXPECT_EQ(LinesOf(csv).size(), 302u) << "titles, lines and the total";
        EXPECT_NE(csv.find("Gesamt;;Gesamtsumme;0,00;0,00;0,00;0,00;300,00;"), std::string::npos)
            << csv.substr(csv.size() - 200);
        EXPECT_GT(PageCountOf(directory.At(std::to_string(number) + ".pdf")), 5);
    }
}

TEST(Entries, OneReportMayBeUsedAndClosedFromSeveralThreads)
{
    for (int round = 0; round < 20; ++round) {
        const int32_t report = OpenShipped("or_slist.rs", susaId);
        ASSERT_GT(report, 0);
        const auto work = [report] {
            for (int i = 0; i < 20; ++i) {
                AddSusaLine(report, {.Konto = "1000"});
                const int32_t counting = RSOpenVirtualReport(report);
                RSAddVirtualData(counting, 1, 100);
                RSGetVirtualPages(counting);
                RSCloseVirtualReport(counting);
                RSWindow view = i == 15 ? OpenView(report) : nullptr;
                RSExportView(view, "/dev/null/a.csv");
            }
        };
        testing::internal::CaptureStderr();
        std::thread first(work);
        std::thread second(work);
        std::thread closer([report] { RSCloseReport(report); });
        first.join();
        second.join();
        closer.join();
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(AddSusaLine(report, {.Konto = "1000"}), 0);
    }
}
