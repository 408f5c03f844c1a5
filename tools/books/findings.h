// What a check finds, and how it gets from the process that reads the books to the one that tells of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace books {

// One thing that is not as it should be.
struct Finding {
    std::string Directory; // "1998"; empty for the data path itself
    std::string Table;     // "sako"
    std::string Key;       // of the record, as a person writes it; empty where the whole table is meant
    std::string Field;     // may be empty
    std::string Rule;      // short name of what is broken, the same in every release
    std::string Text;      // German
};

// The reading side: findings and how far it is, each written down at once, so that nothing is lost when a
// damaged file ends the process.
struct Findings {
    Findings(int to, std::string where) : file(to), directory(std::move(where)) {}

    void Tell(std::string_view rule, std::string_view table, std::string_view key, std::string_view field,
              std::string_view text);
    // Something that is no fault, and still worth knowing: what people typed and programs took as it came.
    void Remark(std::string_view rule, std::string_view table, std::string_view key, std::string_view field,
                std::string_view text);
    // Reading cannot go on, and the books are not to blame: they are in use, or may not be read.
    void Stop(std::string_view why);
    // What is being read now; told of when reading ends the process.
    void Reading(std::string_view table);
    // Records that were looked at.
    void Count(int64_t records);

private:
    void Put(char kind, std::string_view rule, std::string_view table, std::string_view key,
             std::string_view field, std::string_view text);
    void Write(char kind, std::string_view text);

    int file;
    std::string directory;
};

} // namespace books
