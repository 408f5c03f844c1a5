#include "fuzz_reports.h"

#include "report-engine/counting.h"
#include "report-engine/forms/forms.h"
#include "report-engine/output.h"
#include "report-engine/report.h"
#include "report-engine/writer.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <unistd.h>

using namespace rs;

namespace reports {

namespace {

constexpr const char *ids[] = {"tervoSUSALIST0.0", "tervoKTOBLATT0.0", "tervoBJOURNAL0.0",
                               "tervoBILANZ0.0",   "tervoGUV0.0",      "tervoUSTVA0.0",
                               "tervoKTOPLAN0.0",  "tervoOPLISTE0.0",  "tervoUSTVAVERPROB0.0"};
constexpr size_t maxRecords = 300;

void WriteForms(const View &view)
{
    auto writer = std::make_unique<Writer>();
    for (bool (*form)(Writer &, const View &) : {WriteCsv, WriteJson, WriteHtml, WriteText}) {
        writer->File = open("/dev/null", O_WRONLY | O_CLOEXEC);
        writer->Error = 0;
        writer->Used = 0;
        if (!form(*writer, view) || !FlushWriter(*writer)) std::abort(); // a sound report can be written
        close(writer->File);
    }
}

} // namespace

void LowerLimits()
{
    sandboxLimits.Memory = size_t{8} << 20;
    sandboxLimits.Block = size_t{1} << 20;
    sandboxLimits.Instructions = 100'000;
    sandboxLimits.CpuTime_ms = 200;
}

bool RunReport(const uint8_t *data, size_t size, const std::string &pdf)
{
    if (size == 0) return false;
    const char *id = ids[data[0] % (sizeof ids / sizeof ids[0])];
    const std::string_view text(reinterpret_cast<const char *>(data) + 1, size - 1);
    const size_t mark = text.find("\n--\n");
    const std::string_view source = text.substr(0, mark);
    const std::string_view kinds = mark == std::string_view::npos ? "" : text.substr(mark + 4);

    // In blocks of their own, so that a byte too many is seen.
    auto exact = std::make_unique<char[]>(source.size());
    std::memcpy(exact.get(), source.data(), source.size());
    Report *report = CreateReportFromSource(TEMPLATES "/fuzz.rs", exact.get(), source.size(), id);
    if (report == nullptr) return false;
    CountingReport *counting = CreateCountingReport(report->Catalogue, report->Def);
    if (counting == nullptr) std::abort();
    for (size_t i = 0; i < kinds.size() && i < maxRecords; ++i) {
        const int kind = static_cast<unsigned char>(kinds[i]) % 10;
        const size_t length = kind < kindCount ? report->Catalogue->RecordSizes[kind] : 1;
        auto record = std::make_unique<char[]>(length);
        for (size_t at = 0; at < length; ++at) {
            record[at] = kinds[(i + 1 + at) % kinds.size()];
        }
        AddRecord(*report, kind, record.get());
        CountRecords(*counting, kind, static_cast<unsigned char>(kinds[i]) * 1000003);
    }
    if (CountedPages(*counting) < 1) std::abort();
    DestroyCountingReport(counting);
    if (FinishReport(*report)) {
        View view = {};
        view.Of = report;
        WriteForms(view);
        if (!pdf.empty() && ExportView(view, pdf.c_str(), nullptr) == Written::failed) std::abort();
    }
    DestroyReport(report);
    return true;
}

} // namespace reports
