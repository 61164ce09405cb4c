// Random networks of a second implementation, where they are at hand, start without their free coordinates and end
// where they end with them.

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/own/own_run.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

bool held(const json &code) { return code == 3 || code == 4; }

std::string number(const json &x)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", x.get<double>());
    return text;
}

// A weighted coordinate without a standard deviation, which a network file cannot say.
bool refused(const json &project)
{
    for (const char *table : {"stations", "targets"})
        for (const json &p : project.value(table, json::array()))
            for (size_t k = 0; k < 3; k++)
                if (p["ix"][k] == 3 && p["sx"][k] <= 0.0) return true;
    return false;
}

// Coordinates that the dimension has, "-" where they are taken away; then their standard deviations and codes.
std::string cells(const json &point, int dimension, bool taken)
{
    std::string x, s, c;
    for (size_t k = 0; k < 3; k++) {
        const bool there = dimension == 3 || (dimension == 2 ? k < 2 : k == 2);
        const json &code = point["ix"][k];
        x += there && (!taken || held(code)) ? " " + number(point["x"][k]) : " -";
        s += there && code == 3 ? " " + number(point["sx"][k]) : " -";
        c += there ? " " + std::to_string(code.get<int>()) : " -";
    }
    return x + s + c;
}

std::string points_text(const json &project, const char *table, bool taken)
{
    std::string text;
    for (const json &p : project.value(table, json::array())) {
        if (p["status"] <= 0) continue;
        text += p["name"].get<std::string>() + cells(p, project["dim"], taken);
        if (p.contains("ir"))
            text +=
                " yes " + (held(p["ir"][2]) ? number(p["r"][2]) : "-") + " " + std::to_string(p["ir"][2].get<int>());
        text += "\n";
    }
    const bool stations = std::string(table) == "stations";
    return text.empty() ? text
                        : std::string(table) + " = \'\'\'\nname x y z sx sy sz code_x code_y code_z" +
                              (stations ? " levelled rx3 code_rx3\n" : "\n") + text + "\'\'\'\n";
}

std::string rows_text(const json &project, const char *table, const char *name)
{
    std::string text;
    for (const json &r : project.value(table, json::array()))
        if (r["typ"] > 0)
            text += r["from"].get<std::string>() + " " + r["to"].get<std::string>() + " " + number(r["val"]) + " " +
                    number(r["sig"]) + " " + number(r["h1"]) + " " + number(r["h2"]) + "\n";
    return text.empty() ? text : std::string(name) + " = \'\'\'\nfrom to value sigma h1 h2\n" + text + "\'\'\'\n";
}

std::string network_text(const json &project, bool taken)
{
    std::string text = "[run]\ndimension = " + std::to_string(project["dim"].get<int>()) +
                       "\n[units]\nangle = \"radian\"\nvertical = \"elevation\"\n[tables]\n";
    for (const char *table : {"stations", "targets"}) text += points_text(project, table, taken);
    const int dimension = project["dim"];
    if (dimension > 1) {
        text += rows_text(project, "distances", "distances") + rows_text(project, "directions", "directions") +
                rows_text(project, "azimuths", "azimuths");
    }
    if (dimension != 2) text += rows_text(project, "heightdiffs", "height_differences");
    if (dimension == 3) text += rows_text(project, "verticals", "vertical_angles");
    return text;
}

} // namespace

TEST(Taken, NetworksOfASecondImplementationStartWithoutCoordinates)
{
    const std::string folder = SOURCE_DIR "/../shared/data/reference/";
    if (!fs::is_directory(folder)) GTEST_SKIP() << "no networks at hand";
    int started = 0;
    for (const char *family : {"plane", "space", "level", "approx", "l1"}) {
        std::ifstream file(folder + family + ".json");
        for (const json &kept : json::parse(file)) {
            SCOPED_TRACE(kept["name"].get<std::string>());
            if (refused(kept["project"])) continue;
            const SolvedNetwork wanted = solve_text(network_text(kept["project"], false));
            if (!wanted.adjusted()) continue;
            const SolvedNetwork found = solve_text(network_text(kept["project"], true));
            ASSERT_TRUE(found.adjusted()) << found.words();
            const auto &v = found.results().residuals, &u = wanted.results().residuals;
            ASSERT_EQ(v.size(), u.size());
            for (size_t i = 0; i < u.size(); i++) EXPECT_NEAR(v[i].residual, u[i].residual, 1e-3 * u[i].sigma);
            started++;
        }
    }
    EXPECT_GT(started, 30);
}
