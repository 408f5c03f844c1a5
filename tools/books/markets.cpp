#include "tools/books/markets.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace books {

using namespace vark;

Market MarketOf(const PartnerRow &partner)
{
    if (std::strcmp(partner.Land, "D") == 0) return Market::Home;
    if (*partner.UstId != 0) return Market::Community;
    constexpr const char *members[] = {"A",  "B", "DK",  "E", "F",  "FIN", "GB",
                                       "GR", "I", "IRL", "L", "NL", "P",   "S"};
    const bool isMember = std::any_of(std::begin(members), std::end(members),
                                      [&](const char *land) { return std::strcmp(land, partner.Land) == 0; });
    return isMember ? Market::CommunityPrivate : Market::Outside;
}

int RevenueFrom(Market market)
{
    return market == Market::Community ? 5110 : market == Market::CommunityPrivate ? 5115 : 5120;
}

int DeductionOf(const OpenItem &item, const PartnerRow &partner, int regular, int reduced)
{
    const Market market = MarketOf(partner);
    if (market != Market::Home) return RevenueFrom(market);
    return (item.Duty.Key & SteuerErmaessigt) != 0 ? reduced : regular;
}

} // namespace books
