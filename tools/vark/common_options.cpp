#include "tools/vark/common_options.h"

#include "tools/vark/suggestions.h"

namespace cli {

void Append(Options &options, const Options &more)
{
    options.insert(options.end(), more.begin(), more.end());
}

tools::Output FormOf(const Given &given)
{
    return given.IsJson ? tools::Output::Json : given.IsCsv ? tools::Output::Csv : tools::Output::Table;
}

tools::Option MandantOption(int &number)
{
    return {.Name = "--mandant",
            .Help = "Nummer des Mandanten",
            .To = &number,
            .IsRequired = true,
            .Suggestions = OfferMandanten()};
}

Options FormOptions(Given &given)
{
    return {
        {.Name = "--csv", .Help = "Ausgabe als CSV", .To = &given.IsCsv},
        {.Name = "--json", .Help = "Ausgabe für Programme", .To = &given.IsJson, .Excludes = {"--csv"}},
    };
}

} // namespace cli
