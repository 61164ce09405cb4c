#include "host/formats/dna.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <unordered_map>

#include "host/formats/dna_terrestrial.h"
#include "host/formats/draft_builder.h"
#include "host/formats/plate_motion.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;

constexpr double radian = 3.14159265358979323846 / 180.0;
constexpr std::string_view dna_types = "ABCDEGHIJKLMPQRSVXYZ";

bool is_satellite(char type) { return type == 'G' || type == 'X' || type == 'Y'; }

Matrix product(const Matrix &a, const Matrix &b)
{
    Matrix c = {};
    for (size_t i = 0; i < 3; i++)
        for (size_t j = 0; j < 3; j++)
            for (size_t k = 0; k < 3; k++) c[i][j] += a[i][k] * b[k][j];
    return c;
}

Matrix transposed(const Matrix &a)
{
    Matrix t = {};
    for (size_t i = 0; i < 3; i++)
        for (size_t j = 0; j < 3; j++) t[i][j] = a[j][i];
    return t;
}

Matrix symmetric(const std::array<double, 6> &c)
{
    return {{{c[0], c[1], c[3]}, {c[1], c[2], c[4]}, {c[3], c[4], c[5]}}};
}

Matrix square(const std::array<double, 9> &c) { return {{{c[0], c[1], c[2]}, {c[3], c[4], c[5]}, {c[6], c[7], c[8]}}}; }

// Makes the draft of one network; the members are what its steps share.
class DnaDrafter {
public:
    DnaDrafter(const DnaNetwork &its_network, Source its_file, const std::string &its_geoid, Draft &draft, Faults &all)
        : network(its_network), file(its_file), geoid(its_geoid), builder(draft, all), faults(all)
    {
    }

    bool make()
    {
        if (!choose()) return false;
        builder.draft.units.length = "m";
        builder.draft.units.angle = "dms";
        builder.draft.units.sigma_angle = "arc_second";
        builder.draft.units.dms = true;
        for (const DnaStation &station : network.stations) add_station(station);
        std::optional<DnaTerrestrial> sights;
        if (earth) terrestrial = &sights.emplace(builder, *earth, located);
        for (const DnaMeasure &measure : network.measures) add_measure(measure);
        if (terrestrial) terrestrial->finish();
        note_frames();
        builder.finish(file);
        return faults.empty();
    }

private:
    // Networks are adjusted on the ellipsoid, levelling in heights; without projections vectors in geocentric
    // coordinates. False after a fault.
    bool choose()
    {
        bool heights_only = true;
        for (const DnaMeasure &m : network.measures) {
            if (m.ignored) continue;
            geocentric_network = geocentric_network || is_satellite(m.type);
            heights_only = heights_only && (m.type == 'L' || m.type == 'H');
        }
        if (heights_only || !has_proj()) return true;
        std::string fault;
        earth = DnaPlaces::open(network, geoid, &fault);
        if (!earth) faults.add(file, fault, "name a GTX or GeoTIFF grid or a height in metres with --geoid, or none");
        if (!earth) return false;
        builder.draft.crs = earth->keys();
        const std::string system = geocentric_system(network.frame);
        for (const DnaMeasure &m : network.measures) {
            if (m.ignored || m.type != 'Y') continue;
            builder.draft.crs.emplace_back(
                "coordinates", '"' + (system.empty() ? "+proj=geocent +ellps=GRS80 +units=m +no_defs" : system) + '"');
            break;
        }
        return true;
    }

    // Stations.

    void add_station(const DnaStation &station)
    {
        if (!places.emplace(station.name, Geodetic()).second)
            return faults.add(station.where, "station " + quote(station.name) + " is listed twice",
                              "keep one of the two");
        DraftPoint &point = builder.point(station.name, station.where);
        std::string codes = station.constraints + "FFF";
        codes.resize(3);
        for (char &code : codes) {
            code = (char)std::toupper((unsigned char)code);
            if (code == 'C' || code == 'F') continue;
            faults.add(station.where,
                       "constraint " + quote(station.constraints) + " of station " + quote(station.name) +
                           " is not known",
                       "write C or F for each coordinate");
            return;
        }
        if (earth)
            locate_station(station, codes, point);
        else if (geocentric_network)
            place_station(station, codes, point);
        else
            raise_station(station, codes, point);
    }

    // Latitude, longitude and height; constraints are in that order, of UTM east before north.
    void locate_station(const DnaStation &station, const std::string &codes, DraftPoint &point)
    {
        const std::optional<std::array<double, 3>> at = earth->place(station);
        if (!at && station.type != "ENU")
            return faults.add(station.where, "station " + quote(station.name) + " lies outside the geoid or its zone",
                              "check its coordinates and the zone, like S55");
        const bool utm = station.type == "UTM";
        for (size_t axis = 0; axis < 3; axis++) {
            const char code = codes[utm && axis < 2 ? 1 - axis : axis];
            if (code == 'C' && !at)
                return faults.add(station.where, "station " + quote(station.name) + " is held in " + station.type,
                                  "write its coordinates as LLH, LLh, UTM or XYZ");
            point.code[axis] = code == 'C' ? CODE_FIXED : CODE_FREE;
            if (at) point.value[axis] = (*at)[axis];
        }
        if (!at) return;
        if (codes[0] != codes[1]) partly_held++;
        if (station.type == "LLH" || station.type == "UTM") orthometric++;
        located.emplace(station.name, *at);
        const double h = (*at)[2] + earth->undulation((*at)[0], (*at)[1]).value_or(0.0);
        places[station.name] = {(*at)[0] * radian, (*at)[1] * radian, h};
        known.emplace(station.name, true);
    }

    // In heights the third coordinate counts, where it is one.
    void raise_station(const DnaStation &station, const std::string &codes, DraftPoint &point)
    {
        if (station.type == "XYZ" || station.type == "LLh") return;
        point.value[2] = station.value[2];
        point.code[2] = codes[2] == 'C' ? CODE_FIXED : CODE_FREE;
    }

    void place_station(const DnaStation &station, const std::string &codes, DraftPoint &point)
    {
        const bool held = codes == "CCC", geodetic_type = station.type == "LLH" || station.type == "LLh";
        if (!held && codes != "FFF")
            return faults.add(station.where,
                              "only a part of the coordinates of station " + quote(station.name) + " is held",
                              "write CCC or FFF: geocentric coordinates cannot say it");
        if (held && station.type != "XYZ" && station.type != "LLh")
            return faults.add(
                station.where,
                "station " + quote(station.name) + " is held in " + station.type + ", which needs " +
                    (station.type == "LLH" ? "a geoid" : "a projection"),
                "write its geocentric coordinates (XYZ), or latitude, longitude and ellipsoidal height (LLh)");
        if (!geodetic_type && station.type != "XYZ") return; // computed from the measurements
        Geodetic &place = places[station.name];
        std::array<double, 3> xyz = station.value;
        if (geodetic_type) {
            place = {station.value[0] * radian, station.value[1] * radian, station.value[2]};
            xyz = geocentric(place);
        } else {
            place = geodetic(xyz);
        }
        if (station.type == "LLH") orthometric++;
        known.emplace(station.name, true);
        for (size_t axis = 0; axis < 3; axis++) {
            point.value[axis] = held ? xyz[axis] : std::round(xyz[axis] * 1e4) / 1e4;
            point.code[axis] = held ? CODE_FIXED : CODE_FREE;
        }
    }

    // Measurements.

    static size_t values_of(const DnaMeasure &m)
    {
        if (is_satellite(m.type)) return 3 * m.members.size();
        return m.type == 'D' ? m.directions.size() : 1;
    }

    static std::string words(const DnaMeasure &m)
    {
        std::string text = std::string("measurement ") + m.type + " of " + m.first;
        if (m.type != 'Y' && !m.second.empty()) text += " to " + m.second;
        return m.third.empty() || is_satellite(m.type) || m.type == 'D' ? text : text + " and " + m.third;
    }

    void leave_out(const DnaMeasure &m, const std::string &reason)
    {
        builder.leave_out(m.where, words(m), reason, values_of(m));
    }

    void add_measure(const DnaMeasure &m)
    {
        if (m.ignored) return leave_out(m, "it is marked as ignored");
        if (is_satellite(m.type)) return add_satellite(m);
        for (const DnaDirection &d : m.directions)
            if (!d.ignored && !(d.sigma > 0.0))
                return faults.add(d.where, "the standard deviation of a direction of " + words(m) + " is not above 0",
                                  "write one");
        if (!(m.sigma > 0.0) && m.type != 'D')
            return faults.add(m.where, "the standard deviation of " + words(m) + " is not above 0", "write one");
        if (terrestrial) {
            const std::string why = terrestrial->add(m);
            if (!why.empty()) leave_out(m, why);
        } else if (geocentric_network) {
            add_chord(m);
        } else {
            add_height(m);
        }
    }

    // Straight lines between marks need no ellipsoid.
    void add_chord(const DnaMeasure &m)
    {
        const bool chord = m.type == 'C' || (m.type == 'S' && m.instrument_height == 0.0 && m.target_height == 0.0);
        if (!chord)
            return leave_out(
                m,
                m.type == 'S'
                    ? "heights of instrument and target need a reference system, and the program was built without PROJ"
                    : "beside GNSS vectors its type needs a reference system, and the program was built without PROJ");
        if (!(m.value > 0.0)) return faults.add(m.where, "a distance is not above 0", "write the observed one");
        builder.add(DraftKind::scale_bar, row_of(m));
    }

    void add_height(const DnaMeasure &m)
    {
        if (m.type != 'L' && m.type != 'H')
            return leave_out(m,
                             "without GNSS vectors heights alone are taken where the program was built without PROJ");
        DraftRow row = row_of(m);
        if (m.type == 'L') return builder.add(DraftKind::height_difference, std::move(row));
        row.to.clear();
        std::swap(row.value[0], row.value[2]);
        std::swap(row.sigma[0], row.sigma[2]);
        builder.add(DraftKind::coordinates, std::move(row));
    }

    // Vectors and points with their covariance.
    void add_satellite(const DnaMeasure &m)
    {
        const bool points = m.type == 'Y';
        if (points && m.coordinates != "XYZ" && m.coordinates != "LLh" && !(earth && m.coordinates == "LLH"))
            return leave_out(m,
                             "its coordinates are of type " + m.coordinates + ", which needs a geoid or a projection");
        for (const double scalar : m.scalar)
            if (!(scalar > 0.0))
                return faults.add(m.where, "a scalar of " + words(m) + " is not above 0", "write 1 for none");
        std::vector<Matrix> turns; // of the covariance of each member
        turns.reserve(m.members.size());
        for (const DnaMember &member : m.members) {
            const Geodetic *place = place_of(m, member);
            if (!place) return leave_out(m, "its scalars need the coordinates of station " + member.first);
            turns.push_back(turn(m, member, *place));
        }
        settle_frame(m);
        const bool alone = m.members.size() == 1 && !points;
        const std::string group = alone ? std::string() : "C" + std::to_string(builder.draft.covariances.size() + 1);
        const DraftKind kind = points ? DraftKind::coordinates : DraftKind::baseline;
        const size_t first_row = builder.draft.of(kind).size();
        for (size_t i = 0; i < m.members.size(); i++) add_member(m, m.members[i], turns[i], group, kind);
        if (!alone) add_group(m, turns, group, kind, first_row);
    }

    // Baselines of another frame are turned where their rotation is known.
    void settle_frame(const DnaMeasure &m)
    {
        const std::string frame = m.frame.empty() ? network.frame : m.frame,
                          epoch = m.epoch.empty() ? network.epoch : m.epoch;
        change.reset();
        transformation.clear();
        if (frame != network.frame && m.type != 'Y') change = frame_change(frame, epoch, network.frame);
        if (frame != network.frame && !change && earth) transformation = transformation_from(frame, epoch, m.where);
        (change || !transformation.empty() ? turned_frames : frames)[{frame, epoch}] += values_of(m);
    }

    // Name of the transformation by PROJ from a frame at an epoch; empty where PROJ does not know one of the frames.
    std::string transformation_from(const std::string &frame, const std::string &epoch, Source where)
    {
        const std::string system = geocentric_system(frame);
        if (system.empty() || geocentric_system(network.frame).empty()) return {};
        if (builder.draft.crs[0].second.find("EPSG") == std::string::npos) return {}; // the grid has no datum
        std::string name = epoch.empty() ? frame : frame + "@" + epoch;
        for (const Draft::Transformation &t : builder.draft.transformations)
            if (t.name == name) return name;
        builder.draft.transformations.push_back({name, system, year_of(epoch), where});
        return name;
    }

    // Where scalars along latitude, longitude and height are turned; null where it is not known.
    const Geodetic *place_of(const DnaMeasure &m, const DnaMember &member) const
    {
        static const Geodetic any;
        const bool local = m.scalar[1] != 1.0 || m.scalar[2] != 1.0 || m.scalar[3] != 1.0;
        if (!local) return &any;
        return known.count(member.first) > 0 ? &places.at(member.first) : nullptr;
    }

    // What stands before and, transposed, behind a covariance: the scalars, and for latitude and longitude their turn
    // into geocentric axes.
    Matrix turn(const DnaMeasure &m, const DnaMember &member, const Geodetic &station) const
    {
        Matrix out = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        const double v = std::sqrt(m.scalar[0]);
        if (m.scalar[1] != 1.0 || m.scalar[2] != 1.0 || m.scalar[3] != 1.0) {
            const Matrix axes = local_axes(station);
            // East is along longitude, north along latitude.
            const double root[3] = {std::sqrt(m.scalar[2]), std::sqrt(m.scalar[1]), std::sqrt(m.scalar[3])};
            Matrix scaled = axes;
            for (size_t i = 0; i < 3; i++)
                for (double &element : scaled[i]) element *= root[i];
            out = product(transposed(axes), scaled);
        }
        for (auto &row : out)
            for (double &element : row) element *= v;
        if (m.coordinates == "XYZ" || m.type != 'Y') return out;
        const Geodetic place = {member.value[0] * radian, member.value[1] * radian, member.value[2]};
        const Matrix axes = local_axes(place);
        const std::array<double, 2> metres = radii(place);
        Matrix rates = {}; // of X, Y, Z by latitude, longitude, height
        for (size_t i = 0; i < 3; i++) rates[i] = {axes[1][i] * metres[0], axes[0][i] * metres[1], axes[2][i]};
        return product(out, rates);
    }

    static Matrix turned(const Matrix &left, const Matrix &covariance, const Matrix &right)
    {
        return product(product(left, covariance), transposed(right));
    }

    void add_member(const DnaMeasure &m, const DnaMember &member, const Matrix &turn, const std::string &group,
                    DraftKind kind)
    {
        DraftRow row;
        row.where = member.where;
        row.id = m.id;
        row.from = member.first;
        row.to = member.second;
        row.covariance = group;
        row.transformation = transformation;
        std::array<double, 3> value = member.value;
        if (kind == DraftKind::coordinates && m.coordinates != "XYZ") {
            const double up = m.coordinates == "LLH" ? earth->undulation(value[0], value[1]).value_or(0.0) : 0.0;
            value = geocentric({value[0] * radian, value[1] * radian, value[2] + up});
        }
        if (change) value = changed(value, *change);
        for (size_t axis = 0; axis < 3; axis++) row.value[axis] = value[axis];
        if (group.empty()) {
            const Matrix c = turned(turn, symmetric(member.covariance), turn);
            row.product = {c[0][0], c[1][1], c[2][2], c[0][1], c[0][2], c[1][2]};
        }
        for (const size_t i : {0, 2, 5})
            if (!(member.covariance[i] > 0.0))
                return faults.add(member.where, "a variance of " + words(m) + " is not above 0", "write one");
        builder.add(kind, std::move(row), 3);
    }

    // Three rows a member of the upper triangle.
    void add_group(const DnaMeasure &m, const std::vector<Matrix> &turns, const std::string &name, DraftKind kind,
                   size_t first_row)
    {
        DraftCovariance group;
        group.name = name;
        group.where = m.where;
        const size_t n = m.members.size();
        group.width = 3 * n - 1;
        for (size_t i = 0; i < n; i++)
            for (int axis = 0; axis < 3; axis++) group.components.push_back({kind, first_row + i, axis});
        for (size_t i = 0; i < n; i++) {
            std::vector<Matrix> blocks = {turned(turns[i], symmetric(m.members[i].covariance), turns[i])};
            blocks.reserve(n - i);
            for (size_t j = i + 1; j < n; j++)
                blocks.push_back(turned(turns[i], square(m.members[i].later[j - i - 1]), turns[j]));
            for (size_t row = 0; row < 3; row++)
                for (size_t k = 0; k < blocks.size(); k++)
                    for (size_t column = k == 0 ? row : 0; column < 3; column++)
                        group.elements.push_back(blocks[k][row][column]);
        }
        builder.draft.covariances.push_back(std::move(group));
    }

    void note_frames()
    {
        if (earth && earth->orthometric() && geoid.empty())
            builder.note(file, "no geoid is named: heights above the geoid count from the ellipsoid; name a grid file "
                               "or metres with --geoid, or write it in [crs]");
        if (partly_held > 0)
            builder.note(file,
                         std::to_string(partly_held) +
                             " stations are held in latitude or longitude alone: in the north or east of the grid "
                             "here, which its convergence turns against them");
        if (orthometric > 0 && earth && !earth->orthometric())
            builder.note(file,
                         std::to_string(orthometric) +
                             " stations have heights above the geoid: they serve as first values of ellipsoidal ones");
        if (orthometric > 0 && geocentric_network && !earth)
            builder.note(file,
                         std::to_string(orthometric) +
                             " stations have heights above the geoid: they serve as first values of ellipsoidal ones");
        for (const auto &[frame, count] : turned_frames)
            builder.note(file, std::to_string(count) + " components of baselines in " + frame.first + " at " +
                                   frame.second + " are changed into " + network.frame);
        for (const auto &[frame, count] : frames)
            if (frame.first != network.frame || frame.second != network.epoch)
                builder.note(file, std::to_string(count) + " values of measurements are in " + frame.first + " at " +
                                       (frame.second.empty() ? "no epoch" : frame.second) +
                                       ": they are taken as they stand, without a transformation to " + network.frame +
                                       " at " + network.epoch);
    }

    const DnaNetwork &network;
    Source file;
    const std::string geoid;
    DraftBuilder builder;
    Faults &faults;
    bool geocentric_network = false;
    std::optional<DnaPlaces> earth;        // where projections are at hand
    DnaTerrestrial *terrestrial = nullptr; // with them
    DnaTerrestrial::Places located;        // stations, in degrees
    std::string transformation;            // of the record in hand
    size_t partly_held = 0;
    std::unordered_map<std::string, Geodetic> places;                            // of the stations
    std::unordered_map<std::string, bool> known;                                 // those with coordinates
    std::optional<FrameChange> change;                                           // of the record in hand
    std::map<std::pair<std::string, std::string>, size_t> frames, turned_frames; // values by frame and epoch
    size_t orthometric = 0;
};

} // namespace

bool is_dna_type(char type) { return type != '\0' && dna_types.find(type) != std::string_view::npos; }
bool is_dna_angle(char type) { return std::string_view("ABDKVZ").find(type) != std::string_view::npos; }

bool read_packed(std::string_view text, double &degrees)
{
    double check = 0.0;
    if (read_number(text, check) != Reading::Number || text.find_first_of("eE") != std::string_view::npos) return false;
    const bool minus = text[0] == '-';
    if (minus || text[0] == '+') text.remove_prefix(1);
    const size_t point = std::min(text.find('.'), text.size());
    std::string digits(text.substr(std::min(point + 1, text.size())));
    digits += digits.size() < 4 ? std::string(4 - digits.size(), '0') : std::string();
    double whole = 0.0, minutes = 0.0, seconds = 0.0;
    if (point > 0) read_number(text.substr(0, point), whole);
    read_number(digits.substr(0, 2), minutes);
    read_number(digits.substr(2, 2) + '.' + digits.substr(4) + '0', seconds);
    if (minutes >= 60.0 || seconds > 60.0) return false;
    degrees = (minus ? -1.0 : 1.0) * (whole + minutes / 60.0 + seconds / 3600.0);
    return true;
}

bool draft_dna(const DnaNetwork &network, Source file, const std::string &geoid, Draft &draft, Faults &faults)
{
    return DnaDrafter(network, file, geoid, draft, faults).make();
}

} // namespace vornhost
