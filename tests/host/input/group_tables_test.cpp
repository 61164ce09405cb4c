#include <gtest/gtest.h>

#include <math.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// The heading of the table under test stands in line 4.
std::string network(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return "run = { dimension = 3 }\n[tables]\n" + table + " = \"\"\"\n" + rows +
           "\n\"\"\"\nstations = \"name\\nS\"\ntargets = \"name\\nT\"\n"
           "distances = \"from to value sigma\\nS T 1 1\"\n" +
           more;
}

Lines faults_in(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return faults_of(network(table, rows, more));
}

Model read(const std::string &table, const std::string &rows, const std::string &more = "")
{
    return model_of(network(table, rows, more));
}

} // namespace

TEST(Groups, AreReadWithTheirLengthsInMetres)
{
    const Model model = read("groups",
                             "name additive scale refraction s_additive s_scale s_refraction code_additive code_scale "
                             "code_refraction\n"
                             "G -34 1.00002 0.13 2 1e-6 0.02 weighted weighted free\nH - - - - - - free - -",
                             "[units]\nlength = \"mm\"\n");
    ASSERT_EQ(model.p.ngroups, 2);
    const group_input &g = model.p.groups[0], &h = model.p.groups[1];
    EXPECT_EQ(g.typ, 0);
    EXPECT_DOUBLE_EQ(g.c[0], -0.034);
    EXPECT_DOUBLE_EQ(g.sc[0], 0.002);
    EXPECT_EQ(g.c[1], 1.00002);
    EXPECT_EQ(g.sc[1], 1e-6);
    EXPECT_EQ(g.c[2], 0.13);
    EXPECT_EQ(g.sc[2], 0.02);
    EXPECT_EQ(g.ic[0], CODE_WEIGHTED);
    EXPECT_EQ(g.ic[1], CODE_WEIGHTED);
    EXPECT_EQ(g.ic[2], CODE_FREE);
    EXPECT_EQ(h.ic[0], CODE_FREE);
    EXPECT_EQ(h.ic[1], CODE_FIXED);
    EXPECT_EQ(h.ic[2], CODE_FIXED);
    EXPECT_EQ(h.c[0], 0.0);
    EXPECT_EQ(h.c[1], 1.0);
    EXPECT_EQ(h.c[2], 0.0);
    EXPECT_EQ(model.group_names, (std::vector<std::string>{"G", "H"}));
    EXPECT_EQ(h.nmember, 0);
}

// The engine takes no value of a fixed constant: it would be lost without a word.
TEST(Groups, RefuseAValueThatWouldNotBeUsed)
{
    EXPECT_EQ(faults_in("groups", "name additive\nG -0.034"),
              Lines{"net.inp:5:3: \"-0.034\" in column additive would not be used; write free or weighted in column "
                    "code_additive"});
    EXPECT_EQ(
        faults_in("groups", "name scale code_scale\nG 1.1 fixed"),
        Lines{"net.inp:5:3: \"1.1\" in column scale would not be used; write free or weighted in column code_scale"});
    EXPECT_EQ(faults_in("groups", "name scale code_scale\nG 1 fixed"), Lines());
}

TEST(Groups, NeedAStandardDeviationForAWeight)
{
    EXPECT_EQ(faults_in("groups", "name additive code_additive\nG 1 weighted"),
              Lines{"net.inp:5:1: a weighted constant needs its standard deviation s_additive; write it in column "
                    "s_additive"});
    EXPECT_EQ(faults_in("groups", "name additive s_additive code_additive\nG 1 0 weighted"),
              Lines{"net.inp:5:5: \"0\" in column s_additive is not above 0; write a number above 0"});
}

TEST(Groups, HaveNamesOfTheirOwn)
{
    EXPECT_EQ(faults_in("groups", "name\nG\nG"),
              Lines{"net.inp:6:1: group \"G\" is listed twice; keep one of the two"});
    EXPECT_EQ(faults_in("groups", "name scale\n- 1"),
              Lines{"net.inp:5:1: name is not known in table groups; write a name"});
    EXPECT_EQ(
        faults_in("groups", "name\n" + std::string(41, 'g')),
        Lines{"net.inp:5:1: name \"" + std::string(40, 'g') + "...\" has 41 characters, at most 40 fit; shorten it"});
}

TEST(Lumps, GatherTheRowsOfEachLump)
{
    const Model model = read("lumps",
                             "lump kind reference epoch code scale tx ty tz rx ry rz\n"
                             "7 no_rotation 1 2 fixed 1.5 1000 2000 3000 100 200 50\n"
                             "9 no_scale - 1 - - - - - - - -\n"
                             "7 - - 3 free - - - - - - -\n",
                             "[units]\nlength = \"mm\"\n");
    ASSERT_EQ(model.p.nlumpdefs, 2);
    const lump_definition &l = model.p.lumpdefs[0];
    EXPECT_EQ(l.id, 7);
    EXPECT_EQ(l.kind, 1);
    EXPECT_EQ(l.iref, 1);
    ASSERT_EQ(l.n, 2);
    EXPECT_EQ(l.epoch[0], 2);
    EXPECT_EQ(l.epoch[1], 3);
    EXPECT_EQ(l.code[0], CODE_FIXED);
    EXPECT_EQ(l.code[1], CODE_FREE);
    EXPECT_EQ(l.scale[0], 1.5);
    EXPECT_EQ(l.scale[1], 1.0);
    EXPECT_DOUBLE_EQ(l.tx[0], 1.0);
    EXPECT_DOUBLE_EQ(l.ty[0], 2.0);
    EXPECT_DOUBLE_EQ(l.tz[0], 3.0);
    EXPECT_DOUBLE_EQ(l.rx[0], M_PI / 2.0);
    EXPECT_DOUBLE_EQ(l.ry[0], M_PI);
    EXPECT_DOUBLE_EQ(l.rz[0], M_PI / 4.0);
    EXPECT_EQ(l.rz[1], 0.0);
    EXPECT_EQ(model.p.lumpdefs[1].id, 9);
    EXPECT_EQ(model.p.lumpdefs[1].kind, 2);
    EXPECT_EQ(model.p.lumpdefs[1].iref, 0);
    EXPECT_EQ(model.p.lumpmethod, 1);
}

TEST(Lumps, HaveKindsAsWordsOrNumbers)
{
    const std::pair<const char *, int> kinds[] = {
        {"similarity", 0}, {"0", 0}, {"no_rotation", 1}, {"1", 1}, {"no_scale", 2}, {"2", 2}, {"-", 0}};
    for (const auto &[word, number] : kinds)
        EXPECT_EQ(read("lumps", std::string("lump epoch kind\n1 1 ") + word).p.lumpdefs[0].kind, number) << word;
    EXPECT_EQ(faults_in("lumps", "lump epoch kind\n1 1 3"),
              Lines{"net.inp:5:5: \"3\" in column kind is not known; write one of: similarity, no_rotation, no_scale"});
}

TEST(Lumps, AgreeOnKindAndReference)
{
    EXPECT_EQ(
        faults_in("lumps", "lump epoch kind\n1 1 similarity\n1 2 no_scale"),
        Lines{"net.inp:6:5: \"no_scale\" in column kind contradicts an earlier row of the lump; give the same in all "
              "its rows"});
    EXPECT_EQ(
        faults_in("lumps", "lump epoch reference\n1 1 3\n1 2 3\n1 4 5"),
        Lines{"net.inp:7:5: \"5\" in column reference contradicts an earlier row of the lump; give the same in all "
              "its rows"});
}

TEST(Lumps, RefuseAnEpochTwice)
{
    EXPECT_EQ(faults_in("lumps", "lump epoch\n1 4\n2 4\n1 4"),
              Lines{"net.inp:7:3: \"4\" in column epoch is listed twice for the lump; keep one of the two"});
}

TEST(Lumps, NeedTheirNumbers)
{
    EXPECT_EQ(faults_in("lumps", "lump epoch\n- 4"),
              Lines{"net.inp:5:1: lump is not known in table lumps; write the lump's number"});
    EXPECT_EQ(faults_in("lumps", "lump epoch\n4 -"),
              Lines{"net.inp:5:3: epoch is not known in table lumps; write the epoch's number"});
    EXPECT_EQ(faults_in("lumps", "lump epoch\n0 1"),
              Lines{"net.inp:5:1: \"0\" in column lump is out of range; write a whole number from 1 to 1000000"});
    EXPECT_EQ(faults_in("lumps", "lump epoch\n1 0"),
              Lines{"net.inp:5:3: \"0\" in column epoch is out of range; write a whole number from 1 to 9999"});
    EXPECT_EQ(faults_in("lumps", "lump epoch scale\n1 1 0"),
              Lines{"net.inp:5:5: \"0\" in column scale is not above 0; write a number above 0"});
    EXPECT_EQ(faults_in("lumps", "lump epoch code\n1 1 weighted"),
              Lines{"net.inp:5:5: \"weighted\" in column code is not known; write one of: free, fixed"});
}
