// The views: what people ask of books, over the tables of all years.
#pragma once

#include <string>
#include <vector>

namespace sql {

struct View {
    std::string Name;
    std::string Select;
};

const std::vector<View> &Views();

} // namespace sql
