#include "host/run/accounts.h"

#include <gtest/gtest.h>

#include "host/adjusted.h"
#include "host/input/names.h"

using namespace vornhost;

namespace {

// A network file that was run; lines of its accounts without the folder's path.
struct Case : ReadCase {
    using ReadCase::ReadCase;
    Lines lines() { return shortened(account_lines(run().accounts)); }
};

std::string file_of(int dimension, const std::string &tables)
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\n[tables]\n" + tables;
}

const std::string points = "targets = '''\nname x y z code status\nA 0 0 0 fixed used\nB 120 0 0 fixed used\n"
                           "C 0 160 0 fixed used\nP 60 80 0 free used\nD 1 1 0 free off\n'''\n";

const std::string distances = "distances = '''\nfrom to value sigma use\nA P 100 1 yes\nB P 100 1 yes\nC P 100 1 no\n"
                              "D P 9 1 yes\nC P 100 1 yes\n'''\n";

} // namespace

TEST(Accounts, BalanceAndNameWhatWasLeftOut)
{
    EXPECT_EQ(Case(file_of(2, points + distances)).lines(),
              Lines({"distances: read 5 = used 3 + left out 2", "  net.inp:16: C to P: use = no in the file",
                     "  net.inp:17: D to P: point D is off"}));
}

TEST(Accounts, SayWhatThePlaneExcludes)
{
    Case c(file_of(2, points + distances + "height_differences = '''\nfrom to value sigma\nA P 1 1\n'''\n"));
    const Lines lines = c.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[3], "height differences: read 1 = used 0 + left out 1");
    EXPECT_EQ(lines[4], "  net.inp:22: A to P: the dimension is 2: height differences take no part");
}

TEST(Accounts, SayThatVerticalAnglesTakeNoPartInThePlane)
{
    Case c(file_of(2, "stations = '''\nname x y\nS 50 60\n'''\n" + points + distances +
                          "vertical_angles = '''\nfrom to value sigma\nS P 100 1\n'''\n"));
    const Lines lines = c.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[4], "  net.inp:26: S to P: the dimension is 2: vertical angles take no part");
}

TEST(Accounts, SayWhatTheLineExcludes)
{
    Case c(file_of(1, "stations = '''\nname z code\nA 0 fixed\nB 1 free\n'''\n"
                      "height_differences = '''\nfrom to value sigma\nA B 1 1\n'''\n"
                      "distances = '''\nfrom to value sigma\nA B 1 1\n'''\n"
                      "directions = '''\nfrom to value sigma\nA B 1 1\n'''\n"
                      "azimuths = '''\nfrom to value sigma\nA B 1 1\n'''\n"));
    EXPECT_EQ(c.lines(),
              Lines({"distances: read 1 = used 0 + left out 1",
                     "  net.inp:15: A to B: the dimension is 1: distances take no part",
                     "height differences: read 1 = used 1 + left out 0", "directions: read 1 = used 0 + left out 1",
                     "  net.inp:19: A to B: the dimension is 1: directions take no part",
                     "azimuths: read 1 = used 0 + left out 1",
                     "  net.inp:23: A to B: the dimension is 1: azimuths take no part"}));
}

// The reader refuses these; a host may hand them over.
TEST(Accounts, ExplainNamesThatTheEngineDoesNotTake)
{
    Case c(file_of(2, "stations = '''\nname x y orientation\nS 50 60 0\n'''\n" + points + distances +
                          "directions = '''\nfrom to value sigma\nS A 255 1\nS B 355 1\n'''\n"));
    Model &model = c.folder.model;
    hold_name(model.distances.records[0].from, NameKeys(), "X");
    model.directions.records.push_back(model.directions.records[0]);
    model.directions.where.push_back({0, 99, 1});
    hold_name(model.directions.records[2].from, NameKeys(), "B");
    const Lines lines = c.lines();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0], "distances: read 5 = used 2 + left out 3");
    EXPECT_EQ(lines[1], "  net.inp:18: X to P: point X is unknown");
    EXPECT_EQ(lines[4], "directions: read 3 = used 2 + left out 1");
    EXPECT_EQ(lines[5], "  net.inp:99: B to A: directions need a station as their first point");
}

TEST(Accounts, SayThatBaselinesAreIgnored)
{
    const std::string baselines =
        "baselines = '''\nfrom to dx dy dz cxx cyy czz use\nA P 60 80 0 1 1 1 yes\nB P 1 1 1 1 "
        "1 1 no\n'''\n";
    EXPECT_EQ(
        Case("[run]\ndimension = 2\n[baselines]\ndatum_rule = 'ignore'\n[tables]\n" + points + distances + baselines)
            .lines(),
        Lines({"distances: read 5 = used 3 + left out 2", "  net.inp:18: C to P: use = no in the file",
               "  net.inp:19: D to P: point D is off", "baselines: read 2 = used 0 + left out 2",
               "  net.inp:24: A to P: baselines are ignored: datum_rule",
               "  net.inp:25: B to P: use = no in the file"}));
}

// The reasons do not depend on a run: the engine's part, a negated status, is set by hand.
TEST(Accounts, SayWhyAnImageWasLeftOut)
{
    Folder folder;
    Model model;
    model.path = "net.inp";
    model.files = {"net.inp"};
    const std::string short_file = folder.write("short.txt", "A 1 2\n");
    camera_input on = camera_input(), off = camera_input();
    on.status = 1;
    off.status = -1;
    hold_name(on.name, NameKeys(), "ON");
    hold_name(off.name, NameKeys(), "OFF");
    model.cameras.add(on, {});
    model.cameras.add(off, {});
    station_input s = station_input();
    s.status = STATUS_ON;
    hold_name(s.name, NameKeys(), "S");
    model.stations.add(s, {});
    s.status = STATUS_OFF;
    hold_name(s.name, NameKeys(), "T");
    model.stations.add(s, {});
    struct {
        const char *station, *camera;
        std::string file;
    } const images[] = {{"S", "ON", short_file},
                        {"S", "ON", short_file},
                        {"T", "ON", short_file},
                        {"S", "OFF", short_file},
                        {"S", "ON", folder.file("none")}};
    for (int i = 0; i < 5; i++) {
        image_input image = image_input();
        image.status = 1;
        hold_name(image.station, NameKeys(), images[i].station);
        hold_name(image.camera, NameKeys(), images[i].camera);
        images[i].file.copy(image.file, sizeof image.file - 1);
        model.images.add(image, {0, i + 1, 1});
    }
    const AccountKeeper keeper(model);
    for (int i = 1; i < 5; i++) model.images.records[(size_t)i].status = -1;
    Lines lines = account_lines(keeper.close(model));
    for (std::string &line : lines) folder.shorten(line);
    EXPECT_EQ(
        lines,
        Lines({"images: read 5 = used 1 + left out 4", "  net.inp:2: S to ON: its file has fewer than 4 known points",
               "  net.inp:3: T to ON: point T is off", "  net.inp:4: S to OFF: camera OFF is off",
               "  net.inp:5: S to ON: its file none cannot be read", "image points: read 1 = used 0 + left out 1",
               "  short.txt:1: S to A 1 2: point A 1 2 is unknown"}));
}

TEST(Accounts, NameTheLinesOfImageFilesThatAreLeftOut)
{
    Folder folder;
    folder.write("img.txt", "A        1 2\n\nB        1 2 0.3 0.3\nZ        1 2\nC        one two\nD        1\n"
                            "A        1 2" +
                                std::string(90, ' ') + "E\nOFF      3 4");
    Model model;
    model.path = "net.inp";
    model.files = {"net.inp"};
    for (const char *name : {"A", "B", "C", "D", "OFF"}) {
        target_input t = target_input();
        t.status = strcmp(name, "OFF") == 0 ? STATUS_OFF : STATUS_ON;
        hold_name(t.name, NameKeys(), name);
        model.targets.add(t, {});
    }
    image_input image = image_input();
    image.status = 1;
    hold_name(image.station, NameKeys(), "S");
    hold_name(image.camera, NameKeys(), "CAM");
    folder.file("img.txt").copy(image.file, sizeof image.file - 1);
    model.images.add(image, {0, 1, 1});
    Lines lines = account_lines(AccountKeeper(model).close(model));
    for (std::string &line : lines) folder.shorten(line);
    EXPECT_EQ(lines,
              Lines({"images: read 1 = used 1 + left out 0", "image points: read 8 = used 3 + left out 5",
                     "  img.txt:4: S to Z: point Z is unknown",
                     "  img.txt:5: S to C: two numbers are missing behind the name",
                     "  img.txt:6: S to D: two numbers are missing behind the name",
                     "  img.txt:7: S: the line is longer than 89 bytes", "  img.txt:8: S to OFF: point OFF is off"}));
}

TEST(Accounts, LeaveOutKindsThatTheFileDoesNotHave)
{
    EXPECT_EQ(account_lines(AccountKeeper(Model()).close(Model())), Lines());
}
