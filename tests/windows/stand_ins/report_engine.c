/* Entries of a report engine in the convention CONVENTION, which answer with a figure of their arguments. */
#include <stdint.h>

int32_t CONVENTION RSOpenReport(const char *path, const char *id, int32_t reserved)
{
    return path[0] * 10000 + id[0] * 100 + reserved;
}

void *CONVENTION RSOpenView(int32_t a, const char *b, const char *c, void *d, int32_t e, int32_t f, int32_t g,
                            int32_t h, int32_t i, int32_t j, int32_t k, int32_t l, int32_t m)
{
    const double halves = (a + e + 2 * f + 3 * g + 4 * h + 5 * i + 6 * j + 7 * k + 8 * l + 9 * m) / 2.0;
    return (void *)(intptr_t)((int32_t)(halves * 2) + b[0] + c[0] + (int32_t)(intptr_t)d);
}

static int32_t closed;

void CONVENTION RSCloseReport(int32_t report) { closed += report; }

int32_t CONVENTION RSGetVirtualPages(int32_t report) { return closed + report; }
