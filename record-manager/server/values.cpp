// Values of statements on their way to the server, and those of its answers.
#include "record-manager/server/connection.h"

namespace wbtrv {

void AddNumber(Parameters *parameters, int64_t number)
{
    const int at = parameters->Count++;
    auto left = static_cast<uint64_t>(number);
    for (size_t i = 8; i-- > 0; left >>= 8) {
        parameters->Numbers[at][i] = static_cast<uint8_t>(left);
    }
    parameters->Data[at] = nullptr;
    parameters->Sizes[at] = 8;
}

void AddBytes(Parameters *parameters, const void *data, size_t size)
{
    const int at = parameters->Count++;
    parameters->Data[at] = size > 0 ? static_cast<const char *>(data) : "";
    parameters->Sizes[at] = static_cast<int>(size);
}

int64_t NumberAt(const PGresult *rows, int row, int column)
{
    if (PQgetlength(rows, row, column) != 8) return 0;
    const auto *bytes = reinterpret_cast<const uint8_t *>(PQgetvalue(rows, row, column));
    uint64_t number = 0;
    for (size_t i = 0; i < 8; ++i) {
        number = number << 8 | bytes[i];
    }
    return static_cast<int64_t>(number);
}

Bytes BytesAt(const PGresult *rows, int row, int column)
{
    return {reinterpret_cast<const uint8_t *>(PQgetvalue(rows, row, column)),
            static_cast<size_t>(PQgetlength(rows, row, column))};
}

} // namespace wbtrv
