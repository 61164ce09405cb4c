// Whether two files of results are equal, numbers to 1e-9: same-results A.json B.json
// The time that a run took and the folders of files may differ. Prints the first differences; status 1 when there are
// any.

#include <cmath>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

int differences = 0;

void differ(const std::string &place, const json &a, const json &b)
{
    if (++differences <= 10) std::printf("%s: %s %s\n", place.c_str(), a.dump().c_str(), b.dump().c_str());
}

bool near(double a, double b) { return std::fabs(a - b) <= 1e-9 * std::fmax(1.0, std::fabs(a)); }

// A path as any system writes it, without its folders.
std::string file_name(const json &path)
{
    const std::string text = path.get<std::string>();
    return text.substr(text.find_last_of("/\\") + 1);
}

bool is_file(const std::string &place) { return place.substr(place.rfind('/') + 1) == "file"; }

bool alike(double a, double b) { return a - b <= 1e-7 * a; }

// An ellipse or ellipsoid whose axes differ by rounding points anywhere.
bool is_round(const json &ellipse)
{
    if (ellipse.contains("semi_major_axis")) return alike(ellipse["semi_major_axis"], ellipse["semi_minor_axis"]);
    if (!ellipse.contains("semi_axes")) return false;
    const json &axes = ellipse["semi_axes"];
    return alike(axes[0], axes[1]) || alike(axes[1], axes[2]);
}

bool is_of_axes(const std::string &key) { return key == "bearing" || key == "bearings" || key == "elevations"; }

void compare(const std::string &place, const json &a, const json &b)
{
    if (a.is_number() && b.is_number()) {
        if (!near(a.get<double>(), b.get<double>())) differ(place, a, b);
    } else if (a.is_object() && b.is_object() && a.size() == b.size()) {
        for (const auto &[key, value] : a.items())
            if (key != "seconds" && !(is_of_axes(key) && is_round(a)))
                b.contains(key) ? compare(place + "/" + key, value, b[key]) : differ(place, a, b);
    } else if (a.is_array() && b.is_array() && a.size() == b.size()) {
        for (size_t i = 0; i < a.size(); i++) compare(place + "/" + std::to_string(i), a[i], b[i]);
    } else if (is_file(place) && a.is_string() && b.is_string()) {
        if (file_name(a) != file_name(b)) differ(place, a, b);
    } else if (a != b) {
        differ(place, a, b);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    const json a = json::parse(std::ifstream(argv[1])), b = json::parse(std::ifstream(argv[2]));
    compare("", a, b);
    return differences == 0 ? 0 : 1;
}
