/* Answers every operation with a status of its own, so that a test knows which library was bound. */
short BTRCALL(void) { return 4711; }
