// vorn adjust: runs the adjustment and writes report and results.

#include <stdio.h>

#include <filesystem>
#include <memory>
#include <string>

#include "host/run/accounts.h"
#include "commands.h"
#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"
#include "host/results/output_file.h"
#include "interrupt.h"
#include "host/run/network_run.h"
#include "host/system/temporary_file.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

bool json_shown(const Options &options) { return options.json == "-"; }

bool report_in_file(const Options &options) { return !options.report.empty() && options.report != "-"; }

// Files of a run. They are opened before it, so that a path that cannot be written shows
// before the computation and not behind it.
struct Outputs {
    explicit Outputs(const Options &options)
    {
        if (report_in_file(options))
            report = std::make_unique<OutputFile>(options.report);
        else
            spool.reset(temporary_file());
        if (!options.json.empty() && !json_shown(options)) json = std::make_unique<OutputFile>(options.json);
        if (!options.csv.empty()) make_folder(options.csv);
        for (const OutputFile *file : {report.get(), json.get()})
            if (file && !file->temporary_name().empty()) // empty for a device
                remove_when_interrupted(std::filesystem::absolute(file->temporary_name()).string());
    }

    FILE *stream() { return report ? report->stream() : spool ? spool.get() : stdout; }

    // Standard output takes the report or, where the option asks for it, the JSON.
    void finish_report(const Options &options)
    {
        if (report)
            report->finish();
        else if (!json_shown(options))
            show_spool();
    }

    void prepare_results(const Options &, const Results &results)
    {
        if (json) write_json(results, [&](std::string_view text) { json->write(text); });
    }

    void finish_results(const Options &options, const Results &results)
    {
        if (json_shown(options)) show(to_json(results));
        if (json) json->finish();
        if (!options.csv.empty()) write_csv(options.csv, results);
    }

    // The report on standard output waits in a file of its own until progress and notes have gone to
    // standard error.
    void show_spool()
    {
        char block[8192];
        if (spool) {
            flush_checked(spool.get(), "the report");
            rewind(spool.get());
            for (size_t n; (n = fread(block, 1, sizeof block, spool.get())) > 0;) fwrite(block, 1, n, stdout);
        }
        flush_standard_output();
    }

    static void show(const std::string &text)
    {
        fwrite(text.data(), 1, text.size(), stdout);
        flush_standard_output();
    }

    struct Close {
        void operator()(FILE *file) const { fclose(file); }
    };
    std::unique_ptr<OutputFile> report, json;
    std::unique_ptr<FILE, Close> spool;
};

bool same_file(const std::string &a, const std::filesystem::path &b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

// Absolute paths of the files that were read, for comparisons from another folder.
std::vector<std::filesystem::path> sources(const Model &model)
{
    std::vector<std::filesystem::path> all;
    for (const std::string &file : model.files) all.push_back(std::filesystem::absolute(file));
    return all;
}

bool would_overwrite(const Options &options, const std::vector<std::filesystem::path> &inputs)
{
    for (const std::string &output : {options.report, options.json})
        for (const std::filesystem::path &input : inputs) {
            if (output.empty() || !same_file(output, input)) continue;
            fprintf(stderr, "vorn: %s is an input of this run; write to another file\n", output.c_str());
            return true;
        }
    if (options.report.empty() || options.report != options.json) return false;
    fprintf(stderr, "vorn: report and JSON cannot both be %s\n", options.json.c_str());
    return true;
}

void show_accounts(const Options &options, const RunOutcome &outcome)
{
    if (options.console.quiet) return;
    for (const std::string &line : account_lines(outcome.accounts)) fprintf(stderr, "%s\n", line.c_str());
}

// Results that are not numbers are no results.
int check_numbers(const Results &results, const RunOutcome &outcome)
{
    std::vector<std::string> lines = not_numbers(results);
    lines.insert(lines.end(), outcome.spoilt.begin(), outcome.spoilt.end());
    for (const std::string &line : lines) fprintf(stderr, "vorn: %s\n", line.c_str());
    return lines.empty() ? STATUS_ADJUSTED : STATUS_REFUSED;
}

} // namespace

int adjust(const Options &options)
{
    Console console(options.console);
    console.begin("reading");
    Model model;
    if (!read_input(options, model)) return STATUS_USAGE;
    const std::vector<std::filesystem::path> inputs = sources(model);
    enter_folder(options);
    if (would_overwrite(options, inputs)) return STATUS_USAGE;

    Outputs outputs(options);
    const Interrupts interrupts(model.solver == Solver::Sparse);
    const NetworkRun run = run_network(model, outputs.stream(), console, VORN_VERSION, {&console, interrupts.flag()});
    if (!interrupts.came()) outputs.prepare_results(options, run.results);
    if (interrupts.came()) {
        console.finish();
        return interrupted();
    }
    const RunOutcome &outcome = run.outcome;
    const Results &results = run.results;

    try {
        outputs.finish_report(options);
    } catch (const OutputError &) {
        show_lost(outcome);
        throw;
    }
    show_accounts(options, outcome);
    const int status = close_run(outcome);
    const int numbers = results.adjusted ? check_numbers(results, outcome) : STATUS_ADJUSTED;
    outputs.finish_results(options, results);
    console.finish();
    return status == STATUS_ADJUSTED ? numbers : status;
}
