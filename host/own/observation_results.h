// Results of the observations of an adjusted network, row by row, from what the adjustment knows of them.

#ifndef VORNHOST_OBSERVATION_RESULTS_H
#define VORNHOST_OBSERVATION_RESULTS_H

#include <memory>
#include <vector>

#include "host/own/item_names.h"
#include "host/own/road.h"
#include "host/results/residuals.h"
#include "host/results/test_rule.h"

namespace vornhost {

// Whether an observation is read on a circle, and a direction, azimuth, bearing or angle as it is read there, from 0
// to a full circle.
bool is_circle(const vornadjust::Observation &observation);
double on_circle(double angle);

class ObservationResults {
public:
    // The model has to last as long as these; there are none where nothing was adjusted.
    ObservationResults(const Model &model, std::shared_ptr<const OwnOutcome> outcome);

    size_t size() const { return row_of.size(); } // residuals
    std::vector<ResidualResult> make(size_t first, size_t count) const;
    int place_of(int row) const; // among the residuals, of a usable row of the equations

    const TestRule &rule() const { return test_rule; }
    // The weight of robust estimation, which tests do without.
    double weight(int row) const;

private:
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
    std::vector<int> row_of; // [residuals]
};

} // namespace vornhost

#endif
