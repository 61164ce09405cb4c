#include "host/formats/dna_columns.h"

#include <algorithm>
#include <cmath>

#include "host/input/number.h"

namespace vornhost {

namespace {

// First and last place, counted from 1.
struct Place {
    size_t first, last;
};

struct StationPlaces {
    Place name, constraints, type, value[3], zone;
};

struct MeasurePlaces {
    Place first, second, third, value, degrees, minutes, seconds, sigma, instrument, target;
    Place component, variance[3], scalar[4], frame, epoch, id;
};

const StationPlaces stations_3_01 = {{1, 20}, {21, 23}, {25, 27}, {{28, 47}, {48, 67}, {68, 87}}, {88, 90}},
                    stations_3_00 = {{1, 20}, {21, 23}, {25, 27}, {{28, 41}, {42, 55}, {56, 69}}, {70, 72}},
                    stations_1_00 = {{1, 10}, {11, 13}, {15, 17}, {{18, 31}, {32, 45}, {46, 59}}, {60, 62}};

const MeasurePlaces measures_3_01 = {{3, 22},
                                     {23, 42},
                                     {43, 62},
                                     {63, 76},
                                     {77, 80},
                                     {81, 82},
                                     {83, 90},
                                     {91, 99},
                                     {100, 106},
                                     {107, 113},
                                     {63, 82},
                                     {{83, 102}, {103, 122}, {123, 142}},
                                     {{63, 72}, {73, 82}, {83, 92}, {93, 102}},
                                     {103, 122},
                                     {123, 142},
                                     {143, 152}};
const MeasurePlaces measures_3_00 = {{3, 22},
                                     {23, 42},
                                     {43, 62},
                                     {63, 76},
                                     {77, 80},
                                     {81, 82},
                                     {83, 90},
                                     {91, 99},
                                     {100, 106},
                                     {107, 113},
                                     {63, 76},
                                     {{77, 90}, {91, 104}, {105, 118}},
                                     {{63, 69}, {70, 76}, {77, 83}, {84, 90}},
                                     {91, 104},
                                     {105, 118},
                                     {119, 128}};
const MeasurePlaces measures_1_00 = {{3, 12},
                                     {13, 22},
                                     {23, 32},
                                     {33, 46},
                                     {47, 50},
                                     {51, 54},
                                     {55, 60},
                                     {61, 69},
                                     {70, 76},
                                     {77, 83},
                                     {33, 46},
                                     {{47, 57}, {58, 68}, {69, 79}},
                                     {{33, 46}, {47, 57}, {58, 68}, {69, 79}},
                                     {80, 89},
                                     {90, 99},
                                     {84, 93}};

struct Line {
    std::string_view text;
    size_t offset; // of its first byte in the file
};

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

std::string_view cut(std::string_view line, Place place)
{
    if (line.size() < place.first) return std::string_view();
    return trimmed(line.substr(place.first - 1, place.last - place.first + 1));
}

// Without comments and blank lines.
std::vector<Line> lines_of(const TextFile &file)
{
    std::vector<Line> lines;
    const std::string_view all = file.text();
    for (size_t begin = 0; begin < all.size();) {
        const size_t end = std::min(all.find('\n', begin), all.size());
        std::string_view text = all.substr(begin, end - begin);
        if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
        if (!trimmed(text).empty() && text[0] != '*') lines.push_back({text, begin});
        begin = end + 1;
    }
    return lines;
}

// Reads one file; the members are what its steps share.
class ColumnsReader {
public:
    ColumnsReader(const TextFile &its_file, DnaNetwork &its_network, Faults &all)
        : file(its_file), network(its_network), faults(all), lines(lines_of(its_file))
    {
    }

    bool read()
    {
        const size_t before = faults.count();
        read_header();
        if (faults.count() > before) return false;
        while (next < lines.size())
            if (measures)
                read_measure();
            else
                read_station();
        return faults.count() == before;
    }

private:
    void fault(Place place, const std::string &what, const std::string &remedy)
    {
        const Line &line = lines[std::min(next, lines.size() - 1)];
        const size_t column = line.text.size() >= place.first ? place.first - 1 : 0;
        const std::string_view field = line.text.substr(column, place.last - place.first + 1);
        const size_t blanks = std::min(field.find_first_not_of(" \t"), field.size());
        faults.add(file.place(line.offset + column + (blanks == field.size() ? 0 : blanks)), what, remedy);
    }

    Source here() const { return file.place(lines[next].offset); }
    std::string_view field(Place place) const { return cut(lines[next].text, place); }
    std::string word(Place place) const { return std::string(field(place)); }

    double number(Place place, const char *what)
    {
        double value = 0.0;
        const std::string_view text = field(place);
        if (read_number(text, value) != Reading::Number)
            fault(place, quote(text) + " is not a number for the " + what,
                  "write it in columns " + std::to_string(place.first) + " to " + std::to_string(place.last));
        return value;
    }

    double number_or(Place place, double otherwise, const char *what)
    {
        return field(place).empty() ? otherwise : number(place, what);
    }

    double packed(Place place, const char *what)
    {
        double degrees = 0.0;
        if (!read_packed(field(place), degrees))
            fault(place, quote(field(place)) + " is not a " + what,
                  "write it as degrees.minutesseconds, like -36.3348253617");
        return degrees;
    }

    void read_header()
    {
        if (lines.empty()) return faults.add(file.place(0), "the file holds nothing", "name another");
        const std::string_view text = lines[0].text;
        std::string version = "1.00";
        measures = false;
        if (text.substr(0, 6) == "!#=DNA") {
            version = word({7, 12});
            const std::string kind = word({13, 15});
            measures = kind == "MSR";
            if (kind != "MSR" && kind != "STN")
                fault({13, 15}, "the file holds " + quote(kind) + ", which is not taken over",
                      "name a file of stations (STN) or measurements (MSR)");
            network.frame = word({30, 43});
            network.epoch = word({44, 57});
            next = 1;
        } else {
            // Files without a header: a measurement begins with the letter of its type and a blank.
            measures = text.size() > 2 && is_dna_type(text[0]) && (text[1] == ' ' || text[1] == '*');
        }
        station_places = version == "3.01" ? &stations_3_01 : version == "3.00" ? &stations_3_00 : &stations_1_00;
        places = version == "3.01" ? &measures_3_01 : version == "3.00" ? &measures_3_00 : &measures_1_00;
        if (version == "3.01" || version == "3.00" || version == "1.00" || version == "1.0") return;
        next = 0;
        fault({7, 12}, "version " + quote(version) + " of the format is not known", "write 3.01, 3.00 or 1.00");
    }

    void read_station()
    {
        const StationPlaces &p = *station_places;
        DnaStation station;
        station.where = here();
        station.name = word(p.name);
        station.constraints = word(p.constraints);
        station.type = word(p.type);
        if (station.type == "UTM") station.zone = word(p.zone);
        const bool geodetic = station.type == "LLH" || station.type == "LLh";
        static const char *const types[] = {"LLH", "LLh", "UTM", "XYZ", "ENU"};
        if (station.name.empty()) return void(next++);
        if (std::find(std::begin(types), std::end(types), station.type) == std::end(types))
            fault(p.type, "type of coordinates " + quote(station.type) + " is not known", "write LLH, LLh, UTM or XYZ");
        else
            for (size_t i = 0; i < 3; i++)
                station.value[i] = geodetic && i < 2 ? packed(p.value[i], i == 0 ? "latitude" : "longitude")
                                                     : number(p.value[i], "coordinate");
        network.stations.push_back(std::move(station));
        next++;
    }

    // The next line belongs to the same record; a fault where the file ends.
    bool step(const char *what)
    {
        if (next + 1 < lines.size()) return next++, true;
        faults.add(here(), std::string("the file ends before ") + what, "complete the record");
        next = lines.size();
        return false;
    }

    void read_measure()
    {
        const char type = lines[next].text[0];
        DnaMeasure m;
        m.type = type;
        m.where = here();
        if (!is_dna_type(type)) {
            fault({1, 1}, "type of measurement " + quote(lines[next].text.substr(0, 1)) + " is not known",
                  "write one of A B C D E G H I J K L M P Q R S V X Y Z in column 1");
            next++;
            return;
        }
        m.ignored = lines[next].text.size() > 1 && lines[next].text[1] == '*';
        m.first = word(places->first);
        const size_t faults_before = faults.count();
        if (type == 'G' || type == 'X' || type == 'Y')
            read_vectors(m);
        else if (type == 'D')
            read_set(m);
        else
            read_single(m);
        if (faults.count() == faults_before) network.measures.push_back(std::move(m));
    }

    double sexagesimal()
    {
        const std::string_view sign = field(places->degrees);
        const double d = number(places->degrees, "degrees"), m = number_or(places->minutes, 0, "minutes"),
                     s = number_or(places->seconds, 0, "seconds");
        if (!(m >= 0.0 && m < 60.0))
            fault(places->minutes, "minutes are not below 60", "carry them over to the degrees");
        if (!(s >= 0.0 && s <= 60.0))
            fault(places->seconds, "seconds are not below 60", "carry them over to the minutes");
        const double size = std::fabs(d) + m / 60.0 + s / 3600.0;
        return !sign.empty() && sign[0] == '-' ? -size : size;
    }

    static bool is_position(char type) { return type == 'I' || type == 'P' || type == 'J' || type == 'Q'; }

    void read_single(DnaMeasure &m)
    {
        m.second = word(places->second);
        m.third = word(places->third);
        m.value = is_position(m.type)    ? packed(places->value, "position")
                  : is_dna_angle(m.type) ? sexagesimal()
                                         : number(places->value, "value");
        m.sigma = number(places->sigma, "standard deviation");
        if (m.type == 'S' || m.type == 'V' || m.type == 'Z') {
            m.instrument_height = number_or(places->instrument, 0.0, "height of the instrument");
            m.target_height = number_or(places->target, 0.0, "height of the target");
        }
        m.id = word(places->id);
        next++;
    }

    // How many rows follow; 0 with its fault where that is no count.
    size_t count()
    {
        int n = 0;
        if (read_whole(field(places->third), n) == Reading::Number && n > 0) return (size_t)n;
        fault(places->third, quote(field(places->third)) + " is not how many rows the record has",
              "write their number");
        return 0;
    }

    DnaDirection direction(const std::string &target)
    {
        DnaDirection d;
        d.where = here();
        d.target = target;
        d.ignored = lines[next].text.size() > 1 && lines[next].text[1] == '*';
        d.value = sexagesimal();
        d.sigma = number(places->sigma, "standard deviation");
        return d;
    }

    void read_set(DnaMeasure &m)
    {
        const size_t n = count();
        m.id = word(places->id);
        m.directions.push_back(direction(word(places->second)));
        m.directions[0].ignored = false;
        for (size_t i = 0; i < n; i++) {
            if (!step("all directions of the set")) return;
            if (lines[next].text[0] != 'D' || !field(places->first).empty()) {
                fault({1, 1}, "a direction of the set before is missing", "write the number of directions that follow");
                return;
            }
            m.directions.push_back(direction(word(places->third)));
        }
        next++;
    }

    void read_vectors(DnaMeasure &m)
    {
        const size_t n = m.type == 'G' ? 1 : count();
        if (n == 0) return void(next++);
        m.second = word(places->second);
        m.coordinates = m.type == 'Y' && !m.second.empty() ? m.second : "XYZ";
        static const char *const names[] = {"scalar V", "scalar P", "scalar L", "scalar H"};
        for (size_t i = 0; i < 4; i++) m.scalar[i] = number_or(places->scalar[i], 1.0, names[i]);
        m.frame = word(places->frame);
        m.epoch = word(places->epoch);
        m.id = word(places->id);
        for (size_t i = 0; i < n; i++) {
            if (i > 0 && (lines[next].text[0] != m.type || field(places->first).empty())) {
                fault({1, 1},
                      "the record " + std::string(1, m.type) + " has " + std::to_string(i) + " members, not " +
                          std::to_string(n),
                      "write their number in its first line");
                return;
            }
            if (!read_member(m, n - 1 - i)) return;
            if (i + 1 < n && next >= lines.size()) {
                faults.add(m.where, "the file ends within this record", "complete the record");
                return;
            }
        }
    }

    bool read_member(DnaMeasure &m, size_t later)
    {
        DnaMember member;
        member.where = here();
        member.first = word(places->first);
        if (m.type != 'Y') member.second = word(places->second);
        for (size_t row = 0; row < 3; row++) {
            if (!step("the components of a record")) return false;
            const bool angle = m.type == 'Y' && m.coordinates != "XYZ" && row < 2;
            member.value[row] = angle ? packed(places->component, row == 0 ? "latitude" : "longitude")
                                      : number(places->component, "component");
            for (size_t column = 0; column <= row; column++)
                member.covariance[row * (row + 1) / 2 + column] = number(places->variance[column], "covariance");
        }
        for (size_t i = 0; i < later; i++) {
            member.later.emplace_back();
            for (size_t row = 0; row < 3; row++) {
                if (!step("the covariances of a record")) return false;
                for (size_t column = 0; column < 3; column++)
                    member.later.back()[3 * row + column] = number(places->variance[column], "covariance");
            }
        }
        next++;
        m.members.push_back(std::move(member));
        return true;
    }

    const TextFile &file;
    DnaNetwork &network;
    Faults &faults;
    std::vector<Line> lines;
    size_t next = 0;
    bool measures = false;
    const StationPlaces *station_places = nullptr;
    const MeasurePlaces *places = nullptr;
};

} // namespace

bool read_dna_columns(const TextFile &file, DnaNetwork &network, Faults &faults)
{
    return ColumnsReader(file, network, faults).read();
}

} // namespace vornhost
