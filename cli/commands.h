// The commands of the program. Each returns its exit status; failures of the system are
// thrown.

#ifndef VORN_CLI_COMMANDS_H
#define VORN_CLI_COMMANDS_H

#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"
#include "options.h"
#include "host/run/runner.h"

int adjust(const Options &options);
int check(const Options &options);
int import_network(const Options &options);
int export_to(const Options &options);
int compare_epochs(const Options &options); // and of control points
int transform_list(const Options &options);
int plan(const Options &options);

// Reads the network file, or a file of another program as one, and applies the options to it. False, with the faults
// also on standard error, when something is wrong. Throws WholeWanted where processes have read parts of a network with
// faults.
bool read_input(const Options &options, vornhost::Model &model, vornhost::Faults &faults);

// Whether nothing is lost when the target is written; what would be is said on standard error.
bool may_write(const Options &options, const std::string &target);

// Says that the run was interrupted; returns its exit status.
int interrupted();

// Whether an output of the options is one of the files that were read, which a line then says.
bool overwrites_input(const Options &options, const std::vector<vornhost::Model> &networks);

// The report, where there is one, and the JSON go where the options say: to files, or to standard output, which takes
// the JSON alone where the options ask for that.
void write_texts(const Options &options, const std::string &report, const std::string &json);

// Lines on standard error.
void show_lines(const std::vector<std::string> &lines);

// Goes into the folder of the option -C.
void enter_folder(const Options &options);

// The files of the run that the system did not take, on standard error.
void show_lost(const vornhost::RunOutcome &outcome);

// Why a run stopped and which files it lost, on standard error, and its exit status.
int close_run(const vornhost::RunOutcome &outcome);

// Throws OutputError when standard output could not be written.
void flush_standard_output();

#endif
