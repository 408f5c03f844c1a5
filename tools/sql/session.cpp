#include "tools/sql/session.h"

#include "tools/books/place.h"

#include <algorithm>

namespace sql {

using namespace tools;

bool ParseYearPlace(const std::string &name, YearPlace &place)
{
    place.Name = name;
    return books::ParseYearDirectory(name, place.Year, place.Mandant);
}

void Session::AddCursor() { ++cursors; }

void Session::RemoveCursor() noexcept
{
    if (--cursors > 0) return;
    years.reset();
    firstMonths.reset();
    client.EndSnapshot();
    holds = false;
}

void Session::Hold()
{
    if (!holds) client.BeginSnapshot();
    holds = true;
}

std::unique_ptr<TableFile> Session::Open(const TableLayout &layout, const YearPlace &place)
{
    Hold();
    try {
        return std::make_unique<TableFile>(layout, Data / place.Name, OpenMode::ReadOnly, &client);
    } catch (const EngineError &error) {
        if (error.Status == BtrStatusFileNotFound && !place.Name.empty()) return nullptr;
        throw;
    }
}

const std::vector<YearPlace> &Session::Years()
{
    if (years) return *years;
    std::vector<YearPlace> found;
    for (const std::string &name : books::YearDirectories(Data)) {
        ParseYearPlace(name, found.emplace_back());
    }
    return years.emplace(std::move(found));
}

int Session::FirstMonthOf(int mandant)
{
    if (!firstMonths) {
        std::map<int, int> months;
        const auto fista = Open(LayoutOf(vark::TableFista), {});
        vark::FistaRecord record{};
        for (bool found = fista->First(&record, 0); found; found = fista->Next(&record, 0)) {
            months[record.Nummer] = std::clamp<int>(record.FirstFiscalMonth, 1, 12);
        }
        firstMonths = std::move(months);
    }
    const auto found = firstMonths->find(mandant);
    return found != firstMonths->end() ? found->second : 1;
}

Session &Connection::At(const std::filesystem::path &data)
{
    std::unique_ptr<Session> &session = Sessions[data.string()];
    if (session == nullptr) session = std::make_unique<Session>(data);
    return *session;
}

} // namespace sql
