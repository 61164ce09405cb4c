#include "host/preparation/start/damped.h"

#include <algorithm>
#include <cmath>

#include "adjust/system.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr double last_width = 3.0;       // c at the end, standard deviations
constexpr double loss_width = 5.0;       // c of the loss
constexpr double normal_median = 0.6745; // of |u|
constexpr double least_pivot = 1e-11;    // relative; what is weaker keeps its value

double in_sigmas(const va::Equations &e, int r)
{
    return e.usable[(size_t)r] ? e.misclosure[(size_t)r] * e.factor[(size_t)r] / e.sigma[(size_t)r] : 0.0;
}

double quantile(std::vector<double> x, double share)
{
    if (x.empty()) return 0.0;
    const auto at = x.begin() + (long)(share * (double)(x.size() - 1));
    std::nth_element(x.begin(), at, x.end());
    return *at;
}

class Settling {
public:
    explicit Settling(va::Model *its_model) : model(*its_model), system(va::make_system(model))
    {
        own_factor = system.equations.factor;
    }

    bool run(int steps, Pull pull); // whether it came to an end

private:
    void look();
    double cost() const;
    void weigh();
    bool step();

    va::Model &model;
    va::System system;
    std::vector<double> own_factor; // [rows] a priori
    std::vector<double> u;          // [rows] misclosures in standard deviations
    double width = last_width, damping = 1e-3;
    bool still = false; // the last step was small
};

// Misclosures at the present values.
void Settling::look()
{
    system.equations.factor = own_factor;
    va::fill(model, va::Derivatives::exact, &system.equations);
    u.resize((size_t)system.equations.rows());
    for (int r = 0; r < system.equations.rows(); r++) u[(size_t)r] = in_sigmas(system.equations, r);
}

double Settling::cost() const
{
    double sum = 0.0;
    for (const double x : u) sum += width * width * std::log1p((x / width) * (x / width));
    return sum;
}

// Normal equations with the weights of the present misclosures.
void Settling::weigh()
{
    for (size_t r = 0; r < u.size(); r++)
        system.equations.factor[r] = own_factor[r] / std::sqrt(1.0 + (u[r] / width) * (u[r] / width));
    va::weigh(model, system.equations, system.columns, &system.rows);
    va::fill_normal(&system);
}

// False when no step makes the cost smaller.
bool Settling::step()
{
    const double before = cost();
    weigh();
    va::FactorOptions options;
    options.least_pivot = least_pivot;
    const std::vector<double> values = model.value;
    for (int tries = 0; tries < 8; tries++) {
        va::factorize(&system, damping, options);
        std::vector<double> dx = system.normal.right;
        va::solve(system.symbolic, system.factor, dx.data());
        for (size_t j = 0; j < dx.size(); j++) model.value[(size_t)system.columns.unknown[j]] += dx[j];
        look();
        const double after = cost();
        if (after < before) {
            still = before - after < 1e-4 * before + 1e-3;
            damping = std::fmax(0.1 * damping, 1e-8);
            return true;
        }
        model.value = values;
        damping *= 10.0;
    }
    look();
    return false;
}

bool Settling::run(int steps, Pull pull)
{
    look();
    std::vector<double> size;
    for (const double x : u) size.push_back(std::fabs(x));
    const double first = pull == Pull::most ? 2.0 * quantile(size, 0.75) : quantile(size, 1.0);
    const double narrower = pull == Pull::most ? 0.4 : 0.1;
    width = std::fmax(last_width, first);
    for (int i = 0; i < steps; i++) {
        const bool moved = step();
        if (width <= last_width && (!moved || still)) return true;
        width = std::fmax(last_width, narrower * width);
        if (!moved) damping = 1e-3;
    }
    return false;
}

} // namespace

Fit measure_fit(const va::Model &model)
{
    va::Equations e = va::pattern(model);
    va::fill(model, va::Derivatives::exact, &e);
    Fit fit;
    fit.off.assign(model.observations.size(), 0.0);
    std::vector<double> size;
    for (int r = 0; r < e.rows(); r++) {
        if (!e.usable[(size_t)r]) continue;
        const double u = std::fabs(in_sigmas(e, r));
        fit.finite &= std::isfinite(u);
        fit.loss += std::log1p((u / loss_width) * (u / loss_width));
        size.push_back(u);
        double &off = fit.off[(size_t)e.observation[(size_t)r]];
        off = std::fmax(off, u);
    }
    fit.rows = (int)size.size();
    fit.scale = std::fmax(1.0, quantile(size, 0.5) / normal_median);
    return fit;
}

Fit settle(va::Model *model, int steps, Pull pull)
{
    const bool ended = Settling(model).run(steps, pull);
    Fit fit = measure_fit(*model);
    fit.ended = ended;
    return fit;
}

} // namespace vornhost::start
