/* A host that posts, reads and has a person choose, and tells what came of it. It is linked with the import
   library or, with BARE, finds the functions in the library by their names. */
#include "include/vark40.h"

#include <stdio.h>

#ifdef BARE
typedef int32_t(VARK_CALL *StatusFunction)(void);
typedef int32_t(VARK_CALL *PostFunction)(int32_t, int32_t, int32_t, const char *, const char *, const char *,
                                         const char *, int32_t, const char *, int32_t, const char *,
                                         const char *, const char *);
typedef int32_t(VARK_CALL *InitFunction)(int32_t, int32_t, const char *, int32_t);
typedef int32_t(VARK_CALL *AccountFunction)(char *, char *, char *, uint32_t *, uint32_t *, uint32_t *);
typedef int32_t(VARK_CALL *ChooseFunction)(VarkWindow);
typedef void(VARK_CALL *CloseFunction)(void);

static HMODULE library;
#define FUNCTION(type, name)        ((type)(void *)GetProcAddress(library, #name))
#define VARK_Status                 FUNCTION(StatusFunction, VARK_Status)
#define VARK_BuchungEinfuegenDirekt FUNCTION(PostFunction, VARK_BuchungEinfuegenDirekt)
#define VARK_InitHoleKonto          FUNCTION(InitFunction, VARK_InitHoleKonto)
#define VARK_HoleSako               FUNCTION(AccountFunction, VARK_HoleSako)
#define VARK_HoleMandantenNr        FUNCTION(ChooseFunction, VARK_HoleMandantenNr)
#define VARK_SchliesseDB            FUNCTION(CloseFunction, VARK_SchliesseDB)
#endif

int main(void)
{
    char konto[8], kuerzel[10], name[50];
    uint32_t zuordnung, flag1, flag2;
#ifdef BARE
    library = LoadLibraryA("VARK40.dll");
    if (library == NULL) return 2;
#endif
    printf("status %d\n", (int)VARK_Status());
    printf("posted %d\n", (int)VARK_BuchungEinfuegenDirekt(0, 1, 16, "15.04.1998", "M-0498", "Miete April",
                                                           "8010", 1, "1840", 1, "1500,00", "", ""));
    printf("refused %d\n", (int)VARK_BuchungEinfuegenDirekt(0, 1, 16, "15.04.1998", "M-0498", "Miete April",
                                                            "8010", 1, "8010", 1, "1500,00", "", ""));
    printf("reading %d\n", (int)VARK_InitHoleKonto(1, 1, "2000", 0));
    printf("read %d", (int)VARK_HoleSako(konto, kuerzel, name, &zuordnung, &flag1, &flag2));
    printf(" %s %s %u\n", konto, name, (unsigned)zuordnung);
    fflush(stdout);
    printf("chosen %d\n", (int)VARK_HoleMandantenNr(NULL));
    VARK_SchliesseDB();
    return 0;
}
