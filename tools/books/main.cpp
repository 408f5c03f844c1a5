// books: makes, checks, moves and shows books.
#include "tools/books/apart.h"
#include "tools/books/commands.h"
#include "tools/common/command_line.h"
#include "tools/common/exit_codes.h"
#include "tools/common/system.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <cstdio>
#include <exception>
#include <filesystem>

namespace {

int Run(int argc, char **argv)
{
    tools::EndQuietlyOnClosedPipe();
    tools::CatchInterrupts();
    books::Given given;
    const tools::Tool tool = books::DescribeBooks(given);
    const tools::Parsed parsed = tools::ParseCommandLine(tool, argc, argv);
    return parsed.Chosen != nullptr ? parsed.Chosen->Run() : parsed.ExitCode;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        tools::BeginProgram(argc, argv);
        if (books::ReadsApart(argc, argv)) return tools::ExitGood;
        return tools::EndOutput("books", Run(argc, argv));
    } catch (const tools::Interrupted &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
        return tools::ExitInterrupted;
    } catch (const std::filesystem::filesystem_error &error) {
        std::fprintf(stderr, "books: %s: %s\n", error.path1().string().c_str(),
                     tools::ErrorText(error.code().default_error_condition().value()).c_str());
    } catch (const tools::UsageError &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
        return tools::ExitUsage;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "books: %s\n", error.what());
    } catch (...) {
        std::fputs("books: unbekannter Fehler\n", stderr);
    }
    return tools::ExitFailure;
}
