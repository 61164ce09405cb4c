#include "host/formats/plate_motion.h"

#include "host/input/number.h"

namespace vornhost {

namespace {

// Values at 2020.0 and their rates a year: parts in 1e9, milliseconds of arc.
struct Parameters {
    const char *from;
    double scale, scale_rate;
    double rotation[3], rate[3];
};

const Parameters into_gda2020[] = {
    {"ITRF2014", 0.0, 0.0, {0.0, 0.0, 0.0}, {1.50379, 1.18346, 1.20716}},
    {"ITRF2008", 2.5, 0.109, {0.2808, 0.2677, -0.4638}, {1.5461, 1.1820, 1.1551}},
};

} // namespace

std::optional<double> year_of(const std::string &epoch)
{
    static const int before[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    int day = 0, month = 0, year = 0;
    if (epoch.size() != 10 || epoch[2] != '.' || epoch[5] != '.') return std::nullopt;
    const bool read = read_whole(epoch.substr(0, 2), day) == Reading::Number &&
                      read_whole(epoch.substr(3, 2), month) == Reading::Number &&
                      read_whole(epoch.substr(6), year) == Reading::Number;
    if (!read || day < 1 || day > 31 || month < 1 || month > 12) return std::nullopt;
    return year + (before[month - 1] + day - 1) / 365.25;
}

std::optional<FrameChange> frame_change(const std::string &from, const std::string &epoch, const std::string &to)
{
    constexpr double milli_second = 3.14159265358979323846 / 648000.0 / 1000.0;
    const std::optional<double> year = year_of(epoch);
    for (const Parameters &p : into_gda2020) {
        if (from != p.from || to != "GDA2020" || !year) continue;
        const double span = *year - 2020.0;
        FrameChange change;
        change.scale = (p.scale + p.scale_rate * span) * 1e-9;
        for (size_t i = 0; i < 3; i++) change.rotation[i] = (p.rotation[i] + p.rate[i] * span) * milli_second;
        return change;
    }
    return std::nullopt;
}

std::array<double, 3> changed(const std::array<double, 3> &d, const FrameChange &change)
{
    const std::array<double, 3> &r = change.rotation;
    const double m = change.scale;
    return {d[0] + (m * d[0] + r[2] * d[1] - r[1] * d[2]), d[1] + (m * d[1] - r[2] * d[0] + r[0] * d[2]),
            d[2] + (m * d[2] + r[1] * d[0] - r[0] * d[1])};
}

} // namespace vornhost
