// vorn import: makes a network file of a file of another program.

#include <stdio.h>

#include <filesystem>
#include <string>

#include "commands.h"
#include "host/formats/import.h"
#include "host/formats/network_writer.h"
#include "host/results/output_file.h"

using namespace vornhost;

namespace {

std::string target_of(const Options &options)
{
    if (!options.report.empty()) return options.report;
    return std::filesystem::path(options.network).replace_extension(".inp").string();
}

bool same_file(const std::string &a, const std::string &b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

// Whether nothing is lost when the target is written.
bool may_write(const Options &options, const std::string &target)
{
    std::error_code ignored;
    if (same_file(options.network, target)) {
        fprintf(stderr, "vorn: %s is the file to read; name another with -o\n", target.c_str());
        return false;
    }
    if (options.force || !std::filesystem::is_regular_file(target, ignored)) return true;
    fprintf(stderr, "vorn: %s exists; name another file with -o, or replace it with --force\n", target.c_str());
    return false;
}

} // namespace

int import_network(const Options &options)
{
    const std::string target = target_of(options);
    const bool shown = target == "-";
    if (!shown && !may_write(options, target)) return STATUS_USAGE;
    Draft draft;
    Faults faults;
    if (!import_file(options.network, options.foreign, draft, faults)) {
        show_lines(faults.lines());
        return STATUS_USAGE;
    }
    const WrittenNetwork network = write_network(draft);
    if (shown)
        fwrite(network.text.data(), 1, network.text.size(), stdout);
    else
        write_file(target, network.text);
    if (!options.console.quiet) show_lines(note_lines(draft));
    flush_standard_output();
    return STATUS_ADJUSTED;
}
