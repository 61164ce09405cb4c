// vorn transform: fits one list of coordinates to another.

#include <stdio.h>

#include <filesystem>
#include <string>

#include "commands.h"
#include "host/epochs/transform.h"
#include "host/results/output_file.h"
#include "host/run/network_run.h"
#include "interrupt.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

// 0, or the status with which the program ends.
int read_list(const std::string &path, CoordinateList &list, const RunWatch &watch)
{
    Faults faults;
    if (read_coordinates(path, list, faults, watch)) return STATUS_ADJUSTED;
    if (list.stopped) return interrupted();
    show_lines(faults.lines());
    if (!faults.empty()) return STATUS_USAGE;
    RunOutcome refused;
    refused.words = list.words;
    if (!refused.words.empty()) refused.words[0] = path + ": " + refused.words[0];
    return close_run(refused);
}

// A line names an output that is an input.
bool overwrites(const Options &options)
{
    for (const std::string &output : {options.report, options.json, options.list})
        for (const std::string &input : options.networks) {
            std::error_code error;
            if (output.empty() || !std::filesystem::equivalent(output, input, error) || error) continue;
            fprintf(stderr, "vorn: %s is an input of this run; write to another file\n", output.c_str());
            return true;
        }
    return false;
}

} // namespace

int transform_list(const Options &options)
{
    Interrupts interrupts(true);
    const RunWatch watch = interrupts.watch();
    CoordinateList lists[2];
    for (int k = 0; k < 2; k++)
        if (const int status = read_list(options.networks[(size_t)k], lists[k], watch)) return status;
    if (overwrites(options)) return STATUS_USAGE;
    enter_folder(options);
    const Transformation t = transform(lists[0], lists[1], options.transform);
    if (interrupts.came()) return interrupted();
    if (!t.made()) {
        RunOutcome refused;
        refused.words = t.words;
        close_run(refused);
        return STATUS_USAGE;
    }
    if (!options.list.empty()) write_file(options.list, transformed_list(t));
    write_texts(options, transform_report(t, utc_now()), transform_json(t, VORN_VERSION));
    return STATUS_ADJUSTED;
}
