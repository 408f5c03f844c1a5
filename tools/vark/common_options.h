// Options that many commands of vark have, and what they share.
#pragma once

#include "tools/common/command_tree.h"
#include "tools/common/row_writer.h"
#include "tools/vark/commands.h"
#include "tools/vark/kontoart.h"

#include <vector>

namespace cli {

using Options = std::vector<tools::Option>;

// Puts `more` behind the options.
void Append(Options &options, const Options &more);

// Sets of kinds of accounts.
inline constexpr unsigned personal = ArtKreditor | ArtDebitor;
inline constexpr unsigned postable = ArtSachkonto | personal;
inline constexpr unsigned anyKind = postable | ArtKostenstelle;

// --mandant, which has to be given.
tools::Option MandantOption(int &number);

// --csv and --json, and what they come to.
Options FormOptions(Given &given);
tools::Output FormOf(const Given &given);

} // namespace cli
