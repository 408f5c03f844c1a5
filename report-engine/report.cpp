#include "report-engine/report.h"

#include "host/error_texts.h"
#include "report-engine/complain.h"
#include "report-engine/sources.h"
#include "report-engine/template.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

constexpr size_t messageSize = 400;

char *Duplicate(const char *bytes, size_t length)
{
    char *copy = static_cast<char *>(std::malloc(length + 1));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, bytes, length);
    copy[length] = 0;
    return copy;
}

bool FailReport(Report &report, const char *message)
{
    report.State = ReportState::failed;
    Complain(report.Path, ":%s", message);
    return false;
}

bool CopyShared(Report &to, const Report &from)
{
    for (int i = 0; i < from.SharedCount; ++i) {
        SharedSource &shared = to.Shared[i];
        shared = from.Shared[i];
        shared.Source = Duplicate(from.Shared[i].Source, from.Shared[i].Length);
        if (shared.Source == nullptr) return false;
        ++to.SharedCount;
    }
    return true;
}

// Takes ownership of `source`.
Report *CreateOwning(const char *path, char *source, size_t length, const CatalogueRow *row,
                     const Report *sharing)
{
    auto *report = static_cast<Report *>(std::calloc(1, sizeof(Report)));
    char *pathCopy = Duplicate(path, std::strlen(path));
    if (report == nullptr || pathCopy == nullptr) {
        ComplainOf(path, ENOMEM);
        std::free(report);
        std::free(pathCopy);
        std::free(source);
        return nullptr;
    }
    pthread_mutex_init(&report->Lock, nullptr);
    report->State = ReportState::declaring;
    report->Path = pathCopy;
    report->Source = source;
    report->SourceLength = length;
    report->Catalogue = row;
    report->Store.File = -1;
    InitOrdering(report->Waiting);
    report->WaitingKind = -1;
    char message[messageSize] = "1: not enough memory";
    if ((sharing != nullptr && !CopyShared(*report, *sharing)) || !OpenSandbox(report->Box, report) ||
        !RunProtected(report->Box, OfferFunctions, report, message, sizeof message) ||
        !RunProtected(report->Box, RunDeclarations, report, message, sizeof message)) {
        FailReport(*report, message);
        DestroyReport(report);
        return nullptr;
    }
    if (!OpenSpool(report->Store, report->Def)) {
        Complain(path, ": Zwischendatei: %s", host::TextOfError(report->Store.Error).Text);
        DestroyReport(report);
        return nullptr;
    }
    StartMarker(report->Marker, report->Def);
    StartLayout(report->Counted, report->Def, nullptr, nullptr);
    StartHalf(report->Half, report->Def, nullptr, nullptr);
    report->State = ReportState::open;
    return report;
}

const CatalogueRow *RowOrComplain(const char *path, const char *reportId)
{
    const CatalogueRow *row = FindInCatalogue(reportId);
    if (row == nullptr)
        Complain(path, ": Einen Bericht „%s“ gibt es nicht.", reportId != nullptr ? reportId : "");
    return row;
}

} // namespace

Report *CreateReport(const char *path, const char *reportId)
{
    if (path == nullptr) path = "";
    const CatalogueRow *row = RowOrComplain(path, reportId);
    if (row == nullptr) return nullptr;
    size_t length = 0;
    char *source = ReadSource(path, length);
    if (source == nullptr) {
        ComplainOf(path, errno);
        return nullptr;
    }
    return CreateOwning(path, source, length, row, nullptr);
}

Report *CreateReportFromSource(const char *path, const char *source, size_t length, const char *reportId,
                               const Report *sharing)
{
    const CatalogueRow *row = RowOrComplain(path, reportId);
    char *copy = row != nullptr ? Duplicate(source, length) : nullptr;
    if (copy == nullptr) return nullptr;
    return CreateOwning(path, copy, length, row, sharing);
}

void DestroyReport(Report *report)
{
    CloseSandbox(report->Box);
    CloseSpool(report->Store);
    FreeOrdering(report->Waiting);
    pthread_mutex_destroy(&report->Lock);
    std::free(report->Path);
    std::free(report->Source);
    for (int i = 0; i < report->SharedCount; ++i) {
        std::free(report->Shared[i].Source);
    }
    std::free(report);
}

namespace {

bool FailOnFile(Report &report, int error)
{
    report.State = ReportState::failed;
    Complain(report.Path, ": Zwischendatei: %s", host::TextOfError(error).Text);
    return false;
}

bool PrintRecord(Report &report, int kind, const char *record)
{
    RecordCall call = {&report, kind, record};
    char message[messageSize];
    const bool isGood = RunProtected(report.Box, RunRecord, &call, message, sizeof message);
    report.IsPrinting = false;
    return isGood || FailReport(report, message);
}

// Keeps a record until the last of its run has come.
bool KeepRecord(Report &report, int kind, const char *record)
{
    const KindCode &code = report.Kinds[kind];
    if (report.WaitingKind != kind) {
        StartRun(report.Waiting, code.KeyWidth, report.Catalogue->RecordSizes[kind]);
        report.WaitingKind = kind;
    }
    char key[maxKeyWidth];
    size_t used = 0;
    for (int i = 0; i < code.OrderCount; ++i) {
        const Field &field = code.Fields[code.Order[i].Number];
        WriteKey(field, record, code.Order[i].IsFalling, key + used);
        used += KeyWidth(field);
    }
    return AddToRun(report.Waiting, key, record) || FailOnFile(report, report.Waiting.Error);
}

// Prints the records that wait, in their order.
bool PrintWaiting(Report &report)
{
    const int kind = report.WaitingKind;
    if (kind < 0) return true;
    report.WaitingKind = -1;
    if (!EndRun(report.Waiting)) return FailOnFile(report, report.Waiting.Error);
    while (const char *record = NextOfRun(report.Waiting)) {
        if (!PrintRecord(report, kind, record)) return false;
    }
    return report.Waiting.Error == 0 || FailOnFile(report, report.Waiting.Error);
}

} // namespace

bool AddRecord(Report &report, int kind, const void *record)
{
    if (report.State != ReportState::open) {
        Complain(report.Path, ": Ein Satz kommt noch, nachdem der Bericht %s.",
                 report.State == ReportState::finished ? "abgeschlossen wurde" : "mißlungen ist");
        return false;
    }
    if (kind < 0 || kind >= kindCount || report.Catalogue->RecordSizes[kind] == 0) {
        Complain(report.Path, ": Sätze der Art %d gibt es nicht.", kind);
        return false;
    }
    if (record == nullptr) {
        Complain(report.Path, ": Der Satz fehlt.");
        return false;
    }
    if (!report.Def.Kinds[kind].IsDeclared) return true; // the template prints nothing of it
    const char *bytes = static_cast<const char *>(record);
    if (kind != report.WaitingKind && !PrintWaiting(report)) return false;
    return report.Def.Kinds[kind].IsOrdered ? KeepRecord(report, kind, bytes)
                                            : PrintRecord(report, kind, bytes);
}

bool FinishReport(Report &report)
{
    if (report.State == ReportState::finished) return true;
    if (report.State != ReportState::open || !PrintWaiting(report)) return false;
    FreeOrdering(report.Waiting);
    char message[messageSize];
    const bool isGood = RunProtected(report.Box, RunFinish, &report, message, sizeof message);
    report.IsPrinting = false;
    if (!isGood) return FailReport(report, message);
    // The header's function may have changed columns.
    if (!PatchDefinition(report.Store, report.Def) || !FlushSpool(report.Store)) {
        return FailOnFile(report, report.Store.Error);
    }
    CloseSandbox(report.Box); // it has said what it had to say
    report.PageCount = report.Def.Gap > 0 ? LaterOf(report.LeftEnd, EndHalf(report.Half, {})).Page
                                          : EndLayout(report.Counted);
    report.State = ReportState::finished;
    return true;
}

} // namespace rs
