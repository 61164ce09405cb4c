// Work space of the computations along the supernodes: one amount, taken at once and dealt out.

#ifndef VORNADJUST_LAYOUT_H
#define VORNADJUST_LAYOUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "adjust/schedule.h"
#include "adjust/symbolic.h"

namespace vornadjust {

// What one thread needs beside its stack, in numbers.
struct DeskSize {
    std::size_t panel = 0;  // block that is worked on
    std::size_t narrow = 0; // narrow sides of products
    std::size_t pivots = 0; // reciprocal pivots of the columns of a block
    std::size_t index = 0;  // places of rows in another supernode
    std::size_t stack = 0;
};

struct Desk {
    double *panel, *narrow, *pivots, *stack;
    int *index;
};

class Layout {
public:
    // Desks for the crown (the first) and for the bunches; the first serves for both.
    Layout(const Schedule &plan, const DeskSize &crown, const DeskSize &bunch, int threads);

    std::size_t bytes() const;
    void take(); // throws std::bad_alloc

    std::vector<Desk> desks; // [threads]
    double *held = nullptr;  // updates between the bunches and the crown

private:
    std::size_t numbers() const;
    std::size_t places() const;

    std::vector<DeskSize> sizes;
    std::size_t held_size;
    std::unique_ptr<double[]> space;
    std::vector<int> indexes;
};

// Children of supernodes, ascending: child[s], then sibling[]; and the sides of the stack that their
// updates go to, which change from level to level: a supernode fills one side while it empties the other.
struct Family {
    explicit Family(const Symbolic &symbolic);
    std::vector<int> child, sibling; // [nsuper] -1 for none
    std::vector<char> side;          // [nsuper]
};

// A stack with two ends in one space.
class TwoStacks {
public:
    TwoStacks(double *space, std::size_t size) : low(space), high(space + size) {}

    double *push(int side, std::size_t size)
    {
        if (side == 0) {
            low += size;
            return low - size;
        }
        high -= size;
        return high;
    }

    void pop(int side, std::size_t size)
    {
        if (side == 0)
            low -= size;
        else
            high += size;
    }

private:
    double *low, *high;
};

// Numbers of a factor as a size. Throws std::bad_alloc when they and the work space that belongs to
// them go beyond what can be addressed.
std::size_t addressable(std::int64_t numbers);

// Places of the rows below supernode s among the rows of its parent, columns first.
//   index  out  [below(s)] ascending
void rows_in_parent(const Symbolic &symbolic, int s, int *index);

} // namespace vornadjust

#endif
