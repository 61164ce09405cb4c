#include <gtest/gtest.h>

#include "host/folder.h"

using namespace vornhost;

namespace {

// Cameras from line 5 on (the heading), images from line 9 on when there is one camera.
struct Photo : Folder {
    Photo() { write("i.txt", ""); }
    Lines with(const std::string &cameras, const std::string &images, int dimension = 3)
    {
        write("net.inp", "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\ncameras = \"\"\"\n" +
                             cameras + "\n\"\"\"\nimages = \"\"\"\n" + images +
                             "\n\"\"\"\nstations = \"name x y z\\nS 0 0 0\"\ntargets = \"name x y z\\nT 9 9 9\"\n");
        return read();
    }
    Lines camera(const std::string &heading, const std::string &row)
    {
        return with("name width height pu pv c" + heading + "\nC 600 400 0.01 0.02 25" + row,
                    "file station camera\ni.txt S C");
    }
    Lines image(const std::string &row)
    {
        return with("name width height pu pv c\nC 6 4 1 1 1", "file station camera use\n" + row);
    }
};

} // namespace

TEST(Cameras, AreReadWithEveryColumn)
{
    Photo photo;
    ASSERT_EQ(
        photo.camera(" x0 y0 a b k1 k2 k3 p1 p2 code_c code_x0 code_y0 code_a code_b code_k1 code_k2 code_k3 code_p1 "
                     "code_p2 use",
                     " 2 3 4 5 6 7 8 9 10 free fixed absent free fixed free fixed free fixed 1 no"),
        Lines());
    const camera_input &c = photo.model.p.cameras[0];
    EXPECT_STREQ(c.name, "C       ");
    EXPECT_EQ(c.nu, 600);
    EXPECT_EQ(c.nv, 400);
    EXPECT_EQ(c.pu, 0.01);
    EXPECT_EQ(c.pv, 0.02);
    EXPECT_EQ(c.p[0], 25.0);
    for (int i = 1; i < 10; i++) EXPECT_EQ(c.p[i], i + 1.0);
    const int codes[] = {1, 4, -1, 1, 4, 1, 4, 1, 4, 1};
    for (int i = 0; i < 10; i++) EXPECT_EQ(c.ip[i], codes[i]) << i;
    EXPECT_EQ(c.status, -1);
    EXPECT_EQ(photo.model.p.iphoto, 1);
}

TEST(Cameras, HaveThreeFixedParametersAndNoOthersByDefault)
{
    Photo photo;
    ASSERT_EQ(photo.camera("", ""), Lines());
    const camera_input &c = photo.model.p.cameras[0];
    for (int i = 0; i < 10; i++) EXPECT_EQ(c.ip[i], i < 3 ? CODE_FIXED : CODE_ABSENT) << i;
    EXPECT_EQ(c.status, 1);
}

// Seven absent parameters mean to the engine that the first three are the ones in use.
TEST(Cameras, WithSevenOtherAbsentParametersHaveThemFixed)
{
    Photo photo;
    ASSERT_EQ(photo.camera(" code_c code_x0 code_y0 code_a code_b code_k1", " absent absent absent free free free"),
              Lines());
    const int codes[] = {4, 4, 4, 1, 1, 1, 4, 4, 4, 4};
    for (int i = 0; i < 10; i++) EXPECT_EQ(photo.model.p.cameras[0].ip[i], codes[i]) << i;
}

TEST(Cameras, RefuseWhatCannotBe)
{
    Photo photo;
    EXPECT_EQ(photo.camera(" code_c", " weighted"),
              Lines{"net.inp:6:24: \"weighted\" in column code_c is not known; write one of: free, fixed, absent"});
    const std::string images = "file station camera\ni.txt S C";
    EXPECT_EQ(
        photo.with("name width height pu pv c\nC 0 4.5 0 -1 x", images),
        (Lines{"net.inp:6:3: \"0\" in column width is out of range; write a whole number from 1 to 1000000",
               "net.inp:6:5: \"4.5\" is not a whole number in column height; write a whole number from 1 to 1000000",
               "net.inp:6:9: \"0\" in column pu is not above 0; write a number above 0",
               "net.inp:6:11: \"-1\" in column pv is not above 0; write a number above 0",
               "net.inp:6:14: \"x\" is not a number in column c; write a number like 12.5"}));
    EXPECT_EQ(photo.with("name width height pu pv c\nC - - - - -", images),
              (Lines{"net.inp:6:3: width is not known in table cameras; write a number of pixels",
                     "net.inp:6:5: height is not known in table cameras; write a number of pixels",
                     "net.inp:6:7: pu is not known in table cameras; write a number above 0",
                     "net.inp:6:9: pv is not known in table cameras; write a number above 0",
                     "net.inp:6:11: c is not known in table cameras; write a number above 0"}));
    EXPECT_EQ(photo.with("name width height pu pv c\nC 6 4 1 1 1\nC 6 4 1 1 1", images),
              Lines{"net.inp:7:1: camera \"C\" is listed twice; keep one of the two"});
    EXPECT_EQ(
        photo.with("name width height pu pv c\nC 6 4 1 1 1\n" + std::string(41, 'c') + " 6 4 1 1 1", images),
        Lines{"net.inp:7:1: name \"" + std::string(40, 'c') + "...\" has 41 characters, at most 40 fit; shorten it"});
}

TEST(Images, AreReadWithAnAbsolutePath)
{
    Photo photo;
    ASSERT_EQ(photo.image("./i.txt S C no"), Lines());
    const image_input &i = photo.model.p.images[0];
    EXPECT_EQ(i.file, photo.file("i.txt"));
    EXPECT_STREQ(i.station, "S       ");
    EXPECT_STREQ(i.camera, "C       ");
    EXPECT_EQ(i.status, -1);
}

TEST(Images, NameAStationAndACamera)
{
    Photo photo;
    EXPECT_EQ(photo.image("i.txt X C -"),
              Lines{"net.inp:10:7: unknown point \"X\" in column station; did you mean \"S\"?"});
    EXPECT_EQ(photo.image("i.txt T C -"), Lines{"net.inp:10:7: image taken at target \"T\"; list it under stations"});
    EXPECT_EQ(photo.image("i.txt - C -"), Lines{"net.inp:10:7: station is not known in table images; name a point"});
    EXPECT_EQ(photo.image("i.txt S D -"),
              Lines{"net.inp:10:9: unknown camera \"D\" in column camera; did you mean \"C\"?"});
    EXPECT_EQ(photo.image("i.txt S Nikon -"),
              Lines{"net.inp:10:9: unknown camera \"Nikon\" in column camera; list it under cameras"});
    EXPECT_EQ(photo.image("i.txt S - -"), Lines{"net.inp:10:9: camera is not known in table images; name a camera"});
}

TEST(Images, NameAFileThatCanBeRead)
{
    Photo photo;
    EXPECT_EQ(photo.image("- S C -"),
              Lines{"net.inp:10:1: file is not known in table images; name the file of its image coordinates"});
    EXPECT_EQ(photo.image("none.txt S C -"),
              Lines{"net.inp:10:1: file \"none.txt\" does not exist; check its name and folder"});
    EXPECT_EQ(photo.image("../" + photo.path.substr(5) + "/ S C -"),
              Lines{"net.inp:10:1: file \"\" is a folder; name a file"});
    photo.make_socket("s");
    EXPECT_EQ(photo.image("s S C -"), Lines{"net.inp:10:1: file \"s\" cannot be opened; check its permissions"});
    const std::string longest = photo.file(std::string(79 - photo.path.size() - 1, 'x'));
    photo.write(longest.substr(photo.path.size() + 1), "");
    EXPECT_EQ(photo.image(longest + " S C -"), Lines());
    EXPECT_EQ(photo.model.p.images[0].file, longest);
    EXPECT_EQ(photo.image(longest + "x S C -"),
              Lines{"net.inp:10:1: path \"" + longest.substr(photo.path.size() + 1, 40 - photo.path.size() - 1) +
                    "...\" has 80 bytes, at most 79 fit; move the files to a folder with a shorter path"});
}

TEST(Images, NeedThreeDimensions)
{
    Photo photo;
    EXPECT_EQ(photo.with("name width height pu pv c\nC 6 4 1 1 1", "file station camera\ni.txt S C", 2),
              Lines{"net.inp:10:1: images need three dimensions; write dimension = 3 in [run]"});
}
