#include "host/results/residuals.h"

#include <algorithm>
#include <iterator>

namespace vornhost {

namespace {

const size_t beside = 64; // of those that are asked for one by one: the next one is often near

} // namespace

const ResidualResult &Residuals::const_iterator::in_block() const
{
    if (at - first >= block.size()) {
        block = list->making(at, std::min(list->at_once, list->made - at));
        first = at;
    }
    return block[at - first];
}

const ResidualResult &Residuals::operator[](size_t i) const
{
    if (!making) return kept[i];
    const auto found = named.find(i);
    if (found != named.end()) return found->second;
    if (i - near_first >= near_by.size()) {
        near_first = i - i % beside;
        near_by = making(near_first, std::min(beside, made - near_first));
    }
    return named.emplace(i, near_by[i - near_first]).first->second;
}

void Residuals::keep()
{
    if (!making) return;
    kept.reserve(made);
    for (size_t first = 0; first < made; first += at_once) {
        std::vector<ResidualResult> block = making(first, std::min(at_once, made - first));
        std::move(block.begin(), block.end(), std::back_inserter(kept));
    }
    making = nullptr;
    named.clear();
    near_by.clear();
}

} // namespace vornhost
