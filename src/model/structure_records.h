// The lines of a Bilanz and of a Gewinn- und Verlustrechnung: guvauf, bilaktau and bilpasau (tables 7, 8, 9)
// are three trees of one record kind, kept by the accounting application and only read here. Node 1 is the
// root; a node's children hang on Child and go on through Next. Records with Id 0 lie outside the tree: each
// is a leaf with an account that was placed in the table but in no group.
//
// 64 bytes:
//      0    4  Id                 i32, number of the node, key 0; 1 the root, 0 an account outside the tree
//      4    2  Art                u16, see StructureArt
//      6    4  Next               i32, Id of the next sibling, 0 for the last one
//     10    4  Child              i32, Id of the first child, 0 for none
//     14    1  Summenzeile        bit 0 goes to the report with the group's line
//     15    1  Reserved15
//     16   48  Text               title of a group; of a leaf the account number in its key form; key 1
#pragma once

#include "src/model/text_forms.h"

namespace vark {

enum StructureArt : uint16_t {
    StructureGruppe = 0x02,      // a group line; clear for a leaf
    StructureGegenposten = 0x04, // second home of an account that may stand on either side of the Bilanz
};

inline constexpr int32_t structureRoot = 1;

#pragma pack(push, 1)

struct StructureRecord {
    int32_t Id;
    uint16_t Art;
    int32_t Next;
    int32_t Child;
    uint8_t Summenzeile;
    char Reserved15[1];
    char Text[48];
};

static_assert(sizeof(StructureRecord) == 64);
static_assert(offsetof(StructureRecord, Id) == 0);
static_assert(offsetof(StructureRecord, Art) == 4);
static_assert(offsetof(StructureRecord, Next) == 6);
static_assert(offsetof(StructureRecord, Child) == 10);
static_assert(offsetof(StructureRecord, Summenzeile) == 14);
static_assert(offsetof(StructureRecord, Text) == 16);
static_assert(__is_trivially_copyable(StructureRecord));

#pragma pack(pop)

} // namespace vark
