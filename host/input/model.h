// A network as the program holds it: the project with the arrays it points to, and for
// every record where it was read, so that each message can name its file and line.

#ifndef VORNHOST_MODEL_H
#define VORNHOST_MODEL_H

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/earth/crs.h"
#include "host/input/field_records.h"
#include "host/input/file_share.h"
#include "host/input/name_keys.h"
#include "host/input/test_settings.h"
#include "host/input/units.h"
#include "vorn/project.h"

namespace vornhost {

// Place in an input file. Lines and columns count from 1; 0 means unknown.
struct Source {
    int file = 0; // index into Model::files
    int line = 0;
    int column = 0;
};

enum class Solver { Compact, Jordan, Simplex, Sparse };
enum class Mode { Statistics, Solution, Propagation };
enum class Components { none, propose, use }; // variance components of the solver sparse, in mode statistics

// A row of a table of observations that the file leaves out by the table left_out.
struct LeftOutRow {
    int table = 0;  // TABLE_...
    size_t row = 0; // from 0
    std::string reason;
    Source at; // of the row that is left out
};

// Records of one kind with their places, index by index.
template <class Record> struct List {
    std::vector<Record> records;
    std::vector<Source> where;
    RowNotes notes;
    // Of a file that is read by parts: the row of each record in its table, ascending, and the rows of the table, all
    // parts together. Otherwise empty: record i is row i.
    std::vector<int> row;
    int rows = 0;

    size_t size() const { return records.size(); }
    int row_of(size_t record) const { return row.empty() ? (int)record : row[record]; } // from 0
    void add(const Record &record, Source at)
    {
        records.push_back(record);
        where.push_back(at);
    }

    // Row i of another list with all that it says.
    void add_from(const List &other, size_t i)
    {
        notes.copy(other.notes, i, records.size());
        add(other.records[i], other.where[i]);
    }
};

// What the file says of a station beyond the engine's record.
struct StationNote {
    bool orientation_given = false; // Rx3 or an orientation stands in the file
    bool rotation_coded = false;    // a code of an orientation stands in the file
};

struct Model {
    // A copy would keep the arrays of its original; a moved model keeps its own.
    Model() = default;
    Model &operator=(const Model &) = delete;
    Model(Model &&) = default;
    Model &operator=(Model &&) = default;

    // A network of its own with the same content, attached.
    Model twin() const;

    std::string title;
    std::string date;               // of the observations, as days_of_date() reads it; empty where the file has none
    std::string path;               // the network file as the user named it
    std::vector<std::string> files; // all files read; files[0] is path
    char separator = ',', decimal = '.'; // of tables in files of their own
    NameKeys keys;                       // of names that the records have no room for
    FileShare share;                     // of the rows of observations, what this model holds
    std::vector<int> part_of;            // [stations, then targets] of a file that is read by parts
    std::size_t digest = 0;              // of all texts of such a file

    project p = project();                      // settings; attach() sets its arrays
    std::optional<int> length_unit, angle_unit; // of the file, where the project has other ones
    std::optional<double> sigma_metres;         // in a unit of standard deviations of lengths, where a file says it
    Solver solver = Solver::Compact;
    Mode mode = Mode::Statistics;
    Crs crs;                                   // reference system of the coordinates, where the file gives one
    std::set<std::pair<bool, int>> heightless; // points of such a plane without a height: station, record
    bool between_marks = false;                // the file says that distances are those between the marks
    int steps = 50;                  // most iterations of the solver sparse; p.itmax where the file gives them
    int threads = 0;                 // of the solver sparse; 0: two where the machine has them
    bool residual_statistics = true; // of the solver sparse, in mode statistics: redundancy numbers and tests
    TestSettings tests;              // of the solver sparse
    bool brief = false;              // the report of the solver sparse has no line for each observation
    Components components = Components::none;

    List<station_input> stations;
    std::vector<StationNote> station_notes; // one a station
    List<target_input> targets;
    List<measure_input> distances, heightdiffs, directions, verticals, azimuths;
    List<gps_input> baselines;
    List<group_input> groups;
    std::vector<std::string> group_names;        // one a group
    std::vector<std::vector<int>> group_members; // one a group: indexes of stations
    List<camera_input> cameras;
    List<image_input> images;
    List<pair_input> pairs;

    // What the engine has no records for.
    List<SetupRecord> setups;
    std::vector<std::string> set_words;
    List<SightRow> angles, horizontal_distances, bearings, scale_bars;
    List<VectorRow> coordinates, coordinate_differences;
    List<DerivedRow> derived;
    List<LeftOutRow> left_out;
    List<DeflectionRow> deflections;
    List<TransformationRow> transformations;
    List<CovarianceRecord> covariances;
    struct Centring {
        double instrument = 0, target = 0;               // along each horizontal axis
        double instrument_height = 0, target_height = 0; // of the heights above the marks
        bool shared = false;                             // sights from one stand share their errors: these are unknowns

        bool any() const { return instrument > 0 || target > 0 || instrument_height > 0 || target_height > 0; }
    } centring;           // standard deviations, metres
    Source unknown_value; // the first value that a plan leaves open
    struct Apriori {
        double angle = 1, horizontal_distance = 1, bearing = 1, scale_bar = 1, coordinate = 1,
               coordinate_difference = 1;
    } apriori; // factors of the weights, metres and radians

    // Lump definitions: the record's arrays live in these vectors, one set a definition.
    struct LumpTable {
        std::vector<int> epoch, code;
        std::vector<double> scale, tx, ty, tz, rx, ry, rz;
    };
    List<lump_definition> lumpdefs;
    std::vector<LumpTable> lump_tables;

    std::vector<std::string> covariance_points; // of the solver sparse: names of points whose covariances are wanted

    // Points the arrays of p, of the groups and of the lump definitions at the vectors
    // above. To be called after the last change of their sizes.
    void attach();

private:
    Model(const Model &) = default;
};

// Whether a coordinate, rotation or constant with this code is held at the value that the file gives.
inline bool is_held(int code) { return code == CODE_FIXED || code == CODE_WEIGHTED; }

// What the network file writes in.
FileUnits file_units(const Model &model);

// Metres in the unit of length of the project.
double metres_per_unit(const project &p);

// Name in the record of a point by its number: stations, then targets.
const char *record_name(const Model &model, int point);

// "net.inp:12", or the network file for a record without a place.
std::string place(const Model &model, Source where);

} // namespace vornhost

#endif
