// The tax of a Teilbuchung: whose key, which rate, and what is left net.
#pragma once

#include "src/booking/posting_work.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Which side's tax key a posting takes: only a side that alone has one, and not if the side without a key is
// a GuV account or the side with it a Passiva account. `seite` is SteuerseiteKeine with a `key` of 0.
void ChooseTaxKey(uint8_t sollKey, uint8_t habenKey, int16_t sollZuordnung, int16_t habenZuordnung,
                  uint8_t &key, uint16_t &seite);

// Finds the rate of a tax key that is valid at `date` and puts percentage, code, sequence number and tax
// account into the image. False when there is none or the engine failed; code and sequence number (0) have
// been set then, the rest not.
bool RateAt(ThreadContext &context, uint8_t key, const PackedDate &date, SplitRecord &image);

// Begins the image: tax key, rate, tax account and gross amount, the net amount being equal to it for now.
int32_t SettleTax(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date, int32_t partIndex);

// Refuses a rate that the account does not allow, and works out the net amount.
int32_t SettleNet(const ThreadContext &context, TeilbuchungWork &work, int32_t partIndex);

} // namespace vark
