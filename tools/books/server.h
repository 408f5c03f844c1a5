// Books on a server: the file that names it, its schemas, and what other programs and roles see of them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace books {

struct ServerOptions {
    std::filesystem::path Directory; // of one schema, or of books
    std::string Connection;
    std::string Schema;
    std::string Reader; // role
    std::string Writer; // role
};

// Writes books.server into a directory. Throws with a German text.
void WriteServiceFile(const std::filesystem::path &directory, const std::string &connection,
                      const std::string &schema);

// The schemas that a copy fills. Gone again unless they are kept.
struct NewSchemas {
    NewSchemas() = default;
    ~NewSchemas();
    NewSchemas(const NewSchemas &) = delete;
    NewSchemas &operator=(const NewSchemas &) = delete;

    // Writes books.server into a directory, whose schema must be absent or empty.
    void Add(const std::filesystem::path &directory, const std::string &connection,
             const std::string &schema);
    void Keep() { made.clear(); }

private:
    struct Made {
        std::filesystem::path Directory;
        bool WasThere;
    };
    std::vector<Made> made;
};

// Makes a directory with books.server and the schema that it names, empty. Returns the exit code.
int MakeServerBooks(const ServerOptions &options);

// Gives roles what they need in every schema of the books: to read, or to read and write.
int GrantRoles(const ServerOptions &options);

// Makes a view in every schema of the books for each of its tables, with a column for each field.
int MakeViews(const ServerOptions &options);

} // namespace books
