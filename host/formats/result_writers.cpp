#include "host/formats/result_writers.h"

#include <stdio.h>

#include <cmath>
#include <set>
#include <unordered_map>

#include "host/formats/geocentric.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

constexpr double degree = 3.14159265358979323846 / 180.0;
constexpr double smallest_radius = 6.3e6, largest_radius = 6.4e6; // of points on the earth, metres

template <class... Values> std::string formatted(const char *format, Values... values)
{
    char text[256];
    snprintf(text, sizeof text, format, values...);
    return text;
}

std::optional<double> coordinate(const PointResult &point, int axis)
{
    return point.adjusted[axis] ? point.adjusted[axis] : point.approximate[axis];
}

// d m s.s in 11 places.
std::string sexagesimal(double radians)
{
    const double tenths = std::round(std::fabs(radians) / degree * 36000.0);
    const int d = (int)(tenths / 36000.0), m = (int)((tenths - d * 36000.0) / 600.0);
    const double s = (tenths - d * 36000.0 - m * 600.0) / 10.0;
    const std::string degrees = (radians < 0.0 ? "-" : "") + std::to_string(d);
    return formatted("%3s %2d %4.1f", degrees.c_str(), m, s);
}

// Writes one file; the members are what its steps share.
class SinexWriter {
public:
    SinexWriter(const Results &its_results, const std::string &its_time, std::vector<std::string> &its_notes,
                Faults &all)
        : results(its_results), created(its_time), notes(its_notes), faults(all)
    {
    }

    std::string write()
    {
        choose_points();
        if (!faults.empty()) return std::string();
        name_sites();
        line(formatted("%%=SNX 2.02 VRN %s VRN %s %s C %05d 2 S", created.c_str(), open_time, open_time,
                       (int)(3 * sites.size())));
        write_comment();
        write_sites();
        write_epochs();
        write_statistics();
        write_estimates();
        write_matrix();
        line("%ENDSNX");
        return out;
    }

private:
    static constexpr const char *open_time = "00:000:00000";

    struct Site {
        const PointResult *point;
        size_t place; // in the covariances
        std::string code;
    };

    void line(const std::string &text) { out += text + '\n'; }

    void choose_points()
    {
        if (results.dimension != 3) return faults.add(Source(), "SINEX holds networks in space", "export as points");
        std::unordered_map<std::string, size_t> places;
        for (size_t i = 0; i < results.covariance_points.size(); i++) places[results.covariance_points[i]] = i;
        size_t held = 0, local = 0;
        for (const PointResult &point : results.points) {
            const auto place = places.find(point.name);
            const bool whole = point.adjusted[0] && point.adjusted[1] && point.adjusted[2];
            if (place == places.end() || !whole || !varies(place->second)) {
                held++;
                continue;
            }
            const double radius = std::hypot(*point.adjusted[0], *point.adjusted[1], *point.adjusted[2]);
            if (radius < smallest_radius || radius > largest_radius) local++;
            sites.push_back({&point, place->second, std::string()});
        }
        if (sites.empty())
            return faults.add(Source(), "no point has three adjusted coordinates with a covariance",
                              "nothing can be written");
        if (sites.size() > 33333)
            return faults.add(Source(), "SINEX numbers at most 99999 coordinates", "divide the network");
        if (held > 0)
            notes.push_back(std::to_string(held) +
                            " points are held in a coordinate, or have not three, and are left out");
        if (local > 0)
            notes.push_back(std::to_string(local) +
                            " points are not geocentric: SINEX readers take them for X, Y, Z of the earth");
    }

    double covariance(size_t i, size_t j) const
    {
        const size_t n = 3 * results.covariance_points.size();
        return results.covariances[i * n + j];
    }

    bool varies(size_t place) const
    {
        for (size_t axis = 0; axis < 3; axis++)
            if (!(covariance(3 * place + axis, 3 * place + axis) > 0.0)) return false;
        return true;
    }

    // Codes of sites have four characters.
    void name_sites()
    {
        std::set<std::string> taken;
        for (Site &site : sites) {
            const std::string &name = site.point->name;
            bool plain = name.size() <= 4;
            for (const char c : name) plain = plain && c > ' ' && c < 127;
            if (plain && taken.insert(name).second) site.code = name;
        }
        int number = 0;
        for (Site &site : sites) {
            while (site.code.empty()) {
                const std::string code = formatted("%04d", ++number);
                if (number > 9999 || taken.insert(code).second) site.code = number > 9999 ? "????" : code;
            }
        }
        if (number > 9999)
            faults.add(Source(), "more than 9999 points have names longer than four characters", "shorten them");
    }

    void write_comment()
    {
        line("+FILE/COMMENT");
        line(" Covariances are multiplied by the variance factor.");
        for (const Site &site : sites)
            if (site.code != site.point->name)
                line(" " + site.code + " is " + printable(site.point->name).substr(0, 60));
        line("-FILE/COMMENT");
    }

    void write_sites()
    {
        line("+SITE/ID");
        for (const Site &site : sites) {
            const Geodetic place =
                geodetic({*site.point->adjusted[0], *site.point->adjusted[1], *site.point->adjusted[2]});
            const double longitude = place.longitude < 0.0 ? place.longitude + 360.0 * degree : place.longitude;
            line(formatted(" %-4s  A --------- C %-22s %s %s %7.1f", site.code.c_str(), "-",
                           sexagesimal(longitude).c_str(), sexagesimal(place.latitude).c_str(), place.height));
        }
        line("-SITE/ID");
    }

    void write_epochs()
    {
        line("+SOLUTION/EPOCHS");
        for (const Site &site : sites)
            line(formatted(" %-4s  A    1 C %s %s %s", site.code.c_str(), open_time, open_time, open_time));
        line("-SOLUTION/EPOCHS");
    }

    void write_statistics()
    {
        if (!results.degrees_of_freedom || !results.variance_test || *results.degrees_of_freedom == 0) return;
        line("+SOLUTION/STATISTICS");
        line(formatted(" %-30s %22.15E", "NUMBER OF DEGREES OF FREEDOM", (double)*results.degrees_of_freedom));
        line(formatted(" %-30s %22.15E", "VARIANCE FACTOR",
                       results.variance_test->squares / *results.degrees_of_freedom));
        line("-SOLUTION/STATISTICS");
    }

    void write_estimates()
    {
        line("+SOLUTION/ESTIMATE");
        int index = 0;
        for (const Site &site : sites)
            for (int axis = 0; axis < 3; axis++)
                line(formatted(" %5d STA%c   %-4s  A    1 %s m    2 %21.14E %11.5E", ++index, "XYZ"[axis],
                               site.code.c_str(), open_time, *site.point->adjusted[axis],
                               std::sqrt(covariance(3 * site.place + (size_t)axis, 3 * site.place + (size_t)axis))));
        line("-SOLUTION/ESTIMATE");
    }

    void write_matrix()
    {
        line("+SOLUTION/MATRIX_ESTIMATE L COVA");
        const size_t n = 3 * sites.size();
        const auto element = [this](size_t i, size_t j) {
            return covariance(3 * sites[i / 3].place + i % 3, 3 * sites[j / 3].place + j % 3);
        };
        for (size_t i = 0; i < n; i++)
            for (size_t j = 0; j <= i; j += 3) {
                std::string text = formatted(" %5d %5d", (int)i + 1, (int)j + 1);
                for (size_t k = j; k < j + 3 && k <= i; k++) text += formatted(" %21.14E", element(i, k));
                line(text);
            }
        line("-SOLUTION/MATRIX_ESTIMATE L COVA");
    }

    const Results &results;
    const std::string &created;
    std::vector<std::string> &notes;
    Faults &faults;
    std::vector<Site> sites;
    std::string out;
};

std::string escaped(const std::string &text)
{
    std::string out;
    for (const char c : printable(text))
        out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : std::string(1, c);
    return out;
}

} // namespace

std::string write_sinex(const Results &results, const std::string &created, std::vector<std::string> &notes,
                        Faults &faults)
{
    return SinexWriter(results, created, notes, faults).write();
}

std::string write_landxml(const Results &results, const std::string &date, std::vector<std::string> &notes)
{
    std::string out =
        std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<LandXML xmlns=\"http://www.landxml.org/schema/LandXML-1.2\" version=\"1.2\" date=\"") +
        date +
        "\" time=\"00:00:00\">\n"
        "<Units><Metric linearUnit=\"meter\" areaUnit=\"squareMeter\" volumeUnit=\"cubicMeter\" "
        "temperatureUnit=\"celsius\" pressureUnit=\"HPA\"/></Units>\n<CgPoints>\n";
    static const char *const errors[] = {"northingStdError", "eastingStdError", "elevationStdError"};
    for (const PointResult &point : results.points) {
        if (!coordinate(point, 0) || !coordinate(point, 1)) {
            notes.push_back("point " + quote(point.name) + " is left out: it has no x and y");
            continue;
        }
        out += "  <CgPoint name=\"" + escaped(point.name) + '"';
        for (int axis = 0; axis < 3; axis++)
            if (point.deviation[axis])
                out += ' ' + std::string(errors[axis]) + "=\"" + number_text(*point.deviation[axis]) + '"';
        out += '>' + number_text(*coordinate(point, 0)) + ' ' + number_text(*coordinate(point, 1));
        if (coordinate(point, 2)) out += ' ' + number_text(*coordinate(point, 2));
        out += "</CgPoint>\n";
    }
    return out + "</CgPoints>\n</LandXML>\n";
}

std::string write_point_list(const Results &results)
{
    std::string out = "Name,East,North,Height\r\n";
    for (const PointResult &point : results.points) {
        const bool plain = point.name.find_first_of(",\"") == std::string::npos;
        std::string name;
        for (const char c : point.name) name += c == '"' ? std::string("\"\"") : std::string(1, c);
        out += plain ? name : '"' + name + '"';
        for (const int axis : {1, 0, 2}) {
            const std::optional<double> value = coordinate(point, axis);
            out += ',' + (value ? formatted("%.4f", *value) : std::string());
        }
        out += "\r\n";
    }
    return out;
}

} // namespace vornhost
