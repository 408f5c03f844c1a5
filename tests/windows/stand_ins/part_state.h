/* What a part that the library loads sees of it meanwhile. */
#ifndef PART_STATE_H
#define PART_STATE_H

/* Leaves the library's state in a variable of the environment, as text; nothing when there is no library. */
void NoteState(const char *variable);

#endif
