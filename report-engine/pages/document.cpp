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
    void *bytes = mmap(nullptr, document.Size, PROT_READ | PROT_WRITE, MAP_PRIVATE, file, 0);
    if (bytes == MAP_FAILED) return false;
    document.Bytes = static_cast<char *>(bytes);
    uint32_t size = 0;
    std::memcpy(&size, document.Bytes + sizeof size, sizeof size);
    if (std::memcmp(document.Bytes, "RSM1", 4) != 0 || size != sizeof(Definition)) return false;
    document.Def = reinterpret_cast<const Definition *>(document.Bytes + 2 * sizeof size);
    return true;
}

const ItemHeader *ItemAt(const Document &document, uint64_t &offset)
{
    if (document.Size - offset < sizeof(ItemHeader)) return nullptr;
    auto *item = reinterpret_cast<ItemHeader *>(document.Bytes + offset);
    if (item->Size > document.Size - offset - sizeof(ItemHeader)) return nullptr;
    if (item->Kind == Item::row) BlankControls(*item, reinterpret_cast<char *>(item + 1));
    offset += sizeof(ItemHeader) + item->Size;
    return item;
}

} // namespace rs
