/*
 * The report engine: librs.so. A host opens a report on a template, hands it records, opens a view of the
 * finished report and exports, prints or closes it.
 *
 *   int32_t report = RSOpenReport("/opt/merida/reports/or_slist.rs", "tervoSUSALIST0.0", 0);
 *   RSAddData(report, 0, &header);
 *   while (...) RSAddData(report, 1, &line);
 *   RSWindow view = RSOpenView(report, "Summen- und Saldenliste", "%N",
 *                              0, 0, 0, 0, 0, 0, 0, 65535, 65535, 0);
 *   RSExportView(view, "susa.pdf");
 *   RSCloseReport(report);
 *
 * Handles of reports are 16-bit numbers from 1 in the low word of 32; the high word of an argument is
 * ignored, and the high word of a result is 0. A handle that was closed is not given out again before 32766
 * others were.
 *
 * Texts are NUL-terminated Windows-1252; paths are as the system takes them.
 *
 * Records are packed structures, little-endian, without a length: how long a record is follows from the
 * report id and its kind, and that many bytes are read. Texts in them are NUL-terminated or fill their field.
 *
 * Any function may be called from any thread at any time. Wrong, closed and foreign handles, kinds and null
 * pointers are refused. Two calls with the same report follow one another, with different reports run at
 * once.
 *
 * Every failure writes one line to standard error, "librs: ...", UTF-8, which names the file concerned; a
 * mistake of a template names its line as well.
 */
#ifndef RS_H
#define RS_H

#include <stdint.h>

#ifdef RS_BUILD
#define RS_API __attribute__((visibility("default")))
#else
#define RS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A window of the window system, or, without that, an opaque value that these functions take. */
typedef void *RSWindow;

/* Opens an empty report on the template at `templatePath`, which must be one for `reportId`. `reserved` is
   not read. Returns the report's handle. 0: the file is missing, is no sound template, or is one for another
   report; the report id is unknown; too many reports are open; no memory or no space for temporary files. */
RS_API int32_t RSOpenReport(const char *templatePath, const char *reportId, int32_t reserved);

/* Opens a second, empty report on the template of an open one, as that was when it was opened, whatever has
   become of the file. `reportId` must be the id of the first. The two end independently. Returns the handle
   of the second, 0 on failure. */
RS_API int32_t RSCopyReport(int32_t report, const char *reportId, int32_t reserved);

/* Ends a report. Its views without a window end with it; a view with a window goes on showing it, and ends
   when the window is destroyed. A handle that is not open is ignored. */
RS_API void RSCloseReport(int32_t report);

/* Hands over one record: kind 0 is the header, 1 to 8 are the data records of the report. Nothing of `record`
   is kept. Returns 1. 0: no such report, a kind that this report does not have, a null record, a view of the
   report was opened already, the template failed on the record, a sum grew too large, or the temporary file
   cannot grow. After a failure of the template, a sum or the file the report stays failed and everything but
   RSCloseReport refuses it. */
RS_API int32_t RSAddData(int32_t report, int32_t kind, const void *record);

/* How many records all reports of this process have taken so far, for a host that shows how far one is. */
RS_API int64_t RSRecordsTaken(void);

/* Opens a counting report on the template of an open one: it takes numbers of records instead of records.
   Returns its handle (of a series of its own), 0 on failure. It does not need the report any longer. */
RS_API int32_t RSOpenVirtualReport(int32_t report);

/* Ends a counting report. A handle that is not open is ignored. */
RS_API void RSCloseVirtualReport(int32_t virtualReport);

/* Counts `count` records of one kind, one after another, as if each printed all its rows. Returns 1; 0 for a
   handle that is not open, a kind that the report does not have, or a negative count. */
RS_API int32_t RSAddVirtualData(int32_t virtualReport, int32_t kind, int32_t count);

/* The number of pages that what was counted so far would take, closing sums included: at least 1, since a
   report without records is a page with its head; at most 2147483647. 0 for a handle that is not open. More
   may be counted afterwards. */
RS_API int32_t RSGetVirtualPages(int32_t virtualReport);

/* Finishes the report - open groups are closed, the grand total is made - and opens a view of it, which owns
   the report from then on. `title` is the view's title, empty for that of the template. A report may have
   several views. Returns the view, 0 on failure.

   The view is a window of the calling thread (libvarkui.so beside this library), whether or not anybody sees
   it, to be destroyed with DestroyWindow or by the person; its end, or that of its thread, ends the report.
   With WS_CHILD it stands in `parent` at the given rectangle; without, `parent` owns it, it can be moved,
   sized and closed whatever the style, has the size of the rectangle unless that is empty, and is shown when
   its thread next handles messages - so one that is printed and destroyed is never seen. With WS_CHILD, but
   a `parent` that is none, it is a hidden window of its own until somebody makes it a child (SetParent,
   WS_CHILD) and shows it.

   The three functions below take the window around such a child in its place.

   Without a window system the result is an opaque value for the three functions below, RSCloseReport ends it,
   and parent, rectangle and styles are not read. `pageTitle`, the two last numbers and `frame` are never
   read. */
RS_API RSWindow RSOpenView(int32_t report, const char *title, const char *pageTitle, RSWindow parent,
                           int32_t left, int32_t top, int32_t width, int32_t height, uint32_t style,
                           uint32_t exStyle, uint32_t firstReserved, uint32_t secondReserved, RSWindow frame);

/* Opens a view of `report` in place of `view`, a view of a report with the same id: title and parent are
   taken from it, the rectangle is one of the screen. `third` and `reserved` are taken and not read. `view`
   stays until it is ended. Returns the new view, 0 on failure. */
RS_API RSWindow RSCopyView(int32_t report, RSWindow view, int32_t third, int32_t left, int32_t top,
                           int32_t width, int32_t height, uint32_t style, uint32_t exStyle, int32_t reserved);

/* Prints the view. Returns 1 when the printer's queue took it - of one that stands still the person is told,
   the report waits there - else 0; the person is told why. */
RS_API int32_t RSPrintView(RSWindow view, int32_t reserved);

/* Writes the view to a file, replacing it; the kind follows from the extension, in any case of letters:
     pdf   pages
     csv   UTF-8 with a byte order mark, semicolons, decimal commas: a line per row; the first column tells
           the kind of row
     json  one object: report, title, columns, rows
     html  one page that needs nothing else
     txt   UTF-8 table for a terminal
   Returns 1. 0: no such view, another extension, or the file cannot be written; then what was there before is
   still there and nothing else. */
RS_API int32_t RSExportView(RSWindow view, const char *path);

#ifdef __cplusplus
}
#endif

#endif
