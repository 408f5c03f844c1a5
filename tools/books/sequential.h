// The sequential form of a table, in which an engine's own tools unload and load it. Per record: its length
// in decimal digits, a comma (a blank is read as well), its bytes as they are, CR LF. One byte 1A ends the
// file. The bytes may hold anything, line ends and 1A too, so a reader counts and never searches.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace books {

inline constexpr const char *sequentialExtension = ".seq";

// Puts records into the form; `write` takes the bytes in large pieces.
struct SequentialWriter {
    explicit SequentialWriter(std::function<void(const void *data, size_t size)> write);

    void Put(const void *record, size_t size);
    // The end mark, and all that is left goes out.
    void Finish();

private:
    std::function<void(const void *data, size_t size)> out;
    std::string pending;
};

// Reads a file in the form. Memory does not depend on what the file holds.
struct SequentialReader {
    explicit SequentialReader(const std::filesystem::path &path);

    enum class Got : uint8_t {
        Record,
        End,
        BadLength, // a record, but not of `size` bytes; reading can go on behind it
        Broken,    // Fault says why; nothing behind it can be read
    };

    // Reads on to the next record, which takes `size` bytes at `record`.
    Got Next(char *record, size_t size);

    uint64_t Number = 0; // of the record read last, from 1
    uint64_t Offset = 0; // of its first byte in the file, its length's first digit
    uint64_t Bytes = 0;  // of the whole file
    std::string Fault;   // German

private:
    bool Fill();
    Got Break(std::string fault);

    std::filesystem::path path;
    std::ifstream file;
    std::string buffer;
    size_t at = 0;       // in the buffer
    size_t end = 0;      // of what was read into it
    uint64_t before = 0; // bytes of the file before the buffer
};

} // namespace books
