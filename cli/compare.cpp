// vorn compare: tests whether the points of a network kept their places between epochs; vorn control: whether they fit
// the coordinates at which the file holds them.

#include <stdio.h>

#include <string>
#include <vector>

#include "commands.h"
#include "host/epochs/compare.h"
#include "host/epochs/compare_report.h"
#include "host/results/output_file.h"
#include "host/run/network_run.h"
#include "interrupt.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

// All files are read, so that all faults show at once.
bool read_epochs(const Options &options, std::vector<Model> &networks)
{
    bool good = true;
    for (const std::string &file : options.networks) {
        Options one = options;
        one.network = file;
        Faults faults;
        networks.emplace_back();
        good &= read_input(one, networks.back(), faults);
    }
    return good;
}

} // namespace

int compare_epochs(const Options &options)
{
    Console console(options.console);
    console.begin("reading");
    std::vector<Model> networks;
    if (!read_epochs(options, networks)) return STATUS_USAGE;
    enter_folder(options);
    if (overwrites_input(options, networks)) return STATUS_USAGE;
    const Interrupts interrupts(true);
    const RunWatch watch{&console, interrupts.flag()};
    const Comparison c = options.command == Command::control ? compare_with_control(networks[0], options.compare, watch)
                                                             : compare(networks, options.compare, watch);
    if (interrupts.came() || c.stopped) {
        console.finish();
        return interrupted();
    }
    console.hide();
    if (!c.words.empty()) {
        RunOutcome refused;
        refused.words = c.words;
        close_run(refused);
        if (c.bad_input) return STATUS_USAGE;
    }
    const std::string date = utc_now();
    if (!options.html.empty() && c.made()) write_file(options.html, compare_html(c, VORN_VERSION, date));
    write_texts(options, c.made() ? compare_report(c, date) : std::string(), compare_json(c, VORN_VERSION));
    console.finish();
    return c.made() ? STATUS_ADJUSTED : STATUS_REFUSED;
}
