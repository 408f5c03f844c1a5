// The names of a file's entries in the catalogue.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

CatalogueKey KeyOf(uint32_t number, char what)
{
    CatalogueKey key;
    for (int i = 7; i >= 0; --i) {
        key.Text[i] = "0123456789abcdef"[number & 15];
        number >>= 4;
    }
    key.Text[8] = what;
    key.Text[9] = 0;
    return key;
}

CatalogueKey KeyOfTree(uint32_t number, size_t tree)
{
    CatalogueKey key = KeyOf(number, tree == recordTree ? 't' : 'i');
    if (tree == recordTree) return key;
    key.Text[9] = "0123456789abcdef"[(tree - IndexTree(0)) >> 4];
    key.Text[10] = "0123456789abcdef"[(tree - IndexTree(0)) & 15];
    key.Text[11] = 0;
    return key;
}

} // namespace wbtrv
