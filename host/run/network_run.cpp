#include "host/run/network_run.h"

#include <time.h>

#include <memory>
#include <utility>

#include "host/own/collect.h"
#include "host/own/road.h"
#include "host/results/text_report.h"
#include "host/run/silence.h"
#include "host/system/utc.h"

namespace vornhost {

namespace {

NetworkRun own_run(Model &model, FILE *report, Feedback &feedback, const std::string &version, bool check,
                   const RunWatch &watch, Rows rows)
{
    const auto own = std::make_shared<OwnOutcome>(run_own(model, feedback, check, watch));
    NetworkRun run;
    run.stopped = own->ending == Ending::stopped;
    if (run.stopped) return run;
    run.results = collect_own(model, own, version);
    run.outcome = std::move(own->run);
    const std::string text = check ? std::string() : text_report(run.results, utc_now(), model.brief);
    fwrite(text.data(), 1, text.size(), report);
    if (rows == Rows::kept) run.results.residuals.keep();
    return run;
}

// What nothing determines in a network that the engine, which counts observations, has loaded.
std::vector<std::string> open_in(Model &model)
{
    Silence silence;
    OwnOutcome own = run_own(model, silence, true);
    const bool open = own.ending == Ending::no_datum || own.ending == Ending::undetermined;
    return open ? std::move(own.run.words) : std::vector<std::string>();
}

NetworkRun engine_run(Model &model, FILE *report, Feedback &feedback, const std::string &version, bool checking)
{
    NetworkRun run;
    run.outcome = checking ? check(model, report, feedback) : vornhost::run(model, report, feedback);
    run.results = collect(model, run.outcome, version);
    if (run.results.variance_test) { // the last note says what the report should
        std::string line = run.results.notes.back();
        fprintf(report, "\n\n%s\n", line.c_str());
        feedback.feedback(&line[0]);
    }
    model.p.freerun(model.p.runresults);
    if (checking && run.results.adjusted) run.results.words = open_in(model);
    return run;
}

} // namespace

std::string utc_now()
{
    char text[40];
    const time_t seconds = time(nullptr);
    tm clock = tm();
    return utc(seconds, &clock) && strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &clock) > 0 ? text : "";
}

NetworkRun run_network(Model &model, FILE *report, Feedback &feedback, const std::string &version,
                       const RunWatch &watch, Rows rows)
{
    if (model.solver == Solver::Sparse) return own_run(model, report, feedback, version, false, watch, rows);
    return engine_run(model, report, feedback, version, false);
}

NetworkRun check_network(Model &model, FILE *report, Feedback &feedback, const std::string &version,
                         const RunWatch &watch)
{
    if (model.solver == Solver::Sparse) return own_run(model, report, feedback, version, true, watch, Rows::kept);
    return engine_run(model, report, feedback, version, true);
}

} // namespace vornhost
