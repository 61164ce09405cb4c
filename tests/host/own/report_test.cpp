// The program's own report as a surveyor reads it.

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/input/utf8.h"
#include "host/own/own_run.h"
#include "host/results/text_report.h"
#include "host/results/text_table.h"

using namespace vornhost;

namespace {

// Weights of the three lines are equal: each takes a third of the misclosure of 3 mm. Standard deviations before the
// variance factor are 10 mm times the root of 2/3, redundancies 1/3, normalised residuals 1 / (10 root 1/3).
const char loop[] = "[run]\ntitle = \"Loop\"\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\n"
                    "B 101 free\nŻółw 102 free\n'''\nheight_differences = '''\nfrom to value sigma use\n"
                    "A B 1.001 0.01 yes\nB Żółw 1.001 0.01 yes\nŻółw A -1.999 0.01 yes\nA Żółw 9 0.01 no\n'''\n";

// The limit of the closure is 3 root 3 times 10 mm.
// sigma = root of 3 (1/10)^2 / 1 = 0.17321; deviations 0.17321 * 8.16497 mm = 1.41 mm.
const char loop_report[] =
    "Loop\n"
    "====\n"
    "file       net.inp\n"
    "date       2031-05-17 08:30 UTC\n"
    "program    vorn test, solver sparse, mode statistics\n"
    "units      lengths in m, angles in gon; precision in mm and mgon\n"
    "datum      held by 1 fixed height\n"
    "precision  a posteriori, times sigma 0.1732\n"
    "\n"
    "Summary\n"
    "-------\n"
    "stations                     0\n"
    "targets                      3\n"
    "height differences           3\n"
    "height differences left out  1\n"
    "degrees of freedom           1\n"
    "iterations                   1\n"
    "\n"
    "Closures before the adjustment\n"
    "------------------------------\n"
    "Levelling: 1 closure, none beyond its limit:\n"
    "misclosure  limit  ratio  points               place\n"
    "        mm     mm\n"
    "      3.00  51.96   0.06  Żółw - A - B - Żółw  net.inp:15,13,14\n"
    "\n"
    "Points\n"
    "------\n"
    "point  code           z    dz    sz\n"
    "                      m    mm    mm\n"
    "A      fixed  100.00000\n"
    "B      free   101.00000  0.00  1.41\n"
    "Żółw   free   102.00000  0.00  1.41\n"
    "\n"
    "Height differences\n"
    "------------------\n"
    "from  to    observed  adjusted  residual  sigma  redundancy  normalised       p  detectable  bias/noise  "
    "shift  place\n"
    "                   m         m        mm     mm                                          mm             "
    "    mm\n"
    "A     B      1.00100   1.00000      1.00  10.00        0.33        0.17  0.8625       71.57         5.8  "
    "47.71  net.inp:13\n"
    "B     Żółw   1.00100   1.00000      1.00  10.00        0.33        0.17  0.8625       71.57         5.8  "
    "23.86  net.inp:14\n"
    "Żółw  A     -1.99900  -2.00000      1.00  10.00        0.33        0.17  0.8625       71.57         5.8  "
    "47.71  net.inp:15\n"
    "\n"
    "Left out\n"
    "--------\n"
    "kind                from  to    reason                place\n"
    "height differences  A     Żółw  use = no in the file  net.inp:16\n"
    "\n"
    "Tests\n"
    "-----\n"
    "sigma a priori 1.0000, a posteriori 0.1732\n"
    "test of the variance factor at level 0.05, sum of squares 0.03\n"
    "Do the observations agree with their standard deviations, neither worse nor better?\n"
    "  sum of squares expected between 0.00 and 5.02, p 0.2750: yes\n"
    "Are the observations at least as good as their standard deviations say?\n"
    "  sum of squares expected up to 3.84, p 0.8625: yes\n"
    "Baarda's test at level 0.001, power 0.8: 3 tested, 0 suspicious (normalised residual beyond "
    "3.29), 0 not checked (redundancy below 0.01)\n"
    "\n"
    "kind               a priori  a posteriori  goodness of fit  suspicious  not checked\n"
    "height difference    1.0000        0.1732  passed                    0            0\n"
    "\n"
    "Weakest pairs of neighbours\n"
    "---------------------------\n"
    "from  to    within, 95 %  distance   ratio\n"
    "                      mm         m     ppm\n"
    "A     B             2.77   1.00000  2771.8\n"
    "A     Żółw          2.77   2.00000  1385.9\n"
    "B     Żółw          2.77   1.00000  2771.8\n"
    "\n"
    "Verdict\n"
    "-------\n"
    "Adjusted. The observations agree with their standard deviations: sigma 0.173.\n"
    "No observation is suspicious.\n"
    "Every observation is checked by others.\n";

std::string report_of(const std::string &text)
{
    const SolvedNetwork solved = solve_text(text);
    return text_report(solved.results(), "2031-05-17 08:30 UTC");
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

Lines lines_of(const std::string &text)
{
    Lines all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

Lines last_three(const std::string &text)
{
    const Lines all = lines_of(text);
    return {all.end() - 3, all.end()};
}

} // namespace

TEST(OwnReport, SaysEverythingOfALoopWorkedOutByHand) { EXPECT_EQ(report_of(loop), loop_report); }

TEST(OwnReport, GoesWhereTheRunIsToldWithTheDayOfTheRun)
{
    std::string report = solve_text(loop).report;
    const size_t date = report.find("date       2");
    ASSERT_NE(date, std::string::npos);
    EXPECT_EQ(report.replace(date + 11, 20, "2031-05-17 08:30 UTC"), loop_report);
}

// The wrong height difference is 50 mm off; the other lines of the two loops are right.
TEST(OwnReport, EndsWithTheObservationToLookAt)
{
    const std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n"
                             "C 102 free\n'''\nheight_differences = '''\nfrom to value sigma\nA B 1 0.001\n"
                             "A B 1 0.001\nB C 1 0.001\nB C 1 0.001\nA C 2.05 0.001\nA C 2 0.001\nA C 2 0.001\n'''\n";
    const Lines end = last_three(report_of(text));
    EXPECT_EQ(end[0].find("Adjusted. The observations do not agree with their standard deviations: sigma "), 0u)
        << end[0];
    EXPECT_NE(end[1].find("height difference A to C (net.inp:16), normalised residual "), std::string::npos) << end[1];
    EXPECT_NE(report_of(text).find("suspicious  net.inp:16\n"), std::string::npos);
    EXPECT_NE(report_of(text).find("p <0.0001: no\n"), std::string::npos); // a sum of squares of 2500 and more
}

TEST(OwnReport, EndsWithWhyANetworkIsRefused)
{
    const std::string text = "[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                             "C 0 9 fixed\nP 9 5 free\nB 10 0 free\n'''\ndistances = '''\nfrom to value sigma\n"
                             "A P 10.296 0.001\nC P 9.849 0.001\nA B 10 0.001\n'''\n";
    const Lines end = last_three(report_of(text));
    EXPECT_EQ(end[0], "Not adjusted: undetermined.");
    EXPECT_EQ(end[2], "There are no results.");
    EXPECT_EQ(end[1].find("B can move along y: it has one distance only"), 0u) << end[1];
}

// Repeated height differences that differ by 0.1 mm, written with standard deviations of 1 m.
TEST(OwnReport, TellsResidualsThatAreTooSmallFromThoseThatAreTooLarge)
{
    std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n'''\n"
                       "height_differences = '''\nfrom to value sigma\n";
    for (int i = 0; i < 6; i++) text += i % 2 ? "A B 1.0001 1\n" : "A B 1.0000 1\n";
    const Lines end = last_three(report_of(text + "'''\n"));
    EXPECT_EQ(end[0].find("Adjusted. The observations are better than their standard deviations say: sigma 0.000"), 0u)
        << end[0];
}

// A and Q stand in one place: the distance between them has no derivative.
TEST(OwnReport, NamesObservationsWithoutADerivativeAmongThoseLeftOut)
{
    const std::string text = report_of("[run]\ndimension = 2\n[tables]\ntargets = '''\nname x y code\nA 0 0 fixed\n"
                                       "Q 0 0 fixed\nB 100 0 fixed\nC 0 100 fixed\nP 50 50 free\n'''\n"
                                       "distances = '''\nfrom to value sigma\nA Q 1 0.01\nA P 70.71 0.01\n"
                                       "B P 70.71 0.01\nC P 70.71 0.01\n'''\n");
    EXPECT_NE(text.find("distances left out  1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("its ends stand in one place or straight above one another  net.inp:14\n"), std::string::npos)
        << text;
}

TEST(OwnReport, ClaimsNothingOfObservationsThatNothingTests)
{
    std::string text = loop;
    const size_t at = text.find("dimension");
    for (const char *mode : {"solution", "propagation"}) {
        const Lines end = last_three(report_of(std::string(text).insert(at, "mode = \"" + std::string(mode) + "\"\n")));
        EXPECT_EQ(end[0],
                  std::string(mode == std::string("solution") ? "Adjusted." : "Precision of a planned network.") +
                      " No tests in this mode.");
        EXPECT_EQ(end[1], "No observation was tested.");
        EXPECT_EQ(end[2], mode == std::string("solution") ? "Not examined: which observations others check."
                                                          : "Every observation is checked by others.");
    }
    const size_t tie = text.find("Żółw A");
    text.replace(tie, text.find('\n', tie) - tie + 1, "");
    const Lines end = last_three(report_of(text));
    EXPECT_EQ(end[0], "Adjusted. Nothing checks the observations: no redundancy.");
    EXPECT_EQ(end[1], "No observation was tested.");
    EXPECT_EQ(end[2].find("2 of 2 observations are not checked by others, the first: "), 0u) << end[2];
    text = loop;
    text.insert(text.find("[tables]"), "[tests]\ntest = \"tau\"\n");
    EXPECT_NE(report_of(text).find(": no observation was tested: with one degree of freedom every tau is 1\n"),
              std::string::npos);
}

// Planned: 10 mm times the root of 2/3 for both points, whatever the values.
TEST(OwnReport, GivesThePrecisionOfAPlannedNetwork)
{
    std::string text = loop;
    const std::string report = report_of(text.insert(text.find("dimension"), "mode = \"propagation\"\n"));
    EXPECT_NE(report.find("B      free   101.00000  8.16\n"), std::string::npos) << report;
    EXPECT_EQ(report.find("observed"), std::string::npos) << report;
}

// A redundancy number needs no values: each line of the loop has a third, whatever stands there.
TEST(OwnReport, GivesTheRedundancyOfPlannedObservations)
{
    std::string text = loop;
    text.replace(text.find("-1.999"), 6, "77.777");
    const SolvedNetwork solved = solve_text(text.insert(text.find("dimension"), "mode = \"propagation\"\n"));
    ASSERT_EQ(solved.results().residuals.size(), 3u);
    for (const ResidualResult &r : solved.results().residuals) {
        EXPECT_NEAR(r.redundancy.value(), 1.0 / 3.0, 1e-12) << r.from;
        EXPECT_FALSE(r.normalised || r.adjusted || r.normal) << r.from;
    }
    EXPECT_TRUE(
        contains(text_report(solved.results(), ""), "sigma  redundancy  detectable  bias/noise  shift  place\n"));
}

// A camera 100 m above five points; Q stands beside it, where the projection has no place.
TEST(OwnReport, AccountsForImagePointsThatAreLeftOut)
{
    const Folder folder;
    const InFolder inside(folder.path);
    std::string targets, lines;
    const int xy[5][2] = {{10, 0}, {-20, 10}, {0, 30}, {-10, -25}, {30, 20}};
    for (int i = 0; i < 5; i++) {
        const std::string name = "P" + std::to_string(i), blanks = "      ";
        targets += name + " " + std::to_string(xy[i][0]) + " " + std::to_string(xy[i][1]) + " 0 fixed\n";
        lines += name + blanks + " " + std::to_string(500 - 10 * xy[i][0]) + " " + std::to_string(500 - 10 * xy[i][1]) +
                 "\n";
    }
    folder.write("i.txt", lines + "Q        700 500\n");
    folder.write("net.inp",
                 "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code levelled\nC 0 0 100 fixed no\n'''\n"
                 "targets = '''\nname x y z code\nQ 5 0 100 fixed\n" +
                     targets +
                     "'''\ncameras = '''\nname width height pu pv c\ncam 1000 1000 1 1 1000\n'''\n"
                     "images = '''\nfile station camera\ni.txt C cam\n'''\n");
    const SolvedNetwork solved = solve_file("net.inp");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const Account &points = solved.results().accounts.back();
    EXPECT_EQ(points.kind, "image points");
    EXPECT_EQ(points.read, 6);
    EXPECT_EQ(points.used, 5);
    ASSERT_EQ(points.left_out.size(), 1u);
    EXPECT_EQ(points.left_out[0].file, folder.file("i.txt"));
    EXPECT_EQ(points.left_out[0].line, 6);
    EXPECT_EQ(points.left_out[0].to, "Q");
    EXPECT_EQ(points.left_out[0].reason, "the point stands in the plane of the camera, across its axis");
}

// The circle of an instrument that measured vertical angles alone has no orientation.
TEST(OwnReport, ListsNoOrientationThatNobodyRead)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nS 0 0 0 fixed\nT 0 50 0 fixed\n'''\n"
        "targets = '''\nname x y z code_x code_y code_z\nP 100 0 0 fixed fixed free\n'''\n"
        "vertical_angles = '''\nfrom to value sigma\nS P 100 0.002\n'''\n"
        "directions = '''\nfrom to value sigma\nT S 0 0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    ASSERT_EQ(solved.results().orientations.size(), 1u);
    EXPECT_EQ(solved.results().orientations[0].name, "T");
}

TEST(OwnReport, WritesInTheUnitsOfTheFile)
{
    const std::string text = "[run]\ndimension = 1\n[units]\nlength = \"mm\"\n[tables]\ntargets = '''\nname z code\n"
                             "A 100 fixed\nB 101 free\n'''\nheight_differences = '''\nfrom to value sigma\n"
                             "A B 1.002 0.002\nA B 1.004 0.002\n'''\n";
    const std::string report = report_of(text);
    EXPECT_NE(report.find("units      lengths in mm, angles in gon; precision in um and mgon\n"), std::string::npos);
    // Mean 1.003 mm; sigma 1 um / 2 um times the root of 2; its deviation half of 2 um.
    EXPECT_NE(report.find("B      free   101.003  3.00  1.00\n"), std::string::npos) << report;
}

// Zenith angles: the residual counts as they do, observed less adjusted.
TEST(OwnReport, TurnsResidualsOfZenithAnglesAround)
{
    const std::string text = "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nS 0 0 0 fixed\n'''\n"
                             "targets = '''\nname x y z code_x code_y code_z\nP 100 0 0 fixed fixed free\n'''\n"
                             "vertical_angles = '''\nfrom to value sigma\nS P 100.004 0.002\nS P 100.000 0.002\n'''\n";
    const std::string report = report_of(text);
    EXPECT_NE(report.find("S     P   100.00400  100.00200     2.000"), std::string::npos) << report;
    EXPECT_NE(report.find("S     P   100.00000  100.00200    -2.000"), std::string::npos) << report;
}

// Two columns for a character of East Asia, none for a mark that joins the one before.
TEST(TextTables, AlignNamesOfAnyScript)
{
    TextTable table({{"name", "", Align::left}, {"n", ""}});
    for (const char *name : {"P", "Ö1", "点1", "e\xCC\x81t"}) table.add({name, "1"});
    for (const std::string &line : lines_of(table.text())) EXPECT_EQ(utf8_width(line), 7u) << line;
    EXPECT_EQ(utf8_width("点1"), 3u);
    EXPECT_EQ(utf8_width("e\xCC\x81t"), 2u);
    EXPECT_EQ(table.text(), "name  n\nP     1\nÖ1    1\n点1   1\ne\xCC\x81t    1\n");
}

TEST(TextTables, LeaveOutColumnsWithoutText)
{
    TextTable table({{"a", "", Align::left}, {"b", "mm"}, {"c", "mm"}});
    table.add({"x", "", "1.5"});
    EXPECT_EQ(table.text(), "a    c\n    mm\nx  1.5\n");
}
