// vorn plan: precision and checks of a planned network, and which further observation helps a point most.

#include <stdio.h>

#include "commands.h"
#include "host/planning/planning.h"
#include "host/run/network_run.h"
#include "interrupt.h"
#include "vorn/version.h"

using namespace vornhost;

int plan(const Options &options)
{
    if (options.plan.helped.empty() != options.plan.candidates.empty()) {
        fprintf(stderr, "vorn: --help-point and --candidates go together; write both or none\n");
        return STATUS_USAGE;
    }
    std::vector<Model> networks(1);
    Faults faults;
    if (!read_input(options, networks[0], faults)) return STATUS_USAGE;
    if (overwrites_input(options, networks)) return STATUS_USAGE;
    Interrupts interrupts(true);
    Faults of_candidates;
    const Planning p = plan_network(networks[0], options.plan, of_candidates, interrupts.watch());
    if (interrupts.came() || p.stopped) return interrupted();
    if (!of_candidates.empty()) {
        show_lines(of_candidates.lines());
        return STATUS_USAGE;
    }
    enter_folder(options);
    if (!p.made()) {
        RunOutcome refused;
        refused.words = p.words;
        close_run(refused);
    }
    write_texts(options, p.made() ? planning_report(p, utc_now()) : std::string(), planning_json(p, VORN_VERSION));
    return p.made() ? STATUS_ADJUSTED : STATUS_REFUSED;
}
