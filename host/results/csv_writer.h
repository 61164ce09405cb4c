// Results as comma-separated tables (RFC 4180), one file a table, a heading in each.

#ifndef VORNHOST_CSV_WRITER_H
#define VORNHOST_CSV_WRITER_H

#include <string>
#include <vector>

#include "host/results/results.h"

namespace vornhost {

struct CsvTable {
    std::string name; // "points.csv"
    std::string text;
};

// points, orientations, residuals, accounts; groups, cameras, lumps and pairs when there are some. Numbers
// read back exactly; the cell of what is absent or not finite is empty.
std::vector<CsvTable> to_csv(const Results &results);

// Makes the folder, and those above it, if it is not there. Throws OutputError.
void make_folder(const std::string &folder);

// Writes the tables into a folder, which is made if it is not there. Throws OutputError.
void write_csv(const std::string &folder, const Results &results);

} // namespace vornhost

#endif
