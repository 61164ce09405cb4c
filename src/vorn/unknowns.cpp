// Names of unknowns. An unknown is found by walking the records that carry the numbers: a
// run needs it once, when it has failed.

#include "vorn/unknowns.h"

#include <stdio.h>
#include <string.h>

#include "vorn/run.h"

namespace vornengine {

// The walks over the records of a run.
struct unknown_walk {
    static int unknown_of_row(const vornrun &run, int row);
    static bool coordinate(const vornrun &run, int unknown, char *text, size_t size);
    static bool orientation(const vornrun &run, int number, char *text, size_t size);
    static bool camera_parameter(const vornrun &run, int number, char *text, size_t size);
    static bool movement(const vornrun &run, int number, char *text, size_t size);
    static int row(const vornrun &run, int row, char *text, size_t size);
};

// Length of a name without the blanks that fill it.
static int namelength(const char *name)
{
    int n = (int)strlen(name);
    while (n > 0 && name[n - 1] == ' ') n--;
    return n;
}

// The compact solver moves its last equations, the conditions of the datum or the last
// movement of a lump, in front of the last coordinates.
int unknown_walk::unknown_of_row(const vornrun &run, int row)
{
    const int n = run.nunk1 + run.nunk2;
    const int moved = run.ndatum != 0 ? run.ndatum : run.nlump != 0 ? LUMP_PARAMETERS : 0;
    const int first = run.nunk1 - moved, last = run.ndatum != 0 ? n : n - LUMP_PARAMETERS;
    if (row >= first && row < run.nunk1) return last + row - first;
    if (row >= last && row < last + moved) return first + row - last;
    return row;
}

bool unknown_walk::coordinate(const vornrun &run, int unknown, char *text, size_t size)
{
    for (int i = 0; i < run.npoints; i++) {
        const point *p = &run.points[i];
        for (int c = 0; c < 3; c++) {
            if (p->n0[c] != unknown) continue;
            snprintf(text, size, "%c of point %.*s", "xyz"[c], namelength(p->name), p -> name);
            return true;
        }
    }
    return false;
}

bool unknown_walk::orientation(const vornrun &run, int number, char *text, size_t size)
{
    static const char *const words[6] = {"rotation rx1",      "rotation rx2", "orientation",
                                         "additive constant", "scale",        "refraction"};
    for (int i = 0; i < run.nsta; i++) {
        const point *p = &run.points[i];
        for (int k = 0; k < 6; k++) {
            if (p->n1[k] != number) continue;
            snprintf(text, size, "%s of station %.*s", words[k], namelength(p->name), p->name);
            return true;
        }
    }
    return false;
}

bool unknown_walk::camera_parameter(const vornrun &run, int number, char *text, size_t size)
{
    static const char *const words[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
    for (int i = 0; i < run.ncamera; i++) {
        const camera *c = &run.cameras[i];
        for (int k = 0; k < c->npar; k++) {
            if (c->ipar[k] != number) continue;
            snprintf(text, size, "%s of camera %.*s", words[k], namelength(c->name), c->name);
            return true;
        }
    }
    return false;
}

bool unknown_walk::movement(const vornrun &run, int number, char *text, size_t size)
{
    static const char *const words[LUMP_PARAMETERS] = {"tx", "ty", "tz", "rx", "ry", "rz", "scale"};
    for (int i = 0; i < run.nlump; i++) {
        const lump *l = &run.lumps[i];
        for (int e = 0; e < l->nepoch - 1; e++) {
            const int k = number - l->iunk[e];
            if (k < 0 || k >= LUMP_PARAMETERS) continue;
            snprintf(text, size, "%s of lump %d at epoch %d", words[k], l->id, l->epoch[e]);
            return true;
        }
    }
    return false;
}

int unknown_walk::row(const vornrun &run, int row, char *text, size_t size)
{
    const int n = run.nunk1 + run.nunk2;
    const int unknown = row < 0 ? -1 : unknown_of_row(run, row);
    const int number = unknown - run.nunk1;
    text[0] = 0;
    if (unknown < 0 || unknown >= n + run.ndatum || !run.points) return -1;
    if (unknown < run.nunk1) return coordinate(run, unknown, text, size) ? 0 : -1;
    if (unknown < n)
        return orientation(run, number, text, size) || camera_parameter(run, number, text, size) ||
                       movement(run, number, text, size)
                   ? 0
                   : -1;
    snprintf(text, size, "condition %d of the datum", unknown - n + 1);
    return 0;
}

int unknown_names::row(const vorn &run, int row, char *text, size_t size)
{
    return unknown_walk::row(inside::of(run), row, text, size);
}

} // namespace vornengine
