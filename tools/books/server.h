// Books on a server: the file that names it, its schemas, and what other programs and roles see of them.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
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

// What takes the place of schemas, in one transaction; until then they are as they were. The new content is
// made in schemas of its own, which are gone again unless it was put in place. Nobody else is in the books.
struct SchemaExchange {
    // `data` holds the directories whose schemas are exchanged: below it, or itself where the name is empty.
    explicit SchemaExchange(const std::filesystem::path &data);
    ~SchemaExchange();
    SchemaExchange(const SchemaExchange &) = delete;
    SchemaExchange &operator=(const SchemaExchange &) = delete;

    // Writes a books.server into `work` that names where the new content of a directory is made: none, or
    // what is there. A directory that is not there yet comes with the exchange.
    void Add(const std::filesystem::path &work, const std::string &name, bool copies);
    // The directory and its schema go with the exchange.
    void Remove(const std::string &name);
    void Finish();

private:
    struct Part {
        std::filesystem::path Work;
        std::string Name;
        std::string Schema;
        std::string Fresh;
        bool IsNew; // the directory was not there
    };
    void MoveDirectories();

    std::filesystem::path data;
    std::string connection;
    std::vector<Part> parts;
    std::vector<std::pair<std::string, std::string>> removed; // directories and their schemas
    std::vector<std::filesystem::path> moved;                 // new directories that are in place
};

// Makes a directory with books.server and the schema that it names, empty. Returns the exit code.
int MakeServerBooks(const ServerOptions &options);

// Gives roles what they need in every schema of the books: to read, or to read and write.
int GrantRoles(const ServerOptions &options);

// Makes a view in every schema of the books for each of its tables, with a column for each field.
int MakeViews(const ServerOptions &options);

} // namespace books
