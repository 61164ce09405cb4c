// vorn export: writes a network, or its adjusted coordinates, in a foreign format.

#include <errno.h>
#include <stdio.h>
#include <time.h>

#include <filesystem>
#include <memory>
#include <string>

#include "commands.h"
#include "host/formats/export.h"
#include "host/formats/import.h"
#include "host/formats/network_json.h"
#include "host/input/text_file.h"
#include "host/results/output_file.h"
#include "host/run/network_run.h"
#include "host/run/silence.h"
#include "host/system/temporary_file.h"
#include "interrupt.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

std::string target_of(const Options &options)
{
    if (!options.report.empty()) return options.report;
    for (const TargetWord &target : export_targets())
        if (target.target == *options.target)
            return std::filesystem::path(options.network).replace_extension(target.ending).string();
    return "-";
}

std::vector<std::string> all_points(const Model &model)
{
    std::vector<std::string> names;
    const int count = (int)(model.stations.size() + model.targets.size());
    names.reserve((size_t)count);
    for (int i = 0; i < count; i++) names.emplace_back(model.keys.name(record_name(model, i)));
    return names;
}

// Adjusts the network and writes what comes out; the status of a run that failed, 0 otherwise.
int adjusted_text(const Options &options, Model &model, std::string &text, std::vector<std::string> &notes,
                  Faults &faults)
{
    constexpr size_t most_points = 3000; // with a covariance each with each
    if (*options.target == Target::sinex) model.covariance_points = all_points(model);
    if (model.covariance_points.size() > most_points) {
        faults.add(Source(), "the network has more than 3000 points, too many for a file with all covariances",
                   "export as landxml or points");
        return STATUS_USAGE;
    }
    model.residual_statistics = false;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(temporary_file(), fclose);
    if (!report) throw OutputError(errno, "a temporary file");
    Silence silence;
    const Interrupts interrupts(model.solver == Solver::Sparse);
    const NetworkRun run = run_network(model, report.get(), silence, VORN_VERSION, {nullptr, interrupts.flag()});
    if (interrupts.came()) return interrupted();
    if (!run.outcome.adjusted()) return close_run(run.outcome);
    text = export_results(run.results, *options.target, time(nullptr), notes, faults);
    return faults.empty() ? STATUS_ADJUSTED : STATUS_USAGE;
}

// The file itself as JSON, or the network file that is made of a foreign one.
std::string network_as_json(const Options &options, std::vector<std::string> &notes, Faults &faults)
{
    const std::string &path = options.network;
    if (options.foreign.format || recognise_file(path)) {
        MadeText made;
        const bool good = import_text(path, options.foreign, made, notes, faults);
        return good ? write_network_json(path, made.text, faults) : std::string();
    }
    TextFile file;
    return file.read(path, Source(), faults) ? write_network_json(path, file.text(), faults) : std::string();
}

} // namespace

int export_to(const Options &options)
{
    const std::string target = target_of(options);
    const bool shown = target == "-";
    if (!shown && !may_write(options, target)) return STATUS_USAGE;
    Model model;
    Faults faults;
    if (!read_input(options, model, faults)) return STATUS_USAGE;
    std::vector<std::string> notes;
    std::string text;
    int status = STATUS_ADJUSTED;
    if (*options.target == Target::json)
        text = network_as_json(options, notes, faults);
    else if (holds_results(*options.target))
        status = adjusted_text(options, model, text, notes, faults);
    else
        text = export_network(model, *options.target, notes, faults);
    if (status != STATUS_ADJUSTED && faults.empty()) return status;
    if (!faults.empty()) {
        show_lines(faults.lines());
        return STATUS_USAGE;
    }
    if (shown)
        fwrite(text.data(), 1, text.size(), stdout);
    else
        write_file(target, text);
    if (!options.console.quiet) show_lines(notes);
    flush_standard_output();
    return STATUS_ADJUSTED;
}
