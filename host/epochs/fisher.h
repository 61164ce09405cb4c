// The test that a mean square does not exceed a variance factor, by Fisher's distribution.

#ifndef VORNHOST_FISHER_H
#define VORNHOST_FISHER_H

namespace vornhost {

constexpr double usual_level = 0.05; // probability of a false alarm where nobody asks for another

// A variance factor: that of f degrees of freedom, or 1, known before, with f = infinity.
struct VarianceFactor {
    double value = 1;
    double f = 0;
};

struct FisherTest {
    double value = 0; // (squares / h) / variance factor
    int h = 0;        // degrees of freedom of the squares; 0: nothing was tested
    double f = 0;     // of the variance factor
    double limit = 0; // of the value, at the level
    double p = 1;     // probability of such a value or a larger one by chance

    bool made() const { return h > 0; }
    bool passed() const { return value <= limit; }
};

FisherTest fisher_test(double squares, int h, const VarianceFactor &factor, double level);

// Two-sided test that two variance factors are the same; value and degrees of freedom are those of the larger over the
// smaller one.
FisherTest same_variance(const VarianceFactor &a, const VarianceFactor &b, double level);

} // namespace vornhost

#endif
