// What a station that could not be computed sees, and whether there would be another way in.
// A diagnosis for the report: nothing is computed, but for the search of a guess once for
// trial. All lines are written whatever the trace flag says.

#include "approx/approx.h"
#include "approx/guesswork.h"

namespace vornengine {

enum { MAX_KNOWN = 2 }; // with three known shots the station would have been resected

// One shot of the station. Returns 0, or -1 when it is one known shot too many.
int approx::patch_shot(int p, int code, int known, int *list, int *nlist) const
{
    if (known) list[(*nlist)++] = p;
    if (p < nsta)
        fprintf(out, "        shot theo  %s with code %d\n", points[p].name, code);
    else
        fprintf(out, "        shot point %s with code %d\n", points[p].name, code);
    if (*nlist <= MAX_KNOWN) return 0;
    fprintf(out, "Patch_spread: Cannot have more than 2 known shots\n");
    return -1;
}

// Reports the shots of station i and lists the known ones (at most 3). Returns the number of
// known ones, or -1 when there are too many.
int approx::patch_shots(int i, const int *itheo, const int *iobj, int *list) const
{
    int nshot = 0, nlist = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++, nshot++) {
        const int p = seen.to[e], code = p < nsta ? itheo[p] : iobj[p - nsta];
        const int known = p < nsta ? code == THEO_DONE || code == THEO_PLACED : code == OBJ_PLACED;
        if (patch_shot(p, code, known, list, &nlist) != 0) return -1;
    }
    fprintf(out, "             makes %d shots\n", nshot);
    fprintf(out, "             makes %d shots on known targets\n", nlist);
    return nlist;
}

int approx::common_shots(int s1, int s2, int **table) const
{
    int n = 0;
    for (int e = seen.first[s1]; e < seen.first[s1 + 1]; e++) n += seen.to[e] != s2 && table[s2][seen.to[e]] != 0;
    return n;
}

// The first finished station that shot a known point of the list and has more than two common
// shots with station i, or -1.
int approx::guess_partner(int i, int **table, const int *itheo, const int *list, int nlist) const
{
    for (int k = 0; k < nlist; k++)
        for (int s = 0; s < nsta; s++)
            if (s != i && itheo[s] == THEO_DONE && table[s][list[k]] > 0 && common_shots(i, s, table) > 2) return s;
    return -1;
}

// The search of a guess with stations s and i; what it finds is dropped. Returns 0, -4 or -9.
int approx::try_guess(int s, int i, int **table)
{
    const int ncommon = common_shots(i, s, table);
    guesswork g = guesswork();
    int result = guesswork_take(&g, ncommon) == 0 ? 0 : -4;
    double o1, o2;
    if (result != 0)
        fprintf(out, "patch_spread: cannot allocate isys, app or rhs\n");
    else if (guess_o1o2(s, i, ncommon, table, g.isys, g.app, g.rhs, &o1, &o2) < 0)
        result = -9;
    guesswork_free(&g);
    return result;
}

// Returns
//    0 not in space, or the search of a guess succeeded     -4 no memory
//   -1 three known shots, or a total station with two       -5 no partner for a guess
//   -9 the search of a guess failed
int approx::patch_spread(int i, int **table, int *itheo, int *iobj)
{
    int list[MAX_KNOWN + 1];
    fprintf(out, "   Theo : %s has code %d\n", points[i].name, itheo[i]);
    const int nlist = patch_shots(i, itheo, iobj, list);
    if (nlist < 0) return -1;
    if (nlist == MAX_KNOWN && i < pproject->nstations && pproject->stations[i].typ == 2) {
        fprintf(out, "             total station!\neasy to do....\n");
        return -1;
    }
    if (dim != 3) return 0;
    fprintf(out, "will try a guess..........\n");
    const int s = guess_partner(i, table, itheo, list, nlist);
    if (s < 0) {
        fprintf(out, "Must search for %s\n", points[i].name);
        return -5;
    }
    fprintf(out, "Good pair: %s  %s\n", points[i].name, points[s].name);
    return try_guess(s, i, table);
}

} // namespace vornengine
