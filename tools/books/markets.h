// Markets of a partner, and the accounts of its revenue.
#pragma once

#include "tools/books/generator.h"

namespace books {

// Where a partner's goods come from or go to, which decides on the tax.
enum class Market : uint8_t { Home, Community, CommunityPrivate, Outside };

Market MarketOf(const PartnerRow &partner);

// Revenue from a market other than the one at home.
int RevenueFrom(Market market);

// The account that what is taken off a sale goes to: the revenue itself for other markets, so that the boxes
// of the tax return hold what was sold in the end.
int DeductionOf(const OpenItem &item, const PartnerRow &partner, int regular, int reduced);

} // namespace books
