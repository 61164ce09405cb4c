// The items of a coded line one after the other: names, values, standard deviations, heights. What is not as it should
// be becomes a fault, and the items say that they are not good.

#ifndef VORNHOST_LINES_ITEMS_H
#define VORNHOST_LINES_ITEMS_H

#include <optional>
#include <string>
#include <vector>

#include "host/formats/lines_options.h"

namespace vornhost {

// What stands for a standard deviation.
struct LineSigma {
    enum Kind { usual, number, fixed, free } kind = usual;
    double value = 0.0; // of a number, as it is written
};

struct LineHeights {
    double instrument = 0.0, target = 0.0;
    Source at;
};

class LineItems {
public:
    LineItems(const CodedLine &its_line, const LineOptions &its_options, Faults &all)
        : line(its_line), options(its_options), faults(all)
    {
    }

    bool good() const { return is_good; }
    size_t left() const { return line.items.size() - next; }
    const LineItem &item(size_t i) const { return line.items[next + i]; }
    void skip() { next++; }

    std::string name();
    std::vector<std::string> names(size_t count); // of one item, joined by -

    double number();
    std::optional<double> measured(bool angle); // nothing where ? stands
    double angle();                             // degrees, or gon where the options say so
    double bearing();                           // also N34-23-45.7E

    // Of all values or of none.
    std::vector<LineSigma> sigmas(size_t values);
    std::optional<LineHeights> heights(); // an item like 1.55/1.30

    // Nothing may follow.
    void end();

private:
    void fault(const std::string &what, const std::string &remedy);
    bool need(const char *what);
    double angle_of(const LineItem &item, std::string_view text);
    LineSigma sigma();

    const CodedLine &line;
    const LineOptions &options;
    Faults &faults;
    size_t next = 0;
    bool is_good = true;
};

} // namespace vornhost

#endif
