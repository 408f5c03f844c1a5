#include "report-engine/forms/walk.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace rs {

Walk *StartWalk(const View &view)
{
    auto *walk = static_cast<Walk *>(std::malloc(sizeof(Walk)));
    if (walk == nullptr) return nullptr;
    StartReading(walk->Reader, view.Of->Store.File);
    walk->HasFailed = false;
    walk->Items = 0;
    walk->Whole = static_cast<int64_t>(SpoolEnd(view.Of->Store));
    return walk;
}

bool NextItem(Walk &walk, Writer &writer)
{
    constexpr uint64_t itemsBetweenLooks = 2048;
    if (writer.Watch != nullptr && ++walk.Items % itemsBetweenLooks == 0 &&
        !writer.Watch->GoesOn(writer.Watch->Context, static_cast<int64_t>(walk.Reader.ItemOffset),
                              walk.Whole)) {
        writer.Error = ECANCELED;
    }
    return writer.Error == 0 && ReadItem(walk.Reader, walk.HasFailed);
}

bool EndWalk(Walk *walk)
{
    const bool isGood = !walk->HasFailed;
    std::free(walk);
    return isGood;
}

namespace {

// A part of a page head that tells page numbers says nothing where there are no pages.
bool IsAboutPages(const LinePart &part)
{
    return memmem(part.Text, part.Length, "{page}", 6) != nullptr ||
           memmem(part.Text, part.Length, "{pages}", 7) != nullptr ||
           memmem(part.Text, part.Length, "{sheet}", 7) != nullptr;
}

} // namespace

void HeadPartsOf(const SpoolReader &reader, LinePart (&parts)[3])
{
    LinePartsOf(reader.Data, parts);
    for (LinePart &part : parts) {
        if (IsAboutPages(part)) part.Length = 0;
    }
}

LinePart CellText(const Cell &cell, Look look, char (&out)[amountSize])
{
    if (cell.Kind == CellKind::text) return {cell.Text, cell.Length};
    const bool isWhole = cell.Kind == CellKind::number || cell.Kind == CellKind::flag;
    return {out, isWhole ? WriteNumber(cell.Number, look, out) : WriteHundredths(cell.Number, look, out)};
}

LinePart PrintedText(const Definition &def, uint8_t style, const Cell &cell, char (&out)[amountSize])
{
    if (IsBlank(def, style, cell)) return {out, 0};
    return CellText(cell, Look::grouped, out);
}

bool IsNoRate(const Definition &def, uint8_t style, const Cell &cell)
{
    return cell.Kind == CellKind::rate && IsBlank(def, style, cell);
}

} // namespace rs
