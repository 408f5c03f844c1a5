// What goes wrong with files and processes, as people are told it.
#pragma once

namespace host {

struct ErrorText {
    char Text[80];
};

// What an errno means: a whole sentence, German, UTF-8. One that nobody need tell apart is named by its
// number.
ErrorText TextOfError(int error);

} // namespace host
