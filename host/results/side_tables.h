// Tables of a run that another network file reads: covariances of named points with their coordinates, and the rows
// that tests have left out. Numbers are in the units of the network file of the run, tables as its [csv] says.

#ifndef VORNHOST_SIDE_TABLES_H
#define VORNHOST_SIDE_TABLES_H

#include <stdexcept>
#include <string>

#include "host/input/model.h"
#include "host/results/results.h"

namespace vornhost {

// what() says why there is no such table.
struct SideTableError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Coordinates whose covariances one file takes: it is a full matrix.
constexpr size_t most_covariances = 3000;

// The lower triangle of the covariances of the adjusted coordinates of the named points, a row a line: what
// [covariances.NAME] with form = "lower" reads. Held coordinates have none and are left out. Throws SideTableError
// where no coordinate is left, or where the covariance is singular.
std::string covariance_matrix(const Model &model, const Results &results);

// Table `coordinates` of the same coordinates in the same order; its rows name the covariance.
std::string covariance_coordinates(const Model &model, const Results &results, const std::string &name);

// Table left_out: the rows that the table of the file names, then those that the tests of this run left out.
std::string left_out_table(const Model &model, const Results &results);

// Observations that the tests left out and no table of the network file holds, a line each.
std::vector<std::string> left_out_elsewhere(const Results &results);

// The name of a covariance by that of its file: letters and digits, _ and -.
std::string covariance_name(const std::string &file);

// The file of the coordinates beside that of the covariances: first_coordinates.csv of first.cov.
std::string coordinates_file(const std::string &file);

} // namespace vornhost

#endif
