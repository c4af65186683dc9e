// tintorra-cli: Tintorra's main job without a display.
#include "cli/CliFailure.h"
#include "cli/Commands.h"
#include "common/Diagnostics.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

int main(int argc, char** argv)
{
    using namespace tintorra::cli;
    CLI::App tool("Tintorra recolours part of a photograph: it moves a range of hues towards a "
                  "target hue, changes their saturation and brightness, and keeps every result "
                  "inside the image's RGB gamut.",
                  "tintorra-cli");
    tool.footer("Run 'tintorra-cli COMMAND --help' for a command's options. Exit status: 0 "
                "success, 1 processing failure, 2 usage error.");
    tool.require_subcommand(1);
    GlobalOptions global;
    tool.add_flag("-q,--quiet", global.quiet, "no progress bar and no messages besides errors")
        ->configurable(false);
    bool verbose = false;
    tool.add_flag("-v,--verbose", verbose,
                  "also print the engine's diagnostic messages (table and gamut builds) on stderr")
        ->configurable(false);
    tool.set_version_flag("--version", "tintorra-cli 0.1.0");

    const std::vector<CommandRunner> runners{
        addShiftCommand(tool, global), addParamsCommand(tool, global),
        addInfoCommand(tool, global),  addSpectrumCommand(tool, global),
        addGamutCommand(tool, global), addDemoCommand(tool, global),
    };
    // --quiet and --verbose are accepted after the command as well.
    for (CLI::App* command : tool.get_subcommands({})) {
        command->fallthrough();
    }

    try {
        tool.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return tool.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return tool.exit(help);
    } catch (const CLI::CallForVersion& version) {
        return tool.exit(version);
    } catch (const CLI::ParseError& error) {
        printError(std::string(error.what()) + "; run 'tintorra-cli --help' for the usage");
        return kExitUsageError;
    }

    if (verbose) {
        tintorra::setDiagnosticsSink(
            [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); });
    }

    const std::vector<CLI::App*> chosen = tool.get_subcommands();
    const std::vector<CLI::App*> all = tool.get_subcommands({});
    try {
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (!chosen.empty() && all[i] == chosen.front()) {
                return runners[i]();
            }
        }
    } catch (const CliFailure& failure) {
        printError(failure.what());
        return failure.exitCode();
    } catch (const std::exception& exception) {
        printError(std::string("unexpected failure: ") + exception.what() +
                   "; please report it with the command you ran");
        return kExitProcessingFailure;
    }
    printError("no command given; run 'tintorra-cli --help'");
    return kExitUsageError;
}
