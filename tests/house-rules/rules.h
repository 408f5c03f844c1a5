// The rules of this house, each a function from files to the places that break it. What is allowed all the
// same stands beside the rule, with its reason.
#pragma once

#include "source_text.h"

#include <map>
#include <string>
#include <vector>

namespace house {

struct Breach {
    std::string Path;
    int Line;
    std::string Why;
};

using Breaches = std::vector<Breach>;
using Files = std::vector<SourceFile>;

// The folders of the library and what lies below them, lowest first: an include may point to the same folder
// or to one before it. Folders on one line of `siblings` never include each other.
extern const std::vector<std::string> layersLowestFirst;
extern const std::vector<std::string> siblings;

// The same inside the window system; a source right in its folder stands above all.
extern const std::vector<std::string> windowLayersLowestFirst;

// Includes point downwards, parts are met by their public headers alone, and every quoted include exists.
Breaches Layers(const Files &files);

// Only the platform's two folders see the operating system.
Breaches PlatformStaysBelow(const Files &files);

// No calls that overrun, follow the locale, end the host or throw for lack of memory; each with its
// replacement.
Breaches BannedCalls(const Files &files);

// Plain structures and free functions in the library and its parts; no headers of containers that grow by
// throwing.
Breaches PlainCode(const Files &files);

// 110 characters.
Breaches LineWidth(const Files &files);

// A header that nothing includes, a test source that no list of sources names.
Breaches Orphans(const Files &files);

// The README's table of folders: each there, none missing, layers from the highest to the lowest; and its
// program is the one in examples/.
Breaches ReadmeIsTrue(const Files &files);

// German texts of the library are Windows-1252, so their literals say _w.
Breaches TextsAreTurnedOver(const Files &files);

// In the library no number of a message and no code of a result stands where it is used.
Breaches MessagesAreNamed(const Files &files);

// On the way of a posting into the books, fewer beliefs a function than stand there today.
Breaches Beliefs(const Files &files);

// A number or structure in the record manager's bytes is read and written by the pair of
// record-manager/fields.h.
Breaches BytesAreFields(const Files &files);

// The functions that the product's headers declare, and those that say nothing: no comment stands above
// them, beside them, above the group of declarations in which they stand, or at the head of a header that
// declares nothing but that group.
struct Declarations {
    size_t Functions;
    Breaches Untold;
};

Declarations ReadDeclarations(const Files &files);

// Those that say nothing, where they are more than one in ten.
Breaches Contracts(const Files &files);

// Words that a finished tree doesn't hold.
Breaches Words(const Files &files);

// The headers whose compiling alone the build has not proved already: a header that a source of this platform
// includes before anything else has been compiled alone there.
std::vector<std::string> HeadersToCompile(const Files &files);

// Compiles each header by itself; one breach a header that doesn't, with the compiler's words.
Breaches HeadersCompileAlone(const std::string &root, const std::vector<std::string> &headers);

// Libraries that `library` asks the loader for and that are not among the C and C++ runtime.
Breaches DynamicNeeds(const std::string &library);

// The sources of `target` that call each other in a circle, read from the symbols of its objects: one breach
// a circle, with what each needs of the next.
Breaches Circles(const std::string &target, const std::vector<std::string> &objects);

// The objects of each target in the list that CMake has written: the name in a line of its own, a path a line
// behind it.
std::map<std::string, std::vector<std::string>> ReadObjectLists(const std::string &path);

// Runs a command and returns what it writes.
std::string OutputOf(const std::string &command);

} // namespace house
