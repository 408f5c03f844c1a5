/* A host without windows: the Summen- und Saldenliste of Mandant 1 per 31.03.1998 as a file, whose kind
 * follows from its ending.
 *
 *   cc -I. -Iinclude examples/saldenliste.c build/libvark40.so build/libvarkui.so build/librs.so \
 *       -o saldenliste && ./saldenliste susa.pdf
 */
#include <stdio.h>
#include <stdlib.h>

#include <vark40.h>

#include "report-engine/include/rs.h"
#include "window-system/include/varkui.h"

int main(int argc, char **argv)
{
    ReportParams chosen = {.ParamFlags = VARK_PARAM_ZEITRAUM | VARK_PARAM_DATEN,
                           .Zeitraum = VARK_ZEITRAUM_TAGE,
                           .VonDatum = "010198",
                           .BisDatum = "310398"};
    if (argc != 2) {
        fputs("Aufruf: saldenliste DATEI\n", stderr);
        return 2;
    }
    /* Nobody answers a dialog here: it is taken as `chosen` fills it. */
    setenv("VARK_UI", "headless", 1);
    HWND view = VARK_SummenSaldenListe(1, NULL, &chosen);
    if (view == NULL) {
        fputs("Die Liste wurde nicht erstellt.\n", stderr);
        return 1;
    }
    const int isWritten = RSExportView(view, argv[1]);
    DestroyWindow(view);
    puts(isWritten ? "geschrieben" : "nicht geschrieben");
    return isWritten ? 0 : 1;
}
