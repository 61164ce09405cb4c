// Where the rows of tables and the numbers of covariances stand: in the network file, or in files that it names.

#ifndef VORNHOST_TABLE_SOURCES_H
#define VORNHOST_TABLE_SOURCES_H

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/input/covariances.h"
#include "host/input/network_tables.h"
#include "host/input/section.h"
#include "host/input/text_file.h"
#include "host/input/toml_parser.h"

namespace vornhost {

// Keeps the other files, in which the passages of tables and matrices lie.
class TableSources {
public:
    TableSources(Network &its_network, const TextFile &network_file) : net(its_network), main(network_file) {}

    void find_tables(const toml::table &root);      // Network::tables, in the form that [csv] says
    void find_covariances(const toml::table &root); // their names, and matrices

    std::vector<MatrixText> matrices; // of the covariances of the model, one by one

private:
    void read_form(const toml::table &root);
    void find_table(TableId id, const toml::node &node);
    void open_table(TableId id, const toml::table &entry);
    void read_headings(const toml::node &node, const std::string &name, CsvForm &form);
    void read_covariance(const toml::table &all, const std::string &name);
    std::optional<Passage> matrix_of(Section &section);
    const TextFile *open_file(const toml::value<std::string> &path);

    Network &net;
    const TextFile &main;
    CsvForm csv;
    std::deque<TextFile> files;
};

} // namespace vornhost

#endif
