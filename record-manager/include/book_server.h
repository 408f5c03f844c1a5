/* What libwbtrv32-server.so offers beside the calls, for tools that set up books on a server. */
#ifndef RECORD_MANAGER_BOOK_SERVER_H
#define RECORD_MANAGER_BOOK_SERVER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Carries out SQL, as one transaction, on the server and in the schema that books.server in `directory`
// names; an @ stands for the schema's name and a dot. With `create` a schema that is not there is made first.
// `row` is called with the values of each row, as text; it may be null. Returns a BtrStatus…; where it is not
// 0, `message` has the server's words.
typedef int16_t WbtrvServerRunFunction(const char *directory, const char *sql, int create,
                                       void (*row)(void *context, int count, const char *const *values),
                                       void *context, char *message, size_t room);

#ifdef __cplusplus
}
#endif

#endif
