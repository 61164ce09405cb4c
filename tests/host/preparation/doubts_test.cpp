// Lines on what looks wrong before the adjustment: each where it is true, and none where it is not.

#include <algorithm>
#include <cmath>
#include <sstream>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

// Notes that are not of the first coordinates.
std::string notes_of(const std::string &text)
{
    std::string all;
    const SolvedNetwork solved = solve_text(text);
    for (const std::string &note : solved.results().notes)
        if (note.find(" were computed") == std::string::npos && note.find(" was computed") == std::string::npos)
            all += note + "\n";
    return all;
}

std::string levels(const std::string &rows)
{
    return "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\nC 102 free\n'''\n"
           "height_differences = '''\nfrom to value sigma id\n" +
           rows + "'''\n";
}

// Four points around a station; the coordinates of each may be replaced.
struct Star {
    std::string a = "0 100", b = "100 0", c = "0 -100", d = "-100 0", unit = "gon", more_sights;
    std::string directions = "S A 100 0.001\nS B 0 0.001\nS C 300 0.001\nS D 200 0.001\n";
    std::string distances = "S A 100 0.01\nS B 100 0.01\nS C 100 0.01\nS D 100 0.01\nA B 141.421 0.01\n"
                            "B C 141.421 0.01\nC D 141.421 0.01\nD A 141.421 0.01\n";

    std::string text() const
    {
        return "[run]\ndimension = 2\n[units]\nangle = \"" + unit +
               "\"\n[tables]\nstations = '''\nname x y code\nS 0 0 free\n'''\ntargets = '''\nname x y code\nA " + a +
               " free\nB " + b + " free\nC " + c + " free\nD " + d + " free\n'''\ndirections = '''\n" +
               "from to value sigma\n" + directions + more_sights + "'''\ndistances = '''\nfrom to value sigma\n" +
               distances + "'''\n";
    }
};

} // namespace

TEST(Doubts, AreNoneInARightNetwork)
{
    EXPECT_EQ(notes_of(Star().text()), "");
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 -\nB C 1 0.001 -\nA C 2 0.001 -\n")), "");
}

TEST(Doubts, NameARowThatRepeatsAnother)
{
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 -\nB C 1 0.001 -\nA B 1.001 0.001 -\nA C 2 0.001 -\n")),
              "net.inp:14: height difference A to B has the value and the standard deviation of net.inp:12; "
              "if it is a copy, leave one out\n");
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 -\nB C 1 0.001 -\nB A -1.001 0.001 -\nA C 2 0.001 -\n")), "");
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 1\nB C 1 0.001 2\nA B 1.001 0.001 3\nA C 2 0.001 4\n")), "");
}

TEST(Doubts, CountWhatTheyDoNotName)
{
    std::string rows = "B C 1 0.001 -\n";
    for (int i = 0; i < 9; i++) rows += "A B 1.001 0.001 -\n";
    const std::string notes = notes_of(levels(rows));
    EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 6);
    EXPECT_NE(notes.find("and 3 more rows that repeat others\n"), std::string::npos) << notes;
}

TEST(Doubts, AskForValuesAndSigmasThatAreExchanged)
{
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 -\nB C 0.001 1.004 -\nB C 1 0.001 -\n")),
              "net.inp:13: height difference B to C has a standard deviation of 1.004 m beside a value of 0.001 m; are "
              "the two exchanged?\n");
    EXPECT_EQ(notes_of(levels("A B 1.001 0.001 -\nB C 0.001 0.004 -\nB C 1 0.001 -\n")), "");
    Star star;
    star.distances.replace(0, 12, "S A 0.01 100");
    const std::string notes = notes_of(star.text());
    EXPECT_EQ(notes.substr(0, notes.find('\n')),
              "net.inp:26: distance S to A has a standard deviation of 100 m beside a value of 0.010 m; are the two "
              "exchanged?");
}

TEST(Doubts, NameSigmasThatAKindCannotHave)
{
    Star star;
    star.directions.replace(star.directions.find("0.001"), 5, "5    ");
    EXPECT_EQ(notes_of(star.text()), "net.inp:19: direction S to A has a standard deviation of 5 gon, above 1.273 gon; "
                                     "is its unit right?\n");
    EXPECT_EQ(notes_of(levels("A B 1.001 1e-9 -\nB C 1 0.001 -\nA C 2 0.001 -\n")),
              "net.inp:12: height difference A to B has a standard deviation of 1e-09 m, below 1e-07 m; is its unit "
              "right?\n");
    EXPECT_EQ(notes_of(levels("A B 1.001 1 -\nB C 1 1 -\nA C 2 1 -\n")), "");
}

TEST(Doubts, NameReadingsBeyondACircle)
{
    Star star;
    star.unit = "degree";
    star.directions = "S A 90 0.001\nS B 0 0.001\nS C 270 0.001\nS D 180 0.001\n";
    EXPECT_EQ(notes_of(star.text()), "");
    star.directions = "S A 90 0.001\nS B 0 0.001\nS C 270 0.001\nS D 399 0.001\n";
    const std::string notes = notes_of(star.text());
    EXPECT_EQ(notes.substr(0, notes.find('\n')),
              "net.inp:22: direction S to D reads 399.0000, more than a full circle; is the file in gon?");
    star.directions = "S A 90 0.001\nS B 359.9999 0.001\nS C 270 0.001\nS D 180 0.001\n";
    EXPECT_EQ(notes_of(star.text()), "");
}

TEST(Doubts, NameARowThatTheCoordinatesContradict)
{
    Star star;
    star.distances.replace(star.distances.find("S A 100 "), 8, "S A 130 ");
    EXPECT_EQ(notes_of(star.text()), "net.inp:26: distance S to A reads 130.000 m, but 100.000 m by the first "
                                     "coordinates\n");
    Star near;
    near.distances.replace(near.distances.find("S A 100 "), 8, "S A 109 "); // less than a tenth
    EXPECT_EQ(notes_of(near.text()), "");
    Star turned;
    turned.directions.replace(turned.directions.find("S A 100 "), 8, "S A 110 ");
    EXPECT_EQ(notes_of(turned.text()), "net.inp:19: direction S to A reads 110.0000 gon, but 100.0000 gon by the first "
                                       "coordinates\n");
}

TEST(Doubts, NameAPointWhoseObservationsContradictIt)
{
    Star star;
    star.a = "0 1000"; // for 0 100
    const std::string notes = notes_of(star.text());
    EXPECT_EQ(notes, "net.inp:12: 3 of 4 observations of A contradict its coordinates; are names or axes exchanged, or "
                     "is a digit wrong?\n");
}

TEST(Doubts, SayOnceThatCoordinatesContradictNearlyAll)
{
    Star star;
    star.a = "0 1000", star.b = "1000 0", star.c = "0 -1000", star.d = "-1000 0";
    const std::string notes = notes_of(star.text());
    EXPECT_EQ(notes.rfind("the first coordinates contradict 8 of 12 observations", 0), 0U) << notes;
    EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 1);
}

TEST(Doubts, DoNotComparePointsThatWereComputed)
{
    Star star;
    star.a = "- -";
    star.distances.replace(star.distances.find("S A 100 "), 8, "S A 130 ");
    EXPECT_EQ(notes_of(star.text()).find("by the first coordinates"), std::string::npos);
}

namespace {

// Slopes from S, 40 m up over 100 m; some reduced to the horizontal by whoever wrote the file.
std::string slopes(int reduced, double error)
{
    std::ostringstream text;
    text.precision(9);
    text << "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nS 0 0 0 fixed\n'''\ntargets = '''\n"
            "name x y z code\n";
    for (int i = 0; i < 6; i++)
        text << "P" << i << " " << 100 * std::cos(i) + error * std::sin(7 * i) << " " << 100 * std::sin(i)
             << " 40 free\n";
    text << "'''\ndistances = '''\nfrom to value sigma\n";
    for (int i = 0; i < 6; i++) text << "S P" << i << " " << (i < reduced ? 100.0 : std::hypot(100, 40)) << " 0.01\n";
    text << "'''\ndirections = '''\nfrom to value sigma\n";
    for (int i = 0; i < 6; i++) text << "S P" << i << " " << std::fmod(i * 200 / std::acos(-1.0), 400) << " 0.001\n";
    text << "'''\nheight_differences = '''\nfrom to value sigma\n";
    for (int i = 0; i < 6; i++) text << "S P" << i << " 40 0.01\n";
    return text.str() + "'''\n[earth]\n";
}

} // namespace

TEST(Doubts, NameDistancesInSpaceThatLookHorizontal)
{
    EXPECT_EQ(notes_of(slopes(0, 0)), "");
    EXPECT_EQ(
        notes_of(slopes(1, 0.1)),
        "net.inp:19: distance S to P0 reads 100.000 m, but its slope by the first coordinates is 107.703 m; if it "
        "was reduced to the horizontal, it belongs to horizontal_distances\n");
    const std::string all = notes_of(slopes(6, 0.1));
    EXPECT_NE(all.find("and 1 more distances that look horizontal"), std::string::npos) << all;
    EXPECT_EQ(notes_of(slopes(1, 8)), ""); // coordinates that are too rough to tell
}
