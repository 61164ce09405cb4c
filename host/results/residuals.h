// Residuals of a run with their tests, in the order of the file.
//
// A large network has millions of them, and they are the largest part of its results: where a run says so they are not
// there as a list but made block by block, from what the adjustment knows, whenever somebody goes through them.
// Lengths in metres, angles in radians.

#ifndef VORNHOST_RESIDUALS_H
#define VORNHOST_RESIDUALS_H

#include <stddef.h>

#include <functional>
#include <initializer_list>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vornhost {

// What the file says of an observation beside its values.
struct RowWords {
    std::string at; // where an angle was taken, between from and to
    std::string setup, set, id, remark;

    bool empty() const { return at.empty() && setup.empty() && set.empty() && id.empty() && remark.empty(); }
};

// Test of an observation, and what can hide in it.
struct ObservationTestResult {
    std::optional<double> probability; // of a residual of this size or larger where no observation is wrong
    double detectable = 0;             // bias that the test finds with the power asked for, unit of the observation
    double bias_to_noise = 0;          // what that bias does to the unknowns, beside their standard deviations
    double shift = 0;                  // metres, of the observation's own points by that bias
    bool rejected = false;
};

// What a reduction added to a reading.
struct CorrectionResult {
    const char *name; // "instrument", "ellipsoid", "projection", "arc_to_chord", "convergence"
    double value;     // in the unit of the observation
};

struct ResidualResult {
    std::string kind;       // "distance", "height difference", "direction", "vertical angle", "azimuth", "baseline",
                            // "image point", "weighted coordinate", "weighted rotation", "weighted constant",
                            // "imported coordinate", "horizontal distance", "bearing", "angle", "scale bar",
                            // "observed coordinate", "coordinate difference", "centring"
    std::string component;  // "x", "y", "z" of baselines, coordinates and their differences, "u", "v" of image points,
                            // which value of a weighted or imported item; empty otherwise
    std::string unit = "m"; // of value, sigma and residual: "m", "rad", "pixel", "1"
    std::string from, to;   // to is empty for weighted and imported items
    std::string file;
    int line = 0;
    std::shared_ptr<const RowWords> words;     // null where the row says nothing
    double value = 0, sigma = 0;               // metres or radians; vertical angles as elevations
    double residual = 0;                       // observed less computed
    bool observed = true;                      // false: a planned observation, without adjusted value and residual
    std::optional<double> raw;                 // the reading, where value is what was made of it
    std::vector<CorrectionResult> corrections; // from the reading into the grid; they add up to value - raw
    std::optional<double> adjusted;
    std::optional<double> deviation;  // of the residual, before the variance factor
    std::optional<double> redundancy; // 0 (nothing checks it) to 1
    std::optional<double> normalised; // residual by its standard deviation
    std::optional<bool> checked;      // enough other observations control it
    double weight = 1;                // of robust estimation, by that of the standard deviation
    std::optional<ObservationTestResult> test;
    std::optional<bool> outside, normal, normal_divided, tau, tau_divided; // rejection marks

    // The correction of that name.
    std::optional<double> correction(std::string_view which) const
    {
        for (const CorrectionResult &c : corrections)
            if (which == c.name) return c.value;
        return std::nullopt;
    }
};

// A list that is kept, or one that is made in blocks. Not to be read by several threads at once.
class Residuals {
public:
    static constexpr size_t in_cache = 256; // of a block that stays in the second cache
    // Residuals `first` to `first + count - 1`.
    using Make = std::function<std::vector<ResidualResult>(size_t first, size_t count)>;

    Residuals() = default;
    Residuals(std::initializer_list<ResidualResult> list) : kept(list) {}
    // What `make` needs has to last as long as these, or until keep(). It is asked for `block` at a time.
    Residuals(size_t count, Make make, size_t block = in_cache) : making(std::move(make)), made(count), at_once(block)
    {
    }

    size_t size() const { return making ? made : kept.size(); }
    bool empty() const { return size() == 0; }

    // Goes through all of them; what it refers to lasts until the next step.
    class const_iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = ResidualResult;
        using difference_type = std::ptrdiff_t;
        using pointer = const ResidualResult *;
        using reference = const ResidualResult &;

        const_iterator(const Residuals *all, size_t place) : list(all), at(place) {}
        reference operator*() const { return list->making ? in_block() : list->kept[at]; }
        pointer operator->() const { return &**this; }
        const_iterator &operator++()
        {
            at++;
            return *this;
        }
        bool operator==(const const_iterator &other) const { return at == other.at; }
        bool operator!=(const const_iterator &other) const { return at != other.at; }

    private:
        reference in_block() const;

        const Residuals *list;
        size_t at;
        mutable size_t first = 0; // of the block
        mutable std::vector<ResidualResult> block;
    };
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, size()}; }

    // One of them. It is kept: for the few that results name.
    const ResidualResult &operator[](size_t i) const;
    const ResidualResult &back() const { return (*this)[size() - 1]; }

    // Makes all of them a list.
    void keep();

    // Of a list.
    ResidualResult &operator[](size_t i) { return kept[i]; }
    void push_back(ResidualResult r) { kept.push_back(std::move(r)); }
    void resize(size_t n) { kept.resize(n); }

private:
    std::vector<ResidualResult> kept;
    Make making; // null: a list
    size_t made = 0, at_once = in_cache;
    mutable std::map<size_t, ResidualResult> named; // that were asked for one by one
    mutable size_t near_first = 0;                  // of these:
    mutable std::vector<ResidualResult> near_by;    // a few around the last of them
};

} // namespace vornhost

#endif
