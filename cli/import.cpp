// vorn import: makes a network file of a file of another program.

#include <stdio.h>

#include <filesystem>
#include <string>

#include "commands.h"
#include "host/formats/import.h"
#include "host/results/output_file.h"

using namespace vornhost;

namespace {

std::string target_of(const Options &options)
{
    if (!options.report.empty()) return options.report;
    return std::filesystem::path(options.network).replace_extension(".inp").string();
}

} // namespace

int import_network(const Options &options)
{
    const std::string target = target_of(options);
    const bool shown = target == "-";
    if (!shown && !may_write(options, target)) return STATUS_USAGE;
    MadeText network;
    std::vector<std::string> notes;
    Faults faults;
    if (!import_text(options.network, options.foreign, network, notes, faults)) {
        show_lines(faults.lines());
        return STATUS_USAGE;
    }
    if (shown)
        fwrite(network.text.data(), 1, network.text.size(), stdout);
    else
        write_file(target, network.text);
    if (!options.console.quiet) show_lines(notes);
    flush_standard_output();
    return STATUS_ADJUSTED;
}
