// The points of a run: their numbers and what is known of them.

#include "approx/approxdata.h"

#include "loading/names.h"

namespace vornengine {

int point_number(const approxdata *net, const point *p)
{
    return p >= net->points && p < net->points + net->npoints ? (int)(p - net->points) : -1;
}

int istotal(const approxdata *net, int i)
{
    if (i >= net->nsta) return 0;
    for (int k = 0; k < net->host.nsta; k++) {
        const station_input *s = net->host.sta + k;
        if (same_name(s->name, net->points[i].name)) return s->typ > 1 ? 1 : s->typ;
    }
    return 0;
}

int in_plane(const point *p) { return p->n0[0] == N_NONE && p->n0[1] == N_NONE; }

int next_known(const approxdata *net, int start)
{
    int i = start;
    while (i < net->npoints && !in_plane(net->points + i)) i++;
    return i;
}

} // namespace vornengine
