#include "host/own/stands.h"

#include <algorithm>

namespace vornhost {

int stand_count(const Model &network) { return (int)(network.stations.size() + network.setups.size()); }

int stand_of(const Model &network, int station, int setup)
{
    return setup < 0 ? station : (int)network.stations.size() + setup;
}

int named_of(const Model &network, int stand)
{
    return stand < (int)network.stations.size() ? -1 : stand - (int)network.stations.size();
}

SetupRecord describe_stand(const Model &network, int stand)
{
    const int named = named_of(network, stand);
    if (named >= 0) return network.setups.records[(size_t)named];
    const station_input &s = network.stations.records[(size_t)stand];
    SetupRecord setup;
    setup.station = stand;
    setup.levelled = s.ilevel == 1;
    std::copy(s.r, s.r + 3, setup.r);
    std::copy(s.sr, s.sr + 3, setup.sr);
    std::copy(s.ir, s.ir + 3, setup.ir);
    setup.orientation_given = network.station_notes[(size_t)stand].orientation_given;
    return setup;
}

bool is_upright(const SetupRecord &setup)
{
    const auto tilted = [&](int k) {
        return setup.ir[k] != CODE_ABSENT && (setup.ir[k] != CODE_FIXED || setup.r[k] != 0);
    };
    return setup.levelled && !tilted(0) && !tilted(1);
}

} // namespace vornhost
