#include "tools/books/sequential.h"

#include "tools/common/workplace.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace books {

using namespace tools;

namespace {

constexpr size_t pieceSize = 1 << 18;
// Five digits hold the length of the longest record there can be.
constexpr size_t lengthDigitsMax = 5;
constexpr size_t recordMax = 65535;
constexpr char endMark = '\x1A';

} // namespace

SequentialWriter::SequentialWriter(std::function<void(const void *data, size_t size)> write)
    : out(std::move(write))
{
    pending.reserve(pieceSize + recordMax);
}

void SequentialWriter::Put(const void *record, size_t size)
{
    char digits[8];
    const auto length = std::to_chars(digits, digits + sizeof digits, size);
    pending.append(digits, length.ptr);
    pending += ',';
    pending.append(static_cast<const char *>(record), size);
    pending += "\r\n";
    if (pending.size() < pieceSize) return;
    out(pending.data(), pending.size());
    pending.clear();
}

void SequentialWriter::Finish()
{
    pending += endMark;
    out(pending.data(), pending.size());
    pending.clear();
}

SequentialReader::SequentialReader(const std::filesystem::path &from) : path(from)
{
    namespace fs = std::filesystem;
    std::error_code unknown;
    const fs::file_status found = fs::status(path, unknown);
    if (fs::is_directory(found)) ThrowFileError(path, "Lesen", EISDIR);
    if (fs::exists(found) && !fs::is_regular_file(found)) ThrowFileError(path, "Lesen", EINVAL);
    file.open(path, std::ios::binary);
    if (!file) ThrowFileError(path, "Lesen", errno);
    Bytes = fs::file_size(path);
    // Room for the rest of a record that was cut by the end of a piece, and the next piece.
    buffer.resize(pieceSize + recordMax + 16);
}

// More bytes behind those that are left; false at the end of the file.
bool SequentialReader::Fill()
{
    std::memmove(buffer.data(), buffer.data() + at, end - at);
    before += at;
    end -= at;
    at = 0;
    file.read(buffer.data() + end, static_cast<std::streamsize>(buffer.size() - end));
    if (file.bad()) ThrowFileError(path, "Lesen", errno);
    end += static_cast<size_t>(file.gcount());
    return file.gcount() > 0;
}

SequentialReader::Got SequentialReader::Break(std::string fault)
{
    Fault = std::move(fault);
    return Got::Broken;
}

SequentialReader::Got SequentialReader::Next(char *record, size_t size)
{
    const auto has = [this](size_t bytes) {
        while (end - at < bytes) {
            if (!Fill()) return false;
        }
        return true;
    };
    ++Number;
    Offset = before + at;
    if (!has(1)) return Break("die Datei endet ohne das Endezeichen 1A; sie ist abgeschnitten");
    if (buffer[at] == endMark) {
        ++at;
        --Number;
        if (has(1)) return Break("hinter dem Endezeichen stehen noch Bytes");
        return Got::End;
    }
    has(lengthDigitsMax + 1);
    size_t length = 0;
    const char *const digits = buffer.data() + at;
    const char *const limit = digits + std::min(lengthDigitsMax, end - at);
    const auto [stop, error] = std::from_chars(digits, limit, length);
    if (error != std::errc()) return Break("statt einer Satzlänge steht hier etwas anderes");
    at += static_cast<size_t>(stop - digits);
    if (at == end) return Break("mitten in der Satzlänge endet die Datei");
    if (buffer[at] != ',' && buffer[at] != ' ') {
        return Break("hinter der Satzlänge fehlt das Komma");
    }
    ++at;
    if (length == 0 || length > recordMax) {
        return Break("eine Satzlänge von " + std::to_string(length) + " gibt es nicht");
    }
    if (!has(length)) return Break("mitten im Satz endet die Datei; sie ist abgeschnitten");
    if (!has(length + 2)) return Break("hinter dem Satz endet die Datei; sie ist abgeschnitten");
    const char *const bytes = buffer.data() + at;
    if (bytes[length] != '\r' || bytes[length + 1] != '\n') {
        return Break("hinter dem Satz fehlt das Zeilenende; die Länge stimmt nicht");
    }
    at += length + 2;
    if (length != size) {
        Fault = "der Satz hat " + std::to_string(length) + " statt " + std::to_string(size) + " Bytes";
        return Got::BadLength;
    }
    std::memcpy(record, bytes, size);
    return Got::Record;
}

} // namespace books
