// The sections of the program's own report. Each is empty where the results have nothing for it.

#ifndef VORNHOST_REPORT_SECTIONS_H
#define VORNHOST_REPORT_SECTIONS_H

#include <optional>
#include <string>

#include "host/results/report_units.h"
#include "host/results/results.h"
#include "host/results/text_table.h"

namespace vornhost {

class TextReport {
public:
    TextReport(const Results &all, const std::string &day, bool is_brief)
        : results(all), units(all.units), date(day), brief(is_brief)
    {
    }

    std::string text() const
    {
        return head() + summary() + notes() + closures() + points() + earth() + orientations() + groups() + cameras() +
               lumps() + deflections() + transformations() + pairs() + ellipsoids() + observations() + reductions() +
               left_out() + tests() + suspects() + together() + weights() + snooping() + derived() + weakest() +
               weak_pairs() + components() + refusal() + verdict();
    }

private:
    std::string head() const;
    std::string summary() const;
    std::string notes() const;
    std::string closures() const;
    std::string points() const;
    std::string earth() const;
    std::string reductions() const;
    std::string orientations() const;
    std::string groups() const;
    std::string cameras() const;
    std::string lumps() const;
    std::string deflections() const;
    std::string transformations() const;
    std::string pairs() const;
    std::string observations() const;
    TextTable observation_table(const ResidualResult &first) const;
    void add_observation(const ResidualResult &r, TextTable &table) const;
    std::string left_out() const;
    std::string tests() const;
    std::string suspects() const;
    std::string together() const;
    std::string weights() const;
    std::string snooping() const;
    std::string derived() const;
    std::string weakest() const;
    std::string weak_pairs() const;
    std::string ellipsoids() const;
    std::string components() const;
    std::string refusal() const;
    std::string verdict() const;

    bool has_axis(int axis) const { return results.dimension == 3 || (results.dimension == 1) == (axis == 2); }
    double magnified(double axis) const { return axis * (results.precision ? results.precision->ellipse_factor : 1.0); }
    std::string value(const ResidualResult &r, double x) const;
    std::string small(const ResidualResult &r, double x) const;
    std::string kind_unit(const ResidualResult &r, bool small_unit) const;
    template <class Value> std::string length(const std::optional<Value> &x) const { return x ? units.length(*x) : ""; }
    std::string small_length(const std::optional<double> &x) const { return x ? units.small_length(*x) : ""; }
    std::string small_angle(const std::optional<double> &x) const { return x ? units.small_angle(*x) : ""; }

    const Results &results;
    const ReportUnits units;
    const std::string date;
    const bool brief;
};

} // namespace vornhost

#endif
