// What the tests of books on a server have in common: a look at the server beside the record manager, and a
// file with three records in a schema of it.
#pragma once

#include "files.h"

#include "record-manager/limits.h"
#include "record-manager/server_part.h"

#include <dlfcn.h>
#include <libpq-fe.h>

namespace wbtrvtest {

inline const std::string server = getenv("WBTRV_TEST_SERVER") != nullptr ? getenv("WBTRV_TEST_SERVER") : "";

inline const wbtrv::ServerPart *ServerPart()
{
    void *library = dlopen("libwbtrv32-server.so", RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return nullptr;
    static const auto give = reinterpret_cast<wbtrv::GiveServerPart>(dlsym(library, "WbtrvServerPart"));
    return give(wbtrv::serverPartForm, &wbtrv::limits);
}

inline uint64_t RoundTrips()
{
    const wbtrv::ServerPart *part = ServerPart();
    return part != nullptr ? part->CountRoundTrips() : 0;
}

// Runs statements on the server, beside the record manager.
inline std::string Query(const std::string &sql)
{
    PGconn *connection = PQconnectdb(server.c_str());
    PGresult *result = PQexec(connection, sql.c_str());
    std::string value = PQresultStatus(result) == PGRES_FATAL_ERROR ? PQerrorMessage(connection) : "";
    if (PQntuples(result) > 0) value = PQgetvalue(result, 0, 0);
    PQclear(result);
    PQfinish(connection);
    return value;
}

inline std::string SchemaOf(const TempDirectory &directory)
{
    std::ifstream file(directory / "books.server");
    std::string line;
    std::getline(file, line);
    std::getline(file, line);
    return line;
}

inline void EndAllConnections()
{
    Query("SELECT pg_terminate_backend(pid, 5000) FROM pg_stat_activity WHERE application_name = 'VARK40'");
}

// The limits are every test's own.
struct OnServer : testing::Test {
    const wbtrv::Limits Before = wbtrv::limits;
    TempDirectory Directory;
    Local Me;
    std::string Path = Directory / "t.btr";
    OnT<Local> T{Me};

    void SetUp() override
    {
        if (server.empty()) GTEST_SKIP() << "to be run by with-postgres";
        ASSERT_EQ(Create(Me, Path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("a", "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("b", "x", 5).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("c", "x", 3).Status, BtrStatusOk);
    }
    void TearDown() override { wbtrv::limits = Before; }
};

// A directory whose books are those of another one, seen by another role.
struct AsRole {
    TempDirectory Directory;
    std::string Name;

    AsRole(const std::string &schema, const std::string &grants) : Name("role_" + schema)
    {
        Query("CREATE ROLE " + Name + " LOGIN; GRANT USAGE ON SCHEMA " + schema + " TO " + Name +
              "; SET search_path = " + schema + "; " + Named(grants));
        std::string connection = server;
        connection.replace(connection.find("user=books"), 10, "user=" + Name);
        std::ofstream(Directory / "books.server") << connection << "\n" << schema << "\n";
    }
    AsRole(const AsRole &) = delete;
    AsRole &operator=(const AsRole &) = delete;
    ~AsRole() { Query("DROP OWNED BY " + Name + "; DROP ROLE " + Name); }

    // The role's name for every @.
    std::string Named(std::string sql) const
    {
        for (size_t at = 0; (at = sql.find('@', at)) != std::string::npos; at += Name.size()) {
            sql.replace(at, 1, Name);
        }
        return sql;
    }
};

} // namespace wbtrvtest
