// Books for the pick dialogs, with a script that plays the user.
#pragma once

#include "include/vark40.h"
#include "tests/support/books.h"

#include <string>

namespace vark::test {

struct PickBooks : Books {
    // The script's instructions, one a line; blanks in front of them do not count.
    explicit PickBooks(const std::string &script);

    // Empty when every instruction of the script was done, in its order; otherwise what went wrong first.
    std::string Trouble();

    // One value of section VARK in vark.ini; "-" when there is none.
    std::string Remembered(const std::string &key) const;
    void Remember(const std::string &key, const std::string &value) const;

private:
    Lines instructions;
};

} // namespace vark::test
