#include "networks.h"

#include <stdio.h>
#include <string.h>

static void set_name(char name[12], const char *text) { snprintf(name, 12, "%-8s", text); }

static void settings(network *n, const char *filename, int dim, int irun)
{
    memset((void *)&n->p, 0, sizeof n->p);
    n->p.pfeedback = &n->quiet;
    strcpy(n->p.filename, filename);
    n->p.irun = irun;
    n->p.dim = dim;
    n->p.itmax = 20;
    n->p.convergence = 1.0e-6;
    n->p.radius = 6371000.0;
    n->p.sdist = n->p.sdifh = n->p.sdir1 = n->p.sdir2 = n->p.saz = n->p.sgps = n->p.suv = 1.0;
    n->p.imixed = -1;
    n->p.iangle = ANGLE_GON;
    n->p.stations = n->stations;
    n->p.targets = n->targets;
    n->p.distances = n->dist;
    n->p.heightdiffs = n->difh;
    n->p.directions = n->dir1;
}

static void add(measure_input *list, int *count, int typ, const char *from, const char *to, double val, double sig)
{
    measure_input *m = list + (*count)++;
    memset((void *)m, 0, sizeof *m);
    m->typ = typ;
    set_name(m->from, from);
    set_name(m->to, to);
    m->val = val;
    m->sig = sig;
}

static void target(network *n, const char *name, double x, double y, double z, const int code[3])
{
    target_input *t = n->targets + n->p.ntargets++;
    memset((void *)t, 0, sizeof *t);
    set_name(t->name, name);
    t->status = STATUS_ON;
    t->x[0] = x;
    t->x[1] = y;
    t->x[2] = z;
    memcpy(t->ix, code, sizeof t->ix);
}

static void station(network *n, const char *name, double x, double y, int iconn)
{
    const int free_plane[3] = {CODE_FREE, CODE_FREE, CODE_ABSENT}, turns[3] = {CODE_ABSENT, CODE_ABSENT, CODE_FREE};
    station_input *s = n->stations + n->p.nstations++;
    memset((void *)s, 0, sizeof *s);
    set_name(s->name, name);
    s->status = STATUS_ON;
    s->x[0] = x;
    s->x[1] = y;
    s->iconn = iconn;
    memcpy(s->ix, free_plane, sizeof s->ix);
    memcpy(s->ir, turns, sizeof s->ir);
}

void levelling(network *n)
{
    settings(n, "level.inp", 1, 1);
    const int height[3] = {CODE_ABSENT, CODE_ABSENT, CODE_FREE};
    const char *const names[] = {"1", "2", "3", "4", "5"};
    const double z[] = {68.93, 60.72, 63.20, 56.29, 44.32};
    for (int i = 0; i < 5; i++) target(n, names[i], 0.0, 0.0, z[i], height);
    const struct {
        const char *from, *to;
        double dh;
    } lines[] = {{"1", "2", -8.2061}, {"2", "3", 2.4792},  {"3", "4", -6.9085},  {"4", "5", -11.9618},
                 {"5", "1", 24.5991}, {"2", "4", -4.4307}, {"3", "5", -18.8723}, {"1", "3", -5.7277}};
    for (const auto &l : lines) add(n->difh, &n->p.nheightdiffs, KIND_HEIGHT_DIFFERENCE, l.from, l.to, l.dh, 0.002);
}

// True stations at (27816.117, 40759.377) and (27904.004, 41373.019); readings carry errors of
// some tenths of a milligon and millimetres.
static void plane_network(network *n, const char *filename, int iconn)
{
    settings(n, filename, 2, 1);
    const int known[3] = {CODE_FIXED, CODE_FIXED, CODE_ABSENT};
    station(n, "Z108", 27816.1, 40759.4, iconn);
    station(n, "Z110", 27904.0, 41373.0, iconn);
    n->stations[0].r[2] = 2.0;
    n->stations[1].r[2] = -1.0;
    target(n, "104", 26816.143, 40686.792, 0.0, known);
    target(n, "106", 28872.552, 41932.838, 0.0, known);
    target(n, "113", 27492.007, 42242.231, 0.0, known);
    target(n, "280", 28835.979, 40350.846, 0.0, known);
    const struct {
        const char *from, *to;
        double direction, distance;
    } shots[] = {{"Z108", "104", 331.9366, 1002.614}, {"Z108", "113", 241.0233, 1517.863},
                 {"Z108", "280", 103.0681, 1098.646}, {"Z108", "Z110", 218.2674, 619.902},
                 {"Z110", "106", 369.7019, 1118.693}, {"Z110", "113", 64.5162, 961.908},
                 {"Z110", "280", 283.4018, 1383.259}, {"Z110", "Z108", 227.2805, 619.902}};
    for (const auto &s : shots) {
        add(n->dir1, &n->p.ndirections, KIND_DIRECTION, s.from, s.to, s.direction, 0.0005);
        add(n->dist, &n->p.ndistances, KIND_DISTANCE, s.from, s.to, s.distance, 0.005);
    }
}

void plane(network *n)
{
    plane_network(n, "plane.inp", 1);
    n->p.idebug = 9;
}

void chained(network *n)
{
    plane_network(n, "chained.inp", 2);
    strcpy(n->p.confile, "plane.con");
    n->p.idebug = 9;
}
