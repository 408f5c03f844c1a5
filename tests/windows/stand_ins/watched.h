/* What a host that watches the record manager's process and the process itself agree on. */
#ifndef WATCHED_H
#define WATCHED_H

/* The variable with the number of a file in memory that may be inherited, and what stands in it. */
#define WATCHED_HANDLE "VARK_WATCHED_HANDLE"
#define WATCHED_TEXT   "the host's own"

/* What the process ends with unless it is ended. */
#define ENDED_BY_ITSELF 5

#endif
