// Prints a network: the network file and the list of its true coordinates.

#include "networks.h"

#include <cmath>

namespace networks {

namespace {

const char *code_word(int code) { return code == CODE_FIXED ? "fixed" : "free"; }

const char *heading(int dimension) { return dimension == 1 ? "z" : dimension == 2 ? "x  y" : "x  y  z"; }

// The coordinates that the dimension has, then the code that they share.
void write_coordinates(FILE *out, int dimension, const double x[3], const int ix[3])
{
    const int first = dimension == 1 ? 2 : 0, last = dimension == 2 ? 1 : 2;
    for (int k = first; k <= last; k++) fprintf(out, "  %.3f", x[k]);
    fprintf(out, "  %s", code_word(ix[first]));
}

void write_stations(FILE *out, const Network &network)
{
    if (network.stations.empty()) return;
    fprintf(out, "stations = \"\"\"\nname  %s  code  orientation\n", heading(network.dimension));
    for (const station_input &s : network.stations) {
        fputs(s.name, out);
        write_coordinates(out, network.dimension, s.x, s.ix);
        fprintf(out, "  %.2f\n", -s.r[2] * 200.0 / (4.0 * std::atan(1.0)));
    }
    fputs("\"\"\"\n", out);
}

void write_targets(FILE *out, const Network &network)
{
    if (network.targets.empty()) return;
    fprintf(out, "targets = \"\"\"\nname  %s  code\n", heading(network.dimension));
    for (const target_input &t : network.targets) {
        fputs(t.name, out);
        write_coordinates(out, network.dimension, t.x, t.ix);
        fputc('\n', out);
    }
    fputs("\"\"\"\n", out);
}

void write_observations(FILE *out, const char *table, const std::vector<measure_input> &list, int decimals)
{
    if (list.empty()) return;
    fprintf(out, "%s = \"\"\"\nfrom  to  value  sigma\n", table);
    for (const measure_input &m : list)
        fprintf(out, "%s  %s  %.*f  %.*f\n", m.from, m.to, decimals, m.val, decimals, m.sig);
    fputs("\"\"\"\n", out);
}

} // namespace

void write_file(FILE *out, const Network &network)
{
    fprintf(out, "[run]\ntitle     = \"%s\"\ndimension = %d\n\n", network.title.c_str(), network.dimension);
    fputs("[units]\nlength = \"m\"\nangle  = \"gon\"\n\n[tables]\n", out);
    write_stations(out, network);
    write_targets(out, network);
    write_observations(out, "height_differences", network.heightdiffs, 6);
    write_observations(out, "distances", network.distances, 6);
    write_observations(out, "directions", network.directions, 7);
    write_observations(out, "vertical_angles", network.verticals, 7);
}

void write_truth(FILE *out, const Network &network)
{
    const auto line = [out](const char *name, const Position &at) {
        fprintf(out, "%.*s,%.3f,%.3f,%.3f\n", (int)std::string(name).find_last_not_of(' ') + 1, name, at[0], at[1],
                at[2]);
    };
    fputs("name,x,y,z\n", out);
    for (size_t i = 0; i < network.stations.size(); i++) line(network.stations[i].name, network.station_truth[i]);
    for (size_t i = 0; i < network.targets.size(); i++) line(network.targets[i].name, network.target_truth[i]);
}

} // namespace networks
