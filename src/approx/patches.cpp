// What a station that could not be computed sees, and whether there would be another way in.
// A diagnosis for the report: nothing is computed, but for the search of a guess once for
// trial. All lines are written whatever the trace flag says.

#include "approx/patches.h"

#include "approx/guess.h"

namespace vornengine {

enum { MAX_KNOWN = 2 }; // with three known shots the station would have been resected

// One shot of the station. Returns 0, or -1 when it is one known shot too many.
static int patch_shot(const approxdata *net, int p, int code, int known, int *list, int *nlist)
{
    if (known) list[(*nlist)++] = p;
    if (p < net->nsta)
        fprintf(net->out, "        shot theo  %s with code %d\n", net->points[p].name, code);
    else
        fprintf(net->out, "        shot point %s with code %d\n", net->points[p].name, code);
    if (*nlist <= MAX_KNOWN) return 0;
    fprintf(net->out, "Patch_spread: Cannot have more than 2 known shots\n");
    return -1;
}

// Reports the shots of station i and lists the known ones (at most 3). Returns the number of
// known ones, or -1 when there are too many.
static int patch_shots(const approxdata *net, const spreadtables *tab, int i, int *list)
{
    int nshot = 0, nlist = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++, nshot++) {
        const int p = net->seen.to[e], code = p < net->nsta ? tab->itheo[p] : tab->iobj[p - net->nsta];
        if (patch_shot(net, p, code, has_position(net, tab, p), list, &nlist) != 0) return -1;
    }
    fprintf(net->out, "             makes %d shots\n", nshot);
    fprintf(net->out, "             makes %d shots on known targets\n", nlist);
    return nlist;
}

// The first finished station that shot a known point of the list and has more than two common
// shots with station i, or -1.
static int guess_partner(const approxdata *net, const spreadtables *tab, int i, const int *list, int nlist)
{
    for (int k = 0; k < nlist; k++)
        for (int s = 0; s < net->nsta; s++)
            if (s != i && tab->itheo[s] == THEO_DONE && tab->table[s][list[k]] > 0 && common_shots(net, tab, i, s) > 2)
                return s;
    return -1;
}

// The search of a guess with stations s and i; what it finds is dropped. Returns 0, -4 or -9.
static int try_guess(const approxdata *net, const spreadtables *tab, int s, int i)
{
    const stationpair pair = {s, i, common_shots(net, tab, i, s), -1, {0, 0, 0}};
    guesswork g = guesswork();
    int result = guesswork_take(&g, pair.ncommon) == 0 ? 0 : -4;
    double o1, o2;
    if (result != 0)
        fprintf(net->out, "patch_spread: cannot allocate isys, app or rhs\n");
    else if (guess_o1o2(net, tab, &pair, &g, &o1, &o2) < 0)
        result = -9;
    guesswork_free(&g);
    return result;
}

// Returns
//    0 not in space, or the search of a guess succeeded     -4 no memory
//   -1 three known shots, or a total station with two       -5 no partner for a guess
//   -9 the search of a guess failed
int patch_spread(const approxdata *net, const spreadtables *tab, int i)
{
    int list[MAX_KNOWN + 1];
    fprintf(net->out, "   Theo : %s has code %d\n", net->points[i].name, tab->itheo[i]);
    const int nlist = patch_shots(net, tab, i, list);
    if (nlist < 0) return -1;
    if (nlist == MAX_KNOWN && i < net->host.nsta && net->host.sta[i].typ == 2) {
        fprintf(net->out, "             total station!\neasy to do....\n");
        return -1;
    }
    if (net->dim != 3) return 0;
    fprintf(net->out, "will try a guess..........\n");
    const int s = guess_partner(net, tab, i, list, nlist);
    if (s < 0) {
        fprintf(net->out, "Must search for %s\n", net->points[i].name);
        return -5;
    }
    fprintf(net->out, "Good pair: %s  %s\n", net->points[i].name, net->points[s].name);
    return try_guess(net, tab, s, i);
}

} // namespace vornengine
