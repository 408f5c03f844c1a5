// What the host tells: frames of its windows, read from the socket.
#pragma once

#include <glib-unix.h>

namespace ui {

// Reads what has come and shows it. Ends `loop`, its data, when the host has gone.
gboolean OnSocket(int descriptor, GIOCondition condition, void *loop);

} // namespace ui
