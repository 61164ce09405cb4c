// The lists of a network file: each reader below takes the rows of one table into the
// model. Points come first, because everything else names them.

#ifndef VORNHOST_NETWORK_TABLES_H
#define VORNHOST_NETWORK_TABLES_H

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"
#include "host/input/names.h"
#include "host/input/places_input.h"
#include "host/input/row.h"
#include "host/input/table.h"

namespace vornhost {

enum TableId {
    TABLE_STATIONS,
    TABLE_TARGETS,
    TABLE_DISTANCES,
    TABLE_HEIGHT_DIFFERENCES,
    TABLE_DIRECTIONS,
    TABLE_VERTICAL_ANGLES,
    TABLE_AZIMUTHS,
    TABLE_BASELINES,
    TABLE_GROUPS,
    TABLE_CAMERAS,
    TABLE_IMAGES,
    TABLE_LUMPS,
    TABLE_PAIRS,
    TABLE_DERIVED,
    TABLE_LEFT_OUT,
    TABLE_SETUPS,
    TABLE_HORIZONTAL_DISTANCES,
    TABLE_BEARINGS,
    TABLE_ANGLES,
    TABLE_COORDINATES,
    TABLE_COORDINATE_DIFFERENCES,
    TABLE_SCALE_BARS,
    TABLE_DEFLECTIONS,
    TABLE_TRANSFORMATIONS,
    TABLE_COUNT
};

// Name of a table in the file.
extern const char *const table_names[TABLE_COUNT];

constexpr int largest_epoch = 9999;

// What the readers share.
struct Network {
    Network(Model &its_model, Faults &all) : model(its_model), faults(all) {}

    Model &model;
    Faults &faults;
    std::array<std::unique_ptr<Table>, TABLE_COUNT> tables; // null: not in the file, or not to be read
    std::array<bool, TABLE_COUNT> named{};                  // in the file, whether it can be read or not
    double metres = 1.0;                                    // metres in a unit of length of the file
    double sigma_metres = 1.0;                              // the same of standard deviations
    double length = 1.0, sigma_length = 1.0;                // units of the records in these two
    int angle = ANGLE_GON, sigma_angle = ANGLE_GON;         // units of angles and their standard deviations in the file
    std::array<double, TABLE_COUNT> sigma{}; // standard deviation of rows without one, as written, 0: none
    struct {
        double ppm = 0;                   // of distances
        double per_km = 0, per_setup = 0; // of height differences: per root of a kilometre, per set-up of the level
        double atmosphere = 0;            // correction of distances, ppm
        double prism = 0;                 // correction of distances, metres
        double baseline_factor = 1;       // of standard deviations of baselines
    } stated;                             // of rows that do not say it; standard deviations as written
    NameIndex points;                     // stations, then targets
    size_t station_names = 0;             // how many of them are stations
    std::vector<bool> in_group;           // the station of this number belongs to a group
    std::vector<bool> leaning;            // the point of this number has a deflection of the vertical
    NameIndex groups, cameras, covariances, transformations;
    std::unordered_map<std::string, int> setups; // index by number of the station and word
    std::unordered_map<std::string, int> sets;   // index by word
    std::unordered_map<int, size_t> lumps;       // index of the definition of a lump

    bool connected_net = false; // the file names one, whether it can be read or not

    std::unique_ptr<PlacesInput> places; // of points in other reference systems; null: the file names none

    // Whether a value may be unknown: in a plan, which the model then remembers.
    bool planned(Source at);

    // Table::each_row(); what a plan may leave out is not missed there.
    size_t each_row(Table &table, const std::vector<Column> &columns, const Table::TakeRow &take,
                    const Table::IsWanted &wanted = Table::IsWanted());

    // A text of a file that is read by parts, for its digest.
    void digest(const TextFile &text);

    bool has_dimension(int coordinate) const; // coordinate 0, 1, 2 belongs to the run's dimension
};

void enter_names(Network &net); // of all points and cameras; before any row that names one
void enter_stations(Network &net);
void enter_targets(Network &net);
void enter_cameras(Network &net);
void read_stations(Network &net);
void read_targets(Network &net);
void read_setups(Network &net);
void read_measures(Network &net);    // the five lists of observations
void read_field_kinds(Network &net); // observations that the engine does not know
void read_baselines(Network &net);
void read_groups(Network &net);
void read_cameras(Network &net);
void read_images(Network &net);
void read_lumps(Network &net);
void read_pairs(Network &net);
void read_derived(Network &net);
void read_left_out(Network &net); // when all rows of observations have been read
void read_deflections(Network &net);
void read_transformations(Network &net); // before the rows that name them

// Reads the whole rows of the table, if it is in the file.
void read_rows(Network &net, TableId id, const std::vector<Column> &columns, void (*read)(Network &, Row &));

// The same for what names something: rows with a wrong number of cells too, so that what names
// the same has no fault of its own.
void enter_rows(Network &net, TableId id, const std::vector<Column> &columns, void (*enter)(Network &, Row &));

// Remedy for a name that is not in the index: the most similar name, or else otherwise.
std::string similar_name(const Network &net, const NameIndex &known, const Row &row, int column, const char *otherwise);

// Number of the point that a cell names, -1 with its fault when there is none.
int named_point(Network &net, Row &row, int column);

// The name that a cell gives to something; faults when it is unknown, too long or holds
// control characters, but the name can still be entered in an index.
std::string_view new_name(Row &row, int column);

// A code, one of free, no_datum, weighted, fixed, absent or its number.
int read_code(Row &row, int column, int otherwise);

// Index of the transformation that a cell names, -1 where it names none.
int read_transformation(Network &net, Row &row, int column);

// An angle in the unit of the records; 0, with its fault, when it cannot be read, and otherwise when it is not known.
double read_raw_angle(Network &net, Row &row, int column, double otherwise);

// An angle and a standard deviation of one in radians, 0 when it is not known.
double read_angle(Network &net, Row &row, int column);
double read_angle_deviation(Network &net, Row &row, int column, double written);

// False, with its fault, for a packed angle whose minutes or seconds are too large.
bool check_angle(int unit, Row &row, int column, double raw);

// Path of a file that the network file names: absolute, relative paths starting from the
// folder of the network file. Empty, with a fault, when it cannot be read or has no room
// in a field of the given size.
std::string data_file(Faults &faults, const std::string &network_path, std::string_view written, Source at,
                      size_t field_size);

void copy_text(char *field, size_t size, const std::string &text);

} // namespace vornhost

#endif
