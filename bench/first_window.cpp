// The first window of a host program: a message box.
//   first_window TITLE
#include <cstdlib>

#include "window-system/include/varkui.h"

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 2) return 2;
    setenv("VARK_UI", "gtk", 1);
    return MessageBoxA(nullptr, "Der Zeitraum ist bereits abgeschlossen.", arguments[1], MB_OK) == IDOK ? 0
                                                                                                        : 1;
}
