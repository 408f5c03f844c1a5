// What the record manager's tests have in common: a directory of their own, calls that read like a dialogue,
// and clients in processes of their own.
#pragma once

#include "record-manager/include/btrcall.h"
#include "tests/record-manager/process.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace wbtrvtest {

// Where WBTRV_TEST_SERVER names a database server, the books of every directory are in a schema of it.
struct TempDirectory {
    std::filesystem::path Path;

    explicit TempDirectory(const std::filesystem::path &where = std::filesystem::temp_directory_path())
    {
        Path = MakeDirectory(where);
        if (const char *server = getenv("WBTRV_TEST_SERVER")) {
            std::ofstream file(Path / "books.server");
            file << server << "\n" << UniqueName() << "\n";
        }
    }
    TempDirectory(const TempDirectory &) = delete;
    TempDirectory &operator=(const TempDirectory &) = delete;
    ~TempDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(Path, ignored);
    }

    std::string operator/(const char *name) const { return (Path / name).string(); }
};

// What a call gave back.
struct Answer {
    int16_t Status = -1;
    uint32_t Length = 0;
    std::string Data; // the whole buffer
    std::string Key;  // all 255 bytes
};

struct Request {
    uint16_t Operation = 0;
    uint8_t Block = 0;
    std::string Data{};
    uint32_t Length = 0;
    std::string Key{};
    uint8_t KeyLength = 255;
    int8_t KeyNumber = 0;
};

using PositionBlocks = std::array<std::array<uint8_t, BtrPositionBlockSize>, 16>;

// Makes the call for a client, null being the thread's, with `before` and `after` right around it.
inline Answer Carry(
    PositionBlocks &blocks, const Request &request, void (*before)() = [] {}, void (*after)() = [] {},
    BtrClient *client = nullptr)
{
    std::vector<uint8_t> data(request.Data.begin(), request.Data.end());
    if (data.size() < request.Length) data.resize(request.Length);
    std::array<char, BtrKeyBufferSize + 1> key{};
    memcpy(key.data(), request.Key.data(), std::min(request.Key.size(), key.size()));
    Answer answer;
    answer.Length = request.Length;
    before();
    answer.Status = BtrCallOf(client, request.Operation, blocks[request.Block].data(), data.data(),
                              &answer.Length, key.data(), request.KeyLength, request.KeyNumber);
    after();
    answer.Data.assign(data.begin(), data.end());
    answer.Key.assign(key.data(), BtrKeyBufferSize);
    return answer;
}

// The client that is this thread. It ends with whoever stands for it.
struct Local {
    PositionBlocks Blocks{};

    Local() = default;
    Local(const Local &) = delete;
    Local &operator=(const Local &) = delete;
    ~Local() { BTRCALL(BtrOpStop, nullptr, nullptr, nullptr, nullptr, 0, 0); }

    Answer operator()(const Request &request) { return Carry(Blocks, request); }
};

// A client beside that of this thread.
struct Beside {
    PositionBlocks Blocks{};
    BtrClient *Client = BtrMakeClient();

    Beside() = default;
    Beside(const Beside &) = delete;
    Beside &operator=(const Beside &) = delete;
    ~Beside() { BtrEndClient(Client); }

    Answer operator()(const Request &request)
    {
        return Carry(
            Blocks, request, [] {}, [] {}, Client);
    }
};

// A client in a process of its own, which carries out what it is sent.
struct Remote {
    Partner By = StartPartner(Serve);

    Remote() = default;
    Remote(const Remote &) = delete;
    Remote &operator=(const Remote &) = delete;
    ~Remote() { Kill(); }

    // Ends the process as a crash does.
    void Kill() { KillPartner(By); }

    void Send(const Request &request) const
    {
        const std::string head{static_cast<char>(request.Block), static_cast<char>(request.KeyLength),
                               static_cast<char>(request.KeyNumber)};
        Put(By.To, request.Operation);
        Put(By.To, request.Length);
        PutText(By.To, head);
        PutText(By.To, request.Data);
        PutText(By.To, request.Key);
    }

    Answer Receive() const
    {
        Answer answer;
        if (!Take(By.From, &answer.Status)) {
            answer.Status = -1;
            return answer;
        }
        Take(By.From, &answer.Length);
        TakeText(By.From, &answer.Data);
        TakeText(By.From, &answer.Key);
        return answer;
    }

    Answer operator()(const Request &request) const
    {
        Send(request);
        return Receive();
    }

    // Carries out what comes, until nothing more does.
    [[noreturn]] static void Serve(int from, int to)
    {
        PositionBlocks blocks{};
        for (;;) {
            Request request;
            std::string head;
            if (!Take(from, &request.Operation) || !Take(from, &request.Length) || !TakeText(from, &head) ||
                !TakeText(from, &request.Data) || !TakeText(from, &request.Key)) {
                _exit(0);
            }
            request.Block = static_cast<uint8_t>(head[0]);
            request.KeyLength = static_cast<uint8_t>(head[1]);
            request.KeyNumber = static_cast<int8_t>(head[2]);
            const Answer answer = Carry(blocks, request);
            Put(to, answer.Status);
            Put(to, answer.Length);
            PutText(to, answer.Data);
            PutText(to, answer.Key);
        }
    }

private:
    static bool Take(int socket, void *to, size_t size)
    {
        auto *bytes = static_cast<char *>(to);
        while (size > 0) {
            const ssize_t got = read(socket, bytes, size);
            if (got <= 0) return false;
            bytes += got;
            size -= static_cast<size_t>(got);
        }
        return true;
    }
    template <typename Value> static bool Take(int socket, Value *value)
    {
        return Take(socket, value, sizeof *value);
    }
    static bool TakeText(int socket, std::string *text)
    {
        uint32_t size = 0;
        if (!Take(socket, &size)) return false;
        text->resize(size);
        return Take(socket, text->data(), size);
    }
    static void Put(int socket, const void *from, size_t size)
    {
        if (write(socket, from, size) != static_cast<ssize_t>(size)) abort();
    }
    template <typename Value> static void Put(int socket, const Value &value)
    {
        Put(socket, &value, sizeof value);
    }
    static void PutText(int socket, const std::string &text)
    {
        Put(socket, static_cast<uint32_t>(text.size()));
        if (!text.empty()) Put(socket, text.data(), text.size());
    }
};

// ---- Files ----

struct KeySegment {
    uint16_t Position; // from 1
    uint16_t Length;
    unsigned Flags;
    uint8_t Type = BtrTypeString;
    uint8_t NullValue = 0;
};

inline std::string CreateBuffer(uint16_t recordLength, unsigned keys, const std::vector<KeySegment> &segments,
                                unsigned fileFlags = 0, uint16_t pageSize = 4096)
{
    BtrFileHeader file{};
    file.RecordLength = recordLength;
    file.PageSize = pageSize;
    file.KeyCount = static_cast<uint8_t>(keys);
    file.Flags = static_cast<uint16_t>(fileFlags);
    std::string buffer(reinterpret_cast<const char *>(&file), sizeof file);
    for (const KeySegment &segment : segments) {
        BtrKeyEntry key{};
        key.Position = segment.Position;
        key.Length = segment.Length;
        key.Flags = static_cast<uint16_t>(segment.Flags | BtrKeyExtendedType);
        key.Type = segment.Type;
        key.NullValue = segment.NullValue;
        buffer.append(reinterpret_cast<const char *>(&key), sizeof key);
    }
    return buffer;
}

template <typename Client>
Answer Create(Client &client, const std::string &path, const std::string &buffer, int8_t mode = 0)
{
    return client({.Operation = BtrOpCreate,
                   .Data = buffer,
                   .Length = static_cast<uint32_t>(buffer.size()),
                   .Key = path,
                   .KeyNumber = mode});
}

template <typename Client>
Answer Open(Client &client, const std::string &path, uint8_t block = 0, int8_t mode = BtrModeNormal)
{
    return client({.Operation = BtrOpOpen, .Block = block, .Key = path, .KeyNumber = mode});
}

template <typename Client> Answer Close(Client &client, uint8_t block = 0)
{
    return client({.Operation = BtrOpClose, .Block = block});
}

// A four-byte little-endian number as key or field.
inline std::string Number(int32_t value) { return {reinterpret_cast<const char *>(&value), sizeof value}; }

// The record count of a stat, or -1.
template <typename Client> int64_t CountRecords(Client &client, uint8_t block = 0)
{
    const Answer answer = client({.Operation = BtrOpStat, .Block = block, .Length = 4096});
    if (answer.Status != BtrStatusOk) return -1;
    uint32_t count = 0;
    memcpy(&count, answer.Data.data() + 6, sizeof count);
    return count;
}

} // namespace wbtrvtest
