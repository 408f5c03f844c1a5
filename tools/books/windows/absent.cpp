// What is not there on Windows.
#include "tools/books/server.h"
#include "tools/books/sql.h"
#include "tools/common/exit_codes.h"

namespace books {

namespace {

[[noreturn]] void RefuseServer()
{
    throw tools::UsageError("Bücher auf einem Server gibt es unter Windows nicht.");
}

} // namespace

int AskBooks(const SqlOptions &) { throw tools::UsageError("books sql gibt es unter Windows nicht."); }

int MakeServerBooks(const ServerOptions &) { RefuseServer(); }
int GrantRoles(const ServerOptions &) { RefuseServer(); }
int MakeViews(const ServerOptions &) { RefuseServer(); }

NewSchemas::~NewSchemas() = default;

void NewSchemas::Add(const std::filesystem::path &, const std::string &, const std::string &)
{
    RefuseServer();
}

SchemaExchange::SchemaExchange(const std::filesystem::path &) { RefuseServer(); }
SchemaExchange::~SchemaExchange() = default;
void SchemaExchange::Add(const std::filesystem::path &, const std::string &, bool) { RefuseServer(); }
void SchemaExchange::Remove(const std::string &) { RefuseServer(); }
void SchemaExchange::Finish() { RefuseServer(); }

} // namespace books
