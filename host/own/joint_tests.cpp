#include "host/own/joint_tests.h"

namespace vornhost {

std::vector<std::vector<int>> tested_together(const Numbers &numbers)
{
    std::vector<std::vector<int>> together;
    int record = -1; // of the last observed coordinates
    for (size_t i = 0; i < numbers.items.size(); i++) {
        const ItemPlace &item = numbers.items[i];
        if (item.item == Item::baseline || item.item == Item::observed_point) together.push_back({(int)i});
        if (item.item != Item::observed_coordinate) continue;
        if (item.record != record) together.emplace_back();
        together.back().push_back((int)i);
        record = item.record;
    }
    return together;
}

} // namespace vornhost
