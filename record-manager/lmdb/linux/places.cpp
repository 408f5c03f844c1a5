// Finding entries in the trees of a snapshot, page by looked-at page.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

namespace {

struct Node {
    Bytes Key;
    const uint8_t *At;
};

Node NodeIn(const uint8_t *page, size_t index)
{
    const uint8_t *at = NodeAt(page, index);
    return {{at + sizeof(NodeHead), NodeOf(at).KeySize}, at};
}

template <typename Number> int CompareNumbers(const uint8_t *one, const uint8_t *other)
{
    const auto a = GetField<Number>(one);
    const auto b = GetField<Number>(other);
    return a < b ? -1 : a > b;
}

int CompareBytes(Bytes one, Bytes other)
{
    const size_t shorter = one.Size < other.Size ? one.Size : other.Size;
    const int order = std::memcmp(one.Data, other.Data, shorter);
    if (order != 0) return order;
    return one.Size < other.Size ? -1 : one.Size > other.Size;
}

// In a tree of numbers all keys are of one size.
int Compare(bool numbered, Bytes one, Bytes other)
{
    if (!numbered || one.Size != other.Size) return CompareBytes(one, other);
    if (one.Size == sizeof(uint32_t)) return CompareNumbers<uint32_t>(one.Data, other.Data);
    if (one.Size == sizeof(uint64_t)) return CompareNumbers<uint64_t>(one.Data, other.Data);
    return CompareBytes(one, other);
}

bool IsNumbered(const Place &place) { return (place.Tree.Flags & NumberedTree) != 0; }

// The first node from `low` on whose key is not below the bound.
size_t FirstNotBelow(bool numbered, const uint8_t *page, size_t low, size_t count, Bytes bound)
{
    while (low < count) {
        const size_t middle = low + (count - low) / 2;
        if (Compare(numbered, NodeIn(page, middle).Key, bound) < 0) {
            low = middle + 1;
        } else {
            count = middle;
        }
    }
    return low;
}

// Which of a branch's children holds the bound; the first has no key, it holds all that is below the second.
size_t ChildFor(bool numbered, const uint8_t *page, size_t count, Bytes bound)
{
    const size_t index = FirstNotBelow(numbered, page, 1, count, bound);
    const bool exact = index < count && Compare(numbered, NodeIn(page, index).Key, bound) == 0;
    return exact ? index : index - 1;
}

// Goes on below a child to its leaf, which `choose` finds among the children of each branch.
template <typename Choose>
int16_t Descend(const View &view, uint64_t number, Place &place, const Choose &choose)
{
    for (;;) {
        const uint8_t *page = nullptr;
        if (place.Levels == deepest) return damaged;
        const int16_t status = LookAtPage(view, number, &page);
        if (status != BtrStatusOk) return status;
        const PageHead head = HeadOf(page);
        const size_t count = CountNodes(head);
        const bool leaf = KindOf(head) == LeafPage;
        const size_t at = choose(page, count, leaf);
        place.Level[place.Levels++] = {page, at};
        if (leaf) return BtrStatusOk;
        number = ChildOf(NodeOf(NodeAt(page, at)));
    }
}

int16_t DescendTo(const View &view, Bytes bound, Place &place)
{
    const bool numbered = IsNumbered(place);
    return Descend(view, place.Tree.Root, place, [&](const uint8_t *page, size_t count, bool leaf) {
        return leaf ? FirstNotBelow(numbered, page, 0, count, bound) : ChildFor(numbered, page, count, bound);
    });
}

int16_t DescendToEdge(const View &view, uint64_t number, bool last, Place &place)
{
    return Descend(view, number, place,
                   [last](const uint8_t *, size_t count, bool) { return last ? count - 1 : size_t{0}; });
}

size_t CountAt(const Place &place, unsigned level) { return CountNodes(HeadOf(place.Level[level].Page)); }

// Goes to the nearest entry of the next leaf to one side. At the end the place stays where it is.
int16_t StepLeaf(const View &view, bool forward, Place &place)
{
    unsigned level = place.Levels - 1;
    while (level > 0) {
        const size_t at = place.Level[level - 1].At;
        if (forward ? at + 1 < CountAt(place, level - 1) : at > 0) break;
        --level;
    }
    if (level == 0) return BtrStatusEndOfFile;
    Step &branch = place.Level[level - 1];
    branch.At = forward ? branch.At + 1 : branch.At - 1;
    place.Levels = level;
    return DescendToEdge(view, ChildOf(NodeOf(NodeAt(branch.Page, branch.At))), !forward, place);
}

int16_t Seek(const View &view, Bytes bound, Side side, Place &place)
{
    place.Levels = 0;
    if (place.Tree.Root == noPage) return BtrStatusEndOfFile;
    if (side == Side::First || side == Side::Last)
        return DescendToEdge(view, place.Tree.Root, side == Side::Last, place);
    const int16_t status = DescendTo(view, bound, place);
    if (status != BtrStatusOk) return status;
    Step &leaf = place.Level[place.Levels - 1];
    if (side == Side::AtOrAfter) {
        return leaf.At < CountAt(place, place.Levels - 1) ? static_cast<int16_t>(BtrStatusOk)
                                                          : StepLeaf(view, true, place);
    }
    if (leaf.At == 0) return StepLeaf(view, false, place);
    --leaf.At;
    return BtrStatusOk;
}

// A place that could not be reached is none.
int16_t Reached(int16_t status, Place &place)
{
    if (status != BtrStatusOk) place.Levels = 0;
    return status;
}

// Whether the key lies in the leaf where the place is, between its first and its last entry.
bool LiesInLeaf(const Place &place, Bytes key)
{
    if (place.Levels == 0) return false;
    const uint8_t *page = place.Level[place.Levels - 1].Page;
    const size_t last = CountAt(place, place.Levels - 1) - 1;
    const bool numbered = IsNumbered(place);
    return Compare(numbered, NodeIn(page, 0).Key, key) <= 0 &&
           Compare(numbered, NodeIn(page, last).Key, key) >= 0;
}

} // namespace

int16_t PlaceAt(const View &view, Bytes bound, Side side, Place &place)
{
    return Reached(Seek(view, bound, side, place), place);
}

int16_t PlaceNext(const View &view, Place &place)
{
    if (place.Levels == 0) return BtrStatusEndOfFile;
    Step &leaf = place.Level[place.Levels - 1];
    if (++leaf.At < CountAt(place, place.Levels - 1)) return BtrStatusOk;
    return Reached(StepLeaf(view, true, place), place);
}

int16_t PlacePrevious(const View &view, Place &place)
{
    if (place.Levels == 0) return BtrStatusEndOfFile;
    Step &leaf = place.Level[place.Levels - 1];
    if (leaf.At > 0) {
        --leaf.At;
        return BtrStatusOk;
    }
    return Reached(StepLeaf(view, false, place), place);
}

int16_t PlaceLeaf(const View &view, bool forward, Place &place)
{
    if (place.Levels == 0) return BtrStatusEndOfFile;
    const int16_t status = Reached(StepLeaf(view, forward, place), place);
    if (status == BtrStatusOk) place.Level[place.Levels - 1].At = 0;
    return status;
}

namespace {

// Records that were inserted one after the other are read so, too.
bool IsNextInLeaf(const Place &place, Bytes key)
{
    if (place.Levels == 0) return false;
    const Step &leaf = place.Level[place.Levels - 1];
    return leaf.At + 1 < CountAt(place, place.Levels - 1) &&
           CompareBytes(NodeIn(leaf.Page, leaf.At + 1).Key, key) == 0;
}

} // namespace

int16_t PlaceExactly(const View &view, Bytes key, Place &place)
{
    if (IsNextInLeaf(place, key)) {
        place.Level[place.Levels - 1].At++;
        return BtrStatusOk;
    }
    if (LiesInLeaf(place, key)) {
        Step &leaf = place.Level[place.Levels - 1];
        leaf.At = FirstNotBelow(IsNumbered(place), leaf.Page, 0, CountAt(place, place.Levels - 1), key);
    } else {
        const int16_t status = PlaceAt(view, key, Side::AtOrAfter, place);
        if (status == BtrStatusEndOfFile) return BtrStatusKeyNotFound;
        if (status != BtrStatusOk) return status;
    }
    const Step &leaf = place.Level[place.Levels - 1];
    return CompareBytes(NodeIn(leaf.Page, leaf.At).Key, key) == 0 ? BtrStatusOk : BtrStatusKeyNotFound;
}

int16_t EntryAt(const View &view, const Place &place, Bytes *key, Bytes *value)
{
    const Step &leaf = place.Level[place.Levels - 1];
    const Node found = NodeIn(leaf.Page, leaf.At);
    const NodeHead node = NodeOf(found.At);
    *key = found.Key;
    *value = {found.Key.Data + found.Key.Size, ValueSize(node)};
    if ((node.Flags & BigNode) == 0) return BtrStatusOk;
    const uint8_t *run = nullptr;
    const int16_t status = LookAtRun(view, GetField<uint64_t>(value->Data), value->Size, &run);
    if (status == BtrStatusOk) value->Data = run + sizeof(PageHead);
    return status;
}

namespace {

// At the edge of a branch the leaf beside lies below another.
int16_t LookBeyond(const View &view, bool forward, Place place)
{
    const int16_t status = StepLeaf(view, forward, place);
    return status == BtrStatusEndOfFile ? static_cast<int16_t>(BtrStatusOk) : status;
}

int16_t LookBeside(const View &view, const Place &place)
{
    int16_t status = BtrStatusOk;
    const uint8_t *ignored = nullptr;
    for (unsigned level = 0; level + 1 < place.Levels && status == BtrStatusOk; ++level) {
        const Step &branch = place.Level[level];
        const size_t from = branch.At == 0 ? 0 : branch.At - 1;
        for (size_t at = from; at <= branch.At + 1 && at < CountAt(place, level) && status == BtrStatusOk;
             ++at) {
            status = LookAtPage(view, ChildOf(NodeOf(NodeAt(branch.Page, at))), &ignored);
        }
    }
    if (status != BtrStatusOk || place.Levels < 2) return status;
    const Step &last = place.Level[place.Levels - 2];
    if (last.At == 0) status = LookBeyond(view, false, place);
    if (status == BtrStatusOk && last.At + 1 == CountAt(place, place.Levels - 2))
        status = LookBeyond(view, true, place);
    return status;
}

} // namespace

int16_t LookAround(const View &view, const TreeHead &tree, Bytes bound, Side side)
{
    if (tree.Root == noPage) return BtrStatusOk;
    Place place;
    place.Tree = tree;
    place.Levels = 0;
    const bool edge = side == Side::First || side == Side::Last;
    int16_t status =
        edge ? DescendToEdge(view, tree.Root, side == Side::Last, place) : DescendTo(view, bound, place);
    if (status == BtrStatusOk) status = LookBeside(view, place);
    if (status != BtrStatusOk) return status;
    // An entry that is replaced or removed gives back its run of pages.
    Bytes key;
    Bytes value;
    const bool at = place.Level[place.Levels - 1].At < CountAt(place, place.Levels - 1);
    return at ? EntryAt(view, place, &key, &value) : static_cast<int16_t>(BtrStatusOk);
}

int16_t Find(const View &view, const TreeHead &tree, Bytes key, Bytes *value)
{
    Place place;
    place.Tree = tree;
    place.Levels = 0;
    Bytes found;
    const int16_t status = PlaceExactly(view, key, place);
    return status == BtrStatusOk ? EntryAt(view, place, &found, value) : status;
}

int16_t FindInCatalogue(const View &view, const char *name, Bytes *value)
{
    if (!view.Writing) return Find(view, view.Main, ToBytes(name), value);
    MDB_val key = ToVal(name);
    MDB_val found;
    const int error = Guarded<mdb_get>(view.Transaction, view.Of->Own->Catalogue, &key, &found);
    if (error == 0) *value = ToBytes(found);
    return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
}

int16_t FindTree(const View &view, uint32_t file, size_t tree, TreeHead *found)
{
    Bytes value;
    const int16_t status = Find(view, view.Main, ToBytes(KeyOfTree(file, tree).Text), &value);
    if (status == BtrStatusKeyNotFound) return BtrStatusForeignFile;
    if (status != BtrStatusOk) return status;
    if (value.Size != sizeof *found) return BtrStatusForeignFile;
    *found = GetField<TreeHead>(value.Data);
    return BtrStatusOk;
}

} // namespace wbtrv
