// Results of the observations of an adjusted network, row by row, from what the adjustment knows of them.

#ifndef VORNHOST_OBSERVATION_RESULTS_H
#define VORNHOST_OBSERVATION_RESULTS_H

#include <memory>
#include <utility>
#include <vector>

#include "host/own/item_names.h"
#include "host/own/road.h"
#include "host/results/residuals.h"
#include "host/results/test_rule.h"

namespace vornhost {

// Whether an observation is read on a circle, and a direction, azimuth, bearing or angle as it is read there, from 0
// to a full circle.
bool is_circle(const ResidualResult &residual);
double on_circle(double angle);

class ObservationResults {
public:
    // The model has to last as long as these; there are none where nothing was adjusted.
    ObservationResults(const Model &model, std::shared_ptr<const OwnOutcome> outcome);

    // Those of this process that are among the `count` residuals from `first` on, of all that share the adjustment.
    std::vector<ResidualResult> make(size_t first, size_t count) const;
    std::vector<size_t> places(size_t first, size_t count) const; // of these, among all residuals

    const TestRule &rule() const { return test_rule; }

private:
    std::pair<std::vector<int>::const_iterator, std::vector<int>::const_iterator> among(size_t first,
                                                                                        size_t count) const;
    double weight(int row) const;
    ResidualResult of_row(int row) const;
    double counted_from(const vornadjust::Observation &o, int component) const;
    std::shared_ptr<const RowWords> words_of(const ItemPlace &item, const ItemName &name) const;
    void corrections(int observation, ResidualResult &r) const;
    void mark(const vornadjust::RowStatistics &s, ResidualResult &r) const;
    void test(const vornadjust::RowStatistics &s, double weight, ResidualResult &r) const;

    const Model &network;
    const std::shared_ptr<const OwnOutcome> outcome;
    const Numbers &numbers;
    const vornadjust::Model &values;
    const vornadjust::Outcome &adjustment;
    const bool planned, precise;
    const TestRule test_rule;
    const double detectable; // times the root of the cofactors of weighted residuals
    double limit = 0, limit_divided = 0, tau = 0, tau_divided = 0;
    std::vector<int> row_of; // [residuals of this process] rows of the equations
};

} // namespace vornhost

#endif
