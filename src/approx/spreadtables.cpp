// What the tables of a spread say.

#include "approx/spreadtables.h"

namespace vornengine {

void fill_table(const approxdata *net, spreadtables *tab)
{
    for (int i = 0; i < net->nsta; i++)
        for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++)
            tab->table[i][net->seen.to[e]] = net->seen.item[e] + 1;
}

int common_shots(const approxdata *net, const spreadtables *tab, int s1, int s2)
{
    int n = 0;
    for (int e = net->seen.first[s1]; e < net->seen.first[s1 + 1]; e++)
        n += net->seen.to[e] != s2 && tab->table[s2][net->seen.to[e]] != 0;
    return n;
}

} // namespace vornengine
