// Records of any content: codes, counts, names and numbers that a host may hand over by mistake.
// Every run ends by a documented code and leaves its results; the sanitizers watch for the rest.

#include <gtest/gtest.h>
#include <limits.h>
#include <math.h>
#include <string.h>

#include <list>
#include <random>

#include "support/network.h"
#include "support/workfolder.h"
#include "vorn/vorn.h"

namespace {

const int NPOINT = 8;

// A network whose observations fit its points, but for a share of its fields.
class AnyNetwork {
public:
    AnyNetwork(unsigned seed, double odd_share) : rng(seed), odd(odd_share), net(1 + below(3))
    {
        settings();
        npoint = 2 + below(NPOINT - 1);
        nstation = below(npoint + 1);
        for (auto &x : place)
            for (int c = 0; c < 3; c++) x[c] = (c == 2 ? 20.0 : 200.0) * (unit() - 0.5);
        const bool missing = chance(0.3);
        for (int i = 0; i < npoint; i++) add_point(i, missing);
        observations();
        groups();
        images();
        lumps();
        for (int i = below(3); i > 0; i--) {
            pair_input pair = pair_input();
            name(pair.from, end());
            name(pair.to, end());
            net.pairs.push_back(pair);
        }
        connected();
        net.ready();
        counts();
    }

    int below(int n) { return (int)(rng() % (unsigned)n); }
    Network &network() { return net; }

private:
    double unit() { return (double)(rng() % 1000000) / 1e6; }
    bool chance(double share) { return unit() < share; }

    int code(int usual)
    {
        static const int codes[] = {INT_MIN, INT_MIN + 1, -9, -3, -2, -1, 0,  1,   2,           3,      4,
                                    5,       6,           7,  8,  9,  13, 21, 101, INT_MAX - 1, INT_MAX};
        return chance(odd) ? codes[below(sizeof codes / sizeof *codes)] : usual;
    }
    double number(double usual)
    {
        static const double numbers[] = {0.0,       -0.0, 1e308, -1e308, 1e-308, INFINITY,
                                         -INFINITY, NAN,  1e17,  -1e17,  3e9,    -3e9};
        return chance(0.3 * odd) ? numbers[below(sizeof numbers / sizeof *numbers)] : usual;
    }
    int coordinate_code()
    {
        static const int usual[] = {0, 1, 1, 1, 2, 3, 4, 4, -1};
        return code(usual[below(9)]);
    }

    // Now and then a field without its zero.
    template <size_t size> void name(char (&field)[size], int i)
    {
        memset(field, 0, size);
        memset(field, ' ', 8);
        field[0] = (char)('A' + i);
        if (chance(0.2 * odd)) memset(field, 'A' + below(3), size);
    }
    int end() { return chance(0.97) ? below(npoint) : NPOINT; }

    void settings()
    {
        project &p = net.p;
        p.irun = code(below(4) - 2);
        p.idebug = chance(0.3) ? code(9 * below(2)) : 0;
        p.itmax = below(4) == 0 ? below(3) - 1 : 6;
        p.imixed = code(-1);
        p.iearth = code(below(3));
        p.radius = number(chance(0.5) ? 6e6 : 1e3);
        p.horigin = number(5.0);
        p.latitude = number(47.0);
        p.convergence = number(1e-5);
        p.igps = code(chance(0.3) ? 9 : below(2));
        p.iunit = code(below(3));
        p.iredux = chance(0.7) ? 0 : code(below(3));
        p.lumpmethod = chance(0.5) ? 0 : code(chance(0.5) ? 9 : 1);
        p.azrot = number(0.1);
        p.iangle = code(ANGLE_RADIAN);
        for (double *s : {&p.sdist, &p.sdifh, &p.sdir1, &p.sdir2, &p.saz, &p.sgps, &p.suv}) *s = number(0.001);
        net.messages.answer = below(2);
    }

    template <class Record> void fill_point(Record &r, int i, bool missing)
    {
        name(r.name, i);
        r.status = code(missing && chance(0.5) ? STATUS_COMPUTE : STATUS_ON);
        r.ilump = net.p.lumpmethod != 0 && chance(0.7) ? code(1 + below(2)) : 0;
        r.iconn = chance(0.3) ? code(below(3)) : 0;
        for (int c = 0; c < 3; c++) {
            r.x[c] = number(place[i][c]);
            r.sx[c] = number(0.01);
            r.ix[c] = coordinate_code();
        }
    }
    void add_point(int i, bool missing)
    {
        if (i >= nstation) return fill_point(net.target("", 0, 0), i, missing);
        station_input &s = net.station("", 0, 0);
        fill_point(s, i, missing);
        s.typ = code(below(3));
        s.ilevel = code(below(2));
        for (int c = 0; c < 3; c++) {
            s.ir[c] = coordinate_code();
            s.r[c] = number(c == 2 ? 1.0 : 0.0);
            s.sr[c] = number(0.01);
        }
    }

    void join(measure_input &m, int from, int to)
    {
        name(m.from, from);
        name(m.to, to);
        if (m.typ == KIND_DISTANCE && chance(0.3)) m.typ = KIND_DISTANCE_CONSTANTS;
        m.typ = code(m.typ);
        m.time = code(net.p.lumpmethod != 0 ? 1 + below(3) : 0);
        m.h1 = number(chance(0.3) ? 1.5 : 0.0);
        m.h2 = number(0.0);
        m.val = number(m.val);
        m.sig = number(m.sig);
    }
    double step(int from, int to, int c) const { return place[to][c] - place[from][c]; }
    double level(int from, int to) const { return hypot(step(from, to, 0), step(from, to, 1)); }

    void observations()
    {
        const double sigma = 0.002;
        for (int i = below(14); i > 0; i--) {
            const int a = end(), b = end();
            join(net.distance("", "", level(a, b), sigma), a, b);
        }
        for (int i = below(10); i > 0; i--) {
            const int a = end(), b = end();
            join(net.heightdiff("", "", step(a, b, 2), sigma), a, b);
        }
        for (int i = below(25), parallel = below(2); i > 0; i--) {
            const int a = nstation > 0 ? below(nstation) : end(), b = end();
            join(net.direction("", "", atan2(step(a, b, 1), step(a, b, 0)) + 7.0, sigma), a, b);
            if (parallel) join(net.vertical("", "", atan2(step(a, b, 2), level(a, b)), sigma), a, b);
        }
        for (int i = below(4); i > 0; i--) {
            const int a = end(), b = end();
            join(net.azimuth("", "", 1.0, sigma), a, b);
        }
        for (int i = below(4); i > 0; i--) baseline(end(), end());
    }
    void baseline(int from, int to)
    {
        gps_input g = gps_input();
        g.status = code(1);
        name(g.from, from);
        name(g.to, to);
        for (int c = 0; c < 3; c++) g.dx[c] = number(step(from, to, c));
        for (int c = 0; c < 6; c++) g.cov[c] = number(c == 0 || c == 3 || c == 5 ? 1e-4 : 1e-6);
        net.baselines.push_back(g);
    }

    // The members are any numbers, also those of no station.
    void groups()
    {
        for (int i = below(3); i > 0; i--) {
            group_input g = group_input();
            g.typ = code(0);
            for (int c = 0; c < 3; c++) {
                g.ic[c] = coordinate_code();
                g.c[c] = number(c == 1 ? 1.0 : 0.0);
                g.sc[c] = number(0.01);
            }
            ints.emplace_back();
            for (int k = below(5); k > 0; k--) ints.back().push_back(code(below(npoint)));
            g.nmember = (int)ints.back().size();
            g.member = ints.back().data();
            net.groups.push_back(g);
        }
    }

    void images()
    {
        if (!chance(0.25)) return;
        net.p.iphoto = code(1);
        camera_input cam = camera_input();
        cam.status = code(1);
        name(cam.name, 0);
        cam.nu = cam.nv = code(1000);
        cam.pu = cam.pv = number(1e-5);
        for (int k = 0; k < 10; k++) {
            cam.ip[k] = coordinate_code();
            cam.p[k] = number(k == 0 ? 0.05 : 0.0);
        }
        net.cameras.push_back(cam);
        FILE *f = fopen("image.txt", "w");
        for (int i = 0; i < 6; i++) fprintf(f, "%c        %g %g\n", 'A' + below(npoint), number(500.0), number(500.0));
        fclose(f);
        for (int i = below(3); i >= 0; i--) {
            image_input im = image_input();
            im.status = code(1);
            strcpy(im.file, "image.txt");
            name(im.station, below(npoint));
            name(im.camera, 0);
            net.images.push_back(im);
        }
    }

    void lumps()
    {
        for (int i = net.p.lumpmethod != 0 ? below(3) : 0; i > 0; i--) {
            lump_definition d = lump_definition();
            d.id = code(i);
            d.kind = code(below(3));
            d.iref = code(below(4));
            d.n = below(4);
            for (int **a : {&d.epoch, &d.code}) {
                ints.emplace_back();
                for (int k = 0; k < d.n; k++) ints.back().push_back(code(1 + below(4)));
                *a = ints.back().data();
            }
            for (double **a : {&d.scale, &d.tx, &d.ty, &d.tz, &d.rx, &d.ry, &d.rz}) {
                doubles.emplace_back();
                for (int k = 0; k < d.n; k++) doubles.back().push_back(number(a == &d.scale ? 1.0 : 0.0));
                *a = doubles.back().data();
            }
            net.lumpdefs.push_back(d);
        }
    }

    void connected()
    {
        strcpy(net.p.confile, "import.con");
        const int n = 1 + below(3), order = n * net.p.dim;
        FILE *f = fopen("import.con", "w");
        fprintf(f, "File: import.con for %d connections in dimension %d\n", n, net.p.dim);
        for (int i = 0; i < n; i++)
            fprintf(f, "%c         %g %g %g\n", 'A' + below(npoint), number(1.0), number(2.0), number(3.0));
        for (int i = 0; i < order; i++)
            for (int j = 0; j <= i; j++) fprintf(f, "%g\n", number(i == j ? 1e-4 : 0.0));
        fclose(f);
    }

    void counts()
    {
        if (!chance(0.2 * odd)) return;
        project &p = net.p;
        for (int *n : {&p.nstations, &p.ntargets, &p.ndistances, &p.nheightdiffs, &p.ndirections, &p.nverticals,
                       &p.nazimuths, &p.nbaselines, &p.ngroups, &p.ncameras, &p.nimages, &p.nlumpdefs, &p.npairs})
            if (chance(0.2)) *n = chance(0.5) ? INT_MIN : -1;
    }

    std::mt19937 rng;
    double odd; // share of fields with any content
    Network net;
    int npoint, nstation;
    double place[NPOINT + 1][3];
    std::list<std::vector<int>> ints; // of groups and definitions
    std::list<std::vector<double>> doubles;
};

int solve(vorn &run, int way) { return way == 0 ? run.vornL2() : way == 1 ? run.vornjordan() : run.vornL1(); }

// Returns whether the run came as far as a solver.
bool run_ends(AnyNetwork &any)
{
    vorn run(&any.network().p);
    const int start = run.vornstart();
    EXPECT_TRUE(start <= 0 && start >= -6) << start;
    if (start != 0) return false;
    const int code = solve(run, any.below(3));
    EXPECT_TRUE(code <= 0 && code >= -5) << code;
    return true;
}

TEST(Records, OfAnyContentEndARunByADocumentedCode)
{
    const WorkFolder folder;
    int nsolved = 0;
    for (const double odd : {0.0, 0.01, 0.05, 0.2, 0.6})
        for (unsigned seed = 1; seed <= 120; seed++) {
            SCOPED_TRACE(testing::Message() << "share " << odd << " seed " << seed);
            AnyNetwork any(seed, odd);
            for (int again = 0; again < 2; again++) { // the second run takes the records as the first left them
                nsolved += run_ends(any);
                EXPECT_NE(any.network().p.runresults, nullptr);
            }
        }
    EXPECT_GT(nsolved, 100); // of 1200
}

} // namespace
