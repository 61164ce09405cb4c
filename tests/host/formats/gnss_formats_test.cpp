// SINEX and GVX as drafts, and the results of adjustments in SINEX, LandXML and lists of points.

#include <cmath>
#include <ctime>

#include "host/earth/reference.h"
#include "host/formats/export.h"
#include "host/own/own_run.h"
#include "imported.h"

using namespace vornhost;

namespace {

const std::string snx_head = "%=SNX 2.02 VRN 24:032:00000 VRN 24:030:00000 24:031:00000 C 00003 2 S\n";

const std::string estimates = "+SOLUTION/ESTIMATE\n"
                              "*INDEX TYPE__ CODE PT SOLN _REF_EPOCH__ UNIT S __ESTIMATED VALUE____ _STD_DEV___\n"
                              "     1 STAX   ALFA  A    1 24:030:43200 m    2 0.426450000000000E+07 0.10000E-02\n"
                              "     2 STAY   ALFA  A    1 24:030:43200 m    2 .7904000000000000E+06 0.20000E-02\n"
                              "     3 VELX   ALFA  A    1 24:030:43200 m/y  2 0.100000000000000E-01 0.10000E-02\n"
                              "     4 STAZ   ALFA  A    1 24:030:43200 m    2 0.466020000000000E+07 0.30000E-02\n"
                              "-SOLUTION/ESTIMATE\n";

const std::string covariance = "+SOLUTION/MATRIX_ESTIMATE L COVA\n"
                               "     1     1 0.100000000000000E-05\n"
                               "     2     1 0.100000000000000E-06 0.400000000000000E-05\n"
                               "     3     1 0.500000000000000E-06 0.700000000000000E-06 0.100000000000000E-05\n"
                               "     4     1 0.200000000000000E-06 0.300000000000000E-06 0.800000000000000E-06\n"
                               "     4     4 0.900000000000000D-05\n"
                               "-SOLUTION/MATRIX_ESTIMATE L COVA\n";

class Sinex : public Formats {
protected:
    void SetUp() override {}
    Lines sinex(const std::string &text) { return import(snx_head + text + "%ENDSNX\n", "net.snx"); }
};

class Gvx : public Formats {
protected:
    Lines gvx(const std::string &vectors, const std::string &points = both)
    {
        return import("<GVX VERSION=\"1.0\">" + points + vectors + "</GVX>", "net.xml");
    }
    static const std::string both;

    static std::string vector(const std::string &id, const std::string &dx, const std::string &pxy = "-0.4")
    {
        return "<GNSS_VECTOR><ID>" + id + "</ID><INITIAL_POINT_ID>1</INITIAL_POINT_ID><TERMINAL_POINT_ID>2" +
               "</TERMINAL_POINT_ID><ECEF_DELTAS><DX>" + dx + "</DX><DY>100</DY><DZ>40</DZ></ECEF_DELTAS>" +
               "<CORRELATION_MATRIX><SDX>0.003</SDX><SDY>0.006</SDY><SDZ>0.005</SDZ><PXY>" + pxy +
               "</PXY><PXZ>0.3</PXZ><PYZ>-0.6</PYZ></CORRELATION_MATRIX></GNSS_VECTOR>\n";
    }
};

const std::string Gvx::both =
    "<REFERENCE_SYSTEM><ID>126</ID><LINEAR_UNIT><NAME>meters</NAME></LINEAR_UNIT></REFERENCE_SYSTEM>\n"
    "<POINT><ID>1</ID><NAME>ALFA</NAME><COORDINATES><REFERENCE_SYSTEM_ID>126</REFERENCE_SYSTEM_ID>"
    "<GEOCENTRIC_COORDINATES><X>1000000</X><Y>-4800000</Y><Z>4050000</Z></GEOCENTRIC_COORDINATES></COORDINATES></"
    "POINT>\n"
    "<POINT><ID>2</ID><NAME>BETA</NAME><COORDINATES><REFERENCE_SYSTEM_ID>126</REFERENCE_SYSTEM_ID>"
    "<GEODETIC_COORDINATES><LATITUDE>0</LATITUDE><LONGITUDE>90</LONGITUDE><ELLIPSOIDAL_HEIGHT>10</ELLIPSOIDAL_HEIGHT>"
    "</GEODETIC_COORDINATES></COORDINATES></POINT>\n";

// Three points around a triangle of vectors in geocentric coordinates, one of them held.
const std::string geocentric_network = R"([run]
dimension = 3
[tables]
targets = """
name   x         y         z         code
A      4264500   790400    4660200   fixed
B      4264800   790500    4660000   free
CHARLY 4264400   790900    4660200   free
"""
baselines = """
from to     dx       dy      dz       cxx  cyy  czz  cxy  cxz  cyz
A    B      300.002  100.001 -200.003 4e-6 5e-6 6e-6 1e-6 0    2e-6
A    CHARLY -100.001 500.002 0.004    4e-6 5e-6 6e-6 1e-6 0    2e-6
B    CHARLY -400.008 400.006 200.002  4e-6 5e-6 6e-6 1e-6 0    -1e-6
"""
)";

} // namespace

TEST_F(Sinex, TakesPositionsWithTheirCovarianceAndStrikesTheRest)
{
    EXPECT_EQ(sinex(estimates + covariance), Lines());
    ASSERT_EQ(rows(DraftKind::coordinates).size(), (size_t)1);
    EXPECT_EQ(*rows(DraftKind::coordinates)[0].value[1], 790400.0);
    const std::vector<double> expected = {1e-6, 1e-7, 2e-7, 4e-6, 3e-7, 9e-6};
    EXPECT_EQ(draft.covariances[0].elements, expected);
    EXPECT_EQ(notes(), Lines({"net.snx:6: 1 parameters VELX is left out: the network has coordinates of stations only",
                              "net.snx: observations read 4 = taken 3 + left out 1"}));
    const SolvedNetwork solved = solve_text(write_network(draft).text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("ALFA").deviation[2], 0.003, 1e-12);
}

TEST_F(Sinex, MakesCovariancesOfCorrelationsWithDeviationsOnTheDiagonal)
{
    EXPECT_EQ(sinex(estimates + "+SOLUTION/MATRIX_ESTIMATE L CORR\n"
                                "     1     1 0.100000000000000E-02\n"
                                "     2     1 0.500000000000000E+00 0.200000000000000E-02\n"
                                "     4     4 0.300000000000000E-02\n"
                                "-SOLUTION/MATRIX_ESTIMATE L CORR\n"),
              Lines());
    const std::vector<double> &found = draft.covariances[0].elements;
    const std::vector<double> expected = {1e-6, 1e-6, 0, 4e-6, 0, 9e-6};
    for (size_t i = 0; i < 6; i++) EXPECT_NEAR(found[i], expected[i], 1e-20) << i;
}

TEST_F(Sinex, FindsAllFaultsInOnePass)
{
    EXPECT_EQ(import(snx_head + "+SOLUTION/ESTIMATE\n     x STAX   ALFA  A    1 24:030:43200 m    2 abc                "
                                "   0.10000E-02\n",
                     "net.snx"),
              Lines({"net.snx:3:2: \"x\" is not a number of a parameter; write a whole number above 0",
                     "net.snx:3:48: \"abc\" is not a number for the estimate; write it in columns 48 to 68",
                     "net.snx:4:1: the file ends without %ENDSNX; it is cut: take the whole file"}));
    EXPECT_EQ(sinex(""), Lines({"net.snx:1:1: the file has no coordinates of stations; it needs STAX, STAY and STAZ in "
                                "SOLUTION/ESTIMATE"}));
}

TEST_F(Gvx, TakesVectorsBetweenPointsInMetres)
{
    EXPECT_EQ(gvx(vector("V1", "300.002")), Lines());
    const DraftRow &row = rows(DraftKind::baseline).at(0);
    EXPECT_EQ(row.from + row.to + row.id, "ALFABETAV1");
    EXPECT_NEAR(*row.product[0], 9e-6, 1e-18);
    EXPECT_NEAR(*row.product[3], -0.4 * 0.003 * 0.006, 1e-18);
    EXPECT_NEAR(*row.product[5], -0.6 * 0.006 * 0.005, 1e-18);
    EXPECT_NEAR(*draft.points[1].value[1], 6378147.0, 1e-4);
    EXPECT_TRUE(solve_text(write_network(draft).text).adjusted());
}

TEST_F(Gvx, TiesTheVectorsOfASession)
{
    EXPECT_EQ(gvx(vector("V1", "300") + vector("V2", "300") +
                  "<SESSION ID=\"s\"><CROSS_CORRELATION_MATRIX><CCM_BLOCK VECTOR_ID_ROW=\"V1\" "
                  "VECTOR_ID_COL=\"V2\"><CORRELATIONS>"
                  "0.5, 0.1,0,0,0,0, 0,0,0</CORRELATIONS></CCM_BLOCK></CROSS_CORRELATION_MATRIX></SESSION>"),
              Lines());
    ASSERT_EQ(draft.covariances.size(), (size_t)1);
    EXPECT_NEAR(draft.covariances[0].elements[3], 0.5 * 9e-6, 1e-18);
    EXPECT_NEAR(draft.covariances[0].elements[4], 0.1 * 0.003 * 0.006, 1e-18);
    EXPECT_EQ(rows(DraftKind::baseline)[1].covariance, draft.covariances[0].name);
    EXPECT_FALSE(rows(DraftKind::baseline)[1].product[0]);
}

TEST_F(Gvx, SaysWhatIsWrong)
{
    const Lines lines =
        gvx(vector("V1", "x") + vector("V2", "1", "-1.1"), "<POINT><ID>1</ID></POINT><POINT><ID>2</ID></POINT>\n");
    ASSERT_EQ(lines.size(), (size_t)2);
    EXPECT_NE(lines[0].find("\"x\" is not a number in DX"), std::string::npos) << lines[0];
    EXPECT_EQ(lines[1], "net.xml:3:1: the covariance of the vector from \"1\" to \"2\" is not positive definite; check "
                        "its variances and covariances");
}

// The covariance of SINEX comes back as that of observed coordinates.
TEST_F(Sinex, HoldsWhatWasExported)
{
    Model model = model_of(geocentric_network);
    model.covariance_points = {"A", "B", "CHARLY"};
    const SolvedNetwork solved = solve(model);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    std::vector<std::string> lines;
    Faults faults;
    faults.add_file("net.inp");
    const std::string text = export_results(solved.results(), Target::sinex, 1711893845, lines, faults);
    EXPECT_EQ(faults.lines(), Lines());
    EXPECT_EQ(lines, Lines({"1 points are held in a coordinate, or have not three, and are left out"}));
    EXPECT_EQ(text.substr(0, 30), "%=SNX 2.02 VRN 24:091:50645 VR");
    for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) EXPECT_LE(text.find('\n', at) - at, (size_t)80);
    EXPECT_EQ(import(text, "net.snx"), Lines());
    const SolvedNetwork again = solve_text(write_network(draft).text);
    ASSERT_TRUE(again.adjusted()) << again.words();
    for (const auto &[name, code] : {std::pair("B", "B"), std::pair("CHARLY", "0001")})
        for (int axis = 0; axis < 3; axis++) {
            EXPECT_NEAR(*again.point(code).adjusted[axis], *solved.point(name).adjusted[axis], 1e-8) << name;
            EXPECT_NEAR(*again.point(code).deviation[axis], *solved.point(name).deviation[axis], 1e-9) << name;
        }
}

TEST_F(Sinex, StandsBesideLandXmlAndListsOfPoints)
{
    Model model = model_of(
        "[run]\ndimension = 2\n[tables]\ntargets = \"\"\"\nname x y code\nA 100 200 fixed\n\"B, 1\" 150 200 free\n"
        "\"\"\"\ncoordinates = \"\"\"\nname x y sx sy\n\"B, 1\" 150.25 200.5 0.01 0.02\n\"\"\"\n");
    const SolvedNetwork solved = solve(model);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    std::vector<std::string> lines;
    Faults faults;
    faults.add_file("net.inp");
    EXPECT_EQ(export_results(solved.results(), Target::points, 0, lines, faults),
              "Name,East,North,Height\r\nA,200.0000,100.0000,\r\n\"B, 1\",200.5000,150.2500,\r\n");
    const std::string xml = export_results(solved.results(), Target::landxml, 0, lines, faults);
    EXPECT_NE(xml.find("<CgPoint name=\"A\">100 200</CgPoint>"), std::string::npos) << xml;
    EXPECT_NE(xml.find(">150.25 200.5</CgPoint>"), std::string::npos) << xml;
}

TEST_F(Gvx, ComesBackFromDynaml)
{
    Model model = model_of(geocentric_network);
    std::vector<std::string> lines;
    Faults faults;
    faults.add_file("net.inp");
    const std::string text = export_network(model, Target::dynaml, lines, faults);
    EXPECT_EQ(faults.lines(), Lines());
    EXPECT_EQ(import(text, "net.xml"), Lines());
    const SolvedNetwork first = solve_text(geocentric_network), again = solve_text(write_network(draft).text);
    ASSERT_TRUE(first.adjusted() && again.adjusted());
    for (const char *name : {"B", "CHARLY"})
        for (int axis = 0; axis < 3; axis++)
            EXPECT_NEAR(*first.point(name).adjusted[axis], geocentric_of(again.point(name), (size_t)axis), 1e-8)
                << name;
    EXPECT_NEAR(first.results().variance_test->squares, again.results().variance_test->squares, 1e-9);

    // What was read has a projection, and is written in geocentric coordinates again.
    if (!has_proj()) return;
    Model projected = model_of(write_network(draft).text);
    ASSERT_TRUE(projected.crs.given());
    const std::string once_more = export_network(projected, Target::dynaml, lines, faults);
    EXPECT_EQ(faults.lines(), Lines());
    EXPECT_EQ(import(once_more, "more.xml"), Lines());
    const SolvedNetwork third = solve_text(write_network(draft).text);
    ASSERT_TRUE(third.adjusted()) << third.words();
    for (const char *name : {"B", "CHARLY"})
        for (size_t axis = 0; axis < 3; axis++)
            EXPECT_NEAR(geocentric_of(third.point(name), axis), geocentric_of(again.point(name), axis), 1e-8) << name;
    EXPECT_NEAR(third.results().variance_test->squares, again.results().variance_test->squares, 1e-9);
}
