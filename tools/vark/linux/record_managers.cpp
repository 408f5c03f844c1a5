#include "tools/vark/record_managers.h"

#include <link.h>
#include <string_view>

namespace cli {

namespace {

int CountRecordManager(dl_phdr_info *object, size_t /*size*/, void *count)
{
    constexpr std::string_view name = "/libwbtrv32.so";
    const std::string_view path = object->dlpi_name;
    if (path.ends_with(name)) ++*static_cast<int *>(count);
    return 0;
}

} // namespace

bool SharesRecordManager()
{
    int count = 0;
    dl_iterate_phdr(CountRecordManager, &count);
    return count == 1;
}

} // namespace cli
