// The templates of all reports, and the steps that every report shares from the opened template to the view.
// The export VARK_InitReports lies here as well.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Rows of the catalogue.
enum ReportRow : int16_t {
    ReportKontenplanPeko = 0,
    ReportKontenplanSako = 1,
    ReportSummenSalden = 2,
    ReportHauptabschluss = 3,
    ReportUmsatzstatistik = 4,
    ReportBuchungsjournal = 5,
    ReportKontenblattOhne = 6,
    ReportKontenblattMit = 7,
    ReportKostensalden = 8,
    ReportKostenstellen = 9,
    ReportKostenjournal = 10,
    ReportKostenaufteilung = 11,
    ReportUstvaDruck = 12,
    ReportUstvaDruck7 = 13,
    ReportUstva = 14,
    ReportZusammenfassendeMeldung = 15,
    ReportGuv = 16,
    ReportBilanz = 17,
    ReportVerprobung = 18,
    ReportOpListe = 19,
    ReportKostenstellenauswertung = 20,
};

inline constexpr int reportRowCount = 21;

struct ReportCatalogueEntry {
    const char *Template;    // file name without ".rs"
    const char *ReportId;    // what the engine knows the records under
    const char *DisplayName; // Windows-1252, for message 1446
};

extern const ReportCatalogueEntry ReportCatalogue[reportRowCount];

// Where a finished report goes, and the value that a parameter block carries for it.
enum class Ausgabe : int32_t { Bildschirm = 0, Drucker = 1 };

// Opens the template of a row; the wait cursor stays on while the report is built. 0 when it could not be
// opened, which has been shown (message 1456 with the full path).
uint16_t OpenReportTemplate(ReportRow row);

// A second report on the template of an open one.
uint16_t CopyReportTemplate(ReportRow row, uint16_t report);

// Hands a record over. False when the engine refuses it: the report has failed then.
bool AddReportRecord(uint16_t report, int32_t kind, const void *record);

// Opens the view of a finished report and shows it, or prints it and destroys the view. The view owns its
// report, which ends with it. `view` gets the view on screen, null if it was printed. False when no view came
// about; the report is closed then and message 1446 has been shown. What the printer said is in
// LastPrintResult.
bool ShowOrPrintReport(ThreadContext &context, ReportRow row, uint16_t report, Ausgabe ausgabe,
                       VarkWindow parent, VarkWindow &view);

// A further view of `report` in the place of an open one, whose styles and place on the screen it takes.
// `third` is handed on. Returns 1 with the view in `newView`; without one `newView` is null, message 1446 has
// been shown, and its answer is returned, which for OK is 1 as well: only `newView` tells.
int32_t CopyReportView(ReportRow row, VarkWindow view, uint16_t report, int32_t third, VarkWindow &newView);

// Shows message 1446, that the report of this row could not be made. Returns 0 once the person has taken
// note, the report's success.
int32_t ReportFailed(ReportRow row);

// The end of a report that failed after its template was open: closes it (0 for none) and tells of it.
void AbandonReport(ReportRow row, uint16_t report);

} // namespace vark
