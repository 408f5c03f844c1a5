// The tree of windows: parents, siblings, owners.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// The ends of the children of `parent`, of the outermost windows for null.
Window *&FirstOf(Window *parent);
Window *&LastOf(Window *parent);

// Takes a window, with all inside it, out of its parent's children.
void Unlink(Window *window);

// Moves a window before its siblings.
void Raise(Window *window);

// Inserts an unlinked window into the children of `parent`, behind `after` (null: first).
void LinkBehind(Window *window, Window *parent, Window *after);

// The number of levels of windows around `window`.
int DepthOf(const Window *window);

// The number of levels of windows inside `window`.
int HeightOf(const Window *window);

// The length of the chain of owners above `window`, and of the longest chain of owned windows below it;
// `depth` bounds the recursion.
int OwnerDepthOf(const Window *window);
int OwnedDepthOf(const Window *window, int depth);

// Whether `owner` is among the owners above `window`.
bool IsOwnedBy(const Window *window, const Window *owner);

// The outermost window around `window`.
Window *Outermost(Window *window);

// Whether `parent` is one of the windows around `window`.
bool LiesInside(const Window *window, const Window *parent);
bool IsShown(const Window *window);    // it and all around it
bool AreEnabled(const Window *window); // it and all around it

// A descendant of `parent` by its id: pages in view first, then direct children, then any. Null if there is
// none.
Window *FindControl(Window *parent, LONG_PTR id);

// The owner that a caller's handle means: the outermost window around it. Null for no window.
Window *OwnerOf(HWND handle);

} // namespace varkui
