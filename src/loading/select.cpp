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
    const kindlist k = listof(kind);
    int nselected = 0;
    for (int i = 0; i < k.nhost; i++)
        if (k.host[i].typ > 0) nselected++;
    if (kind == KIND_DIRECTION && pproject->lumpmethod == 9 && itimetable) collect_epochs(k.host, k.nhost, itimetable);
    return nselected;
}

// Takes one record out of the run and says so.
static void deselect(Feedback *fb, FILE *out, const char *routine, const char *name, measure_input *m)
{
    const nametext from = name_in(m->from, sizeof m->from), to = name_in(m->to, sizeof m->to);
    tell_and_print(fb, out, "%s: Must deselect %s between %s and %s", routine, name, from.text, to.text);
    m->typ = -m->typ;
}

void vornrun::deselall(int kind)
{
    const kindlist k = listof(kind);
    *k.n = 0;
    for (int i = 0; i < k.nhost; i++)
        if (k.host[i].typ > 0) deselect(pfeedback, out, "deselall", k.name, k.host + i);
}

// Whether both points of a record are there, and the first is fit for its kind.
bool vornrun::usable(int kind, const measure_input *m)
{
    const int ifrom = searchnam(m->from), ito = searchnam(m->to);
    if (ifrom < 0 || ito < 0) return false;
    if (hosts().status(ifrom) < 0 || hosts().status(ito) < 0) return false;
    const bool angle = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    return !angle || hosts().is_station(ifrom); // angles are taken at a station
}

int vornrun::checkm(int kind)
{
    const kindlist k = listof(kind);
    int ndeselected = 0;
    for (int i = 0; i < k.nhost; i++) {
        if (k.host[i].typ <= 0 || usable(kind, k.host + i)) continue;
        deselect(pfeedback, out, "checkm", k.name, k.host + i);
        ndeselected++;
    }
    return ndeselected;
}

} // namespace vornengine
