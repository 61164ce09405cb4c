#include "options.h"

#include <stdio.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

#include "host/earth/reference.h"
#include "host/input/number.h"
#include "host/system/file_disk.h"
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
const std::map<std::string, vornhost::Components> component_words = {{"propose", vornhost::Components::propose},
                                                                     {"use", vornhost::Components::use}};

const char overview[] = "Examples:\n"
                        "  vorn check bridge.inp\n"
                        "  vorn adjust bridge.inp -o bridge.txt --json bridge.json\n"
                        "  vorn import bridge.gkf\n"
                        "  vorn export bridge.inp --to gkf\n\n"
                        "vorn adjust --help, vorn check --help, vorn import --help and vorn export --help explain the\n"
                        "commands.";

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
    "  vorn adjust bridge.gkf              adjusted without a network file\n"
    "  vorn adjust network.gsi --points known.csv --fix P1,P2\n\n"
    "What was left out or assumed stands on standard error and at the head of the network file.\n"
    "Exit status: 0 imported, 2 bad input or usage, 3 the system failed.";

const char export_footer[] = "Examples:\n"
                             "  vorn export bridge.inp --to gkf             bridge.gkf beside it\n"
                             "  vorn export bridge.inp --to lines -o -      on standard output\n\n"
                             "Exit status: 0 written, 2 bad input or usage, or what the format cannot say,\n"
                             "3 the system failed.";
const char compare_footer[] = "Examples:\n"
                              "  vorn compare may.inp june.inp\n"
                              "  vorn compare may.inp june.inp july.inp --json moved.json\n"
                              "  vorn compare may.inp june.inp --html moved.html\n\n"
                              "Exit status: 0 compared, whether points moved or not, 1 an epoch cannot be adjusted,\n"
                              "2 bad input or usage, 3 the system failed, 130 interrupted.";

const char transform_footer[] = "Examples:\n"
                                "  vorn transform local.csv national.csv --list moved.csv\n"
                                "  vorn transform bridge.inp plan.txt --parameters 4 --no-scale\n\n"
                                "Exit status: 0 transformed, 1 a network cannot be adjusted, 2 bad input or usage, or\n"
                                "points that do not determine the parameters, 3 the system failed, 130 interrupted.";

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

std::map<std::string, vornhost::Format> format_words()
{
    std::map<std::string, vornhost::Format> words;
    for (const vornhost::FormatWord &format : vornhost::importable_formats()) words[format.word] = format.format;
    return words;
}

// KEY=VALUE, a key of [sigma] and a number that is not negative.
void read_sigma(const std::string &text, std::map<std::string, double> &sigma)
{
    const size_t equals = text.find('=');
    const std::string key = text.substr(0, equals);
    const std::vector<std::string> &keys = vornhost::sigma_keys();
    std::string all;
    for (const std::string &word : keys) all += (all.empty() ? "" : ", ") + word;
    if (std::find(keys.begin(), keys.end(), key) == keys.end())
        throw CLI::ValidationError("--sigma", "'" + key + "' is none of " + all);
    double value = -1.0;
    if (equals != std::string::npos) vornhost::read_number(text.substr(equals + 1), value);
    const bool may_be_zero = key == "distances_ppm" || key.substr(0, 8) == "centring" ||
                             key.substr(0, 8) == "height_i" || key == "height_target";
    if (value < 0.0 || value > 1e6 || (value == 0.0 && !may_be_zero))
        throw CLI::ValidationError("--sigma", "'" + text + "' has no number above 0; write " + key + "=1");
    sigma[key] = value;
}

const char *const foreign_options[] = {"--from",   "--sets", "--sigma", "--station", "--station-code",
                                       "--points", "--fix",  "--datum", "--geoid"};

// Whether one of them is there.
bool says_foreign(const CLI::App &command)
{
    return std::any_of(std::begin(foreign_options), std::end(foreign_options), [&](const char *name) {
        const CLI::Option *option = command.get_option_no_throw(name);
        return option && option->count() > 0;
    });
}

// What is said of a file of another program.
void add_foreign(CLI::App *command, vornhost::ImportOptions &foreign)
{
    static const std::map<std::string, vornhost::Format> formats = format_words();
    add_word(command, "--from", foreign.format, formats, "format of FILE, instead of recognising it");
    command
        ->add_option_function<std::string>(
            "--sets", [&foreign](const std::string &word) { foreign.keep_sets = word == "keep"; },
            "sets of a field book: mean (the default) or keep")
        ->check(CLI::IsMember({"mean", "keep"}))
        ->type_name("WORD");
    command
        ->add_option_function<std::vector<std::string>>(
            "--sigma",
            [&foreign](const std::vector<std::string> &texts) {
                for (const std::string &text : texts) read_sigma(text, foreign.sigma);
            },
            "standard deviation where the file gives none, a key of [sigma]: mm, mgon or arc seconds, ppm")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    command->add_option("--station", foreign.station, "where the sights of a field book before any set-up were taken")
        ->check(not_empty)
        ->type_name("NAME");
    command->add_option("--station-code", foreign.station_codes, "GSI: code of the blocks that open a set-up; 2 and 21")
        ->type_name("CODE")
        ->allow_extra_args(false);
    command->add_option("--points", foreign.points, "file with coordinates of points, of any format")
        ->check(not_empty)
        ->type_name("FILE");
    command->add_option("--fix", foreign.fixed, "points that are held, with commas between")
        ->delimiter(',')
        ->type_name("NAMES")
        ->allow_extra_args(false);
    command->add_option("--datum", foreign.datum, "points that alone hold a free network, with commas between")
        ->delimiter(',')
        ->type_name("NAMES")
        ->allow_extra_args(false);
    command->add_option("--geoid", foreign.geoid, "DynAdjust: height of the geoid, a grid file or metres")
        ->check(not_empty)
        ->type_name("FILE");
    for (const char *name : foreign_options) command->get_option(name)->group("Files of other programs");
}

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
    add_foreign(command, options.foreign);
}

// A number of bytes, which may end in K, M, G or T for powers of 1024; nothing when it is none, or beyond addresses.
std::optional<std::size_t> read_size(const std::string &text)
{
    const std::string units = "KMGT";
    const std::size_t unit = text.empty() ? std::string::npos : units.find(text.back());
    double value = 0.0;
    const bool has_unit = unit != std::string::npos;
    vornhost::read_number(text.substr(0, text.size() - (has_unit ? 1 : 0)), value); // 0 when it is none
    const double bytes = std::ldexp(value, has_unit ? 10 * ((int)unit + 1) : 0);
    if (!(bytes >= 1.0 && bytes < std::ldexp(1.0, 8 * (int)sizeof(std::size_t) - 1))) return std::nullopt;
    return (std::size_t)bytes;
}

void add_memory(CLI::App *command, Options &options)
{
    command
        ->add_option_function<std::string>(
            "--memory",
            [&options](const std::string &text) {
                if (!vornhost::FileDisk::available())
                    throw CLI::ValidationError("--memory", "this system has no files in the place of memory");
                options.memory = read_size(text);
                if (!options.memory)
                    throw CLI::ValidationError("--memory", "'" + text + "' is no size; write 500M or 4G");
            },
            "memory for factor and inverse of the solver sparse; what is more goes to a file")
        ->type_name("SIZE");
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
                  {"--kml", options.kml, "the same as KML, for globes; with a reference system"},
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
    adjust->add_option("--left-out", options.left_out, "what --snoop leaves out, as a table that network files read")
        ->check(not_empty)
        ->type_name("FILE");
    adjust
        ->add_option(
            "--covariance", options.covariance,
            "covariances of these points, names with commas between, in FILE, and their coordinates in a table "
            "beside it, for another network file (solver sparse)")
        ->expected(2)
        ->check(not_empty)
        ->type_name("NAMES FILE");
    add_word(adjust, "--robust", options.robust, estimators, "weights that fall with the residuals (solver sparse)");
    adjust
        ->add_option("--fail-on", options.fail_on,
                     "exit status 4 where the global test fails, observations are suspicious or not checked "
                     "(solver sparse): test, suspects, unchecked, with commas between them")
        ->delimiter(',')
        ->check(CLI::IsMember({"test", "suspects", "unchecked"}))
        ->type_name("WORDS");
    add_word(adjust, "--components", options.components, component_words,
             "variance components of kinds and groups (solver sparse)");
    adjust->add_option("--threads", options.threads, "threads of the solver sparse; two where the machine has them")
        ->check(CLI::Range(1, 64))
        ->type_name("N");
    add_memory(adjust, options);
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

void add_outputs(CLI::App *command, Options &options)
{
    command->add_option("-o", options.report, "report in this file; - is standard output, as without it")
        ->check(not_empty)
        ->type_name("REPORT");
    command
        ->add_option("--json", options.json, "results as JSON in this file; - is standard output, without the report")
        ->check(not_empty)
        ->type_name("FILE");
    command->add_option("-C", options.folder, "work in this folder: output paths start from it")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR");
    command->add_flag("--quiet", options.console.quiet, "only errors on standard error");
}

void add_page(CLI::App *command, Options &options)
{
    command->add_option("--html", options.html, "page for a browser: shifts with their ellipses in a plot, tables")
        ->check(not_empty)
        ->type_name("FILE");
}

void add_level(CLI::App *command, double &level)
{
    command->add_option("--level", level, "probability of a false alarm of each test, above 0 and below 1")
        ->check(CLI::Validator(
            [](std::string &text) {
                char *end = nullptr;
                const double x = strtod(text.c_str(), &end);
                return *end == '\0' && x >= 1e-10 && x <= 0.5 ? std::string() : "is not from 1e-10 to 0.5";
            },
            "", ""))
        ->capture_default_str()
        ->type_name("P");
}

void add_compare(CLI::App &app, Options &options)
{
    CLI::App *compare = app.add_subcommand("compare", "test which points moved between epochs of a network");
    compare->add_option("EPOCHS", options.networks, "network files, one an epoch, in the order of time")
        ->required()
        ->expected(2, 1000)
        ->type_name("NAME.inp...");
    vornhost::CompareOptions &c = options.compare;
    add_outputs(compare, options);
    add_page(compare, options);
    add_level(compare, c.level);
    compare->add_flag("--apriori", c.apriori, "tests with the variance factor 1 instead of that of the epochs");
    compare->add_flag("--held", c.epochs.held, "coordinates that the files hold stay held; they are free without it");
    compare->add_option("--points", c.epochs.points, "compare these points alone, names with commas between them")
        ->delimiter(',')
        ->type_name("NAMES");
    compare
        ->add_option_function<std::vector<std::string>>(
            "--strain",
            [&c](const std::vector<std::string> &groups) {
                for (const std::string &group : groups) c.groups.push_back(CLI::detail::split(group, ','));
            },
            "extension, shear and turn of the group of these points, names with commas between; may be repeated")
        ->allow_extra_args(false)
        ->type_name("NAMES");
    compare->add_option("--dates", c.epochs.dates, "dates of the epochs, instead of those in the files")
        ->delimiter(',')
        ->type_name("DATES");
    compare->footer(compare_footer);
    compare->callback([&options] { options.command = Command::compare; });
}

void add_control(CLI::App &app, Options &options)
{
    CLI::App *control = app.add_subcommand("control", "test which control points do not fit a network");
    control->add_option("NAME.inp", options.networks, "the network file")->required()->expected(1)->type_name("FILE");
    add_outputs(control, options);
    add_page(control, options);
    add_level(control, options.compare.level);
    control->add_flag("--apriori", options.compare.apriori, "variance factor 1 instead of that of the free network");
    control->footer("Example:\n"
                    "  vorn control bridge.inp\n\n"
                    "Exit status: 0 tested, whether they fit or not, 1 the free network cannot be adjusted,\n"
                    "2 bad input or usage, 3 the system failed, 130 interrupted.");
    control->callback([&options] { options.command = Command::control; });
}

void add_transform(CLI::App &app, Options &options)
{
    CLI::App *transform = app.add_subcommand("transform", "fit one list of coordinates to another");
    transform
        ->add_option("LISTS", options.networks,
                     "two files: a table name x y [z] [sx sy sz], or a network file *.inp for its adjusted points")
        ->required()
        ->expected(2)
        ->type_name("A B");
    vornhost::TransformOptions &t = options.transform;
    add_outputs(transform, options);
    add_level(transform, t.level);
    transform
        ->add_option("--parameters", t.parameters,
                     "3, 4 or 6 (affine) of the plane, 7 of space; 7 where both lists have z, otherwise 4")
        ->check(CLI::IsMember({3, 4, 6, 7}))
        ->type_name("N");
    transform->add_flag("--no-scale", t.no_scale, "the scale is 1");
    transform->add_flag("--apriori", t.apriori, "variance factor 1 instead of that of the residuals");
    transform->add_option("--list", options.list, "all points of A in the system of B, as a table with commas")
        ->check(not_empty)
        ->type_name("FILE");
    transform->footer(transform_footer);
    transform->callback([&options] { options.command = Command::transform; });
}

void add_plan(CLI::App &app, Options &options)
{
    CLI::App *plan =
        app.add_subcommand("plan", "precision and checks of a planned network, and what would help a point");
    plan->add_option("NAME.inp", options.network, "the network file; its observations need no values")
        ->required()
        ->type_name("FILE");
    add_outputs(plan, options);
    plan->add_option("--help-point", options.plan.helped, "the point to help, with --candidates")
        ->check(not_empty)
        ->type_name("NAME");
    plan->add_option("--candidates", options.plan.candidates,
                     "a table kind from to [at] sigma of observations, one of which might be added")
        ->check(not_empty)
        ->type_name("FILE");
    plan->footer("Example:\n"
                 "  vorn plan bridge.inp --help-point P7 --candidates more.txt\n\n"
                 "Exit status: 0 planned, 1 the network is not determined, 2 bad input or usage,\n"
                 "3 the system failed, 130 interrupted.");
    plan->callback([&options] { options.command = Command::plan; });
}

void add_import(CLI::App &app, Options &options)
{
    CLI::App *import = app.add_subcommand("import", "make a network file of a file of another program");
    import->add_option("FILE", options.network, "the file to read")->required()->type_name("FILE");
    import->add_option("-o", options.report, "the network file; - is standard output; NAME.inp beside FILE by default")
        ->check(not_empty)
        ->type_name("NAME.inp");
    add_foreign(import, options.foreign);
    import->add_flag("--force", options.force, "replace the network file where there is one");
    import->add_flag("--quiet", options.console.quiet, "only errors on standard error");
    import->footer(import_footer);
    import->callback([&options] { options.command = Command::import;
});
} // namespace

std::map<std::string, vornhost::Target> target_words()
{
    std::map<std::string, vornhost::Target> words;
    for (const vornhost::TargetWord &target : vornhost::export_targets()) words[target.word] = target.target;
    return words;
}

void add_export(CLI::App &app, Options &options)
{
    static const std::map<std::string, vornhost::Target> targets = target_words();
    CLI::App *command = app.add_subcommand("export", "write a network in a format of another program");
    command->add_option("NAME.inp", options.network, "the network file, or a file that vorn import reads")
        ->required()
        ->type_name("FILE");
    add_word(command, "--to", options.target, targets, "format");
    command->get_option("--to")->required();
    command->add_option("-o", options.report, "the file to write; - is standard output; beside NAME.inp by default")
        ->check(not_empty)
        ->type_name("FILE");
    command->add_flag("--force", options.force, "replace the file where there is one");
    command->add_flag("--quiet", options.console.quiet, "only errors on standard error");
    command->footer(export_footer);
    command->callback([&options] { options.command = Command::export_to; });
}

// Whether the first argument is a command or an option; otherwise a line says what is.
bool names_command(int argc, char **argv)
{
    const std::string first = argc > 1 ? argv[1] : "";
    static const char *const commands[] = {"adjust",  "check",   "import",    "export",
                                           "compare", "control", "transform", "plan"};
    if (first.rfind('-', 0) == 0 || std::find(std::begin(commands), std::end(commands), first) != std::end(commands))
        return true;
    const std::string what = argc > 1 ? "'" + first + "' is no command" : "a command is missing";
    fprintf(stderr, "vorn: %s; write vorn adjust NAME.inp, or another command of vorn --help\n", what.c_str());
    return false;
}

} // namespace

std::optional<Options> read_options(int argc, char **argv, int *status, Program program)
{
    Options options;
    if (!names_command(argc, argv)) {
        *status = STATUS_USAGE;
        return std::nullopt;
    }
    CLI::App app("Least-squares adjustment of survey networks.", "vorn");
    app.set_version_flag("--version", [] {
        const char *const lacking = vornhost::has_proj() ? "" : "\nwithout PROJ: of reference systems local ones only";
        return std::string("vorn " VORN_VERSION) + lacking;
    });
    app.require_subcommand(1);
    app.footer(overview);
    add_adjust(app, options);
    if (program == Program::vorn_mpi)
        app.get_subcommand("adjust")->add_flag("--by-parts", options.by_parts,
                                               "each process reads its part of the observations alone");
    add_check(app, options);
    add_import(app, options);
    add_export(app, options);
    add_compare(app, options);
    add_control(app, options);
    add_transform(app, options);
    add_plan(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        *status = app.exit(error) == 0 ? STATUS_ADJUSTED : STATUS_USAGE;
        return std::nullopt;
    }
    for (const CLI::App *command : app.get_subcommands()) options.foreign.given = says_foreign(*command);
    return options;
}
