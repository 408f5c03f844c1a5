// The export of Kontenblatt and Kostenstellenauswertung: from the dialog to the window of the sheets.
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/platform/platform.h"
#include "src/reports/financial/kontenblatt_viewer.h"

namespace vark {

namespace {

// From the export's dialog to its view.
VarkWindow MakeSheets(SheetBuild &build, VarkWindow parent, ReportParams *params, bool &done)
{
    HeldTables held(*build.Run.Context);
    if (!HoldSheetTables(held, build.IsKosten)) return nullptr;
    StartChoice(build.Run, params);
    bool accepted = false;
    VarkWindow view = AskAndBuildSheets(build, parent, accepted, done);
    if (accepted && params != nullptr) ReturnChoice(build.Run, *params);
    return view;
}

// The window that the export answers with: the frame around a view that is a window, else the view itself.
VarkWindow FrameOf(KontenblattState *state, VarkWindow parent, VarkWindow view)
{
    if (view != nullptr && IsWindow(static_cast<HWND>(view))) return OpenSheetFrame(state, parent, view);
    FreeThreadBlock(&state->Block);
    return view;
}

} // namespace

} // namespace vark

using namespace vark;

VarkWindow VARK_CALL VARK_Kontenblatt(int32_t mandant, int32_t kosten, VarkWindow parent,
                                      ReportParams *params)
{
    ThreadContext *context = nullptr;
    if (EnterExport(context) != ready) return nullptr;
    FistaRecord fista;
    if (SelectMandant(*context, mandant, fista) < 1) return nullptr;
    auto *state = static_cast<KontenblattState *>(AllocateThreadBlock(*context, sizeof(KontenblattState)));
    if (state == nullptr) return nullptr;
    SheetBuild &build = state->Build;
    build.MandantNummer = mandant;
    build.IsKosten = kosten != 0;
    build.Run.Context = context;
    build.Run.Mandant = fista;
    build.Run.Dialog = &SheetKind(build.IsKosten).Dialog;
    bool done = false;
    VarkWindow view = MakeSheets(build, parent, params, done);
    const bool isPrinted = done && view == nullptr;
    VarkWindow window = FrameOf(state, parent, view);
    if (params != nullptr && (window != nullptr || isPrinted)) params->ViewResult = 1;
    return window;
}
