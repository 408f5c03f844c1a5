#include <stdio.h>
#include <vark40.h>

int main(void)
{
    /* Mandant 1, Stapel 16: the rent of April, Soll 8010, Haben 1840, both Sachkonten, no tax. */
    const int32_t result = VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.04.1998", "M-0498", "Miete April",
                                                       "8010", 1, "1840", 1, "1500,00", "", "");
    printf("%s (%d)\n", result == 1 ? "gebucht" : "abgelehnt", (int)result);
    return result == 1 ? 0 : 1;
}
