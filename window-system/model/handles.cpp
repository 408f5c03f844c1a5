#include "window-system/model/handles.h"

#include "window-system/model/as_pointer.h"
#include "window-system/model/window.h"

namespace varkui {

namespace {

// A handle holds a place in the table and the count of the place's uses, so that a dead handle differs from
// that of the window now in its place. It fits 31 bits, since hosts keep handles in 32-bit integers, and
// lies above 16 bits, the range of numbers that are no handles.
constexpr unsigned tableSize = 1u << handleBits;
constexpr unsigned lastUse = 0xFFFF;

struct Place {
    Window *Occupant;
    unsigned Use;      // 1 to lastUse; 2 bits of it at least are set in any handle
    unsigned NextFree; // 0 ends the list
};

Place table[tableSize]; // place 0 stays empty
unsigned usedPlaces = 1;
unsigned firstFree;
unsigned lastFree;
unsigned freePlaces;

HWND HandleOf(unsigned place)
{
    const uintptr_t value = (static_cast<uintptr_t>(table[place].Use) << handleBits) | place;
    return AsPointer<HWND>(value);
}

// Freed places are taken again in the order in which they were freed, and only once there are many: so a dead
// handle stays dead long, and the table short.
constexpr unsigned manyFree = 512;

unsigned TakePlace()
{
    unsigned place = 0;
    if (firstFree != 0 && (freePlaces > manyFree || usedPlaces == tableSize)) {
        place = firstFree;
        firstFree = table[place].NextFree;
        if (firstFree == 0) lastFree = 0;
        --freePlaces;
    } else if (usedPlaces < tableSize) {
        place = usedPlaces++;
    } else {
        return 0;
    }
    table[place].Use = table[place].Use >= lastUse ? 2 : table[place].Use < 2 ? 2 : table[place].Use + 1;
    table[place].NextFree = 0;
    return place;
}

} // namespace

void FreeHandle(HWND handle)
{
    const unsigned place = PlaceOf(handle);
    table[place].Occupant = nullptr;
    table[place].NextFree = 0;
    ++freePlaces;
    if (lastFree != 0) {
        table[lastFree].NextFree = place;
    } else {
        firstFree = place;
    }
    lastFree = place;
}

HWND TakeHandle(Window *window)
{
    const unsigned place = TakePlace();
    if (place == 0) return nullptr;
    table[place].Occupant = window;
    return HandleOf(place);
}

Window *Find(HWND handle)
{
    const auto value = reinterpret_cast<uintptr_t>(handle);
    const unsigned place = static_cast<unsigned>(value & (tableSize - 1));
    if (place == 0 || table[place].Occupant == nullptr || HandleOf(place) != handle) return nullptr;
    return table[place].Occupant;
}

unsigned PlaceOf(HWND handle)
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(handle) & (tableSize - 1));
}

Window *NextInTable(unsigned &place)
{
    while (place < usedPlaces) {
        Window *window = table[place++].Occupant;
        if (window != nullptr) return window;
    }
    return nullptr;
}

unsigned PlacesUsed() { return usedPlaces; }

} // namespace varkui
