// A counting report: how many pages so many records would take. It runs the same layout as the pages do, on
// rows of which it knows the heights only; long runs of one kind repeat themselves on every page, so they
// take no longer than short ones.
#pragma once

#include "report-engine/layout.h"

#include <cstdint>
#include <pthread.h>

namespace rs {

struct CountingReport {
    pthread_mutex_t Lock;
    int References; // guarded by the handle table
    const CatalogueRow *Catalogue;
    Definition Def;
    RowMarker Marker;
    Layout Pages;
};

// Null without memory.
CountingReport *CreateCountingReport(const CatalogueRow *catalogue, const Definition &definition);
void DestroyCountingReport(CountingReport *report);

// False for a kind that the report does not have, or a negative count.
bool CountRecords(CountingReport &report, int kind, int32_t count);

int32_t CountedPages(const CountingReport &report);

} // namespace rs
