#include "record-manager/lmdb/books_file.h"

#include "record-manager/windows/handles.h"

#include <windows.h>

namespace wbtrv {

bool ReadFacts(int fd, BooksFacts *facts)
{
    BY_HANDLE_FILE_INFORMATION found;
    if (!GetFileInformationByHandle(HandleOf(fd), &found)) return false;
    *facts = {found.dwVolumeSerialNumber, uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow,
              found.nNumberOfLinks,
              static_cast<int64_t>(uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow)};
    return true;
}

bool ReadFacts(const char *path, BooksFacts *facts)
{
    const int fd = OpenShareable(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING);
    if (fd < 0) return false;
    const bool read = ReadFacts(fd, facts);
    CloseDescriptor(fd);
    return read;
}

} // namespace wbtrv
