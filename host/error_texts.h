// What goes wrong with files and processes, as people are told it.
#pragma once

namespace host {

struct ErrorText {
    char Text[80];
};

// What an errno means: a whole sentence, German, UTF-8. One that nobody need tell apart is named by its
// number.
ErrorText TextOfError(int error);

struct LoaderText {
    char Text[256];
};

// Why a library is not there, from what dlerror said of it, or from null where it was not even tried: the
// part of a sentence behind its name, German, UTF-8. What people cannot mend is told in the loader's words.
LoaderText TextOfLoader(const char *reason);

} // namespace host
