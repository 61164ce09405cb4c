#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/access.h"
#include "support/network.h"

namespace {

// Stations S, T and targets A to F, cameras and image files in a place of their own. The
// points stand in the run as the loading would leave them.
struct Photo {
    Photo() : n(3)
    {
        n.station("S       ", 0, 0, 0);
        n.station("T       ", 1, 0, 0);
        for (const char *name : {"A       ", "B       ", "C       ", "D       ", "E       ", "longname"})
            n.target(name, 0, 0, 0);
        n.p.suv = 0.5;
        n.p.iphoto = 1;
    }
    ~Photo()
    {
        for (const std::string &f : files) remove(f.c_str());
        if (run) {
            V(*run, points) = nullptr;
            V(*run, gps) = nullptr;
            V(*run, cameras) = nullptr;
            V(*run, obsuv1) = V(*run, obsuv2) = nullptr;
            V(*run, npoints) = V(*run, nsta) = V(*run, ntar) = V(*run, nobsuv) = 0;
            V(*run, ncamera) = V(*run, ngps) = 0;
            delete run;
        }
    }
    camera_input &camera_with(const char *name)
    {
        camera_input c = camera_input();
        c.status = 1;
        strcpy(c.name, name);
        n.cameras.push_back(c);
        return n.cameras.back();
    }
    image_input &image(const char *station, const char *camera_name, const std::string &text)
    {
        image_input im = image_input();
        im.status = 1;
        snprintf(im.file, sizeof im.file, "/tmp/gps_photo_test_%d_%d.txt", (int)getpid(), (int)files.size());
        strcpy(im.station, station);
        strcpy(im.camera, camera_name);
        files.push_back(im.file);
        write(files.size() - 1, text);
        n.images.push_back(im);
        return n.images.back();
    }
    void write(size_t i, const std::string &text)
    {
        FILE *f = fopen(files[i].c_str(), "wb");
        ASSERT_NE(nullptr, f);
        fwrite(text.data(), 1, text.size(), f);
        fclose(f);
    }
    gps_input &baseline(const char *from, const char *to)
    {
        gps_input g = gps_input();
        g.status = 1;
        strcpy(g.from, from);
        strcpy(g.to, to);
        g.cov[0] = g.cov[3] = g.cov[5] = 1.0;
        n.baselines.push_back(g);
        return n.baselines.back();
    }
    // Makes the run with its points; the arrays of guard records show what was written.
    vorn &ready()
    {
        run = new vorn(n.ready());
        for (const auto &s : n.stations) enter(s.name, s.status);
        V(*run, nsta) = (int)points.size();
        for (const auto &t : n.targets) enter(t.name, t.status);
        V(*run, points) = points.data();
        V(*run, npoints) = (int)points.size();
        V(*run, ntar) = V(*run, npoints) - V(*run, nsta);
        baselines.resize(n.baselines.size() + 1);
        for (const auto &g : n.baselines)
            if (g.status > 0) V(*run, ngps)++;
        V(*run, gps) = baselines.data();
        return *run;
    }
    void enter(const char *name, int status)
    {
        if (status <= 0) return;
        point p = point();
        strcpy(p.name, name);
        points.push_back(p);
    }
    void count() { V(*run, count_photo)(); }
    int fill()
    {
        u.assign(V(*run, nobsuv) + 1, measure());
        v.assign(V(*run, nobsuv) + 1, measure());
        cams.assign(V(*run, ncamera) + 1, camera());
        V(*run, obsuv1) = u.data();
        V(*run, obsuv2) = v.data();
        V(*run, cameras) = cams.data();
        return V(*run, fill_photo)();
    }
    Network n;
    std::vector<std::string> files;
    vorn *run = nullptr;
    std::vector<point> points;
    std::vector<gpsbase> baselines;
    std::vector<measure> u, v;
    std::vector<camera> cams;
};

const char FOUR[] = "A       1 2\nB       3 4\nC       5 6\nD       7 8\n";

} // namespace

// ---- baselines ----

TEST(Baselines, AreStoredWithTheInverseOfTheirCovariance)
{
    Photo s;
    s.baseline("A       ", "B       ").status = 0;
    gps_input &g = s.baseline("S       ", "C       ");
    const double cov[6] = {2, 1, 0, 2, 0, 0.25}; // xx xy xz yy yz zz: block 2 1 / 1 2 and 1/4
    for (int k = 0; k < 6; k++) g.cov[k] = cov[k];
    for (int k = 0; k < 3; k++) g.dx[k] = 10 + k;
    s.n.p.iunit = 1; // baselines are metres in every unit
    vorn &run = s.ready();
    EXPECT_EQ(0, V(run, fill_gps)());
    const gpsbase &b = s.baselines[0];
    EXPECT_EQ(&s.points[0], b.p1);
    EXPECT_EQ(&s.points[4], b.p2);
    EXPECT_EQ(1, s.points[0].ntie);
    EXPECT_EQ(1, s.points[4].ntie);
    EXPECT_EQ(0, s.points[2].ntie);
    for (int k = 0; k < 3; k++) EXPECT_EQ(10.0 + k, b.dx[k]);
    const double w[6] = {2.0 / 3, -1.0 / 3, 2.0 / 3, 0, 0, 4};
    for (int k = 0; k < 6; k++) EXPECT_NEAR(w[k], b.w[k], 1e-15) << k;
    EXPECT_EQ(nullptr, s.baselines[1].p1);
}

TEST(Baselines, KeepTheCrossTermsOfTheirComponents)
{
    // The covariance of (x, y, z) with xz = 0.5 alone: block 1 .5 / .5 1 of x and z.
    Photo s;
    s.baseline("A       ", "B       ").cov[2] = 0.5;
    s.ready();
    EXPECT_EQ(0, V(*s.run, fill_gps)());
    const double w[6] = {4.0 / 3, 0, 1, -2.0 / 3, 0, 4.0 / 3}; // 11 21 22 31 32 33
    for (int k = 0; k < 6; k++) EXPECT_NEAR(w[k], s.baselines[0].w[k], 1e-15) << k;
}

TEST(Baselines, NeedBothPoints)
{
    Photo s;
    s.baseline("X       ", "Y       ");
    EXPECT_EQ(-1, V(s.ready(), fill_gps)());
    Photo t;
    t.baseline("A       ", "B");
    EXPECT_EQ(-2, V(t.ready(), fill_gps)());
}

TEST(Baselines, WithASingularCovarianceStopTheLoading)
{
    for (int zero : {0, 3, 5}) {
        Photo s;
        s.baseline("A       ", "B       ").cov[zero] = 0.0;
        EXPECT_EQ(-3, V(s.ready(), fill_gps)());
        EXPECT_EQ("fill_gps: pb with covariance matrix on baseline A        B       \n", s.n.report());
    }
    Photo huge;
    huge.baseline("A       ", "B       ").cov[5] = 1.1e15;
    EXPECT_EQ(-3, V(huge.ready(), fill_gps)());
    Photo large;
    large.baseline("A       ", "B       ").cov[5] = 0.9e15;
    EXPECT_EQ(0, V(large.ready(), fill_gps)());
}

TEST(Inverse, OfVornIsThePackedOne)
{
    Photo s;
    double a[3] = {2, 1, 2};
    V(s.ready(), invers)(a, 2);
    EXPECT_NEAR(2.0 / 3, a[0], 1e-15);
    EXPECT_NEAR(-1.0 / 3, a[1], 1e-15);
}

// ---- counting ----

TEST(ImageCount, AddsCamerasAndKnownPoints)
{
    Photo s;
    s.camera_with("one");
    s.camera_with("off").status = 0;
    s.camera_with("two");
    s.image("S       ", "one", FOUR);
    s.image("T       ", "two", std::string(FOUR) + "longname1 2\nX       1 2\nS       9 9\n");
    s.ready();
    s.count();
    EXPECT_EQ(2, V(*s.run, ncamera));
    EXPECT_EQ(10, V(*s.run, nobsuv));
    EXPECT_EQ(1, s.n.images[0].status);
}

TEST(ImageCount, DropsAnImageWithThreePointsAndKeepsFour)
{
    Photo s;
    s.image("S       ", "one", "A       1 2\nB       3 4\nC       5 6\nX       1 1\n").status = 3;
    s.image("S       ", "one", FOUR);
    s.ready();
    s.count();
    EXPECT_EQ(4, V(*s.run, nobsuv));
    EXPECT_EQ(-3, s.n.images[0].status);
    EXPECT_EQ(1, s.n.images[1].status);
    EXPECT_EQ("", s.n.report());
    EXPECT_TRUE(s.n.messages.lines.empty());
}

TEST(ImageCount, DropsAnImageWithoutStationOrFile)
{
    Photo s;
    s.image("X       ", "one", FOUR);
    s.image("A       ", "one", FOUR); // a target
    s.image("S       ", "one", FOUR);
    strcpy(s.n.images[2].file, "/nowhere/at/all.txt");
    s.image("T       ", "one", FOUR); // not selected
    s.n.stations[1].status = 0;
    s.image("S       ", "one", FOUR).status = -1;
    s.ready();
    s.count();
    EXPECT_EQ(0, V(*s.run, nobsuv));
    for (int i = 0; i < 5; i++) EXPECT_EQ(-1, s.n.images[i].status) << i;
}

TEST(ImageCount, SkipsPointsThatAreNotSelected)
{
    Photo s;
    s.image("S       ", "one", std::string(FOUR) + "E       1 2\n");
    s.n.targets[0].status = 0;
    s.ready();
    s.count();
    EXPECT_EQ(4, V(*s.run, nobsuv));
}

TEST(ImageCount, TakesTheRestOfALongLineAsTheNext)
{
    Photo s;
    // 89 characters, then a name: the rest of the line counts as a line of its own.
    const std::string text = "A       1 2" + std::string(78, ' ') + "B       3 4\n";
    s.image("S       ", "one", text + "C       5 6\nD       7 8");
    s.ready();
    s.count();
    EXPECT_EQ(4, V(*s.run, nobsuv));
}

// ---- filling ----

TEST(Cameras, TakeSizePixelsAndParameters)
{
    Photo s;
    s.camera_with("off").status = 0;
    camera_input &c = s.camera_with("elevenchars");
    c.nu = 301;
    c.nv = 200;
    c.pu = 0.25;
    c.pv = 0.5;
    const int code[10] = {0, 1, 2, 4, -1, 3, -2, 1, 1, 1};
    const int ipar[10] = {0, 0, 0, -1, -1, -1, 0, 0, 0, 0};
    for (int p = 0; p < 10; p++) {
        c.p[p] = p + 0.5;
        c.ip[p] = code[p];
    }
    s.ready();
    s.count();
    EXPECT_EQ(0, s.fill());
    const camera &k = s.cams[0];
    EXPECT_STREQ("elevenchars", k.name);
    EXPECT_EQ(0.25, k.pu);
    EXPECT_EQ(0.5, k.pv);
    EXPECT_EQ(150.5, k.cu);
    EXPECT_EQ(100.0, k.cv);
    EXPECT_EQ(10, k.npar);
    for (int p = 0; p < 10; p++) {
        EXPECT_EQ(p + 0.5, k.par[p]);
        EXPECT_EQ(ipar[p], k.ipar[p]) << p;
    }
    EXPECT_EQ("no weighted implemented yet\n", s.n.report());
}

TEST(Cameras, WithSevenAbsentCodesUseThreeParameters)
{
    for (int nabsent = 5; nabsent <= 10; nabsent++) {
        Photo s;
        camera_input &c = s.camera_with("one");
        for (int p = 10 - nabsent; p < 10; p++) c.ip[p] = -1;
        s.ready();
        s.count();
        EXPECT_EQ(0, s.fill());
        EXPECT_EQ(nabsent == 7 ? 3 : 10, s.cams[0].npar) << nabsent;
        EXPECT_EQ(nabsent == 10 ? -1 : 0, s.cams[0].ipar[0]);
        EXPECT_EQ(-1, s.cams[0].ipar[9]);
    }
}

TEST(Cameras, CountHeldAndWeightedParametersAmongTheUsed)
{
    for (int code : {4, 3, -2})
        for (int nabsent : {6, 7}) {
            Photo s;
            camera_input &c = s.camera_with("one");
            for (int p = 10 - nabsent; p < 10; p++) c.ip[p] = -1;
            c.ip[0] = code;
            s.ready();
            s.count();
            EXPECT_EQ(0, s.fill());
            EXPECT_EQ(nabsent == 7 ? 3 : 10, s.cams[0].npar) << code;
        }
}

TEST(Cameras, BeyondTheirCountStopTheLoading)
{
    Photo s;
    s.camera_with("one");
    s.camera_with("two").status = 0;
    s.ready();
    s.count();
    s.n.cameras[1].status = 1;
    EXPECT_EQ(-2, s.fill());
    EXPECT_EQ("fill_photo: Pb in counting cameras", s.n.report());
    EXPECT_STREQ("", s.cams[1].name);
}

TEST(Images, FillPairsOfCoordinates)
{
    Photo s;
    s.camera_with("one");
    s.camera_with("two");
    s.image("T       ", "two",
            "A       1 2\nB       3.5 4.5 0.25\nC       5 6 0.125 8\nD 7 8\n"
            "D       7\nX       1 2\n\nD\nlongname9 10 11 12 13\nE       -1e1 nonsense\n"
            "E       1.5e1 -2.5\n");
    s.ready();
    s.count();
    ASSERT_EQ(7, V(*s.run, nobsuv)); // D and E are counted once for a line that gives no pair
    ASSERT_EQ(0, s.fill());
    const double wanted[5][4] = {
        {1, 2, 0.5, 0.5}, {3.5, 4.5, 0.25, 0.5}, {5, 6, 0.125, 8}, {9, 10, 11, 12}, {15, -2.5, 0.5, 0.5}};
    const int target[5] = {2, 3, 4, 7, 6};
    for (int i = 0; i < 5; i++) {
        EXPECT_EQ(wanted[i][0], s.u[i].val[0]) << i;
        EXPECT_EQ(wanted[i][1], s.v[i].val[0]) << i;
        EXPECT_EQ(wanted[i][2], s.u[i].val[1]) << i;
        EXPECT_EQ(wanted[i][3], s.v[i].val[1]) << i;
        for (const measure *m : {&s.u[i], &s.v[i]}) {
            EXPECT_EQ(1, m->typ);
            EXPECT_EQ(&s.points[1], m->p1);
            EXPECT_EQ(&s.points[target[i]], m->p2);
        }
        EXPECT_EQ(2, s.points[target[i]].ntie);
    }
    EXPECT_EQ(10, s.points[1].ntie);
    for (int i = 5; i < 7; i++) { // unfilled records stay zero
        EXPECT_EQ(nullptr, s.u[i].p1);
        EXPECT_EQ(0.0, s.v[i].val[1]);
    }
}

TEST(Images, NeedTheirCamera)
{
    Photo s;
    s.camera_with("one");
    s.image("S       ", "one", FOUR);
    s.image("S       ", "tw", FOUR);
    s.ready();
    s.count();
    EXPECT_EQ(-1, s.fill());
    EXPECT_EQ("fill_photo:Pb at image 1\nwith camera tw\n", s.n.report());
}

TEST(Images, NeedTheirStation)
{
    for (const char *name : {"gone    ", "A       "}) {
        Photo s;
        s.camera_with("one");
        s.image("S       ", "one", FOUR);
        s.ready();
        s.count();
        strcpy(s.n.images[0].station, name);
        EXPECT_EQ(-1, s.fill());
        EXPECT_EQ(std::string("fill_photo:Pb at image 0\nwith station ") + name + "\n", s.n.report());
    }
}

TEST(Images, WhoseFileIsGoneAreSkipped)
{
    Photo s;
    s.camera_with("one");
    s.image("S       ", "one", FOUR);
    s.image("T       ", "one", FOUR);
    s.ready();
    s.count();
    remove(s.files[0].c_str());
    EXPECT_EQ(0, s.fill());
    EXPECT_EQ(8, V(*s.run, nobsuv));
    EXPECT_EQ(&s.points[1], s.u[0].p1);
    EXPECT_EQ(nullptr, s.u[4].p1);
    EXPECT_EQ("", s.n.report());
}

TEST(Images, ThatGrewStopTheLoadingWithinTheArrays)
{
    Photo s;
    s.camera_with("one");
    s.image("S       ", "one", FOUR);
    s.ready();
    s.count();
    s.write(0, std::string(FOUR) + "E       9 10\nE       11 12\n");
    EXPECT_EQ(-2, s.fill());
    EXPECT_EQ("fill_photo: Pb in counting", s.n.report());
    EXPECT_EQ(nullptr, s.u[4].p1);
    EXPECT_EQ(nullptr, s.v[4].p1);
}

TEST(Images, MatchNamesOnlyWithTheirBlanks)
{
    Photo s;
    s.camera_with("one");
    s.image("S       ", "one", std::string(FOUR) + "E 1 2\nE\t1 2\n  E     1 2\n");
    s.ready();
    s.count();
    EXPECT_EQ(4, V(*s.run, nobsuv));
    EXPECT_EQ(0, s.fill());
}

TEST(Images, OfBytesWithoutLinesAreDropped)
{
    Photo s;
    s.camera_with("one");
    s.image("S       ", "one", std::string(3000, '\xfe') + std::string(200, '\0'));
    s.ready();
    s.count();
    EXPECT_EQ(0, V(*s.run, nobsuv));
    EXPECT_EQ(-1, s.n.images[0].status);
}

// The path, the station and the camera fill their fields; nothing behind a field belongs to it.
TEST(Images, ReadNoFurtherThanFieldsWithoutTheirZero)
{
    Photo s;
    s.n.station("Stations9", 0, 0, 0);
    s.camera_with("Cameras99");
    s.image("", "", "");
    const std::string path(sizeof s.n.images[0].file, 'p'); // in the working directory
    memcpy(s.n.images[0].file, path.data(), path.size());
    memcpy(s.n.images[0].station, "Stations9", sizeof s.n.images[0].station);
    memcpy(s.n.images[0].camera, "Cameras99", sizeof s.n.images[0].camera);
    s.files.push_back(path);
    s.write(1, FOUR);
    s.ready();
    s.count();
    EXPECT_EQ(4, V(*s.run, nobsuv));
    EXPECT_EQ(0, s.fill()) << s.n.report();
    EXPECT_STREQ("Cameras99", s.cams[0].name);
    EXPECT_STREQ("Stations9", s.u[3].p1->name);
}

TEST(Baselines, ReadNoFurtherThanNamesWithoutTheirZero)
{
    Photo s;
    s.n.station("Stations9", 0, 0, 0);
    gps_input &g = s.baseline("", "");
    memcpy(g.from, "Stations9", sizeof g.from);
    memcpy(g.to, "Unknown99", sizeof g.to);
    EXPECT_EQ(-2, V(s.ready(), fill_gps)()); // the first name is that of the station
}
