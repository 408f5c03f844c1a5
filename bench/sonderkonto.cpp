// Has the tax return of Mandant 1 look at every posting: switches its Sonderkonto on.
//   sonderkonto DATA_DIRECTORY NUMBER
#include "tools/common/table_file.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

void SwitchOn(const std::string &directory, const std::string &number)
{
    tools::TableFile fista(tools::LayoutOf(vark::TableFista), directory, tools::OpenMode::Normal);
    vark::FistaRecord mandant;
    if (!fista.First(&mandant, 0)) throw std::runtime_error("no Mandant");
    mandant.Sonderkontomodus = 1;
    const std::string justified = std::string(7 - std::min<size_t>(7, number.size()), ' ') + number;
    justified.copy(mandant.Sonderkonto, sizeof mandant.Sonderkonto - 1);
    fista.Update(&mandant);
    fista.Close();
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 3) {
        std::fprintf(stderr, "sonderkonto DATA_DIRECTORY NUMBER\n");
        return 2;
    }
    try {
        SwitchOn(arguments[1], arguments[2]);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
