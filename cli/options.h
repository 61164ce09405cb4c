// The command line of the program.

#ifndef VORN_CLI_OPTIONS_H
#define VORN_CLI_OPTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/epochs/compare.h"
#include "host/epochs/transform.h"
#include "host/formats/export.h"
#include "host/formats/import_options.h"
#include "host/run/console.h"
#include "host/input/model.h"
#include "host/planning/planning.h"
#include "host/results/plan.h"

namespace vornadjust {
class Ranks;
}

// Exit statuses of the program.
enum Status {
    STATUS_ADJUSTED = 0,
    STATUS_REFUSED = 1,      // by the engine, or no convergence
    STATUS_USAGE = 2,        // bad input or bad options; nothing was written
    STATUS_SYSTEM = 3,       // disk full, cannot write, no memory
    STATUS_FAILED = 4,       // adjusted, and a test failed that --fail-on names
    STATUS_INTERRUPTED = 130 // as a shell says it of a program that was interrupted
};

enum class Program { vorn, vorn_mpi };
enum class Command { adjust, check, import, compare, control, transform, plan, export_to };

struct Options {
    Command command = Command::adjust;
    std::string network;               // the network file, or a file of a foreign format
    std::vector<std::string> networks; // epochs to compare; the two lists of a transformation
    std::string list;                  // of transformed coordinates; empty: not asked for
    vornhost::TransformOptions transform;
    vornhost::PlanOptions plan;
    vornhost::CompareOptions compare;
    bool force = false;                          // import and export may replace a file
    vornhost::ImportOptions foreign;             // what is said of a file of a foreign format
    std::optional<vornhost::Target> target;      // of export
    std::string report, json, csv, html, folder; // empty: not asked for
    std::string geojson, kml, dxf, svg;          // the same, of the plan
    std::string update;                          // the network file with adjusted coordinates
    vornhost::Axes axes = vornhost::Axes::yx;
    std::optional<vornhost::Solver> solver;
    std::optional<vornhost::Mode> mode;
    std::optional<int> threads;
    std::optional<std::size_t> memory; // bytes for factor and inverse
    bool brief = false;                // report without the tables of observations
    bool no_residual_statistics = false;
    bool snoop = false;
    std::string left_out;                // table of the rows that --snoop leaves out
    std::vector<std::string> covariance; // names of points with commas between, and the file of their covariances
    std::optional<vornhost::Robust> robust;
    std::vector<std::string> fail_on; // "test", "suspects", "unchecked"
    std::optional<vornhost::Components> components;
    vornhost::ConsoleOptions console;
    vornadjust::Ranks *ranks = nullptr; // processes that share the run, of the program vorn-mpi
    bool by_parts = false;              // each of them reads its part of the observations alone
};

// Reads the command line. Returns no options when the program has to end with *status: after
// a help text or a usage error, which have been shown.
std::optional<Options> read_options(int argc, char **argv, int *status, Program program = Program::vorn);

#endif
