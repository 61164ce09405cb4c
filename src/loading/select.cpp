// Selection of observations.
//
// A kind number addresses a list and is the host's typ of its records. A record is selected
// while its typ is above 0; it leaves the run, for good, when typ is negated in the host's
// data. Nothing is removed from a list.

#include "vorn/run.h"

#include "vorn/message.h"
#include "loading/names.h"
#include "loading/numbers.h"

namespace vornengine {

static const char *kindname(int kind)
{
    switch (kind) {
    case KIND_DISTANCE: return "distance";
    case KIND_HEIGHT_DIFFERENCE: return "height difference";
    case KIND_DIRECTION: return "horizontal direction";
    case KIND_VERTICAL: return "vertical angle";
    default: return "azimuth angle";
    }
}

// The host's list of a kind and its size.
measure_input *vornrun::hostlist(int kind, int *n) const
{
    switch (kind) {
    case KIND_DISTANCE: *n = npdist; return pdist;
    case KIND_HEIGHT_DIFFERENCE: *n = npdifh; return pdifh;
    case KIND_DIRECTION: *n = npdir1; return pdir1;
    case KIND_VERTICAL: *n = npdir2; return pdir2;
    default: *n = pproject->nazimuths; return pproject->azimuths;
    }
}

// The count of selected records of a kind.
int *vornrun::listcount(int kind)
{
    switch (kind) {
    case KIND_DISTANCE: return &ndist;
    case KIND_HEIGHT_DIFFERENCE: return &ndifh;
    case KIND_DIRECTION: return &ndir1;
    case KIND_VERTICAL: return &ndir2;
    default: return &naz;
    }
}

// Collects the distinct epochs of the selected records, in order of first appearance, behind
// the entries that stand in the table.
static void collect_epochs(const measure_input *list, int n, int *itimetable)
{
    int nepoch = 0;
    while (nepoch < n && itimetable[nepoch] != 0) nepoch++;
    numberindex *ix = numberindex_make(n);
    for (int i = 0; ix && i < nepoch; i++) numberindex_add(ix, itimetable[i], i);
    for (int i = 0; i < n && nepoch < n; i++) {
        const int time = list[i].time;
        if (list[i].typ <= 0 || time == 0 || place_of(time, itimetable, nepoch, ix) >= 0) continue;
        if (ix) numberindex_add(ix, time, nepoch);
        itimetable[nepoch++] = time;
    }
    numberindex_free(ix);
}

int vornrun::selectm(int kind, int *itimetable)
{
    int n, nselected = 0;
    const measure_input *list = hostlist(kind, &n);
    for (int i = 0; i < n; i++)
        if (list[i].typ > 0) nselected++;
    if (kind == KIND_DIRECTION && pproject->lumpmethod == 9 && itimetable) collect_epochs(list, n, itimetable);
    return nselected;
}

// Takes one record out of the run and says so.
static void deselect(Feedback *fb, FILE *out, const char *routine, int kind, measure_input *m)
{
    const nametext from = name_in(m->from, sizeof m->from), to = name_in(m->to, sizeof m->to);
    tell_and_print(fb, out, "%s: Must deselect %s between %s and %s", routine, kindname(kind), from.text, to.text);
    m->typ = -m->typ;
}

void vornrun::deselall(int kind)
{
    int n;
    measure_input *list = hostlist(kind, &n);
    *listcount(kind) = 0;
    for (int i = 0; i < n; i++)
        if (list[i].typ > 0) deselect(pfeedback, out, "deselall", kind, list + i);
}

// Status of a station or target, by what searchnam gives.
int vornrun::hoststatus(int ihost) const { return ihost < npsta ? psta[ihost].status : ptar[ihost - npsta].status; }

// Whether both points of a record are there, and the first is fit for its kind.
bool vornrun::usable(int kind, const measure_input *m)
{
    const int ifrom = searchnam(m->from), ito = searchnam(m->to);
    if (ifrom < 0 || ito < 0) return false;
    if (hoststatus(ifrom) < 0 || hoststatus(ito) < 0) return false;
    const bool angle = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    return !angle || ifrom < npsta; // angles are taken at a station
}

int vornrun::checkm(int kind)
{
    int n, ndeselected = 0;
    measure_input *list = hostlist(kind, &n);
    for (int i = 0; i < n; i++) {
        if (list[i].typ <= 0 || usable(kind, list + i)) continue;
        deselect(pfeedback, out, "checkm", kind, list + i);
        ndeselected++;
    }
    return ndeselected;
}

} // namespace vornengine
