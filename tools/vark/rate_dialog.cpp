// vark-kurse: opens the dialog in which rates of exchange are kept, for `vark kurse`.
//   vark-kurse MANDANT
//
// No export opens this dialog: hosts meet it only behind a posting for which a rate is missing, and to make
// such a posting on purpose would leave it in the books. So this program is linked with the library's
// objects, and is one of its own: vark stays a host like any other, with one copy of the library in its
// process.
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/pickers/rate_entry.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"
#include "tools/common/exit_codes.h"

#include <charconv>
#include <cstdio>
#include <cstring>

int main(int argumentCount, char **arguments)
{
    using namespace vark;
    if (argumentCount != 2) {
        std::fputs("Aufruf: vark-kurse MANDANT\n", stderr);
        return tools::ExitUsage;
    }
    int mandant = 0;
    std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), mandant);
    ThreadContext *context = nullptr;
    if (EnterExport(context) != ready) {
        std::fputs("vark-kurse: Die Bibliothek ist nicht bereit.\n", stderr);
        return tools::ExitFailure;
    }
    context->ShowMessages = 1;
    FistaRecord fista;
    if (SelectMandantOrReport(*context, mandant, fista) < 1) return tools::ExitRefused;
    // The dialog begins with today as a person writes it.
    char today[sizeof context->TodayLong];
    text::CopyText(today, context->TodayLong);
    if (ParseDateText(*context, today, sizeof today, false) == DateGood) {
        text::CopyText(context->PendingRateDate, today);
    }
    RunRateDialog(*context, nullptr);
    return tools::ExitGood;
}
