#include "random_project.h"

#include <stdio.h>

#include "scratch.h"

namespace {

constexpr int ANY_EPOCH = -1; // for the bytes to choose

// True coordinates of a point, metres, in the middle of the network.
void place(int i, double x[3])
{
    x[0] = (i * 37) % 101;
    x[1] = (i * 61) % 97;
    x[2] = (i * 13) % 23;
}

double unit(const project &p) { return p.iunit == 1 ? 1000.0 : p.iunit == 2 ? 1.0 / 0.0254 : 1.0; }

} // namespace

RandomProject::RandomProject(Bytes &source) : p(), solver((Solve)source.below(3)), failing(0), from(source)
{
    const int choice = from.byte();
    answer = choice % 2;
    scene = (Scene)(choice / 64);
    if (from.rarely()) failing = 1 + from.byte();
    set_settings();
    set_model();
    make_points();
    make_lists();
    make_baselines();
    make_groups();
    make_photo();
    make_lumps();
    make_pairs();
    write_connected_net();
    attach();
}

void RandomProject::set_settings()
{
    static const int modes[] = {1, 0, -2};
    static const int traces[] = {0, 0, 1, 9};
    p.dim = from.code(1, 3);
    p.irun = solver == Solve::Simplex ? -1 : modes[from.below(3)];
    if (from.rarely()) p.irun = from.any_whole();
    p.idebug = traces[from.below(4)];
    p.itmax = 2 * from.below(8);
    if (from.rarely()) p.itmax = -p.itmax;
    p.convergence = from.number(1e-5);
    p.iunit = from.code(0, 3);
    p.iangle = from.code(0, 4);
    p.izenith = from.code(0, 2);
    snprintf(p.filename, sizeof p.filename, "run.inp");
    if (from.rarely())
        for (size_t i = 0; i + 1 < sizeof p.filename; i++) {
            p.filename[i] = (char)from.byte();
            if (p.filename[i] == '/') p.filename[i] = '.'; // files stay in the folder
        }
}

void RandomProject::set_model()
{
    p.iearth = from.rarely() ? from.any_whole() : from.rarely() ? 2 : from.rarely() ? 1 : 0;
    p.radius = from.number(from.rarely() ? 6.371e6 : 1e16);
    for (double &t : p.trans) t = from.number(0.0);
    p.horigin = from.number(0.0);
    p.latitude = from.number(50.0);
    p.iredux = from.code(0, 3);
    p.igps = from.code(0, 3);
    p.azrot = from.number(0.0);
    p.imixed = from.rarely() ? from.any_whole() : -1;
    for (double *s : {&p.sdist, &p.sdifh, &p.sdir1, &p.sdir2, &p.saz, &p.sgps, &p.suv}) *s = from.number(1.0);
}

// Names are blank to 8 characters; some are not, and some meet another's.
void RandomProject::name(char *field, size_t size, int i)
{
    memset(field, 0, size);
    if (!from.rarely()) {
        snprintf(field, size, "P%-7d", i % 100);
    } else if (from.below(2) == 0) {
        snprintf(field, size, "P%d", i % 10);
    } else {
        for (size_t c = 0; c < size; c++) field[c] = (char)from.byte();
    }
}

void RandomProject::codes(int *code, int n, int ordinary)
{
    for (int i = 0; i < n; i++) code[i] = from.rarely() ? from.code(-1, 7) : ordinary;
}

template <class Record> void RandomProject::common(Record &r, int i)
{
    double x[3];
    place(i, x);
    name(r.name, sizeof r.name, i);
    r.status = from.below(6) == 5 ? from.code(-1, 4) : scene == Scene::Unknown ? (int)STATUS_COMPUTE : 1;
    for (int c = 0; c < 3; c++) {
        r.x[c] = from.number((x[c] + 0.01 * from.part()) * unit(p));
        r.sx[c] = from.number(0.01 * unit(p));
    }
    codes(r.ix, 3, i < 2 && scene != Scene::Unknown ? (int)CODE_FIXED : (int)CODE_FREE);
    if (nepoch > 0) r.ilump = from.code(0, 3);
    if (from.below(6) == 5) r.iconn = from.code(0, 3);
}

void RandomProject::make_points()
{
    nsta = from.below(7);
    npoint = nsta + from.below(7) + (scene == Scene::Large ? 24 : 0);
    const int most = scene == Scene::Large ? 1 : 4; // epochs
    nepoch = from.below(4) == 3 ? 1 + from.below(most) : 0;
    for (int i = 0; i < nsta; i++) {
        station_input s = station_input();
        common(s, i);
        s.typ = from.below(4) == 3 ? 2 : 0;
        for (int c = 0; c < 3; c++) {
            s.r[c] = from.number(0.0);
            s.sr[c] = from.number(0.001);
        }
        codes(s.ir, 3, p.dim == 1 ? (int)CODE_ABSENT : (int)CODE_FREE);
        s.ilevel = from.code(0, 2);
        stations.push_back(s);
    }
    for (int i = nsta; i < npoint; i++) {
        target_input t = target_input();
        common(t, i);
        if (from.rarely()) t.status = 101;
        targets.push_back(t);
    }
}

int RandomProject::any_point() { return from.below(npoint + 1); }

// The value of a consistent observation in the host's raw unit. Epochs move the points a little.
double RandomProject::observed(int kind, int a, int b, int epoch)
{
    double u[3], v[3], d[3];
    place(a, u);
    place(b, v);
    for (int c = 0; c < 3; c++) d[c] = v[c] - u[c] + 0.02 * epoch * c;
    const double flat = hypot(d[0], d[1]);
    switch (kind) {
    case KIND_HEIGHT_DIFFERENCE: return d[2] * unit(p);
    case KIND_DIRECTION: return p.htoraw(1, atan2(d[1], d[0]));
    case KIND_VERTICAL: return p.vtoraw(1, atan2(d[2], flat));
    case KIND_AZIMUTH: return p.aztoraw(1, atan2(d[1], d[0]));
    default: return (p.dim == 3 ? hypot(flat, d[2]) : flat) * unit(p);
    }
}

void RandomProject::observe(std::vector<measure_input> &list, int kind, int a, int b, int epoch)
{
    const bool angle = kind == KIND_DIRECTION || kind == KIND_VERTICAL || kind == KIND_AZIMUTH;
    measure_input m = measure_input();
    m.typ = from.rarely() ? from.any_whole() : kind;
    name(m.from, sizeof m.from, a);
    name(m.to, sizeof m.to, b);
    m.h1 = from.number(0.0);
    m.h2 = from.number(0.0);
    m.time = epoch != ANY_EPOCH ? epoch : nepoch > 0 ? from.code(0, nepoch + 1) : from.rarely() ? from.any_whole() : 0;
    m.val = from.number(observed(kind, a, b, m.time & 7) + 1e-4 * from.part());
    m.sig = from.number(angle ? p.htoraw(0, 1e-4) : 0.001 * unit(p));
    list.push_back(m);
}

void RandomProject::scatter(std::vector<measure_input> &list, int kind, int most)
{
    const int n = npoint > 0 ? from.below(most + 1) : 0;
    for (int i = 0; i < n; i++) {
        const int a = (i / 3 + from.below(npoint + 1)) % (nsta > 0 && !from.rarely() ? nsta : npoint);
        const int b = (a + 1 + i % 3 + any_point()) % npoint;
        observe(list, kind, a, b, ANY_EPOCH);
    }
}

void RandomProject::observe_pair(int a, int b, int epoch)
{
    if (p.dim == 1) return observe(heightdiffs, KIND_HEIGHT_DIFFERENCE, a, b, epoch);
    if (scene != Scene::Unknown || b == 0) observe(distances, KIND_DISTANCE, a, b, epoch);
    observe(directions, KIND_DIRECTION, a, b, epoch);
    if (p.dim == 3) observe(verticals, KIND_VERTICAL, a, b, epoch);
}

void RandomProject::observe_all()
{
    const int nfrom = p.dim == 1 ? npoint : nsta;
    for (int a = 0; a < nfrom; a++)
        for (int b = 0; b < npoint; b++)
            for (int epoch = nepoch > 0 ? 1 : 0; a != b && epoch <= nepoch; epoch++) observe_pair(a, b, epoch);
}

void RandomProject::make_lists()
{
    if (scene != Scene::Scattered) return observe_all();
    scatter(distances, from.rarely() ? KIND_DISTANCE_CONSTANTS : KIND_DISTANCE, 24);
    scatter(heightdiffs, KIND_HEIGHT_DIFFERENCE, 16);
    scatter(directions, KIND_DIRECTION, 24);
    scatter(verticals, KIND_VERTICAL, 24);
    scatter(azimuths, KIND_AZIMUTH, 4);
}

void RandomProject::make_baselines()
{
    const int n = npoint > 0 && from.below(6) == 5 ? 1 + from.below(8) : 0;
    for (int i = 0; i < n; i++) {
        gps_input g = gps_input();
        const int a = (i + any_point()) % npoint, b = (i + 1 + any_point()) % npoint;
        double u[3], v[3];
        place(a, u);
        place(b, v);
        g.status = from.code(1, 1);
        name(g.from, sizeof g.from, a);
        name(g.to, sizeof g.to, b);
        for (int c = 0; c < 3; c++) g.dx[c] = from.number(v[c] - u[c]);
        for (int c = 0; c < 6; c++) g.cov[c] = from.number(c == 0 || c == 3 || c == 5 ? 1e-6 : 0.0);
        baselines.push_back(g);
    }
}

void RandomProject::make_groups()
{
    const int n = from.below(4) == 3 ? 1 + from.below(3) : 0;
    members.resize((size_t)n);
    for (int i = 0; i < n; i++) {
        group_input g = group_input();
        g.typ = from.rarely() ? from.any_whole() : 0;
        codes(g.ic, 3, CODE_FREE);
        for (int c = 0; c < 3; c++) {
            g.c[c] = from.number(c == 1 ? 1.0 : 0.0);
            g.sc[c] = from.number(0.001);
        }
        const int nmember = from.below(4);
        for (int k = 0; k < nmember; k++) members[(size_t)i].push_back(from.code(0, nsta + 1));
        groups.push_back(g);
    }
}

void RandomProject::write_image(const char *path)
{
    FILE *f = fopen(path, "wb");
    if (!f) return;
    const int n = from.below(12);
    for (int i = 0; i < n; i++) {
        char point[9];
        name(point, sizeof point, i + from.below(3));
        fprintf(f, "%.8s %g %g", point, from.number(100.0 * i), from.number(80.0 * (i % 3)));
        if (from.rarely()) fprintf(f, " %g %g", from.number(1.0), from.number(1.0));
        fprintf(f, "\n");
    }
    fclose(f);
}

void RandomProject::make_photo()
{
    if (from.below(6) != 5) return;
    p.iphoto = from.code(1, 1);
    const int ncamera = from.below(3), nimage = from.below(4);
    for (int i = 0; i < ncamera; i++) {
        camera_input c = camera_input();
        c.status = from.code(1, 1);
        name(c.name, sizeof c.name, i);
        c.nu = from.rarely() ? from.any_whole() : 4000;
        c.nv = from.rarely() ? from.any_whole() : 3000;
        c.pu = from.number(1.0);
        c.pv = from.number(1.0);
        codes(c.ip, 10, CODE_FIXED);
        for (int k = 0; k < 10; k++) c.p[k] = from.number(k == 0 ? 5000.0 : 0.0);
        cameras.push_back(c);
    }
    for (int i = 0; i < nimage; i++) {
        image_input im = image_input();
        im.status = from.code(1, 1);
        snprintf(im.file, sizeof im.file, "image%d", i);
        name(im.station, sizeof im.station, i);
        name(im.camera, sizeof im.camera, ncamera > 0 ? i % ncamera : 0);
        write_image(im.file);
        images.push_back(im);
    }
}

void RandomProject::make_lumps()
{
    p.lumpmethod = nepoch == 0 ? 0 : from.code(0, 3);
    if (p.lumpmethod == 2) p.lumpmethod = 9;
    const int n = nepoch > 0 ? from.below(4) : 0;
    lump_tables.resize((size_t)n);
    for (int i = 0; i < n; i++) {
        LumpTable &t = lump_tables[(size_t)i];
        lump_definition d = lump_definition();
        d.id = from.code(1, 3);
        d.kind = from.code(0, 3);
        d.iref = from.code(0, nepoch + 1);
        d.n = from.below(nepoch + 2);
        for (int e = 0; e < d.n; e++) {
            t.epoch.push_back(from.rarely() ? from.any_whole() : e + 1);
            t.code.push_back(from.rarely() ? from.any_whole() : 1);
            t.scale.push_back(from.number(1.0));
            for (std::vector<double> *v : {&t.tx, &t.ty, &t.tz, &t.rx, &t.ry, &t.rz}) v->push_back(from.number(0.0));
        }
        lumpdefs.push_back(d);
    }
}

void RandomProject::make_pairs()
{
    const int n = npoint > 0 && from.below(6) == 5 ? 1 + from.below(4) : 0;
    for (int i = 0; i < n; i++) {
        pair_input r = pair_input();
        name(r.from, sizeof r.from, any_point());
        name(r.to, sizeof r.to, any_point());
        pairs.push_back(r);
    }
}

// A file that fits the points to import, unless a choice says otherwise.
void RandomProject::write_connected_net()
{
    if (from.below(6) != 5) return;
    snprintf(p.confile, sizeof p.confile, "import.con");
    FILE *f = fopen(p.confile, "wb");
    if (!f) return;
    std::vector<int> imported;
    for (int i = 0; i < npoint; i++)
        if ((i < nsta ? stations[(size_t)i].iconn : targets[(size_t)(i - nsta)].iconn) == 2) imported.push_back(i);
    const int n = (int)imported.size(), m = n * (p.dim >= 1 && p.dim <= 3 ? p.dim : 3);
    fprintf(f, "File: x.con for %d connections in dimension %d\n", from.rarely() ? from.any_whole() : n, p.dim);
    for (int i : imported) {
        double x[3];
        place(i, x);
        fprintf(f, "P%-7d  %22.6f%22.6f%22.6f\n", i, from.number(x[0]), from.number(x[1]), from.number(x[2]));
    }
    for (int row = 0; row < m; row++)
        for (int column = 0; column <= row; column++) fprintf(f, "%25.21f\n", from.number(row == column ? 1e-6 : 0.0));
    fclose(f);
}

// Counts of empty lists may be anything that is not above zero.
template <class Record> int RandomProject::count(const std::vector<Record> &list)
{
    if (!list.empty() || !from.rarely()) return (int)list.size();
    const int n = from.any_whole();
    return n < 0 ? n : 0;
}

void RandomProject::attach()
{
    p.stations = stations.data(), p.nstations = count(stations);
    p.targets = targets.data(), p.ntargets = count(targets);
    p.distances = distances.data(), p.ndistances = count(distances);
    p.heightdiffs = heightdiffs.data(), p.nheightdiffs = count(heightdiffs);
    p.directions = directions.data(), p.ndirections = count(directions);
    p.verticals = verticals.data(), p.nverticals = count(verticals);
    p.azimuths = azimuths.data(), p.nazimuths = count(azimuths);
    p.baselines = baselines.data(), p.nbaselines = count(baselines);
    p.groups = groups.data(), p.ngroups = count(groups);
    p.cameras = cameras.data(), p.ncameras = count(cameras);
    p.images = images.data(), p.nimages = count(images);
    p.lumpdefs = lumpdefs.data(), p.nlumpdefs = count(lumpdefs);
    p.pairs = pairs.data(), p.npairs = count(pairs);
    for (size_t i = 0; i < groups.size(); i++) {
        groups[i].member = members[i].data();
        groups[i].nmember = count(members[i]);
    }
    for (size_t i = 0; i < lumpdefs.size(); i++) {
        LumpTable &t = lump_tables[i];
        lump_definition &d = lumpdefs[i];
        d.epoch = t.epoch.data(), d.code = t.code.data(), d.scale = t.scale.data();
        d.tx = t.tx.data(), d.ty = t.ty.data(), d.tz = t.tz.data();
        d.rx = t.rx.data(), d.ry = t.ry.data(), d.rz = t.rz.data();
    }
}
