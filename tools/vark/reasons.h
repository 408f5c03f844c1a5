// Why the library refused something, in its own words. The library says it in a message box; without windows
// the box is a line on standard error, which is caught here and handed to whoever reports the refusal.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

namespace cli {

// Has the library show its boxes on standard error, whatever the environment asks for. Before the first call.
void UseNoWindows();

// Catches standard error while it lives; only around calls of the library. What is no message of the library
// goes out to the real standard error at the end; from one inside of another at the end of that one.
struct ReasonCatcher {
    // What the report engine says of `file` is kept for TakePartReason.
    explicit ReasonCatcher(const std::string &file = {});
    ~ReasonCatcher();
    ReasonCatcher(const ReasonCatcher &) = delete;
    ReasonCatcher &operator=(const ReasonCatcher &) = delete;

    // Whether it catches: there may be no descriptor left for it.
    bool Catches() const { return catches; }
    // The messages shown since the last call, separated by blanks; empty when there were none.
    std::string Take();
    // Writes to the real standard error.
    void Pass(const std::string &text) const;
    // The real standard error, for what is drawn meanwhile; the stream is the catcher's.
    FILE *Real() const;
    // Why the report engine could not write that file; empty when it has said nothing of it.
    std::string TakePartReason();

private:
    bool catches = false;
    std::string partOfFile; // how such a line begins
    std::string partReason;
};

// The books refuse what is asked for: ends with ExitRefused. what() is German.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What an errno means, German, as the rest of a sentence behind a colon.
std::string GermanOf(int error);

// Tells why a call of the library gave `code`: its own words, or what the code says. Returns ExitRefused;
// when the books cannot be used at all it throws.
int Refuse(ReasonCatcher &catcher, int code);

// Throws, with the reason, when the library is not ready.
void NeedLibrary();

// What a result code says where no message came with it: also the states of the library.
std::string TextOfCode(int code);

} // namespace cli
