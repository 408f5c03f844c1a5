#include "report-engine/spool.h"

#include "host/descriptors.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rs {

namespace {

constexpr char magic[4] = {'R', 'S', 'M', '1'};

bool WriteAll(int file, const char *bytes, size_t size, uint64_t offset)
{
    while (size > 0) {
        const ssize_t written = pwrite(file, bytes, size, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (written == 0) errno = ENOSPC;
            return false;
        }
        bytes += written;
        size -= static_cast<size_t>(written);
        offset += static_cast<uint64_t>(written);
    }
    return true;
}

} // namespace

int OpenNamelessFile()
{
    const char *directory = secure_getenv("TMPDIR");
    if (directory == nullptr || directory[0] == 0) directory = "/tmp";
    int file = host::OpenFile(AT_FDCWD, directory, O_TMPFILE | O_RDWR, 0600);
    if (file >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return file;
    // A file system that knows no nameless files: a name for a moment.
    char path[4096];
    const int length = std::snprintf(path, sizeof path, "%s/librs-XXXXXX", directory);
    if (length < 0 || length >= static_cast<int>(sizeof path)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    file = mkostemp(path, O_CLOEXEC);
    if (file >= 0) unlink(path);
    return host::KeepAboveStandard(file);
}

bool OpenSpool(Spool &spool, const Definition &definition)
{
    spool.Written = 0;
    spool.Buffered = 0;
    spool.Error = 0;
    spool.File = OpenNamelessFile();
    if (spool.File < 0) {
        spool.Error = errno;
        return false;
    }
    const uint32_t size = sizeof definition;
    return AppendToSpool(spool, magic, sizeof magic) && AppendToSpool(spool, &size, sizeof size) &&
           AppendToSpool(spool, &definition, sizeof definition);
}

void CloseSpool(Spool &spool)
{
    if (spool.File >= 0) close(spool.File);
    spool.File = -1;
}

bool FlushSpool(Spool &spool)
{
    if (spool.Error != 0) return false;
    if (!WriteAll(spool.File, spool.Buffer, spool.Buffered, spool.Written)) {
        spool.Error = errno;
        return false;
    }
    spool.Written += spool.Buffered;
    spool.Buffered = 0;
    return true;
}

bool AppendToSpool(Spool &spool, const void *bytes, size_t size)
{
    const char *from = static_cast<const char *>(bytes);
    while (size > 0) {
        if (spool.Buffered == sizeof spool.Buffer && !FlushSpool(spool)) return false;
        if (spool.Error != 0) return false;
        const size_t space = sizeof spool.Buffer - spool.Buffered;
        const size_t part = size < space ? size : space;
        std::memcpy(spool.Buffer + spool.Buffered, from, part);
        spool.Buffered += part;
        from += part;
        size -= part;
    }
    return true;
}

bool PatchSpool(Spool &spool, uint64_t offset, const void *bytes, size_t size)
{
    if (spool.Error != 0) return false;
    if (offset >= spool.Written) {
        std::memcpy(spool.Buffer + (offset - spool.Written), bytes, size);
        return true;
    }
    // What lies across the edge of the buffer goes to disk as a whole first.
    if (offset + size > spool.Written && !FlushSpool(spool)) return false;
    if (!WriteAll(spool.File, static_cast<const char *>(bytes), size, offset)) {
        spool.Error = errno;
        return false;
    }
    return true;
}

bool PatchDefinition(Spool &spool, const Definition &definition)
{
    return PatchSpool(spool, sizeof magic + sizeof(uint32_t), &definition, sizeof definition);
}

void StartReading(SpoolReader &reader, int file)
{
    reader.File = file;
    reader.Next = sizeof magic + sizeof(uint32_t) + sizeof(Definition);
    reader.Begin = 0;
    reader.End = 0;
}

namespace {

// Makes `size` bytes from Begin on stand in the window.
bool FillWindow(SpoolReader &reader, size_t size, bool &hasFailed)
{
    if (reader.End - reader.Begin >= size) return true;
    std::memmove(reader.Window, reader.Window + reader.Begin, reader.End - reader.Begin);
    reader.End -= reader.Begin;
    reader.Begin = 0;
    while (reader.End < size) {
        const ssize_t count = pread(reader.File, reader.Window + reader.End,
                                    sizeof reader.Window - reader.End, static_cast<off_t>(reader.Next));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) hasFailed = true;
        if (count <= 0) return false;
        reader.End += static_cast<size_t>(count);
        reader.Next += static_cast<uint64_t>(count);
    }
    return true;
}

} // namespace

bool ReadItem(SpoolReader &reader, bool &hasFailed)
{
    hasFailed = false;
    if (!FillWindow(reader, sizeof(ItemHeader), hasFailed)) return false;
    std::memcpy(&reader.Header, reader.Window + reader.Begin, sizeof(ItemHeader));
    const size_t size = sizeof(ItemHeader) + reader.Header.Size;
    if (reader.Header.Size > maxItemSize || !FillWindow(reader, size, hasFailed)) {
        hasFailed = true;
        return false;
    }
    reader.ItemOffset = reader.Next - (reader.End - reader.Begin);
    reader.Data = reader.Window + reader.Begin + sizeof(ItemHeader);
    reader.Begin += size;
    return true;
}

LayoutRow RowOf(const ItemHeader &header, uint64_t offset, const Definition &definition)
{
    return {offset,      definition.Styles[header.Style].Height, header.Flags, header.Level, header.Ends,
            header.Style};
}

bool IsBlank(const Definition &definition, uint8_t style, const Cell &cell)
{
    return cell.Kind != CellKind::text && cell.Number == 0 && cell.Column != spanColumn &&
           definition.Columns[cell.Column].BlankZero && !definition.Styles[style].Bold;
}

bool NextCell(CellReader &cells, Cell &cell)
{
    if (cells.Left == 0) return false;
    --cells.Left;
    CellHeader header;
    std::memcpy(&header, cells.Next, sizeof header);
    cells.Next += sizeof header;
    cell = {header.Column, header.Kind, header.Length, cells.Next, 0};
    if (header.Kind != CellKind::text) std::memcpy(&cell.Number, cells.Next, sizeof cell.Number);
    cells.Next += header.Length;
    return true;
}

void BlankControls(ItemHeader &header, char *data)
{
    if (header.Controls == 0) return;
    header.Controls = 0;
    CellReader cells = CellsOf(header, data);
    Cell cell;
    while (NextCell(cells, cell)) {
        if (cell.Kind != CellKind::text) continue;
        char *const text = data + (cell.Text - data);
        for (size_t i = 0; i < cell.Length; ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if (byte < ' ' || byte == 0x7F) text[i] = ' ';
            // U+0080 to U+009F are two bytes in UTF-8, and so is the blank that does not break.
            if (byte == 0xC2 && i + 1 < cell.Length && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
                text[++i] = '\xA0';
            }
        }
    }
}

void ColumnTitle(const Column &column, char (&out)[columnTitleSize])
{
    if (column.Heading[0] != 0) {
        std::snprintf(out, sizeof out, "%s", column.Heading);
        return;
    }
    const char *separator = column.Group[0] != 0 && column.Title[0] != 0 ? " " : "";
    std::snprintf(out, sizeof out, "%s%s%s", column.Group, separator, column.Title);
    for (char *character = out; *character != 0; ++character) {
        if (*character == '\n') *character = ' ';
    }
}

void LinePartsOf(const char *data, LinePart (&parts)[3])
{
    for (LinePart &part : parts) {
        uint16_t length = 0;
        std::memcpy(&length, data, sizeof length);
        part = {data + sizeof length, length};
        data += sizeof length + length;
    }
}

} // namespace rs
