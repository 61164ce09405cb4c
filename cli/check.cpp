// vorn check: says what the adjustment of a network would be, without adjusting it.

#include <errno.h>
#include <stdio.h>

#include <memory>
#include <string>

#include "host/run/accounts.h"
#include "commands.h"
#include "host/results/check_json.h"
#include "host/results/closure_text.h"
#include "host/results/output_file.h"
#include "interrupt.h"
#include "host/run/network_run.h"
#include "host/run/silence.h"
#include "host/system/temporary_file.h"
#include "vorn/version.h"

using namespace vornhost;

namespace {

using File = std::unique_ptr<FILE, int (*)(FILE *)>;

File temporary_report()
{
    File file(temporary_file(), fclose);
    if (!file) throw OutputError(errno, "a temporary file");
    return file;
}

std::string text_of(FILE *file)
{
    std::string text;
    char piece[4096];
    rewind(file);
    for (size_t n; (n = fread(piece, 1, sizeof piece, file)) > 0;) text.append(piece, n);
    return text;
}

// The engine's summary of the problem in its report; empty when it did not come that far.
std::string summary_of(const std::string &report)
{
    const std::string title = "\nSummary\n";
    const size_t begin = report.find(title);
    if (begin == std::string::npos) return {};
    const size_t from = begin + title.size(), end = report.find("\n\nApproximate values", from);
    return end == std::string::npos ? std::string() : report.substr(from, end + 1 - from);
}

bool has(const std::string &summary, const char *words) { return summary.find(words) != std::string::npos; }

// The engine counts what is fixed, and goes on in space where that is too little. It adds conditions
// where one point alone is fixed; weights, azimuths and imported points it does not count.
bool doubtful(const std::string &summary)
{
    return has(summary, "datumcheck: Not enough information to define a datum") &&
           !has(summary, "experiment with mixed datum");
}

const char *datum_of(const std::string &summary)
{
    if (doubtful(summary)) return "datum: what is fixed does not define it alone; fix or weight more, or fix nothing";
    if (has(summary, "experiment with mixed datum")) return "datum: one fixed point, and conditions on the others";
    return has(summary, "\nnumber of datum parameters") ? "datum: free network, held by conditions on the points"
                                                        : "datum: held by fixed or weighted coordinates";
}

void show(const Results &r, const RunOutcome &outcome, const std::string &summary)
{
    if (!r.title.empty()) printf("%s\n", r.title.c_str());
    printf("%s: solver %s, mode %s\n", r.file.c_str(), r.solver.c_str(), r.mode.c_str());
    for (const std::string &note : r.notes) printf("%s\n", note.c_str());
    for (const std::string &line : account_lines(r.accounts)) printf("%s\n", line.c_str());
    constexpr size_t most_closures = 3; // of a kind
    fputs(closure_text(r, most_closures).c_str(), stdout);
    if (!r.datum.empty()) printf("datum: %s\n", r.datum.c_str());
    if (!outcome.adjusted()) return;
    if (r.solver == "sparse") {
        if (r.degrees_of_freedom) printf("degrees of freedom: %d\n", *r.degrees_of_freedom);
        puts("this network can be adjusted");
        return;
    }
    printf("%s%s\n", summary.c_str(), datum_of(summary));
    for (const std::string &word : r.words) printf("solver sparse refuses it: %s\n", word.c_str());
    puts(doubtful(summary) || !r.words.empty() ? "whether this network can be adjusted, only its adjustment shows"
                                               : "this network can be adjusted");
}

CheckVerdict verdict(const Results &results, const RunOutcome &outcome, const std::string &summary)
{
    if (!outcome.adjusted()) return CheckVerdict::Refused;
    return results.solver != "sparse" && doubtful(summary) ? CheckVerdict::Unknown : CheckVerdict::CanBeAdjusted;
}

// To the file of the option, or to standard output, which then has nothing else.
void write_json(const Options &options, CheckVerdict verdict, const Faults &faults, const Results &results)
{
    if (options.json.empty()) return;
    const std::string text = check_json(verdict, faults, results);
    if (options.json == "-") {
        fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    OutputFile file(options.json);
    file.write(text);
    file.finish();
}

int refuse_input(const Options &options, const Faults &faults)
{
    Results results;
    results.program = "vorn";
    results.version = VORN_VERSION;
    results.file = options.network;
    enter_folder(options);
    write_json(options, CheckVerdict::BadInput, faults, results);
    flush_standard_output();
    return STATUS_USAGE;
}

} // namespace

int check(const Options &options)
{
    Model model;
    Faults faults;
    if (!read_input(options, model, faults)) return refuse_input(options, faults);
    enter_folder(options);

    const File report = temporary_report();
    Silence silence;
    Interrupts interrupts(model.solver == Solver::Sparse);
    const NetworkRun run = check_network(model, report.get(), silence, VORN_VERSION, interrupts.watch());
    if (interrupts.came()) return interrupted();
    const RunOutcome &outcome = run.outcome;
    const Results &results = run.results;
    const std::string summary = model.keys.replaced(summary_of(text_of(report.get())));
    if (options.json != "-") show(results, outcome, summary);
    write_json(options, verdict(results, outcome, summary), faults, results);
    flush_standard_output();
    return close_run(outcome);
}
