// What is made of GNU Gama's .gkf: points, units, senses, standard deviations, covariances.

#include <algorithm>
#include <cmath>

#include "imported.h"
#include "vorn/project.h"

using namespace vornhost;

namespace {

using Gkf = Formats;

const std::string two_fixed =
    "<point id='A' x='0' y='0' fix='xy'/><point id='B' x='100' y='0' fix='xy'/><point id='P' adj='xy'/>";

const DraftPoint &point(const Draft &draft, const std::string &name)
{
    for (const DraftPoint &candidate : draft.points)
        if (candidate.name == name) return candidate;
    static const DraftPoint none;
    return none;
}

std::array<int, 3> codes(const Draft &draft, const std::string &name) { return point(draft, name).code; }

// An angle less another within half a circle, gon.
double apart(double a, double b) { return std::remainder(a - b, 400.0); }

constexpr double gon = 200.0 / 3.14159265358979323846;

} // namespace

// Places as east and north, angles clockwise from north in the world: whatever the axes and senses of the file, what is
// imported must fit its coordinates with directions from x to y.
TEST_F(Gkf, TurnsEverySystemOfAxesAndAnglesIntoTheSenseFromXToY)
{
    const double place[][2] = {{0, 0}, {300, 400}, {-200, 350}, {150, -420}}; // east, north
    const auto along = [](char axis, const double *p) {
        return axis == 'n' ? p[1] : axis == 's' ? -p[1] : axis == 'e' ? p[0] : -p[0];
    };
    const auto clockwise = [&](int to) { return std::atan2(place[to][0], place[to][1]) * gon; };
    for (const std::string axes : {"ne", "sw", "es", "wn", "en", "nw", "se", "ws"})
        for (const bool left : {true, false}) {
            const double sense = left ? 1.0 : -1.0;
            std::string text;
            for (int i = 0; i < 4; i++)
                text += "<point id='" + std::to_string(i) + "' x='" + std::to_string(along(axes[0], place[i])) +
                        "' y='" + std::to_string(along(axes[1], place[i])) + "' adj='xy'/>\n";
            const auto value = [&](double angle) {
                return " val='" + std::to_string(std::fmod(sense * angle + 800, 400)) + "'";
            };
            text += "<obs from='0'>";
            for (const int i : {1, 2, 3})
                text += "<direction to='" + std::to_string(i) + "'" + value(clockwise(i) - 17) + "/>";
            text += "<azimuth to='2'" + value(clockwise(2)) + "/>";
            text += "<angle bs='1' fs='3'" + value(clockwise(3) - clockwise(1)) + "/></obs>";
            const std::string handed = left ? "left-handed" : "right-handed";
            ASSERT_EQ(network(text, "axes-xy='" + axes + "' angles='" + handed + "'",
                              "direction-stdev='5' angle-stdev='5' azimuth-stdev='5'"),
                      Lines());
            const auto bearing = [&](const std::string &to) { // from x towards y
                const DraftPoint &p = point(draft, to);
                return std::atan2(*p.value[1], *p.value[0]) * gon;
            };
            SCOPED_TRACE(axes + " " + handed);
            const auto &directions = rows(DraftKind::direction);
            ASSERT_EQ(directions.size(), 3u);
            for (const DraftRow &row : directions)
                EXPECT_NEAR(apart(*row.value[0] - *directions[0].value[0], bearing(row.to) - bearing("1")), 0, 2e-6);
            const DraftRow &azimuth = rows(DraftKind::azimuth).at(0), &angle = rows(DraftKind::angle).at(0);
            EXPECT_NEAR(apart(*azimuth.value[0], bearing("2") + draft.azimuth_rotation.value_or(0)), 0, 2e-6);
            EXPECT_NEAR(apart(*angle.value[0], bearing(angle.to) - bearing(angle.from)), 0, 2e-6);
        }
}

TEST_F(Gkf, MergesPointsThatComeAgain)
{
    ASSERT_EQ(
        network(
            "<point id=' A  1 ' x='1' y='2'/><point id='A 1' z='3' fix='z'/><point id='A 1' adj='xy' x='10' y='20'/>"
            "<point id='B' x='100' y='0' z='0' fix='XY' adj='xyz'/><point id='C' z='5' fix='z' adj='xy'/>"
            "<obs><s-distance from='A 1' to='B' val='99' stdev='1'/><s-distance from='A 1' to='C' val='9' stdev='1'/>"
            "</obs>"),
        Lines());
    ASSERT_EQ(draft.points.size(), 3u);
    EXPECT_EQ(draft.dimension, 3);
    EXPECT_EQ(codes(draft, "A 1"), (std::array<int, 3>{CODE_FREE, CODE_FREE, CODE_FIXED}));
    EXPECT_EQ(point(draft, "A 1").value, (std::array<MaybeNumber, 3>{10.0, 20.0, 3.0}));
    EXPECT_EQ(codes(draft, "B"), (std::array<int, 3>{CODE_FIXED, CODE_FIXED, CODE_FREE})); // fix wins over adj
    EXPECT_TRUE(point(draft, "A 1").station);
    EXPECT_FALSE(point(draft, "B").station);
}

TEST_F(Gkf, TakesUpperCaseAsDatum)
{
    const std::string rest =
        "<point id='B' x='9' y='0' adj='xy'/><obs from='A'><distance to='B' val='9' stdev='1'/></obs>";
    ASSERT_EQ(network("<point id='A' x='1' y='2' adj='XY'/>" + rest), Lines());
    EXPECT_EQ(codes(draft, "A")[0], CODE_FREE);
    EXPECT_EQ(codes(draft, "B")[0], CODE_NO_DATUM);
    ASSERT_EQ(network("<point id='A' x='1' y='2' adj='xy'/>" + rest), Lines());
    EXPECT_EQ(codes(draft, "A")[0], CODE_FREE);
    EXPECT_EQ(codes(draft, "B")[0], CODE_FREE);
    ASSERT_EQ(network("<point id='A' x='1' y='2' z='3' adj='XYz'/><point id='B' x='9' y='0' z='1' adj='xyZ'/>"
                      "<obs from='A'><s-distance to='B' val='9' stdev='1'/></obs>"),
              Lines());
    EXPECT_EQ(codes(draft, "A"), (std::array<int, 3>{CODE_FREE, CODE_FREE, CODE_NO_DATUM}));
    EXPECT_EQ(codes(draft, "B"), (std::array<int, 3>{CODE_NO_DATUM, CODE_NO_DATUM, CODE_FREE}));
}

TEST_F(Gkf, ChoosesTheDimensionThatTakesPart)
{
    ASSERT_EQ(network("<point id='A' x='0' y='0' z='1' fix='xyz'/><point id='P' adj='xy'/>"
                      "<obs from='A'><distance to='P' val='5' stdev='1'/></obs>"),
              Lines());
    EXPECT_EQ(draft.dimension, 2);
    EXPECT_EQ(rows(DraftKind::distance).size(), 1u);
    ASSERT_EQ(network("<point id='A' x='0' y='0' z='1' fix='xyz'/><point id='P' x='0' y='9' fix='xy' adj='z'/>"
                      "<height-differences><dh from='A' to='P' val='5' stdev='1'/></height-differences>"),
              Lines());
    EXPECT_EQ(draft.dimension, 1);
    ASSERT_EQ(network("<point id='A' x='0' y='0' z='1' fix='xyz'/><point id='P' adj='xyz'/>"
                      "<obs from='A'><distance to='P' val='5' stdev='1'/></obs>"
                      "<height-differences><dh from='A' to='P' val='5' stdev='1'/></height-differences>"),
              Lines());
    EXPECT_EQ(draft.dimension, 3);
    EXPECT_EQ(rows(DraftKind::horizontal_distance).size(), 1u); // in space too it knows x and y only
    EXPECT_EQ(rows(DraftKind::distance).size(), 0u);
}

TEST_F(Gkf, ReadsDegreesValueByValue)
{
    // All in degrees: they stay, standard deviations in arc seconds.
    ASSERT_EQ(network(two_fixed + "<obs from='A'><direction to='B' val=' -0-00-01.5 '/>"
                                  "<direction to='P' val='57-32-28.428' stdev='7'/></obs>",
                      "", "direction-stdev='10'"),
              Lines());
    EXPECT_EQ(draft.units.angle, "dms");
    EXPECT_EQ(draft.units.sigma_angle, "arc_second");
    EXPECT_NEAR(*rows(DraftKind::direction)[0].value[0], -1.5 / 3600, 1e-15);
    EXPECT_NEAR(*rows(DraftKind::direction)[1].value[0], 57 + 32 / 60.0 + 28.428 / 3600, 1e-13);
    EXPECT_EQ(rows(DraftKind::direction)[0].sigma[0], 10.0);
    EXPECT_EQ(rows(DraftKind::direction)[1].sigma[0], 7.0);
    // Mixed: gon, and the default of 10 is 10 cc beside the one and 10" beside the other.
    ASSERT_EQ(
        network(two_fixed + "<obs from='A'><direction to='B' val='90-00-00'/><direction to='P' val='1e-3'/></obs>", "",
                "direction-stdev='10'"),
        Lines());
    EXPECT_EQ(draft.units.angle, "gon");
    EXPECT_NEAR(*rows(DraftKind::direction)[0].value[0], 100.0, 1e-13);
    EXPECT_NEAR(*rows(DraftKind::direction)[0].sigma[0], 10.0 / 3600 / 0.9 * 1e4, 1e-12);
    EXPECT_EQ(rows(DraftKind::direction)[1].value[0], 1e-3);
    EXPECT_EQ(rows(DraftKind::direction)[1].sigma[0], 10.0);
}

TEST_F(Gkf, GivesStandardDeviationsByRowDefaultAndLength)
{
    const std::string second = "</points-observations><points-observations distance-stdev='4' azimuth-stdev='3'>";
    ASSERT_EQ(network(two_fixed +
                          "<obs from='A'><distance to='B' val='100'/><distance to='P' val='2000' stdev=' 7.5 '/>"
                          "<distance to='P' val='2000'/><azimuth to='P' val='1' stdev='2'/></obs>" +
                          second + "<obs from='B'><distance to='P' val='2000'/><azimuth to='P' val='1'/></obs>",
                      "", "distance-stdev='2 3 0.5'"),
              Lines());
    const auto &d = rows(DraftKind::distance);
    ASSERT_EQ(d.size(), 4u);
    EXPECT_NEAR(*d[0].sigma[0], 2 + 3 * std::sqrt(0.1), 1e-12);
    EXPECT_EQ(d[1].sigma[0], 7.5);
    EXPECT_NEAR(*d[2].sigma[0], 2 + 3 * std::sqrt(2.0), 1e-12);
    EXPECT_EQ(d[3].sigma[0], 4.0);
    EXPECT_EQ(rows(DraftKind::azimuth)[0].sigma[0], 2.0);
    EXPECT_EQ(rows(DraftKind::azimuth)[1].sigma[0], 3.0);
}

TEST_F(Gkf, WeighsLevellingByItsLength)
{
    ASSERT_EQ(
        import("<gama-local><network><points-observations><point id='A' z='0' fix='z'/><point id='B' adj='z'/>"
               "<height-differences><dh from='A' to='B' val='1.5' dist='0.07'/><dh from='A' to='B' val='1.5' dist='2'"
               " stdev='3' extern='k7'/></height-differences></points-observations>"
               "<parameters sigma-apr=' 4 '/></network></gama-local>"),
        Lines());
    EXPECT_EQ(draft.dimension, 1);
    EXPECT_EQ(draft.sigma_per_root_km, 4.0); // sigma-apr sqrt(km), wherever the parameters stand
    const auto &dh = rows(DraftKind::height_difference);
    EXPECT_EQ(dh[0].length, 70.0);
    EXPECT_FALSE(dh[0].sigma[0]);
    EXPECT_EQ(dh[1].sigma[0], 3.0);
    EXPECT_FALSE(dh[1].length);
    EXPECT_EQ(dh[1].id, "k7");
}

// Writers fill in zeros where a standard deviation or a matrix counts, and name schemas in the root.
TEST_F(Gkf, PassesOverLengthsAndStandardDeviationsThatDoNotCount)
{
    EXPECT_EQ(import("<gama-local xmlns='http://www.gnu.org/software/gama/gama-local' "
                     "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:schemaLocation='a b'><network>"
                     "<points-observations><point id='A' z='1' fix='z'/><point id='P' adj='z'/>"
                     "<height-differences><dh from='A' to='P' val='5' stdev='2' dist='0'/></height-differences>"
                     "<height-differences><dh from='A' to='P' val='5' stdev='0' dist='0'/>"
                     "<cov-mat dim='1' band='0'>9</cov-mat></height-differences>"
                     "</points-observations></network></gama-local>"),
              Lines());
    const auto &heights = rows(DraftKind::height_difference);
    ASSERT_EQ(heights.size(), (size_t)2);
    EXPECT_EQ(*heights[0].sigma[0], 2.0);
    EXPECT_EQ(*heights[1].sigma[0], 3.0);
    EXPECT_FALSE(heights[0].length || heights[1].length);
}

TEST_F(Gkf, KeepsHeightsWhereTheyCount)
{
    ASSERT_EQ(
        network(
            "<point id='A' x='0' y='0' z='0' fix='xyz'/><point id='P' adj='xyz'/><obs from='A' from_dh='1.5'>"
            "<s-distance to='P' val='9' stdev='1' to_dh='1.8'/><z-angle to='P' val='300' stdev='1' from_dh='1.6'/>"
            "<direction to='P' val='0' stdev='1' to_dh='1.8'/><angle bs='P' fs='B' val='1' stdev='1' fs_dh='2'/></obs>"
            "<point id='B' x='9' y='9' fix='xy'/>"),
        Lines());
    EXPECT_EQ(rows(DraftKind::distance)[0].h1, 1.5);
    EXPECT_EQ(rows(DraftKind::distance)[0].h2, 1.8);
    EXPECT_EQ(rows(DraftKind::vertical_angle)[0].h1, 1.6);
    EXPECT_FALSE(rows(DraftKind::vertical_angle)[0].h2);
    EXPECT_EQ(rows(DraftKind::vertical_angle)[0].value[0], 100.0); // of the second face
    EXPECT_FALSE(rows(DraftKind::direction)[0].h2);
    EXPECT_EQ(notes()[0].substr(0, 60), "net.gkf:1: heights of instrument or target of 2 observations");
}

TEST_F(Gkf, MakesEachSetOfDirectionsASetUp)
{
    ASSERT_EQ(network(two_fixed +
                      "<obs from='A'><direction to='B' val='0' stdev='1'/><direction to='P' val='1' stdev='1'/></obs>"
                      "<obs from='A'><distance to='B' val='100' stdev='1'/></obs>"
                      "<obs from='A'><direction to='B' val='9' stdev='1'/><distance to='P' val='7' stdev='1'/>"
                      "<distance from='B' to='P' val='7' stdev='1'/></obs>"
                      "<obs from='B'><direction to='A' val='9' stdev='1'/><direction to='P' val='7' stdev='1'/></obs>"),
              Lines());
    Lines setups;
    for (const DraftRow &row : rows(DraftKind::direction)) setups.push_back(row.from + row.setup);
    EXPECT_EQ(setups, (Lines{"A1", "A1", "A2", "B", "B"}));
    setups.clear();
    for (const DraftRow &row : rows(DraftKind::distance)) setups.push_back(row.from + row.setup);
    EXPECT_EQ(setups, (Lines{"A", "A2", "B"}));
}

TEST_F(Gkf, ReadsOldNames)
{
    ASSERT_EQ(
        import("<!DOCTYPE gama-xml SYSTEM 'gama-xml.dtd'>\n<gama-xml version='1'><network><parameters angles='360'/>"
               "<points-observations>" +
               two_fixed +
               "<obs><angle from='A' to='B' rs='P' val='7' stdev='1'/></obs>"
               "</points-observations></network></gama-xml>"),
        Lines());
    EXPECT_EQ(rows(DraftKind::angle)[0].from, "B");
    EXPECT_EQ(rows(DraftKind::angle)[0].to, "P");
    EXPECT_EQ(rows(DraftKind::angle)[0].at, "A");
}

TEST_F(Gkf, TakesTheDescriptionAsTitle)
{
    ASSERT_EQ(
        import(
            "<gama-local xmlns='http://www.gnu.org/software/gama/gama-local'><network><description>\n\n Dam \n\n left "
            "bank\n</description><points-observations distance-stdev='1'>" +
            two_fixed + "<obs from='A'><distance to='P' val='7'/></obs></points-observations></network></gama-local>"),
        Lines());
    EXPECT_EQ(draft.title, "Dam");
    EXPECT_EQ(draft.description, (Lines{"Dam", "left bank"}));
}

// Distance and direction in turn, one of each to a point without a state. The elements of the matrix stay with their
// observations, and what is left out leaves a matrix of the others.
TEST_F(Gkf, StrikesWhatIsLeftOutFromTheCovariance)
{
    ASSERT_EQ(
        network(two_fixed +
                    "<point id='X' x='1' y='1'/><obs from='A'><direction to='B' val='1'/><distance to='X' val='2'/>"
                    "<distance to='P' val='3'/><direction to='P' val='4'/>"
                    "<cov-mat dim='4' band='2'> 11 12 13\n 22 23 24 33 34 44 </cov-mat></obs>",
                "axes-xy='en'"),
        Lines());
    ASSERT_EQ(draft.covariances.size(), 1u);
    const DraftCovariance &c = draft.covariances[0];
    ASSERT_EQ(c.components.size(), 3u);
    EXPECT_EQ(c.components[0].kind, DraftKind::direction);
    EXPECT_EQ(c.components[1].kind, DraftKind::distance);
    EXPECT_EQ(c.components[1].row, 0u);
    EXPECT_EQ(c.components[2].row, 1u);
    EXPECT_EQ(c.width, 1u);
    // The directions are turned: their covariances with lengths change sign.
    EXPECT_EQ(c.elements, (std::vector<double>{11, -13, 33, -34, 44}));
    EXPECT_EQ(rows(DraftKind::distance).size(), 1u);
    EXPECT_EQ(notes()[0],
              "net.gkf:3: distance from A to X is left out: point \"X\" has no fix or adj for xy; write one");
    EXPECT_TRUE(point(draft, "X").off);
}

TEST_F(Gkf, ScalesCovariancesWithTheUnitOfTheirAngles)
{
    const double cc = 1.0 / 0.324; // of an arc second
    ASSERT_EQ(network(two_fixed + "<obs from='A'><direction to='B' val='90-00-00'/><direction to='P' val='4'/>"
                                  "<distance to='P' val='3'/><cov-mat dim='3' band='2'> 4 1 2 9 3 16 </cov-mat></obs>"),
              Lines());
    const std::vector<double> wanted = {4 * cc * cc, 1 * cc, 2 * cc, 9, 3, 16};
    for (size_t i = 0; i < wanted.size(); i++) EXPECT_NEAR(draft.covariances.at(0).elements[i], wanted[i], 1e-12);
}

TEST_F(Gkf, TakesAMatrixWithoutCovariancesAsStandardDeviations)
{
    ASSERT_EQ(network(two_fixed +
                      "<obs from='A'><distance to='P' val='3' stdev='1'/><distance to='B' val='3' stdev='1'/>"
                      "<cov-mat dim='2' band='1'> 16 0 25 </cov-mat></obs>"),
              Lines());
    EXPECT_TRUE(draft.covariances.empty());
    EXPECT_EQ(rows(DraftKind::distance)[0].sigma[0], 4.0);
    EXPECT_EQ(rows(DraftKind::distance)[1].sigma[0], 5.0);
}

TEST_F(Gkf, MakesVectorsBaselinesAndTiesThemWhereTheMatrixDoes)
{
    const std::string points = "<point id='A' x='0' y='0' z='0' fix='xyz'/><point id='P' adj='xyz'/>";
    const std::string vectors =
        "<vectors><vec from='A' to='P' dx='1' dy='2' dz='3' extern='v'/><vec from='P' to='A' dx='-1' "
        "dy='-2' dz='-3'/>";
    ASSERT_EQ(
        network(points + vectors + "<cov-mat dim='6' band='2'>1 12 13 2 23 0 3 0 0 4 45 46 5 56 6</cov-mat></vectors>"),
        Lines());
    ASSERT_EQ(rows(DraftKind::baseline).size(), 2u);
    EXPECT_EQ(rows(DraftKind::baseline)[0].product, (std::array<MaybeNumber, 6>{1.0, 2.0, 3.0, 12.0, 13.0, 23.0}));
    EXPECT_EQ(rows(DraftKind::baseline)[1].product, (std::array<MaybeNumber, 6>{4.0, 5.0, 6.0, 45.0, 46.0, 56.0}));
    EXPECT_EQ(rows(DraftKind::baseline)[0].id, "v");
    EXPECT_TRUE(draft.covariances.empty());
    ASSERT_EQ(
        network(points + vectors + "<cov-mat dim='6' band='2'>1 12 13 2 23 0 3 0 0 4 45 46 5 56 6</cov-mat></vectors>",
                "axes-xy='en'"),
        Lines());
    EXPECT_EQ(rows(DraftKind::baseline)[0].product, (std::array<MaybeNumber, 6>{1.0, 2.0, 3.0, -12.0, 13.0, -23.0}));
    EXPECT_NE(notes()[0].find("give them their sign back"), std::string::npos);
    ASSERT_EQ(network(points + vectors + "<cov-mat dim='6' band='1'>1 0 2 0 3 34 4 0 5 0 6</cov-mat></vectors>"),
              Lines());
    EXPECT_EQ(draft.covariances.size(), 1u);
    EXPECT_EQ(rows(DraftKind::baseline)[0].covariance, "C1");
    EXPECT_FALSE(rows(DraftKind::baseline)[0].product[0]);
}

TEST_F(Gkf, LeavesOutComponentsThatTakeNoPart)
{
    ASSERT_EQ(network("<point id='A' x='0' y='0' z='0' fix='xyz'/><point id='P' adj='xy'/><point id='Q' adj='z'/>"
                      "<vectors><vec from='A' to='P' dx='1' dy='2' dz='3'/><vec from='P' to='Q' dx='1' dy='2' dz='3'/>"
                      "<vec from='A' to='Q' dx='1' dy='2' dz='3'/>"
                      "<cov-mat dim='9' band='0'>1 4 9 1 1 1 1 1 25</cov-mat></vectors>"),
              Lines());
    const auto &d = rows(DraftKind::coordinate_difference);
    ASSERT_EQ(d.size(), 2u);
    EXPECT_EQ(d[0].value, (std::array<MaybeNumber, 3>{1.0, 2.0, std::nullopt}));
    EXPECT_EQ(d[0].sigma, (std::array<MaybeNumber, 3>{1.0, 2.0, std::nullopt}));
    EXPECT_EQ(d[1].value, (std::array<MaybeNumber, 3>{std::nullopt, std::nullopt, 3.0}));
    EXPECT_EQ(d[1].sigma[2], 5.0);
    EXPECT_EQ(notes().back(), "net.gkf:1: observations read 3 = taken 2 + left out 1");
}

TEST_F(Gkf, TakesObservedCoordinatesWithTheirCovariance)
{
    ASSERT_EQ(
        network("<coordinates extern='gps'><point id='A' x='1' y='2' adj='xy'/><point id='B' x='3' y='4' adj='XY'/>"
                "<cov-mat dim='4' band='1'>4 -1 9 2 16 3 25</cov-mat></coordinates>"
                "<obs><distance from='A' to='B' val='3' stdev='1'/></obs>",
                "axes-xy='en'"),
        Lines());
    ASSERT_EQ(rows(DraftKind::coordinates).size(), 2u);
    EXPECT_EQ(rows(DraftKind::coordinates)[1].from, "B");
    EXPECT_EQ(rows(DraftKind::coordinates)[1].id, "gps");
    EXPECT_EQ(point(draft, "A").value[1], 2.0);
    // Reflected y with covariances as they are: those of y with x change their sign, and a note says so.
    EXPECT_EQ(draft.covariances.at(0).elements, (std::vector<double>{4, 1, 9, -2, 16, -3, 25}));
    EXPECT_NE(notes()[0].find("give them their sign back"), std::string::npos);
}

TEST_F(Gkf, LeavesOutWhatCannotTakePartAndSaysWhy)
{
    ASSERT_EQ(
        network("<point id='A' x='0' y='0' fix='xy'/>\n<point id='P' adj='xyz'/><point id='N' x='5' y='5'/>\n"
                "<point id='U' x='5' y='5' adj='xy'/>\n<point id='H' z='5' fix='z' /> <obs from='A'>\n"
                "<direction to='P' val='1' stdev='1'/><direction to='N' val='1' stdev='1'/>\n"
                "<distance to='Z' val='1' stdev='1'/>\n<z-angle to='P' val='99' stdev='1'/>\n"
                "<distance to='P' val='1' stdev='1'/></obs>\n"
                "<height-differences><dh from='P' to='H' val='1' stdev='1'/>\n<dh from='P' to='A' val='1' stdev='1'/>"
                "</height-differences>"),
        Lines());
    EXPECT_EQ(
        notes(),
        (Lines{"net.gkf:7: direction from A to N is left out: point \"N\" has no fix or adj for xy; write one",
               "net.gkf:8: distance from A to Z is left out: point \"Z\" is not declared; add it with fix or adj",
               "net.gkf:9: z-angle from A to P is left out: point \"A\" has no fix or adj for z; write one",
               "net.gkf:12: height difference from P to A is left out: point \"A\" has no fix or adj for z; write one",
               "net.gkf:5: x and y of point \"U\" left out: no observation reaches it; gama-local leaves it out too",
               "net.gkf:1: observations read 7 = taken 3 + left out 4"}));
    EXPECT_TRUE(point(draft, "U").off);
    EXPECT_TRUE(point(draft, "N").off);
    EXPECT_FALSE(point(draft, "H").off);
    EXPECT_EQ(codes(draft, "H")[0], CODE_ABSENT);
}

// Q was seen once; without it R, which was seen from it and from B, is told by one observation too.
TEST_F(Gkf, LeavesOutPointsThatTooLittleTells)
{
    const std::string points = "<point id='A' x='0' y='0' fix='xy'/><point id='B' x='100' y='0' fix='xy'/>\n"
                               "<point id='P' adj='xy'/>\n<point id='Q' adj='xy'/>\n<point id='R' adj='xy'/>\n";
    const std::string sets = "<obs from='A'><direction to='B' val='0' stdev='5'/><direction to='P' val='50' stdev='5'/>"
                             "<direction to='Q' val='20' stdev='5'/>\n<distance to='P' val='70.71' stdev='3'/></obs>"
                             "<obs from='B'><distance to='R' val='30' stdev='3'/></obs>\n";
    ASSERT_EQ(network(points + sets + "<obs from='R'><direction to='Q' val='1' stdev='5'/></obs>"), Lines());
    EXPECT_TRUE(point(draft, "Q").off);
    EXPECT_TRUE(point(draft, "R").off);
    EXPECT_FALSE(point(draft, "P").off);
    EXPECT_EQ(rows(DraftKind::direction).size(), (size_t)2);
    EXPECT_EQ(notes()[0],
              "net.gkf:5: x and y of point \"Q\" left out: too few observations tell them; gama-local leaves "
              "it out too");
    EXPECT_EQ(notes()[2], "net.gkf:7: direction from A to Q is left out: point \"Q\" is left out");
    ASSERT_EQ(network(points + sets +
                      "<obs><distance from='R' to='A' val='80' stdev='5'/>"
                      "<distance from='Q' to='A' val='80' stdev='5'/></obs>"),
              Lines());
    EXPECT_FALSE(point(draft, "Q").off || point(draft, "R").off);
}

TEST_F(Gkf, LeavesOutSetsToOneTarget)
{
    ASSERT_EQ(network(two_fixed +
                      "<obs from='A'><direction to='P' val='1' stdev='1'/><direction to='P' val='1' stdev='1'/></obs>"
                      "<obs from='B'><direction to='P' val='1' stdev='1'/><distance to='P' val='1' stdev='1'/></obs>"),
              Lines());
    ASSERT_EQ(rows(DraftKind::direction).size(), 1u); // one alone gives its orientation and nothing else
    EXPECT_EQ(rows(DraftKind::direction)[0].from, "B");
    EXPECT_EQ(notes()[0],
              "net.gkf:3: direction from A to P is left out: all directions of its set go to this one target");
}

TEST_F(Gkf, NamesParametersThatChangeResults)
{
    ASSERT_EQ(
        import("<gama-local><network><parameters latitude='50' sigma-act='apriori' speed='5'/><points-observations>" +
               two_fixed +
               "<obs from='A'><distance to='P' val='7' stdev='1'/></obs></points-observations></network></gama-local>"),
        Lines());
    EXPECT_EQ(notes()[0].substr(11), "parameter \"speed\" is not known and not taken over");
    EXPECT_NE(notes()[1].find("sigma-act"), std::string::npos);
    EXPECT_NE(notes()[2].find("convergence of verticals"), std::string::npos);
}

// Each observation but one a kind fits A (0 0 0), B (300 400 0) and C (-400 300 120) within tol-abs; the last is off by
// twice that.
TEST_F(Gkf, NamesWhatContradictsTheCoordinatesInTheFile)
{
    ASSERT_EQ(import("<gama-local><network><parameters tol-abs='100'/><points-observations distance-stdev='5' "
                     "direction-stdev='5' "
                     "angle-stdev='5' zenith-angle-stdev='5' azimuth-stdev='5'>\n"
                     "<point id='A' x='0' y='0' z='0' adj='xyz'/><point id='B' x='300' y='400' z='0' fix='xyz'/>"
                     "<point id='C' x='-400' y='300' z='120' fix='xyz'/><obs from='A'>\n"
                     "<distance to='B' val='500.09'/>\n<distance to='B' val='500.2'/>\n"
                     "<s-distance to='C' val='514.19841' from_dh='1' to_dh='1'/>\n<s-distance to='C' val='514.0'/>\n"
                     "<z-angle to='C' val='85.0061'/>\n<z-angle to='C' val='85.0310'/>\n"
                     "<azimuth to='B' val='59.0334'/>\n<azimuth to='B' val='59.0589'/>\n"
                     "<angle bs='B' fs='C' val='100.005'/>\n<angle bs='B' fs='C' val='100.026'/>\n"
                     "<direction to='B' val='10'/><direction to='C' val='110'/><direction to='B' val='10'/>\n"
                     "<direction to='C' val='109.974'/></obs><height-differences>\n"
                     "<dh from='A' to='C' val='120.09' stdev='1'/>\n<dh from='A' to='C' val='119.8' stdev='1'/>\n"
                     "</height-differences></points-observations></network></gama-local>"),
              Lines());
    std::vector<int> lines;
    for (const DraftNote &note : draft.notes)
        if (note.text.find("gama-local leaves it out") != std::string::npos) lines.push_back(note.at.line);
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (std::vector<int>{4, 6, 8, 10, 12, 14, 16}));
}

namespace {

class BadGkf : public Formats {
protected:
    // The faults of elements in line 3.
    Lines faults(const std::string &elements) { return network(two_fixed + elements); }
    Lines faults_of_obs(const std::string &row) { return network(two_fixed + "\n<obs from='A'>\n" + row + "</obs>"); }
};

} // namespace

TEST_F(BadGkf, SaysWhatIsWrongWithValues)
{
    const std::pair<const char *, const char *> cases[] = {
        {"<distance to='P' val='1,5' stdev='1'/>",
         "net.gkf:5:23: \"1,5\" is not a number in val; write it with a decimal point, like 1.5"},
        {"<distance to='P' val='nan' stdev='1'/>",
         "net.gkf:5:23: \"nan\" is not a finite number in val; write a number like 12.5"},
        {"<distance to='P' val='1e400' stdev='1'/>",
         "net.gkf:5:23: \"1e400\" is a number out of range in val; write a number like 12.5"},
        {"<distance to='P' val='1e13' stdev='1'/>",
         "net.gkf:5:23: \"1e13\" is too large in val; write a number up to 1e12"},
        {"<distance to='P' val='0' stdev='1'/>", "net.gkf:5:23: \"0\" is not above 0 in val; write a number above 0"},
        {"<distance to='P' val='' stdev='1'/>", "net.gkf:5:23: \"\" is not a number in val; write a number like 12.5"},
        {"<distance to='P' val='5' stdev='-1'/>",
         "net.gkf:5:33: \"-1\" is not above 0 in stdev; write a number above 0"},
        {"<distance to='P' stdev='1'/>", "net.gkf:5:1: distance has no attribute val; write the observed value"},
        {"<distance to='P' val='5'/>", "net.gkf:5:1: distance from A to P has no standard deviation; write stdev, or a "
                                       "default in points-observations"},
        {"<direction to='P' val='10-60-00' stdev='1'/>", "net.gkf:5:24: \"10-60-00\" is not degrees-minutes-seconds in "
                                                         "val; write minutes and seconds below 60, like 57-32-28.4"},
        {"<direction to='P' val='10-20' stdev='1'/>", "net.gkf:5:24: \"10-20\" is not degrees-minutes-seconds in val; "
                                                      "write minutes and seconds below 60, like 57-32-28.4"},
        {"<z-angle to='P' val='401' stdev='1'/>",
         "net.gkf:5:22: zenith angle \"401\" is not within a circle; write it from 0 to half a circle"}};
    for (const auto &[row, line] : cases) EXPECT_EQ(faults_of_obs(row), (Lines{line})) << row;
    EXPECT_FALSE(imported);
}

TEST_F(BadGkf, SaysWhatIsWrongWithEnds)
{
    const std::pair<const char *, const char *> cases[] = {
        {"<distance val='5' stdev='1'/>", "net.gkf:5:1: distance has no attribute to; name the point that was sighted"},
        {"<distance to='A' val='5' stdev='1'/>",
         "net.gkf:5:15: a point is sighted from itself or compared with itself; name different points"},
        {"<angle bs='P' fs='P' val='5' stdev='1'/>",
         "net.gkf:5:19: a point is sighted from itself or compared with itself; name different points"},
        {"<distance to=' ' val='5' stdev='1'/>", "net.gkf:5:15: empty name in to; write the id of a point"},
        {"<distance to='1234567890123456789012345678901234567890x' val='5' stdev='1'/>",
         "net.gkf:5:15: name \"1234567890123456789012345678901234567890...\" is longer than 40 characters; shorten it"},
        {"<direction from='A' to='P' val='5' stdev='1'/>", "net.gkf:5:18: unknown attribute \"from\" of direction; "
                                                           "known attributes: to, val, stdev, from_dh, to_dh, extern"},
        {"<distanc to='P' val='5' stdev='1'/>", "net.gkf:5:1: unknown element \"distanc\"; did you mean distance?"}};
    for (const auto &[row, line] : cases) EXPECT_EQ(faults_of_obs(row), (Lines{line})) << row;
    EXPECT_EQ(faults("<obs>\n<direction to='P' val='5' stdev='1'/></obs>"),
              (Lines{"net.gkf:4:1: direction has no attribute from; write from in its obs"}));
}

TEST_F(BadGkf, SaysWhatIsWrongWithPoints)
{
    const std::pair<const char *, const char *> cases[] = {
        {"<point x='1' y='2'/>", "net.gkf:3:1: point has no attribute id; name the point"},
        {"<point id='Q' x='1'/>", "net.gkf:3:18: x and y of point \"Q\" are not both given; write both or neither"},
        {"<point id='Q' adj='yx'/>",
         "net.gkf:3:20: \"yx\" is not known for adj; write one of xy, XY, z, Z, xyz, XYZ, XYz, xyZ"},
        {"<point id='Q' fix='xy'/>", "net.gkf:3:20: fixed point \"Q\" has no x and y; write them, or adj=\"xy\""},
        {"<point id='Q' fix='z'/>", "net.gkf:3:20: fixed point \"Q\" has no z; write it, or adj=\"z\""},
        {"<point id='Q' x='1' y='2' name='Q'/>",
         "net.gkf:3:33: unknown attribute \"name\" of point; known attributes: id, x, y, z, fix, adj"},
        {"<point id='Q&#x9b;' x='1' y='2'/>", "net.gkf:3:12: name \"Q\\x9B\" holds a control character; remove it"}};
    for (const auto &[text, line] : cases) EXPECT_EQ(network(text), (Lines{line})) << text;
    EXPECT_EQ(network("<point id='Q' x='1' y='2'/>"),
              (Lines{"net.gkf:1:13: no point has fix or adj; write them in the points"}));
}

TEST_F(BadGkf, SaysWhatIsWrongWithMatrices)
{
    const std::string row = "<distance to='P' val='5' stdev='1'/><distance to='B' val='5' stdev='1'/>\n";
    const std::pair<const char *, const char *> cases[] = {
        {"<cov-mat dim='3' band='0'>1 1 1</cov-mat>",
         "net.gkf:6:15: the matrix has 3 rows, its cluster 2 values; write dim=\"2\" and as many rows"},
        {"<cov-mat dim='2' band='2'>1 0 1</cov-mat>", "net.gkf:6:24: band 2 is not below 2; write at most 1"},
        {"<cov-mat dim='2' band='-1'>1 1</cov-mat>",
         "net.gkf:6:24: \"-1\" is not a whole number from 0 in band; write a whole number from 0"},
        {"<cov-mat dim='2000000000' band='1999999999'>1 1</cov-mat>",
         "net.gkf:6:15: the matrix has 2000000000 rows, its cluster 2 values; write dim=\"2\" and as many rows"},
        {"<cov-mat dim='2' band='1'>1 1</cov-mat>", "net.gkf:6:1: cov-mat has 2 elements, dim and band ask for 3; "
                                                    "write the upper triangle by rows, row i from column i to "
                                                    "i + band"},
        {"<cov-mat dim='2' band='0'>1\n\n x</cov-mat>",
         "net.gkf:8:2: \"x\" is not a number in cov-mat; write a number like 12.5"},
        {"<cov-mat dim='2' band='0'>1 0</cov-mat>", "net.gkf:5:37: variance of distance from A to B is not above 0 in "
                                                    "cov-mat; write the square of its standard deviation"},
        {"<cov-mat dim='2' band='0'>1 1</cov-mat><distance to='P' val='5'/>",
         "net.gkf:6:40: element \"distance\" stands behind cov-mat; put cov-mat last in obs"},
        {"<cov-mat band='0'>1 1</cov-mat>",
         "net.gkf:6:1: cov-mat has no attribute dim; write the number of observations"}};
    for (const auto &[text, line] : cases) EXPECT_EQ(faults_of_obs(row + text), (Lines{line})) << text;
    EXPECT_EQ(faults("<vectors><vec from='A' to='P' dx='1' dy='2' dz='3'/></vectors>"),
              (Lines{"net.gkf:3:" + std::to_string(two_fixed.size() + 10) +
                     ": vector from A to P has no standard deviation; write a cov-mat"}));
}

TEST_F(BadGkf, SaysWhatIsWrongWithTheFile)
{
    const std::string end = "<points-observations/></network></gama-local>";
    const std::pair<std::string, const char *> cases[] = {
        {"<gama-local><network axes-xy='xy'>" + end,
         "net.gkf:1:31: \"xy\" is not known for axes-xy; write one of ne, sw, es, wn, en, nw, se, ws"},
        {"<gama-local><network angles='left'>" + end,
         "net.gkf:1:30: \"left\" is not known for angles; write left-handed or right-handed"},
        {"<gama-local xmlns='http://a'><network>" + end,
         "net.gkf:1:20: the namespace is not that of gama-local; write http://www.gnu.org/software/gama/gama-local"},
        {"<gama-local/>", "net.gkf:1:1: no element network; put the points and observations into one"},
        {"<gama-local><network><pints/>" + end,
         "net.gkf:1:22: unknown element \"pints\"; known here: description, parameters, points-observations"},
        {"<gama-local><network/><network>" + end, "net.gkf:1:23: a second network; write a file for each"},
        {"<gama-local><network><parameters sigma-apr='0'/>" + end,
         "net.gkf:1:45: \"0\" is not above 0 in sigma-apr; write a number above 0"},
        {"<gama-local-adjustment/>",
         "net.gkf:1:1: the file holds results of gama-local, not a network; import the .gkf beside it"}};
    for (const auto &[text, line] : cases) {
        const Lines lines = import(text);
        ASSERT_FALSE(lines.empty()) << text;
        EXPECT_EQ(lines[0], line) << text;
    }
    const std::string unknown = "net.gkf: its format is not recognised; it can be gkf (network of GNU Gama), ";
    EXPECT_EQ(import("[run]").at(0).substr(0, unknown.size()), unknown);
    EXPECT_EQ(
        network(two_fixed + "<obs from='A'><distance to='Z' val='5' stdev='1'/></obs>"),
        (Lines{"net.gkf:1:13: no observations that can take part; write fix or adj in the points that they name"}));
}

TEST_F(BadGkf, ReportsAllFaultsInOnePass)
{
    EXPECT_EQ(
        faults_of_obs("<distance to='P' val='x' stdev='1'/>\n<direction val='1'/>\n<distance to='P' val='1'/>").size(),
        2u);
    EXPECT_EQ(network("<point id='Q' x='a' y='b' adj='q'/>").size(), 3u);
}
