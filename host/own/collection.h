// What the own adjustment gives, taken into the one result: each function fills its part of it.

#ifndef VORNHOST_COLLECTION_H
#define VORNHOST_COLLECTION_H

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/own/observation_results.h"
#include "host/own/road.h"
#include "host/results/results.h"
#include "host/results/test_rule.h"

namespace vornhost {

class Collection {
public:
    Collection(const Model &model, const std::shared_ptr<const OwnOutcome> &own, Results &all)
        : network(model), outcome(*own), numbers(own->numbers), values(own->numbers.model), adjustment(own->adjustment),
          results(all), planned(model.mode == Mode::Propagation), precise(own->adjusted() && has_precision()),
          rows(std::make_shared<const ObservationResults>(model, own)), rule(rows->rule())
    {
    }

    void run();

private:
    bool has_precision() const { return !adjustment.statistics.deviation.empty(); }
    // Of any process.
    bool has_tests() const
    {
        return precise && std::any_of(adjustment.statistics.kinds.begin(), adjustment.statistics.kinds.end(),
                                      [](const vornadjust::KindStatistics &k) { return k.rows > 0; });
    }
    bool estimated(int unknown) const { return values.estimated(unknown) && adjustment.seen[(size_t)unknown]; }
    std::optional<double> deviation(int unknown) const;
    template <int n>
    void parameters(int first, std::optional<double> (&value)[n], std::optional<double> (&sd)[n]) const;

    void variance();
    void precision();
    void points();
    void point_precision(int point, PointResult &p) const;
    void moves(int point, PointResult &p) const;
    void on_earth(int point, PointResult &p) const;
    void reference_system();
    void orientations();
    void residuals();
    void look_through();
    void tests();
    void weights();
    void suspects();
    void joint_tests();
    void kinds();
    void groups();
    void cameras();
    void lumps();
    void deflections();
    void transformations();
    void pairs();
    void weak_pairs();

    const Model &network;
    const OwnOutcome &outcome;
    const Numbers &numbers;
    const vornadjust::Model &values;
    const vornadjust::Outcome &adjustment;
    Results &results;
    const bool planned, precise;
    const std::shared_ptr<const ObservationResults> rows;
    const TestRule &rule;
    std::map<std::string, KindResult> marks; // of the residuals of each kind, weighted and imported ones together
    int unchecked = 0;
    std::optional<size_t> first_unchecked;
};

// Values and standard deviations of n unknowns, of those that were estimated.
template <int n>
void Collection::parameters(int first, std::optional<double> (&value)[n], std::optional<double> (&sd)[n]) const
{
    for (int k = 0; k < n; k++) {
        if (!estimated(first + k)) continue;
        value[k] = values.value[(size_t)first + (size_t)k];
        sd[k] = deviation(first + k);
    }
}

} // namespace vornhost

#endif
