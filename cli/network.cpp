// What the commands do before and after a run.

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

#include <filesystem>

#include "commands.h"
#include "host/formats/import.h"
#include "host/input/network_file.h"
#include "host/results/output_file.h"

using namespace vornhost;

namespace {

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
    const bool tested = model.solver == Solver::Sparse && model.mode == Mode::Statistics && model.residual_statistics;
    if (options.components && !tested) {
        fprintf(stderr,
                "vorn: --components is for the solver sparse in mode statistics, with statistics of residuals\n");
        return false;
    }
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

bool read(const std::string &path, Model &model, std::vector<std::string> &notes, Faults &faults)
{
    if (path != "-") return read_any_network(path, model, notes, faults);
    return read_network_text("standard input", standard_input(), model, faults);
}

} // namespace

bool read_input(const Options &options, Model &model, Faults &faults)
{
    std::vector<std::string> notes;
    const bool good = read(options.network, model, notes, faults);
    if (!options.console.quiet) show_lines(notes);
    if (good) return apply(options, model);
    show_lines(faults.lines());
    return false;
}

bool overwrites_input(const Options &options, const std::vector<Model> &networks)
{
    for (const std::string &output : {options.report, options.json})
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
