// What an installation for tests needs beside its books, on each system in its own way.
#pragma once

#include <string>

namespace vark::test {

// A directory of its own, in memory where there is some: the record manager waits for the disk at every
// change. Throws when there is no place for it.
std::string MakeDirectory();

// Has the library find the record manager that the tests are linked with. `directory` is that of the ini
// files.
void NameParts(const std::string &directory);

} // namespace vark::test
