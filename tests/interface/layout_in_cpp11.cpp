#include "layout.h"

static const LayoutRow rows[] = {
#include "layout.inc"
};

const LayoutRow *LayoutInCpp(size_t *count)
{
    *count = sizeof rows / sizeof rows[0];
    return rows;
}
