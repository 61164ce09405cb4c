// The settings of a network file. Each reader takes its sections of the parsed file into the network; what is wrong
// becomes a fault with its place, and the default holds.

#ifndef VORNHOST_SETTINGS_H
#define VORNHOST_SETTINGS_H

#include "host/input/network_tables.h"
#include "host/input/toml_parser.h"

namespace vornhost {

// A method of lumps that nothing has chosen.
constexpr int no_lump_method = -1;

void check_sections(const toml::table &root, Faults &faults);   // that all sections and their keys are known
void read_run(const toml::table &root, Network &net);           // [run]
void read_units(const toml::table &root, Network &net);         // [units]
void read_earth(const toml::table &root, Network &net);         // [earth]
void read_crs(const toml::table &root, Network &net);           // [crs]
void read_weights(const toml::table &root, Network &net);       // [apriori], [sigma]
void read_reductions(const toml::table &root, Network &net);    // [reductions]
void read_methods(const toml::table &root, Network &net);       // [baselines], [lumps]
void read_tests(const toml::table &root, Network &net);         // [tests]
void read_connected_net(const toml::table &root, Network &net); // [connected_net]

} // namespace vornhost

#endif
