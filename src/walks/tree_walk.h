// The tree of a Bilanz or GuV (guvauf, bilaktau, bilpasau): groups and leaves in the order in which a report
// shows them, then the accounts that were placed in the table but in no group.
//
//     TreeScan scan(context);
//     bool isGood = BeginTree(scan, TableGuvauf);
//     while (isGood && scan.Found) {
//         isGood = Send(scan) && NextNode(scan);
//     }
//
// A damaged tree is a failure, never a short report: a node that is missing, a way that goes round (more
// nodes than the table had records at the beginning), more than deepestTree levels. The root counts as a
// group whatever its Art says, and is not among the nodes; what its Next leads to beside it is walked like
// the rest: groups there are not among the nodes either, though their children are, and leaves stand at
// depth 0. The group bit goes before the Gegenposten bit. A leaf's Child is not followed.
#pragma once

#include "src/frame/held_tables.h"
#include "src/model/structure_records.h"
#include "src/model/tables.h"

namespace vark {

inline constexpr int deepestTree = 100; // levels below that of the root

enum class TreePlace {
    Group,
    Leaf,
    Ungrouped, // an account outside the tree, always with depth 0
    End,       // nothing more is wanted
};

struct TreeScan {
    StructureRecord Node = {}; // the node that the scan stands at, while Found
    TreePlace Place = TreePlace::Group;
    int Depth = 0;              // 0 for what hangs below the root
    AccountNumber Konto = {};   // of a leaf or an account outside the tree, right-justified
    bool IsGegenposten = false; // of a leaf: the second home of its account
    bool Found = false;         // false: all have been seen

    HeldTables Held;
    TableId Table = TableUnused;
    int Level = 0; // of the node that is read next, 0 for the root's
    int32_t NodesLeft = 0;
    int32_t NextIds[deepestTree + 1] = {};                            // by level
    char Titles[deepestTree + 1][sizeof(StructureRecord::Text)] = {}; // by level: of the group above it
    int TitleLevel = 0;                                               // of the present node

    explicit TreeScan(ThreadContext &context) : Held(context) {}
};

// Opens `table` for as long as the scan lives and goes to the first node. False when the record store failed
// or the tree is damaged.
bool BeginTree(TreeScan &scan, TableId table);

// Goes to the next node. False as above.
bool NextNode(TreeScan &scan);

// Has the next step find the end, whatever is left.
void EndTree(TreeScan &scan);

// The title of the group that the present node hangs below, with its NUL: the root's for depth 0, empty for
// what lies beside the root or outside the tree.
const char *TitleAbove(const TreeScan &scan);

// The kind of a group's line in Bilanz and GuV, 1 to 3; 0 for a deeper group, which has no line of its own.
int KindOfGroup(int depth);

// The kind of an account's line there, 4 and more; `last` is the last kind that the report's template knows
// accounts under, which takes those of all deeper groups.
int KindOfLeaf(int depth, int last);

} // namespace vark
