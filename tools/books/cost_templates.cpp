#include "tools/books/cost_templates.h"

#include "text/windows1252.h"
#include "tools/books/record_fields.h"

#include <cstring>
#include <string>

namespace books {

using namespace vark;

std::vector<CostTemplate> MakeTemplates(Ledger &ledger)
{
    std::vector<CostTemplate> templates;
    const auto find = [&ledger](const char *number) -> CostObject * {
        for (CostObject &object : ledger.CostObjects) {
            if (std::strcmp(object.Row->Number, number) == 0) return &object;
        }
        return nullptr;
    };
    const auto key = [](AccountNumber &out, const char *number) {
        if (*number != 0) MakeKey(out, std::stoi(number));
    };
    for (const CostTemplateRow &row : CostTemplates()) {
        if (!IsFor(row.Mandanten, ledger.Of->Number)) continue;
        CostTemplate &made = templates.emplace_back();
        made.Number = row.Number;
        for (const CostLineRow &line : CostLines()) {
            if (line.Template != row.Number || !IsFor(line.Mandanten, ledger.Of->Number)) continue;
            CostShare share{};
            share.First = find(line.Object1);
            share.Second = find(line.Object2);
            share.Share = ShareOf(line.Share);
            share.Flag = line.IsDirect ? KobuArt : 0;
            key(share.FirstKey, line.Object1);
            key(share.SecondKey, line.Object2);
            text::FromUtf8(line.Text, share.Text, sizeof share.Text);
            made.Shares.push_back(share);
        }
    }
    return templates;
}

} // namespace books
