// The list of the observations in a trace: lengths in metres, angles in the host's unit.

#include "solution/trace.h"

#include <string.h>

#include "solution/solution.h"

namespace vornengine {

void trace_measures(FILE *out, const char *title, const measure *list, int n)
{
    fprintf(out, "%s", title);
    for (const measure *m = list; m < list + n; m++)
        fprintf(out, "%8s  %8s%22.5lf%15.5lf\n", m->p1->name, m->p2->name, m->val[0], m->val[1]);
}

// The same with the typ of each.
static void trace_distances(FILE *out, const measure *list, int n)
{
    fprintf(out, "distances\n");
    for (const measure *m = list; m < list + n; m++)
        fprintf(out, "%8s  %8s%22.5lf%15.5lf    %d\n", m->p1->name, m->p2->name, m->val[0], m->val[1], m->typ);
}

// A list of angles, shown as horizontal ones whatever they are.
static void trace_horizontal(FILE *out, project *host, const measure *list, int n)
{
    for (const measure *m = list; m < list + n; m++)
        fprintf(out, "%8s  %8s%22.5lf%15.5lf\n", m->p1->name, m->p2->name, host->htoraw(1, m->val[0]),
                host->htoraw(0, m->val[1]));
}

// Parallel lists of directions and vertical angles: one line a pair that names the same
// points, otherwise both pairs of names with their index.
static void trace_pairs(FILE *out, project *host, const measure *dir1, const measure *dir2, int n)
{
    for (int i = 0; i < n; i++) {
        const measure *h = dir1 + i, *v = dir2 + i;
        const point *a = h->p1, *b = h->p2, *c = v->p1, *d = v->p2;
        if (strcmp(a->name, c->name) == 0 && strcmp(b->name, d->name) == 0)
            fprintf(out, "%8s  %8s%22.5lf%15.5lf%15.5lf%10.5lf\n", a->name, b->name, host->htoraw(1, h->val[0]),
                    host->vtoraw(1, v->val[0]), host->htoraw(0, h->val[1]), host->vtoraw(0, v->val[1]));
        else
            fprintf(out, "dir1%4d %8s  %8s\ndir2%4d %8s  %8s\n", i, a->name, b->name, i, c->name, d->name);
    }
}

void trace_directions(const solverinput *in)
{
    fprintf(in->out, "directions\n");
    if (in->ndir1 == in->ndir2) {
        trace_pairs(in->out, in->pproject, in->dir1, in->dir2, in->ndir1);
        return;
    }
    trace_horizontal(in->out, in->pproject, in->dir1, in->ndir1);
    if (in->dim == 2 && in->ndir2 == 0) return;
    fprintf(in->out, "\n");
    trace_horizontal(in->out, in->pproject, in->dir2, in->ndir2);
}

void solution::traceobs(int withtyp)
{
    if (withtyp)
        trace_distances(out, dist, ndist);
    else
        trace_measures(out, "distances\n", dist, ndist);
    trace_measures(out, "height differences\n", difh, ndifh);
    trace_directions(this);
    fprintf(out, "gps baselines\n");
    for (const gpsbase *g = gps; g < gps + ngps; g++)
        fprintf(out, "%8s  %8s%22.6lf%15.6lf%15.6lf\n", g->p1->name, g->p2->name, g->dx[0], g->dx[1], g->dx[2]);
    fprintf(out, "photo coordinates\n");
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) // those behind were never read
        fprintf(out, "%8s  %8s%22.5lf%15.5lf\n", obsuv1[i].p1->name, obsuv1[i].p2->name, obsuv1[i].val[0],
                obsuv2[i].val[0]);
}

} // namespace vornengine
