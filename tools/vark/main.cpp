// vark: the books from the command line. It books and asks through the exported functions, as any host would.
#include "tools/common/command_line.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/system.h"
#include "tools/common/terminal.h"
#include "tools/vark/commands.h"
#include "tools/vark/reasons.h"

#include <cstdio>
#include <exception>

namespace {

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();
    cli::Given given;
    const tools::Tool tool = cli::DescribeVark(given);
    const tools::Parsed parsed = tools::ParseCommandLine(tool, argc, argv);
    if (parsed.Chosen == nullptr) return parsed.ExitCode;
    if (!cli::NeedsScreen(given)) cli::UseNoWindows();
    if (!given.Configuration.empty()) tools::UseConfiguration(given.Configuration);
    try {
        return parsed.Chosen->Run();
    } catch (const tools::UsageError &error) {
        std::fprintf(stderr, "vark: %s\nMehr dazu: %s --hilfe\n", error.what(), parsed.Path.c_str());
    }
    return tools::ExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        tools::BeginProgram(argc, argv);
        return tools::EndOutput("vark", Run(argc, argv));
    } catch (const cli::Refusal &refusal) {
        std::fprintf(stderr, "vark: %s\n", refusal.what());
        return tools::ExitRefused;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "vark: %s\n", error.what());
    } catch (...) {
        std::fputs("vark: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
