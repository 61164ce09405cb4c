// What both commands do before and after a run.

#include <errno.h>
#include <stdio.h>
#include <unistd.h>

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
    model.residual_statistics = !options.no_residual_statistics;
    if (model.solver != Solver::Sparse && (options.brief || options.no_residual_statistics)) {
        fprintf(stderr, "vorn: --brief and --no-residual-statistics are for the solver sparse; leave them out\n");
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

bool read(const Options &options, Model &model, std::vector<std::string> &notes, Faults &faults)
{
    const std::string &path = options.network;
    if (path != "-") return read_any_network(path, model, notes, faults, options.foreign);
    if (options.foreign.given) {
        faults.add({faults.add_file("standard input"), 0, 0}, "options of foreign files do not go with standard input",
                   "name the file");
        return false;
    }
    return read_network_text("standard input", standard_input(), model, faults);
}

} // namespace

bool read_input(const Options &options, Model &model, Faults &faults)
{
    std::vector<std::string> notes;
    const bool good = read(options, model, notes, faults);
    if (!options.console.quiet) show_lines(notes);
    if (good) return apply(options, model);
    show_lines(faults.lines());
    return false;
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
