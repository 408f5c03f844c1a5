#include "report-engine/pages/document.h"

#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>

namespace rs {

bool OpenDocument(Document &document, int file)
{
    struct stat status = {};
    if (fstat(file, &status) != 0) return false;
    document.Size = static_cast<uint64_t>(status.st_size);
    document.First = 2 * sizeof(uint32_t) + sizeof(Definition);
    if (document.Size < document.First) return false;
    void *bytes = mmap(nullptr, document.Size, PROT_READ, MAP_SHARED, file, 0);
    if (bytes == MAP_FAILED) return false;
    document.Bytes = static_cast<const char *>(bytes);
    uint32_t size = 0;
    std::memcpy(&size, document.Bytes + sizeof size, sizeof size);
    if (std::memcmp(document.Bytes, "RSM1", 4) != 0 || size != sizeof(Definition)) return false;
    document.Def = reinterpret_cast<const Definition *>(document.Bytes + 2 * sizeof size);
    return true;
}

const ItemHeader *ItemAt(const Document &document, uint64_t &offset)
{
    if (document.Size - offset < sizeof(ItemHeader)) return nullptr;
    const auto *item = reinterpret_cast<const ItemHeader *>(document.Bytes + offset);
    if (item->Size > document.Size - offset - sizeof(ItemHeader)) return nullptr;
    offset += sizeof(ItemHeader) + item->Size;
    return item;
}

} // namespace rs
