// A cluster of a .gkf file: observations in their order, and the covariance matrix over all their values. Observations
// that cannot take part are struck from the matrix, the others go into the draft.

#ifndef VORNHOST_GKF_CLUSTER_H
#define VORNHOST_GKF_CLUSTER_H

#include <set>
#include <string>
#include <vector>

#include "host/formats/draft.h"
#include "host/formats/gkf_axes.h"
#include "host/formats/gkf_points.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// Default standard deviations of a points-observations as they are written: mm, and cc beside gon or arc seconds beside
// degrees.
struct GkfDefaults {
    std::optional<double> direction, angle, zenith_angle, azimuth;
    std::vector<double> distance; // constant, factor, power of the length in km
};

// What all clusters of a file share.
struct GkfContext {
    GkfContext(Draft &its_draft, Faults &all) : draft(its_draft), faults(all) {}

    Draft &draft;
    Faults &faults;
    GkfPoints points;
    GkfAxes axes = *GkfAxes::of("ne", "left-handed");
    bool dms = false; // every angle of the file is degrees-minutes-seconds
    double sigma_apriori = 10.0;
    bool tie_y_reflected = false; // a covariance of y with another coordinate took the other sign
    size_t observations = 0, left_out = 0, heights_ignored = 0;
    std::set<std::string> held_plan; // points whose x and y zenith angles take as they are given

    double full_circle() const { return dms ? 360.0 : 400.0; }
    void note(Source at, const std::string &text) { draft.notes.push_back({at, text}); }
};

// One observation on its way into the draft.
struct GkfObservation {
    DraftKind kind;
    DraftRow row;
    std::string words;  // "direction from A to B"
    std::string reason; // why it is left out; empty: it takes part
};

class GkfCluster {
public:
    explicit GkfCluster(GkfContext &its_context) : context(its_context), faults_before(its_context.faults.count()) {}

    GkfContext &context;
    std::vector<GkfObservation> observations;

    // Adds an observation. Each of its values is one of the matrix; scale turns the file's unit and sense of it into
    // ours, and a value that is not active is struck out.
    struct Value {
        int axis;
        double scale;
        bool active;
    };
    void add(GkfObservation observation, const std::vector<Value> &values);

    // Hands the observations over, with the standard deviations of the matrix where there is one. Nothing after a
    // fault.
    void finish(const XmlElement *matrix);

private:
    struct Entry {
        size_t observation;
        Value value;
    };
    struct Band {
        size_t width = 0;
        std::vector<double> elements;
    };

    bool read_matrix(const XmlElement &matrix, Band &band);
    bool read_elements(const XmlElement &matrix, size_t count, std::vector<double> &elements);
    Band struck(const Band &band);
    bool taken(const Entry &entry) const
    {
        return entry.value.active && observations[entry.observation].reason.empty();
    }
    void set_sigmas(const Band &band);
    bool set_products(const Band &band);
    void note_reflection(const Band &band);
    void set_group(const Band &band, Source at);
    void require_sigmas();
    void hand_over();

    size_t faults_before;
    std::vector<Entry> entries;
    std::string group;
    Source group_at;
    Band group_band;
};

// Readers of the four clusters.
void read_obs(const XmlElement &obs, const GkfDefaults &defaults, GkfContext &context,
              std::map<std::string, std::pair<int, int>> &setups);
void read_height_differences(const XmlElement &cluster, GkfContext &context);
void read_coordinates(const XmlElement &cluster, GkfContext &context);
void read_vectors(const XmlElement &cluster, GkfContext &context);

// The children of a cluster but the matrix, which is its last element if it has one.
const XmlElement *matrix_of(const XmlElement &cluster, Faults &faults);

} // namespace vornhost

#endif
