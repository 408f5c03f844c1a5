#include "report-engine/printing.h"

#include "report-engine/complain.h"

namespace rs {

bool PrintView(const View &view)
{
    Complain(view.Of->Path, ": there is no printer");
    return false;
}

} // namespace rs
