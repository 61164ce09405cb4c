#include "options.h"

#include <stdio.h>

#include <CLI/CLI.hpp>
#include <map>

#include "vorn/version.h"

namespace {

using vornhost::Axes;
using vornhost::Mode;
using vornhost::Solver;

const std::map<std::string, Solver> solvers = {
    {"compact", Solver::Compact}, {"jordan", Solver::Jordan}, {"simplex", Solver::Simplex}, {"sparse", Solver::Sparse}};
const std::map<std::string, Mode> modes = {
    {"statistics", Mode::Statistics}, {"solution", Mode::Solution}, {"propagation", Mode::Propagation}};

const std::map<std::string, vornhost::Robust> estimators = {
    {"huber", vornhost::Robust::huber}, {"danish", vornhost::Robust::danish}, {"l1", vornhost::Robust::l1}};

const char overview[] = "Examples:\n"
                        "  vorn check bridge.inp\n"
                        "  vorn adjust bridge.inp -o bridge.txt --json bridge.json\n"
                        "  vorn import bridge.gkf\n\n"
                        "vorn adjust --help, vorn check --help and vorn import --help explain the commands.";

const char adjust_footer[] = "Examples:\n"
                             "  vorn adjust bridge.inp                        report on the screen\n"
                             "  vorn adjust bridge.inp -o bridge.txt          report in a file\n"
                             "  vorn adjust bridge.inp --html bridge.html     plot and tables for a browser\n"
                             "  vorn adjust bridge.inp -C out --csv tables    all output in the folder out\n"
                             "  vorn adjust bridge.inp --solver simplex       look for gross errors\n\n"
                             "Exit status: 0 adjusted, 1 refused or no convergence, 2 bad input or usage,\n"
                             "3 the system failed, 4 a test failed that --fail-on names, 130 interrupted.";

const char check_footer[] = "Example:\n"
                            "  vorn check bridge.inp\n\n"
                            "Exit status: 0 can be adjusted, 1 refused, 2 bad input or usage, 3 the system failed,\n"
                            "130 interrupted.";

const char import_footer[] =
    "Examples:\n"
    "  vorn import bridge.gkf              bridge.inp beside it\n"
    "  vorn import bridge.gkf -o -         on standard output\n"
    "  vorn adjust bridge.gkf              adjusted without a network file\n\n"
    "What was left out or assumed stands on standard error and at the head of the network file.\n"
    "Exit status: 0 imported, 2 bad input or usage, 3 the system failed.";

// Without the addresses of enumerators in its texts, unlike the transformers of the library.
template <class Word>
void add_word(CLI::App *command, const std::string &name, std::optional<Word> &value,
              const std::map<std::string, Word> &words, const std::string &help)
{
    std::string all;
    for (const auto &[word, meaning] : words) all += (all.empty() ? "" : ", ") + word;
    command
        ->add_option_function<std::string>(
            name,
            [&value, &words, name, all](const std::string &word) {
                const auto found = words.find(word);
                if (found == words.end()) throw CLI::ValidationError(name, "'" + word + "' is none of " + all);
                value = found->second;
            },
            help + ": " + all)
        ->type_name("WORD");
}

const auto not_empty = [](const std::string &name) {
    return std::string(name.empty() ? "the name is empty; write one" : "");
};

void add_common(CLI::App *command, Options &options)
{
    command
        ->add_option("NAME.inp", options.network,
                     "the network file, or a file that vorn import reads; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("-C", options.folder, "work in this folder: output paths start from it")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR");
    add_word(command, "--solver", options.solver, solvers, "solver, instead of the file's");
    add_word(command, "--mode", options.mode, modes, "mode, instead of the file's");
}

void add_adjust(CLI::App &app, Options &options)
{
    CLI::App *adjust = app.add_subcommand("adjust", "adjust a network and report the results");
    add_common(adjust, options);
    adjust->add_option("-o", options.report, "report in this file; - is standard output, as without it")
        ->check(not_empty)
        ->type_name("REPORT");
    adjust->add_option("--json", options.json, "results as JSON in this file; - is standard output, without the report")
        ->check(not_empty)
        ->type_name("FILE");
    adjust->add_option("--csv", options.csv, "results as comma-separated tables in this folder")
        ->check(not_empty)
        ->type_name("DIR");
    adjust->add_option("--html", options.html, "results as a page for a browser: plot, tables, tests, in this one file")
        ->check(not_empty)
        ->type_name("FILE");
    const struct {
        const char *name;
        std::string &file;
        const char *help;
    } others[] = {{"--geojson", options.geojson, "points, lines and ellipses as GeoJSON, for maps"},
                  {"--dxf", options.dxf, "the plan as a drawing in DXF"},
                  {"--svg", options.svg, "the plan as a drawing for papers"},
                  {"--update", options.update, "the network file with adjusted coordinates as approximate ones"}};
    for (const auto &d : others) adjust->add_option(d.name, d.file, d.help)->check(not_empty)->type_name("FILE");
    adjust
        ->add_option_function<std::string>(
            "--axes", [&options](const std::string &word) { options.axes = word == "xy" ? Axes::xy : Axes::yx; },
            "of maps and drawings, to the right and upwards: yx (as directions turn) or xy")
        ->check(CLI::IsMember({"yx", "xy"}))
        ->type_name("WORD");
    adjust->add_flag("--brief", options.brief, "report without a line for every observation (solver sparse)");
    adjust->add_flag("--no-residual-statistics", options.no_residual_statistics,
                     "no redundancy numbers and tests of residuals (solver sparse)");
    adjust->add_flag("--snoop", options.snoop,
                     "leave out the worst observation and adjust again, until none is suspicious (solver sparse)");
    add_word(adjust, "--robust", options.robust, estimators, "weights that fall with the residuals (solver sparse)");
    adjust
        ->add_option("--fail-on", options.fail_on,
                     "exit status 4 where the global test fails, observations are suspicious or not checked "
                     "(solver sparse): test, suspects, unchecked, with commas between them")
        ->delimiter(',')
        ->check(CLI::IsMember({"test", "suspects", "unchecked"}))
        ->type_name("WORDS");
    adjust->add_option("--threads", options.threads, "threads of the solver sparse; two where the machine has them")
        ->check(CLI::Range(1, 64))
        ->type_name("N");
    adjust->add_flag("--times", options.console.times, "how long the steps took, on standard error (solver sparse)");
    adjust->add_flag("--recompute", options.console.recompute, "compute new approximate values");
    adjust->add_flag("--balance", options.console.balance, "balance the observations (solver simplex)");
    adjust->add_flag("--ask", options.console.ask, "ask on the terminal instead of answering no");
    adjust->add_flag("--quiet", options.console.quiet, "only errors on standard error");
    adjust->footer(adjust_footer);
}

void add_check(CLI::App &app, Options &options)
{
    CLI::App *check = app.add_subcommand("check", "read a network and say what its adjustment would be");
    add_common(check, options);
    check
        ->add_option("--json", options.json,
                     "faults or verdict as JSON in this file; - is standard output, without the text")
        ->check(not_empty)
        ->type_name("FILE");
    check->footer(check_footer);
    check->callback([&options] { options.command = Command::check; });
}

std::map<std::string, vornhost::Format> format_words()
{
    std::map<std::string, vornhost::Format> words;
    for (const vornhost::FormatWord &format : vornhost::importable_formats()) words[format.word] = format.format;
    return words;
}

void add_import(CLI::App &app, Options &options)
{
    static const std::map<std::string, vornhost::Format> formats = format_words();
    CLI::App *import = app.add_subcommand("import", "make a network file of a file of another program");
    import->add_option("FILE", options.network, "the file to read")->required()->type_name("FILE");
    import->add_option("-o", options.report, "the network file; - is standard output; NAME.inp beside FILE by default")
        ->check(not_empty)
        ->type_name("NAME.inp");
    add_word(import, "--from", options.format, formats, "format of FILE, instead of recognising it");
    import->add_flag("--force", options.force, "replace the network file where there is one");
    import->add_flag("--quiet", options.console.quiet, "only errors on standard error");
    import->footer(import_footer);
    import->callback([&options] { options.command = Command::import;
});
} // namespace

// Whether the first argument is a command or an option; otherwise a line says what is.
bool names_command(int argc, char **argv)
{
    const std::string first = argc > 1 ? argv[1] : "";
    if (first == "adjust" || first == "check" || first == "import" || first.rfind('-', 0) == 0) return true;
    const std::string what = argc > 1 ? "'" + first + "' is no command" : "a command is missing";
    fprintf(stderr, "vorn: %s; write vorn adjust NAME.inp, vorn check NAME.inp or vorn import FILE\n", what.c_str());
    return false;
}

} // namespace

std::optional<Options> read_options(int argc, char **argv, int *status)
{
    Options options;
    if (!names_command(argc, argv)) {
        *status = STATUS_USAGE;
        return std::nullopt;
    }
    CLI::App app("Least-squares adjustment of survey networks.", "vorn");
    app.set_version_flag("--version", "vorn " VORN_VERSION);
    app.require_subcommand(1);
    app.footer(overview);
    add_adjust(app, options);
    add_check(app, options);
    add_import(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        *status = app.exit(error) == 0 ? STATUS_ADJUSTED : STATUS_USAGE;
        return std::nullopt;
    }
    return options;
}
