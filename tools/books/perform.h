// The commands that make, check and move books, with a bar that shows how far they are, and what they tell at
// the end: to people, or as one JSON object to programs. Each returns the exit code.
#pragma once

#include "tools/books/check.h"
#include "tools/books/copy.h"
#include "tools/books/load.h"
#include "tools/books/sample.h"
#include "tools/books/save.h"

namespace books {

int MakeSampleBooks(const SampleOptions &options, bool isJson);

// The check runs in children, which have it tell of damage; the others end with a word on it.
int CheckAndTell(const CheckOptions &options);
int SaveAndTell(const SaveOptions &options, bool isJson);
int LoadAndTell(const LoadOptions &options, bool isJson);
int CopyAndTell(const CopyOptions &options, bool isJson);

} // namespace books
