#include "src/walks/tree_walk.h"

#include "src/frame/record_store.h"
#include "src/values/account_numbers.h"

#include <algorithm>

namespace vark {

using text::CopyText;

namespace {

constexpr int rootLevel = 0;
constexpr int firstLeafKind = 4;

void TakeNumber(TreeScan &scan)
{
    JustifyNumber(scan.Konto, scan.Node.Text);
    scan.Found = true;
}

// The accounts outside the tree follow each other under their common number 0.
bool TakeUngrouped(TreeScan &scan, bool isRead, bool found)
{
    scan.Found = false;
    if (!isRead || !found || scan.Node.Id != 0) return isRead;
    scan.Place = TreePlace::Ungrouped;
    scan.Depth = 0;
    scan.TitleLevel = rootLevel;
    scan.IsGegenposten = false;
    TakeNumber(scan);
    return true;
}

bool ReadFirstUngrouped(TreeScan &scan)
{
    bool found = false;
    const bool isRead = GetEqual(scan.Held.Context, &scan.Node, KeyOfNumber(0), found, scan.Table);
    return TakeUngrouped(scan, isRead, found);
}

bool ReadNextUngrouped(TreeScan &scan)
{
    bool found = false;
    const bool isRead = GetNextF(scan.Held.Context, &scan.Node, found, scan.Table);
    return TakeUngrouped(scan, isRead, found);
}

// Reads the node that is next on the present level. One that is missing is a damaged tree.
bool ReadNode(TreeScan &scan)
{
    if (--scan.NodesLeft < 0) return false;
    int32_t &id = scan.NextIds[scan.Level];
    bool found = false;
    if (!GetEqual(scan.Held.Context, &scan.Node, KeyOfNumber(id), found, scan.Table) || !found) return false;
    id = scan.Node.Next;
    scan.TitleLevel = scan.Level;
    return true;
}

bool EnterGroup(TreeScan &scan)
{
    if (scan.Node.Child == 0) return true;
    if (scan.Level == deepestTree) return false;
    ++scan.Level;
    scan.NextIds[scan.Level] = scan.Node.Child;
    CopyText(scan.Titles[scan.Level], scan.Node.Text);
    return true;
}

} // namespace

bool BeginTree(TreeScan &scan, TableId table)
{
    Release(scan.Held);
    scan.Found = false;
    scan.Table = table;
    scan.Level = rootLevel;
    scan.NextIds[rootLevel] = structureRoot;
    CopyText(scan.Titles[rootLevel], "");
    scan.Place = TreePlace::Group;
    if (!Hold(scan.Held, table)) return false;
    scan.NodesLeft = RecordCount(scan.Held.Context, table);
    return scan.NodesLeft >= 0 && NextNode(scan);
}

bool NextNode(TreeScan &scan)
{
    if (scan.Place == TreePlace::Ungrouped) return ReadNextUngrouped(scan);
    scan.Found = false;
    if (scan.Place == TreePlace::End) return true;
    for (;;) {
        while (scan.Level >= rootLevel && scan.NextIds[scan.Level] == 0) {
            --scan.Level;
        }
        if (scan.Level < rootLevel) return ReadFirstUngrouped(scan);
        const bool isRoot = scan.NextIds[scan.Level] == structureRoot;
        if (!ReadNode(scan)) return false;
        const int level = scan.Level;
        scan.Depth = std::max(level - 1, 0);
        if (isRoot || (scan.Node.Art & StructureGruppe) != 0) {
            if (!EnterGroup(scan)) return false;
            if (level == rootLevel) continue;
            scan.Place = TreePlace::Group;
            scan.Found = true;
            return true;
        }
        scan.Place = TreePlace::Leaf;
        scan.IsGegenposten = (scan.Node.Art & StructureGegenposten) != 0;
        TakeNumber(scan);
        return true;
    }
}

void EndTree(TreeScan &scan) { scan.Place = TreePlace::End; }

const char *TitleAbove(const TreeScan &scan) { return scan.Titles[scan.TitleLevel]; }

int KindOfGroup(int depth) { return depth < firstLeafKind - 1 ? depth + 1 : 0; }

int KindOfLeaf(int depth, int last) { return std::min(depth + firstLeafKind, last); }

} // namespace vark
