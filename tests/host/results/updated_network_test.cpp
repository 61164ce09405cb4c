// The network file with adjusted coordinates as approximate ones.

#include "host/results/updated_network.h"

#include <gtest/gtest.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// A point whose free coordinates (code 'f'; 'h' held, '-' absent) were adjusted to x, y, z metres.
PointResult adjusted(const std::string &name, const std::string &codes, double x, double y, double z)
{
    PointResult p;
    p.name = name;
    const double values[] = {x, y, z};
    for (size_t i = 0; i < 3; i++) {
        if (codes[i] == '-') continue;
        p.code[i] = codes[i] == 'f' ? "free" : "weighted";
        p.adjusted[i] = values[i];
    }
    return p;
}

// The file with the table stations, and settings before it, updated with the adjusted points.
std::string updated(const std::string &text, const std::vector<PointResult> &points)
{
    Folder folder;
    folder.write("net.inp", text);
    EXPECT_EQ(folder.read(), Lines());
    Results results;
    results.points = points;
    return updated_network(text, folder.model, results);
}

const std::string plane =
    "# of the north slope\n[run]\ndimension = 2\n\n[units]\nlength = \"m\"\nangle = \"gon\"\n\n[tables]\n";
const std::string sights =
    "distances = '''\nfrom to value sigma\nA B 10 0.001 # steep\nB C 10 0.001\nA C 14 0.001\n'''\n";

} // namespace

TEST(UpdatedNetwork, HasAdjustedValuesWhereApproximateOnesStood)
{
    EXPECT_EQ(updated(plane +
                          "stations = '''\nname  x      y    code   # by hand\n# corner\nA     0      0    fixed\n"
                          "B     10.0   0.1         -  # pillar\nC  9 11 free\n'''\n" +
                          sights,
                      {adjusted("A", "hh-", 0.5, 0, 0), adjusted("B", "ff-", 10.0123456789, 0.25, 0),
                       adjusted("C", "ff-", 9, -11.5, 0)}),
              plane +
                  "stations = '''\nname  x      y    code   # by hand\n# corner\nA     0      0    fixed\n"
                  "B     10.012346 0.250000    -  # pillar\nC  9.000000 -11.500000 free\n'''\n" +
                  sights);
}

TEST(UpdatedNetwork, GetsTheColumnsThatItsTablesDoNotHave)
{
    EXPECT_EQ(updated(plane +
                          "stations = '''name code # by hand\n\nA free\nB free # pillar\n'''\n"
                          "targets = \"\"\"\nx name\n- C\"\"\"\n" +
                          sights,
                      {adjusted("A", "ff-", 1, 2, 0), adjusted("B", "ff-", 3, 4, 0), adjusted("C", "ff-", 5, 6, 0)}),
              plane +
                  "stations = '''name code x y # by hand\n\nA free 1.000000 2.000000\nB free 3.000000 4.000000 # "
                  "pillar\n'''\n"
                  "targets = \"\"\"\nx name y\n5.000000 C 6.000000\"\"\"\n" +
                  sights);
}

TEST(UpdatedNetwork, IsInTheUnitOfTheFile)
{
    const std::string head = "[run]\ndimension = 1\n[units]\nlength = \"mm\"\nangle = \"gon\"\n[tables]\n";
    EXPECT_EQ(updated(head + "stations = '''\nname z code\nA 12 fixed\n\"B 1\" - free\n'''\n" +
                          "height_differences = '''\nfrom to value sigma\nA \"B 1\" 1 1\n'''\n",
                      {adjusted("A", "--h", 0, 0, 0.012), adjusted("B 1", "--f", 0, 0, 0.0130004)}),
              head + "stations = '''\nname z code\nA 12 fixed\n\"B 1\" 13.000 free\n'''\n" +
                  "height_differences = '''\nfrom to value sigma\nA \"B 1\" 1 1\n'''\n");
}

TEST(UpdatedNetwork, KeepsAPointWithoutAdjustedCoordinates)
{
    const std::string text =
        plane + "stations = '''\nname x y code\nA 0 0 fixed\nB 10 0 free\nC 9 11 free\n'''\n" + sights;
    EXPECT_EQ(updated(text, {}), text);
}

TEST(UpdatedNetwork, IsNotMadeOfPointsInAFileOfTheirOwn)
{
    Folder folder;
    folder.write("points.csv", "name,x,y,code\nA,0,0,fixed\nB,10,0,free\nC,9,11,free\n");
    const std::string text = plane + "stations = { file = \"points.csv\" }\n" + sights;
    folder.write("net.inp", text);
    ASSERT_EQ(folder.read(), Lines());
    try {
        updated_network(text, folder.model, Results());
        FAIL();
    } catch (const UpdateError &error) {
        EXPECT_STREQ(error.what(),
                     "the table stations stands in a file of its own; write it into the network file first");
    }
}

TEST(UpdatedNetwork, FindsTheEndOfARowBehindANameWithMarks)
{
    const std::string ends = "distances = '''\nfrom to value sigma\nA \"#B\"\"\" 10 0.001\n'''\n";
    EXPECT_EQ(
        updated(plane + "stations = '''\nname code\nA free\n\"#B\"\"\" free # west\n'''\n" + ends,
                {adjusted("A", "ff-", 1, 2, 0), adjusted("#B\"", "ff-", 3, 4, 0)}),
        plane +
            "stations = '''\nname code x y\nA free 1.000000 2.000000\n\"#B\"\"\" free 3.000000 4.000000 # west\n'''\n" +
            ends);
}

TEST(UpdatedNetwork, IsNotMadeWhereRowsStandOnOneLine)
{
    const std::string text = plane + "stations = \"name code\\nA free\\nB free\\nC free\"\n" + sights;
    EXPECT_THROW(updated(text, {adjusted("A", "ff-", 1, 2, 0), adjusted("B", "ff-", 3, 4, 0)}), UpdateError);
}

TEST(UpdatedNetwork, IsNotMadeOfAnotherText)
{
    Folder folder;
    folder.write("net.inp",
                 plane + "stations = '''\nname x y code\nA 0 0 fixed\nB 10 0 free\nC 9 11 free\n'''\n" + sights);
    ASSERT_EQ(folder.read(), Lines());
    Results results;
    results.points = {adjusted("B", "ff-", 3, 4, 0)};
    for (const char *text : {"", "[run]\n", "a\nb\nc\nd\ne\nf\ng\nh\ni\nj\nk\nl\nm\nn\no\np\n"})
        EXPECT_THROW(updated_network(text, folder.model, results), UpdateError) << text;
}
