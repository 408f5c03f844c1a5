// How windows stand in and behind each other.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// The ends of the children of `parent`, of the outermost windows for null.
Window *&FirstOf(Window *parent);
Window *&LastOf(Window *parent);

void Unlink(Window *window);

// To the front of its siblings.
void Raise(Window *window);

// Puts a window that stands nowhere among the children of `parent`, behind `after` (null: first).
void LinkBehind(Window *window, Window *parent, Window *after);

int DepthOf(const Window *window);

// How deep windows lie inside `window`.
int HeightOf(const Window *window);

// Longest chain of owners above `window`, and of windows owned by each other below it; `depth` bounds the
// recursion.
int OwnerDepthOf(const Window *window);
int OwnedDepthOf(const Window *window, int depth);

bool IsOwnedBy(const Window *window, const Window *owner);

// The outermost window around `window`.
Window *Outermost(Window *window);

bool LiesInside(const Window *window, const Window *parent);
bool IsShown(const Window *window);    // it and all around it
bool AreEnabled(const Window *window); // it and all around it

// A descendant of `parent` by its id: pages in view first, then direct children, then any. Null if there is
// none.
Window *FindControl(Window *parent, LONG_PTR id);

// The window an owner given by a caller stands for: the outermost around it. Null for no window.
Window *OwnerOf(HWND handle);

} // namespace varkui
