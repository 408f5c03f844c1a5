/* What a compiler makes of the interface. layout.inc is compiled once as C and once as C++. */
#ifndef VARK_TESTS_LAYOUT_H
#define VARK_TESTS_LAYOUT_H

#include "include/vark40.h"

#include <stddef.h>

typedef struct LayoutRow {
    const char *Name;
    size_t Wanted;
    size_t Found;
} LayoutRow;

#define SIZE(structure, bytes)        {#structure, bytes, sizeof(structure)},
#define AT(structure, member, offset) {#structure "." #member, offset, offsetof(structure, member)},

#ifdef __cplusplus
extern "C" {
#endif

/* All rows; the number of them goes to `count`. */
const LayoutRow *LayoutInC(size_t *count);
const LayoutRow *LayoutInCpp(size_t *count);

#ifdef __cplusplus
}
#endif

#endif
