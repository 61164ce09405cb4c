// Tables that only the program's own adjustment takes, and what any row says beside its values.

#include <cmath>

#include "host/folder.h"

using namespace vornhost;

namespace {

const char head[] = "[run]\ndimension = 3\n[units]\nlength = \"mm\"\nangle = \"degree\"\n[tables]\n"
                    "stations = '''\nname x y z\nS 1 2 3\n'''\ntargets = '''\nname x y z\nA 1 1 1\nB 2 2 2\n'''\n";
const double degree = std::atan(1.0) / 45.0;

std::string table(const std::string &name, const std::string &rows) { return name + " = '''\n" + rows + "'''\n"; }

Lines faults(const std::string &name, const std::string &rows) { return faults_of(head + table(name, rows)); }

} // namespace

TEST(FieldTables, HoldMetresAndRadiansAndNumbersOfPoints)
{
    const Model m = model_of(head + table("angles", "at from to value sigma\nS A B 90 0.01\n") +
                             table("horizontal_distances", "from to value sigma use\nA B 5000 2 no\n") +
                             table("bearings", "from to value sigma\nB S 45 0.02\n") +
                             table("scale_bars", "from to value sigma\nA S 1000 0.1\n") +
                             table("coordinates", "name x y z sx sy sz\nB 1000 - 3000 1 - 3\n") +
                             table("coordinate_differences", "from to dx dy dz sx sy sz\nA B - 20 - - 2 -\n"));
    const SightRow &angle = m.angles.records[0];
    EXPECT_EQ(angle.from, 0); // at
    EXPECT_EQ(angle.to, 1);
    EXPECT_EQ(angle.third, 2);
    EXPECT_NEAR(angle.value, 90 * degree, 1e-15);
    EXPECT_NEAR(angle.sigma, 0.01 * degree, 1e-18);
    EXPECT_EQ(m.horizontal_distances.records[0].value, 5.0);
    EXPECT_EQ(m.horizontal_distances.records[0].sigma, 0.002);
    EXPECT_FALSE(m.horizontal_distances.records[0].use);
    EXPECT_EQ(m.bearings.records[0].from, 2);
    EXPECT_NEAR(m.scale_bars.records[0].sigma, 1e-4, 1e-18);
    const VectorRow &point = m.coordinates.records[0], &difference = m.coordinate_differences.records[0];
    EXPECT_EQ(point.components(), 2);
    EXPECT_EQ(point.to, -1);
    EXPECT_EQ(point.value[2], 3.0);
    EXPECT_EQ(point.sigma[2], 0.003);
    EXPECT_EQ(difference.components(), 1);
    EXPECT_TRUE(difference.given[1]);
    EXPECT_EQ(difference.to, 2);
}

TEST(FieldTables, TakeTheUsualSigmaOfTheirTable)
{
    const Model m = model_of(std::string("[sigma]\nangles = 0.01\nscale_bars = 0.2\n[apriori]\nangles = 1e-5\n") +
                             head + table("angles", "at from to value\nS A B 90\n") +
                             table("scale_bars", "from to value sigma\nA S 1000 -\n"));
    EXPECT_NEAR(m.angles.records[0].sigma, 0.01 * degree, 1e-18);
    EXPECT_NEAR(m.scale_bars.records[0].sigma, 2e-4, 1e-18);
    EXPECT_EQ(m.apriori.angle, 1e-5);
    EXPECT_EQ(m.apriori.bearing, 1.0);
}

TEST(FieldTables, RefuseWhatIsWrong)
{
    EXPECT_EQ(faults("angles", "at from to value sigma\nS A A 90 0.01\n"),
              Lines{"net.inp:18:5: observation from \"A\" to itself; name two different points"});
    EXPECT_EQ(faults("angles", "at from to value sigma\nS A S 90 0.01\n"),
              Lines{"net.inp:18:1: angle at \"S\" between a point and itself; name three different points"});
    EXPECT_EQ(faults("angles", "from to value sigma\nA B 90 0.01\n"),
              Lines{"net.inp:17:1: column at is missing in table angles; add it to the heading"});
    EXPECT_EQ(
        faults("angles", "at from to value\nS A B 90\n"),
        Lines{"net.inp:18:1: sigma is not known in table angles; write it in a column sigma or in [sigma] angles"});
    EXPECT_EQ(faults("scale_bars", "from to value sigma\nA B 0 1\n"),
              Lines{"net.inp:18:5: \"0\" in column value is not above 0; write a length above 0"});
    EXPECT_EQ(faults("bearings", "from to value sigma\nA B - 1\n"),
              Lines{"net.inp:18:5: value is not known in table bearings; write a number"});
    EXPECT_EQ(faults("horizontal_distances", "from to value sigma constants\nA B 5 1 yes\n"),
              Lines{"net.inp:18:9: point \"A\" belongs to no group; name its group in table stations"});
    EXPECT_EQ(faults("coordinates", "name x\nA 5\n"),
              Lines{"net.inp:18:1: the standard deviation sx is not known; write it, or name a covariance"});
    EXPECT_EQ(faults("coordinates", "name x sx\nA - 1\n"),
              Lines{"net.inp:18:1: the row holds no coordinate; write x, y or z"});
    EXPECT_EQ(faults("coordinate_differences", "from to dx sx\nA A 5 1\n"),
              Lines{"net.inp:18:3: difference of \"A\" to itself; name two different points"});
    EXPECT_EQ(faults("baselines", "from to dx dy dz\nA B 5 1 1\n").size(), 3u);
    EXPECT_EQ(faults("baselines", "from to dx dy dz cxx cyy czz covariance\nA B 5 1 1 - 1 1 -\n"),
              Lines{"net.inp:18:11: cxx is not known in table baselines; write a number above 0"});
}

TEST(RowNotes, StandBesideTheRowsThatSayThem)
{
    const Model m =
        model_of(std::string("[sigma]\ndirections = 0.001\n") + head +
                 table("directions",
                       "from to value setup set id remark\nS A 0 - - - -\nS B 90 noon 2 17 wind\nS A 1 - 2 - -\n"));
    const RowNotes &notes = m.directions.notes;
    EXPECT_EQ(note_at(notes.setup, 0), -1);
    ASSERT_EQ(note_at(notes.setup, 1), 0);
    EXPECT_EQ(m.setups.records[0].word, "noon");
    EXPECT_EQ(m.setups.records[0].station, 0);
    EXPECT_EQ(note_at(notes.set, 1), note_at(notes.set, 2));
    EXPECT_EQ(m.set_words[(size_t)note_at(notes.set, 2)], "2");
    EXPECT_EQ(note_at(notes.id, 1), "17");
    EXPECT_EQ(note_at(notes.remark, 1), "wind");
    EXPECT_EQ(note_at(notes.remark, 2), "");
    EXPECT_TRUE(notes.covariance.empty());
}

TEST(RowNotes, TakeNoRoomWhereNoRowSaysAnything)
{
    const Model m = model_of(std::string("[sigma]\ndirections = 0.001\n") + head +
                             table("directions", "from to value id\nS A 0 -\nS B 90 -\n"));
    EXPECT_TRUE(m.directions.notes.id.empty());
    EXPECT_TRUE(m.directions.notes.setup.empty());
}

TEST(RowNotes, GoWithTheirRowsIntoAnotherList)
{
    List<measure_input> from, to;
    from.add(measure_input(), Source());
    from.add(measure_input(), Source());
    set_note(from.notes.id, 1, std::string("17"), std::string());
    set_note(from.notes.set, 1, 3, -1);
    to.add_from(from, 1);
    to.add_from(from, 0);
    EXPECT_EQ(note_at(to.notes.id, 0), "17");
    EXPECT_EQ(note_at(to.notes.set, 0), 3);
    EXPECT_EQ(note_at(to.notes.id, 1), "");
}

TEST(RowNotes, HoldTextsOfOneLine)
{
    Folder folder;
    folder.write("net.inp", std::string(head) + "scale_bars = { file = \"b.csv\" }\n");
    folder.write("b.csv", "from,to,value,sigma,remark\nA,B,1000,1,\"wind, rain\"\n");
    EXPECT_EQ(folder.read(), Lines());
    EXPECT_EQ(note_at(folder.model.scale_bars.notes.remark, 0), "wind, rain");
}
