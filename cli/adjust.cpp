// vorn adjust: runs the adjustment and writes report and results.

#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/formats/recognise.h"
#include "host/input/text_file.h"
#include "host/run/accounts.h"
#include "commands.h"
#include "host/results/csv_writer.h"
#include "host/results/dxf_writer.h"
#include "host/results/geojson_writer.h"
#include "host/results/html_page.h"
#include "host/results/input_lines.h"
#include "host/results/json_writer.h"
#include "host/results/kml_writer.h"
#include "host/results/output_file.h"
#include "host/results/side_tables.h"
#include "host/results/svg_writer.h"
#include "host/results/updated_network.h"
#include "host/results/verdict.h"
#include "interrupt.h"
#include "host/run/network_run.h"
#include "host/system/file_disk.h"
#include "host/system/temporary_file.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

bool json_shown(const Options &options) { return options.json == "-"; }

bool report_in_file(const Options &options) { return !options.report.empty() && options.report != "-"; }

// What views need of the files that were read, taken before the working folder changes.
struct Inputs {
    InputLines lines;
    std::string network; // text of the network file, for --update
};

// A text that is made of results beside report and JSON: what, which file, the text.
struct View {
    const char *words;
    std::string (*file)(const Options &options);
    std::string (*text)(const Options &options, const Model &model, const Results &results, const Inputs &inputs);
    bool only_adjusted = false; // there is none of a network that was not adjusted
};

const View views[] = {
    {"HTML", [](const Options &o) { return o.html; },
     [](const Options &, const Model &, const Results &r, const Inputs &i) { return to_html(r, i.lines, utc_now()); }},
    {"GeoJSON", [](const Options &o) { return o.geojson; },
     [](const Options &o, const Model &, const Results &r, const Inputs &) { return to_geojson(r, o.axes); }},
    {"KML", [](const Options &o) { return o.kml; },
     [](const Options &, const Model &, const Results &r, const Inputs &) { return to_kml(r); }},
    {"DXF", [](const Options &o) { return o.dxf; },
     [](const Options &o, const Model &, const Results &r, const Inputs &) { return to_dxf(r, o.axes); }},
    {"SVG", [](const Options &o) { return o.svg; },
     [](const Options &o, const Model &, const Results &r, const Inputs &) { return to_svg(r, o.axes); }},
    {"network file", [](const Options &o) { return o.update; },
     [](const Options &, const Model &m, const Results &r, const Inputs &i) {
         return updated_network(i.network, m, r);
     },
     true},
    {"table of rows left out", [](const Options &o) { return o.left_out; },
     [](const Options &, const Model &m, const Results &r, const Inputs &) { return left_out_table(m, r); }, true},
    {"covariances", [](const Options &o) { return o.covariance.empty() ? std::string() : o.covariance[1]; },
     [](const Options &, const Model &m, const Results &r, const Inputs &) { return covariance_matrix(m, r); }, true},
    {"coordinates",
     [](const Options &o) { return o.covariance.empty() ? std::string() : coordinates_file(o.covariance[1]); },
     [](const Options &o, const Model &m, const Results &r, const Inputs &) {
         return covariance_coordinates(m, r, covariance_name(o.covariance[1]));
     },
     true}};

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
        for (const View &view : views)
            seen.push_back(view.file(options).empty() ? nullptr : std::make_unique<OutputFile>(view.file(options)));
        if (!options.csv.empty()) make_folder(options.csv);
        for (const OutputFile *file : {report.get(), json.get()}) remove_if_interrupted(file);
        for (const auto &file : seen) remove_if_interrupted(file.get());
    }

    static void remove_if_interrupted(const OutputFile *file)
    {
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

    // JSON and views under their temporary names. A failure waits until the report has been finished.
    void prepare_results(const Options &options, const Model &model, const Results &results, const Inputs &inputs)
    {
        try {
            if (json) write_json(results, [&](std::string_view text) { json->write(text); });
            for (size_t i = 0; i < seen.size(); i++) {
                if (views[i].only_adjusted && !results.adjusted) seen[i].reset();
                if (seen[i]) seen[i]->write(views[i].text(options, model, results, inputs));
            }
        } catch (const OutputError &) {
            failure = std::current_exception();
        }
    }

    void finish_results(const Options &options, const Results &results)
    {
        if (json_shown(options)) show(to_json(results));
        if (failure) std::rethrow_exception(failure);
        if (json) json->finish();
        for (const auto &file : seen)
            if (file) file->finish();
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
    std::vector<std::unique_ptr<OutputFile>> seen; // one a view, null where it is not asked for
    std::unique_ptr<FILE, Close> spool;
    std::exception_ptr failure; // of the JSON
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
    std::vector<std::pair<std::string, std::string>> outputs = {{"report", options.report}, {"JSON", options.json}};
    for (const View &view : views) outputs.emplace_back(view.words, view.file(options));
    for (size_t i = 0; i < outputs.size(); i++) {
        const auto &[words, file] = outputs[i];
        if (file.empty()) continue;
        for (const std::filesystem::path &input : inputs) {
            if (!same_file(file, input)) continue;
            fprintf(stderr, "vorn: %s is an input of this run; write to another file\n", file.c_str());
            return true;
        }
        for (size_t k = 0; k < i; k++) {
            if (outputs[k].second != file) continue;
            fprintf(stderr, "vorn: %s and %s cannot both be %s\n", outputs[k].first.c_str(), words.c_str(),
                    file.c_str());
            return true;
        }
    }
    return false;
}

// A levelling network has no plan, and plain coordinates lie nowhere on the globe.
bool cannot_be_drawn(const Options &options, const Model &model)
{
    if (!options.kml.empty() && (!model.crs.given() || model.crs.local())) {
        fprintf(stderr, "vorn: --kml needs longitude and latitude: write network in [crs]\n");
        return true;
    }
    if (model.p.dim != 1 || (options.dxf.empty() && options.svg.empty())) return false;
    fprintf(stderr, "vorn: a network of heights has no positions to draw; --html shows it as a diagram\n");
    return true;
}

bool update_refused(const Options &options, const Model &model)
{
    if (options.update.empty() && options.left_out.empty()) return false;
    const char *reason = nullptr;
    if (options.network == "-" || recognise_file(options.network))
        reason = "needs a network file; import it first";
    else if (!options.update.empty() && model.files.size() > 1 &&
             !same_file(std::filesystem::absolute(std::filesystem::path(options.folder) / options.update)
                            .parent_path()
                            .string(),
                        std::filesystem::absolute(options.network).parent_path()))
        reason = "has to stand beside the network file, which names other files";
    if (reason) fprintf(stderr, "vorn: %s %s\n", options.update.empty() ? "--left-out" : "--update", reason);
    return reason;
}

Inputs read_again(const Options &options, const Model &model)
{
    Inputs inputs;
    if (!options.html.empty()) inputs.lines = InputLines(model);
    TextFile file;
    Faults faults;
    if (!options.update.empty() && file.read(options.network, Source(), faults)) inputs.network = file.text();
    return inputs;
}

void show_accounts(const Options &options, const RunOutcome &outcome)
{
    if (options.console.quiet) return;
    for (const std::string &line : account_lines(outcome.accounts)) fprintf(stderr, "%s\n", line.c_str());
}

// The three lines at the end of a report that goes elsewhere.
void show_verdict(const Options &options, const Results &results)
{
    if (options.console.quiet || results.solver != "sparse" || !results.adjusted) return;
    if (!report_in_file(options) && !json_shown(options)) return;
    for (const std::string &line : verdict(results)) fprintf(stderr, "%s\n", line.c_str());
}

// Whether something fails that --fail-on names. A test that could not be made has not been passed.
bool fails(const Options &options, const Results &results)
{
    const auto asked = [&](const char *word) {
        return std::find(options.fail_on.begin(), options.fail_on.end(), word) != options.fail_on.end();
    };
    if (asked("test") && (!results.variance_test || !results.variance_test->passed())) return true;
    if (asked("suspects") && (!results.tests || results.tests->tested == 0 || results.tests->rejected > 0)) return true;
    return asked("unchecked") && (!results.tests || results.tests->unchecked > 0);
}

// A file that cannot be made: nothing is written.
int refused(Console &console, const std::string &network, const std::runtime_error &error)
{
    console.finish();
    fprintf(stderr, "vorn: %s: %s\n", network.c_str(), error.what());
    return STATUS_USAGE;
}

// What the tests left out and the table of --left-out cannot name.
void show_left_out_elsewhere(const Options &options, const Results &results)
{
    if (options.left_out.empty()) return;
    for (const std::string &line : left_out_elsewhere(results)) fprintf(stderr, "vorn: %s\n", line.c_str());
}

// Results that are not numbers are no results.
int check_numbers(const Results &results, const RunOutcome &outcome)
{
    std::vector<std::string> lines = not_numbers(results);
    lines.insert(lines.end(), outcome.spoilt.begin(), outcome.spoilt.end());
    for (const std::string &line : lines) fprintf(stderr, "vorn: %s\n", line.c_str());
    return lines.empty() ? STATUS_ADJUSTED : STATUS_REFUSED;
}

// A signal handler.
void end_without_disk()
{
    const char words[] = "vorn: the file in the place of memory cannot be read or written\n";
    if (write(STDERR_FILENO, words, sizeof words - 1) < 0) _exit(STATUS_SYSTEM);
    _exit(STATUS_SYSTEM);
}

} // namespace

int adjust(const Options &options)
{
    Console console(options.console);
    console.begin("reading");
    Model model;
    Faults faults;
    if (!read_input(options, model, faults)) return STATUS_USAGE;
    if (options.ranks && model.solver != Solver::Sparse) {
        fprintf(stderr, "vorn: ranks share the solver sparse alone; run vorn, or choose --solver sparse\n");
        return STATUS_USAGE;
    }
    const std::vector<std::filesystem::path> inputs = sources(model);
    const Inputs texts = read_again(options, model);
    if (update_refused(options, model)) return STATUS_USAGE;
    enter_folder(options);
    if (would_overwrite(options, inputs) || cannot_be_drawn(options, model)) return STATUS_USAGE;

    Outputs outputs(options);
    Interrupts interrupts(model.solver == Solver::Sparse && !options.ranks, &console);
    RunWatch watch = interrupts.watch();
    watch.ranks = options.ranks;
    std::optional<FileDisk> disk;
    if (options.memory) watch.disk = &disk.emplace(*options.memory, end_without_disk);
    const NetworkRun run = run_network(model, outputs.stream(), console, VORN_VERSION, watch, Rows::on_demand);
    try {
        if (!interrupts.came()) outputs.prepare_results(options, model, run.results, texts);
    } catch (const UpdateError &error) {
        return refused(console, options.network, error);
    } catch (const SideTableError &error) {
        return refused(console, options.network, error);
    }
    if (interrupts.came()) {
        console.finish();
        return interrupted();
    }
    const RunOutcome &outcome = run.outcome;
    const Results &results = run.results;

    console.hide();
    try {
        outputs.finish_report(options);
    } catch (const OutputError &) {
        show_lost(outcome);
        throw;
    }
    show_accounts(options, outcome);
    show_verdict(options, results);
    show_left_out_elsewhere(options, results);
    const int status = close_run(outcome);
    const int numbers = results.adjusted ? check_numbers(results, outcome) : STATUS_ADJUSTED;
    outputs.finish_results(options, results);
    console.finish();
    if (status != STATUS_ADJUSTED || numbers != STATUS_ADJUSTED) return status == STATUS_ADJUSTED ? numbers : status;
    return fails(options, results) ? STATUS_FAILED : STATUS_ADJUSTED;
}
