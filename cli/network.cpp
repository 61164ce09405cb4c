// What the commands do before and after a run.

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "commands.h"
#include "host/formats/import.h"
#include "host/formats/recognise.h"
#include "host/input/by_parts.h"
#include "host/input/names.h"
#include "host/input/network_file.h"
#include "host/own/parts.h"
#include "host/results/output_file.h"
#include "host/results/side_tables.h"

using namespace vornhost;

namespace {

bool refuse(const char *why)
{
    fprintf(stderr, "vorn: %s\n", why);
    return false;
}

// What the options ask of tests.
bool apply_tests(const Options &options, Model &model)
{
    model.tests.snoop = options.snoop;
    if (options.robust) model.tests.robust = *options.robust;
    const bool asked = options.snoop || options.robust || !options.fail_on.empty() || !options.left_out.empty();
    if (model.solver != Solver::Sparse) {
        if (model.tests.given) return refuse("[tests] of the network file is for the solver sparse; leave it out");
        if (model.derived.size() > 0) return refuse("table derived is for the solver sparse; leave it out");
        if (asked)
            return refuse("--snoop, --left-out, --robust and --fail-on are for the solver sparse; leave them out");
        return true;
    }
    if (!options.left_out.empty() && !options.snoop)
        return refuse("--left-out is what --snoop leaves out; add --snoop");
    if (options.snoop && options.robust) return refuse("--snoop and --robust cannot both be; choose one");
    const bool tested = model.mode == Mode::Statistics && model.residual_statistics;
    if ((options.snoop || !options.fail_on.empty()) && !tested)
        return refuse("--snoop and --fail-on need the tests of mode statistics; leave them out, or the other options");
    if (options.robust && model.tests.test != ObservationTest::baarda)
        return refuse("--robust has no variance factor to test by; choose test = \"baarda\" in [tests]");
    if (options.robust && model.mode == Mode::Propagation)
        return refuse("--robust has no residuals in mode propagation; leave it out");
    return true;
}

std::vector<std::string> words_of(const std::string &text)
{
    std::vector<std::string> words;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find(',', at), text.size());
        if (end > at) words.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

// The points whose covariances are asked for.
bool apply_covariance(const Options &options, Model &model)
{
    if (options.covariance.empty()) return true;
    if (model.solver != Solver::Sparse || model.mode != Mode::Statistics)
        return refuse("--covariance is for the solver sparse in mode statistics; leave it out");
    std::set<std::string> known;
    for (const station_input &s : model.stations.records) known.insert(shown_name(model, s.name));
    for (const target_input &t : model.targets.records) known.insert(shown_name(model, t.name));
    model.covariance_points = words_of(options.covariance[0]);
    for (const std::string &name : model.covariance_points)
        if (known.count(name) == 0)
            return refuse(("--covariance: there is no point " + name + "; name points of the network").c_str());
    if (model.covariance_points.size() * (size_t)model.p.dim <= most_covariances) return true;
    return refuse(("--covariance: more than " + std::to_string(most_covariances) +
                   " coordinates, whose covariances are a full matrix; name fewer points")
                      .c_str());
}

bool apply(const Options &options, Model &model)
{
    if (options.solver) model.solver = *options.solver;
    if (options.mode) model.mode = *options.mode;
    if (options.threads) model.threads = *options.threads;
    model.brief = options.brief;
    if (options.components) model.components = *options.components;
    model.residual_statistics = !options.no_residual_statistics;
    if (model.solver != Solver::Sparse && (options.brief || options.no_residual_statistics)) {
        fprintf(stderr, "vorn: --brief and --no-residual-statistics are for the solver sparse; leave them out\n");
        return false;
    }
    if (model.solver != Solver::Sparse && options.memory)
        return refuse("--memory is for the solver sparse; leave it out");
    if (!apply_tests(options, model) || !apply_covariance(options, model)) return false;
    const bool tested = model.solver == Solver::Sparse && model.mode == Mode::Statistics && model.residual_statistics;
    if (options.components && !tested)
        return refuse("--components is for the solver sparse in mode statistics, with statistics of residuals");
    if (options.components && (model.tests.snoop || model.tests.robust != Robust::none))
        return refuse("--components does not go with --snoop and --robust; leave out first, then estimate");
    if (model.solver != Solver::Simplex || model.mode != Mode::Propagation) return true;
    fprintf(stderr, "vorn: the solver simplex has no mode propagation; choose --solver compact or --mode solution\n");
    return false;
}

std::string standard_input()
{
    std::string text;
    char piece[1 << 16];
    for (size_t n; (n = fread(piece, 1, sizeof piece, stdin)) > 0;) text.append(piece, n);
    if (ferror(stdin)) throw std::system_error(errno, std::generic_category(), "cannot read standard input");
    return text;
}

// The mode of a file that names none. A plan may lack values.
Mode usual_mode(const Options &options)
{
    return options.command == Command::plan ? Mode::Propagation : options.mode.value_or(Mode::Statistics);
}

bool read(const Options &options, Model &model, std::vector<std::string> &notes, Faults &faults)
{
    const std::string &path = options.network;
    const Mode usual = usual_mode(options);
    if (path != "-") return read_any_network(path, model, notes, faults, options.foreign, usual);
    if (options.foreign.given) {
        faults.add({faults.add_file("standard input"), 0, 0}, "options of foreign files do not go with standard input",
                   "name the file");
        return false;
    }
    return read_network_text("standard input", standard_input(), model, faults, usual);
}

// Of a network that processes read by parts, the part of this one. Whether it was read is decided alike on all.
bool read_part(const Options &options, Model &model, Faults &faults)
{
    if (recognise_file(options.network)) return refuse("--by-parts needs a network file; import it first");
    const FileShare share = {options.ranks->size(), options.ranks->own()};
    const bool good = read_network(options.network, model, faults, usual_mode(options), share);
    if (any_has(*options.ranks, !good)) throw WholeWanted{false};
    agree_on_files(*options.ranks, model);
    if (!apply(options, model)) return false;
    const std::vector<std::string> why = not_by_parts(model);
    show_lines(why);
    return why.empty();
}

bool same_file(const std::string &a, const std::string &b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

} // namespace

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

bool read_input(const Options &options, Model &model, Faults &faults)
{
    if (options.by_parts && options.ranks->size() > 1) return read_part(options, model, faults);
    std::vector<std::string> notes;
    const bool good = read(options, model, notes, faults);
    if (!options.console.quiet) show_lines(notes);
    if (good) return apply(options, model);
    show_lines(faults.lines());
    return false;
}

bool overwrites_input(const Options &options, const std::vector<Model> &networks)
{
    for (const std::string &output : {options.report, options.json, options.html})
        for (const Model &model : networks)
            for (const std::string &input : model.files) {
                std::error_code error;
                if (output.empty() || !std::filesystem::equivalent(output, input, error) || error) continue;
                fprintf(stderr, "vorn: %s is an input of this run; write to another file\n", output.c_str());
                return true;
            }
    return false;
}

namespace {

void write_text(const std::string &path, const std::string &text)
{
    if (path.empty() || path == "-")
        fwrite(text.data(), 1, text.size(), stdout);
    else
        write_file(path, text);
}

} // namespace

void write_texts(const Options &options, const std::string &report, const std::string &json)
{
    const bool silent = options.json == "-" && options.report.empty();
    if (!report.empty() && !silent) write_text(options.report, report);
    if (!options.json.empty()) write_text(options.json, json);
    flush_standard_output();
}

void show_lines(const std::vector<std::string> &lines)
{
    for (const std::string &line : lines) fprintf(stderr, "%s\n", line.c_str());
}

int interrupted()
{
    fputs("vorn: interrupted; nothing was written\n", stderr);
    return STATUS_INTERRUPTED;
}

void enter_folder(const Options &options)
{
    if (options.folder.empty() || chdir(options.folder.c_str()) == 0) return;
    throw std::system_error(errno, std::generic_category(), "cannot work in " + options.folder);
}

void show_lost(const RunOutcome &outcome)
{
    for (const std::string &file : outcome.lost) fprintf(stderr, "vorn: %s\n", file.c_str());
}

int close_run(const RunOutcome &outcome)
{
    const char *before = "vorn: ";
    for (const std::string &word : outcome.words) {
        fprintf(stderr, "%s%s\n", before, word.c_str());
        before = "      ";
    }
    show_lost(outcome);
    if (!outcome.lost.empty()) return STATUS_SYSTEM;
    if (outcome.adjusted()) return STATUS_ADJUSTED;
    const bool no_memory = outcome.reached == Stage::Solving && (outcome.code == -1 || outcome.code == -2);
    return no_memory ? STATUS_SYSTEM : STATUS_REFUSED;
}

void flush_standard_output() { flush_checked(stdout, "standard output"); }
