#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "support/access.h"
#include "support/faults.h"
#include "support/network.h"

namespace {

const std::string DROPPED = "           elimate all lumps notions\n";

// Points and directions as loading leaves them. A host record of lump L has the lump index
// 100 L; the points before the first target are stations.
class Field {
public:
    Field() : net(3) { station("S", 0); }

    point &station(const char *name, int lump)
    {
        net.station(name, 0, 0).ilump = 100 * lump;
        nsta++;
        return add(name, lump);
    }

    point &target(const char *name, int lump)
    {
        net.target(name, 0, 0).ilump = 100 * lump;
        return add(name, lump);
    }

    // Targets "A", "B", ... of a lump.
    void lump_of(int lump, const std::string &names)
    {
        for (const char c : names) target(std::string(1, c).c_str(), lump);
    }

    // One direction from the first point to each of the named targets.
    void sight(const std::string &names, int epoch, int from = 0)
    {
        for (const char c : names) sights.push_back({from, std::string(1, c), epoch});
    }

    // A definition with rotation about the first axis, shift and scale of each epoch.
    void define(int id, int kind, int iref, std::vector<int> epochs)
    {
        const size_t n = epochs.size();
        Tables &t = tables.emplace_back();
        t.epoch = std::move(epochs);
        t.code.assign(n, CODE_FREE);
        for (int k = 0; k < 7; k++)
            for (size_t e = 0; e < n; e++) t.value[k].push_back(1000.0 * (k + 1) + t.epoch[e]);
        lump_definition d = lump_definition();
        d.id = id;
        d.kind = kind;
        d.iref = iref;
        d.n = (int)n;
        net.lumpdefs.push_back(d);
    }

    // Makes the run, with the host's and the engine's tables; to be called once.
    vorn &load(int nlump)
    {
        for (size_t i = 0; i < tables.size(); i++) wire(&net.lumpdefs[i], &tables[i]);
        run = std::make_unique<vorn>(net.ready());
        V(*run, points) = (point *)calloc(points.size(), sizeof(point));
        for (size_t i = 0; i < points.size(); i++) at((int)i) = points[i];
        V(*run, npoints) = (int)points.size();
        V(*run, nsta) = nsta;
        V(*run, nlump) = nlump;
        V(*run, dir1) = (measure *)calloc(sights.size() + 1, sizeof(measure));
        V(*run, ndir1) = (int)sights.size();
        for (size_t i = 0; i < sights.size(); i++) {
            measure &m = V(*run, dir1)[i];
            m.p1 = &at(sights[i].from);
            m.p2 = find(sights[i].to);
            m.time = sights[i].epoch;
        }
        return *run;
    }

    int check(int nlump)
    {
        load(nlump);
        return (V(*run, lumpcheck)());
    }

    point &at(int i) { return V(*run, points)[i]; }

    point *find(const std::string &name)
    {
        for (int i = 0; i < V(*run, npoints); i++)
            if (name == at(i).name) return &at(i);
        return nullptr;
    }

    int nlump() { return V(*run, nlump); }
    const lump &record(int i) { return V(*run, lumps)[i]; }

    std::vector<int> epochs(int i)
    {
        const lump &l = record(i);
        return std::vector<int>(l.epoch, l.epoch + (l.nepoch > 1 ? l.nepoch - 1 : 0));
    }

    Network net;
    std::unique_ptr<vorn> run;

private:
    struct Sight {
        int from;
        std::string to;
        int epoch;
    };
    struct Tables {
        std::vector<int> epoch, code;
        std::vector<double> value[7]; // tx, ty, tz, rx, ry, rz, scale
    };

    point &add(const char *name, int lump)
    {
        point p = point();
        strcpy(p.name, name);
        p.ilump = lump;
        for (int &n : p.n0) n = N_UNKNOWN;
        for (int &n : p.n1) n = N_UNKNOWN;
        points.push_back(p);
        return points.back();
    }

    static void wire(lump_definition *d, Tables *t)
    {
        d->epoch = t->epoch.data();
        d->code = t->code.data();
        double **const arrays[] = {&d->tx, &d->ty, &d->tz, &d->rx, &d->ry, &d->rz, &d->scale};
        for (int k = 0; k < 7; k++) *arrays[k] = t->value[k].data();
    }

    int nsta = 0;
    std::vector<point> points;
    std::vector<Sight> sights;
    std::vector<Tables> tables;
};

// A fully fixed station.
void fix(point &p)
{
    for (int &n : p.n0) n = N_NONE;
    for (int i = 0; i < 3; i++) p.n1[i] = N_NONE;
}

using Ints = std::vector<int>;

// ---- all lumps at once ----

// One lump that stands; every refusal below spoils one thing.
void good_lump(Field &f)
{
    f.lump_of(1, "ABC");
    f.sight("ABC", 1);
    f.sight("ABC", 2);
}

TEST(LumpCheck, DropsAllLumpsWhenDistancesAreReduced)
{
    for (const int iredux : {1, -1, 7}) {
        Field f;
        good_lump(f);
        f.net.p.iredux = iredux;
        f.net.p.dim = 2; // looked at afterwards
        EXPECT_EQ(f.check(1), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: no reduction on observations with lumps now\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
        EXPECT_EQ(V(*f.run, lumps), nullptr);
        EXPECT_EQ(f.find("A")->ilump, 1); // the points keep their number
    }
}

TEST(LumpCheck, DropsAllLumpsOutsideThreeDimensions)
{
    for (const int dim : {1, 2}) {
        Field f;
        good_lump(f);
        f.net.p.dim = dim;
        f.load(1);
        measure m = measure();
        m.time = 2; // looked at afterwards
        V(*f.run, difh) = (measure *)calloc(1, sizeof(measure));
        V(*f.run, difh)[0] = m;
        V(*f.run, ndifh) = 1;
        EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: treat lumps only in 3 dimensions\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
        V(*f.run, dim) = 3;
    }
}

TEST(LumpCheck, DropsAllLumpsWhenAHeightDifferenceHasAnEpoch)
{
    for (const int time : {1, -1, 0}) {
        Field f;
        good_lump(f);
        f.load(1);
        V(*f.run, difh) = (measure *)calloc(2, sizeof(measure));
        V(*f.run, ndifh) = 2;
        V(*f.run, difh)[1].time = time;
        EXPECT_EQ((V(*f.run, lumpcheck)()), 0);
        EXPECT_EQ(f.nlump(), time == 0 ? 1 : 0);
        EXPECT_EQ(f.net.report(),
                  time == 0 ? "" : "lumpcheck: no dot treat height differrences now\n" + DROPPED);
        V(*f.run, ndifh) = 0;
    }
}

TEST(LumpCheck, DropsAllLumpsWithoutAnEpochAboveOne)
{
    for (const int epoch : {1, 0, -5}) {
        Field f;
        f.lump_of(1, "ABC");
        f.sight("ABC", epoch);
        f.sight("ABC", 1);
        EXPECT_EQ(f.check(1), 0);
        EXPECT_EQ(f.net.report(), "lumpcheck: must have at least 2 epochs\n" + DROPPED);
        EXPECT_EQ(f.nlump(), 0);
    }
    Field f;
    f.lump_of(1, "ABC"); // no directions at all
    EXPECT_EQ(f.check(1), 0);
    EXPECT_EQ(f.net.report(), "lumpcheck: must have at least 2 epochs\n" + DROPPED);
}

} // namespace
