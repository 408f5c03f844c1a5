/* A library whose books hold an open item with an amount that is none, and a good one behind it. */
#include <stdint.h>
#include <stdio.h>

#include "include/vark40.h"

static int given;

int32_t VARK_Status(void) { return VARK_GUT; }
void VARK_SchliesseDB(void) {}
int32_t VARK_BeendeHolen(void) { return VARK_GUT; }

int32_t VARK_InitHoleOP(int32_t mandant, const char *konto, int32_t kontoart, int32_t showMessages)
{
    (void)mandant, (void)konto, (void)kontoart, (void)showMessages;
    given = 0;
    return VARK_GUT;
}

int32_t VARK_HoleOP(char *konto, char *referenz1, char *referenz2, char *datum1, char *datum2, char *datum3,
                    char *text1, char *text2, int32_t form, char *betrag1, char *betrag2, char *waehrung)
{
    (void)form;
    *referenz1 = *referenz2 = *datum1 = *datum3 = *text1 = *text2 = *waehrung = 0;
    snprintf(konto, 8, "1001%d", given);
    snprintf(datum2, 11, "%s", "01.04.1998");
    snprintf(betrag1, 17, "%s", given == 0 ? "+00x,50" : "+000000012,50");
    snprintf(betrag2, 17, "%s", "0000000000,00");
    return given++ == 0 ? VARK_GUT : VARK_LETZTER;
}
