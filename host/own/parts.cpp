#include "host/own/parts.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <utility>

#include "host/own/bytes.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Whole numbers of all processes added up.
std::vector<int> sums(va::Ranks &ranks, const std::vector<int> &own)
{
    std::vector<double> x(own.begin(), own.end());
    ranks.sum(x.data(), x.size());
    return {x.begin(), x.end()};
}

// Orientations beyond the first of stands whose rows another process has.
void share_counts(va::Ranks &ranks, Rounds *rounds)
{
    std::vector<int> more;
    more.reserve(rounds->count.size());
    for (const int n : rounds->count) more.push_back(n - 1);
    more = sums(ranks, more);
    for (size_t s = 0; s < more.size(); s++) rounds->count[s] = more[s] + 1;
}

// Kinds of items in the order of their observations, with the rows that each may have.
struct Rows {
    Item item;
    int count;
};

std::vector<Rows> rows_of(const Model &m, const Numbers &numbers)
{
    const int points = (int)(m.stations.size() + m.targets.size());
    return {{Item::distance, m.distances.rows},
            {Item::height_difference, m.heightdiffs.rows},
            {Item::direction, m.directions.rows},
            {Item::vertical_angle, m.verticals.rows},
            {Item::azimuth, m.azimuths.rows},
            {Item::baseline, m.baselines.rows},
            {Item::horizontal_distance, m.horizontal_distances.rows},
            {Item::bearing, m.bearings.rows},
            {Item::angle, m.angles.rows},
            {Item::scale_bar, m.scale_bars.rows},
            {Item::observed_coordinate, m.coordinates.rows},
            {Item::coordinate_difference, m.coordinate_differences.rows},
            {Item::weighted_coordinate, points},
            {Item::weighted_rotation, (int)numbers.setups.size()},
            {Item::weighted_constant, (int)m.groups.size()}};
}

// Row of an item in its table, or its record.
int row_of(const Model &m, const ItemPlace &item)
{
    const size_t record = (size_t)item.record;
    switch (item.item) {
    case Item::distance: return m.distances.row_of(record);
    case Item::height_difference: return m.heightdiffs.row_of(record);
    case Item::direction: return m.directions.row_of(record);
    case Item::vertical_angle: return m.verticals.row_of(record);
    case Item::azimuth: return m.azimuths.row_of(record);
    case Item::baseline: return m.baselines.row_of(record);
    case Item::horizontal_distance: return m.horizontal_distances.row_of(record);
    case Item::bearing: return m.bearings.row_of(record);
    case Item::angle: return m.angles.row_of(record);
    case Item::scale_bar: return m.scale_bars.row_of(record);
    case Item::observed_coordinate: return m.coordinates.row_of(record);
    case Item::coordinate_difference: return m.coordinate_differences.row_of(record);
    default: return item.record;
    }
}

void pack_account(Packer &pack, const Account &a)
{
    pack(a.kind), pack(a.read), pack(a.used), pack(a.left_out.size());
    for (const LeftOut &row : a.left_out) {
        pack(row.file), pack(row.line), pack(row.from), pack(row.to), pack(row.reason), pack(row.at);
    }
}

Account take_account(Unpacker &take)
{
    Account a;
    size_t n = 0;
    take(a.kind), take(a.read), take(a.used), take(n);
    a.left_out.resize(n);
    for (LeftOut &row : a.left_out) {
        take(row.file), take(row.line), take(row.from), take(row.to), take(row.reason), take(row.at);
    }
    return a;
}

void add_account(std::vector<Account> *all, Account &&one)
{
    const auto same = std::find_if(all->begin(), all->end(), [&](const Account &a) { return a.kind == one.kind; });
    same->read += one.read;
    same->used += one.used;
    std::move(one.left_out.begin(), one.left_out.end(), std::back_inserter(same->left_out));
}

} // namespace

bool any_has(va::Ranks &ranks, bool own)
{
    double found = own;
    ranks.most(&found, 1);
    return found > 0.0;
}

void agree_on_files(va::Ranks &ranks, const Model &network)
{
    constexpr std::size_t half = (std::size_t)1 << 4 * sizeof(std::size_t);
    const std::size_t high = network.digest / half, low = network.digest % half;
    double told[] = {(double)high, (double)low, -(double)high, -(double)low};
    ranks.most(told, std::size(told));
    if (told[0] != -told[2] || told[1] != -told[3])
        throw std::runtime_error("the processes have read different networks; give them the same files");
}

bool is_own(const Model &network, int point)
{
    return network.share.whole() || network.part_of[(size_t)point] == network.share.own;
}

bool is_own(const Model &network, const PointPlace &point)
{
    return is_own(network, point.record + (point.station ? 0 : (int)network.stations.size()));
}

void share_stands(const Model &network, va::Ranks *ranks, std::vector<Sights> *sights, Rounds *rounds)
{
    if (network.share.whole()) return;
    std::vector<bool> flags;
    for (const Sights &s : *sights) flags.push_back(s.circle), flags.push_back(s.any);
    share_flags(network, ranks, &flags);
    for (size_t i = 0; i < sights->size(); i++) (*sights)[i] = {flags[2 * i], flags[2 * i + 1]};
    share_counts(*ranks, rounds);
}

void share_flags(const Model &network, va::Ranks *ranks, std::vector<bool> *flags)
{
    if (network.share.whole()) return;
    const std::vector<int> found = sums(*ranks, {flags->begin(), flags->end()});
    std::transform(found.begin(), found.end(), flags->begin(), [](int n) { return n > 0; });
}

void share_setups(const Model &network, va::Ranks *ranks, Numbers *numbers)
{
    if (network.share.whole()) return;
    constexpr size_t told = 4;
    va::Model &model = numbers->model;
    std::vector<SetupPlace> &setups = numbers->setups;
    std::vector<double> all(told * setups.size(), 0.0);
    for (size_t s = 0; s < setups.size(); s++) {
        if (!is_own(network, setups[s].station)) continue;
        std::copy_n(&model.value[(size_t)model.setups[s].first], 3, &all[told * s]);
        all[told * s + 3] = setups[s].set;
    }
    ranks->sum(all.data(), all.size());
    for (size_t s = 0; s < setups.size(); s++) {
        const size_t first = (size_t)model.setups[s].first;
        std::copy_n(&all[told * s], 3, &model.value[first]);
        std::copy_n(&all[told * s], 3, &model.start[first]);
        setups[s].set = (int)all[told * s + 3];
    }
}

va::OwnObservations number_observations(const Model &network, const Numbers &numbers)
{
    constexpr int parts = 3; // of a row, axes or angles
    std::vector<std::int64_t> first((size_t)Item::centring + 1, 0);
    va::OwnObservations own;
    for (const Rows &rows : rows_of(network, numbers)) {
        first[(size_t)rows.item] = own.all;
        own.all += (std::int64_t)parts * rows.count;
    }
    own.numbers.reserve(numbers.items.size());
    for (const ItemPlace &item : numbers.items)
        own.numbers.push_back(first[(size_t)item.item] + (std::int64_t)parts * row_of(network, item) + item.part);
    return own;
}

std::vector<std::string> lines_of_all(va::Ranks &ranks, const std::vector<std::string> &own)
{
    std::string bytes;
    Packer pack(&bytes);
    for (const std::string &line : own) pack(line);
    std::vector<std::string> all;
    std::set<std::string> told;
    for (const std::string &of_rank : ranks.bring(bytes))
        for (Unpacker take(of_rank); !take.at_end();) {
            std::string line;
            take(line);
            if (told.insert(line).second) all.push_back(line);
        }
    return all;
}

std::vector<Account> accounts_of_all(va::Ranks &ranks, const std::vector<Account> &own)
{
    std::string bytes;
    Packer pack(&bytes);
    for (const Account &a : own) pack_account(pack, a);
    std::vector<Account> all;
    for (const std::string &of_rank : ranks.bring(bytes)) {
        const bool first = all.empty();
        for (Unpacker take(of_rank); !take.at_end();) {
            Account a = take_account(take);
            if (first)
                all.push_back(std::move(a));
            else
                add_account(&all, std::move(a));
        }
    }
    for (Account &a : all)
        std::stable_sort(a.left_out.begin(), a.left_out.end(),
                         [](const LeftOut &x, const LeftOut &y) { return x.line < y.line; });
    return all;
}

std::vector<va::JointStatistics> joint_tests_of_all(va::Ranks &ranks, const std::vector<va::JointStatistics> &own)
{
    std::string bytes;
    Packer pack(&bytes);
    for (const va::JointStatistics &j : own) pack(j.rank), pack(j.squares), pack(j.rows), pack(j.first);
    std::vector<va::JointStatistics> all;
    for (const std::string &of_rank : ranks.bring(bytes))
        for (Unpacker take(of_rank); !take.at_end();) {
            va::JointStatistics j;
            take(j.rank), take(j.squares), take(j.rows), take(j.first);
            all.push_back(j);
        }
    std::stable_sort(all.begin(), all.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    return all;
}

} // namespace vornhost
