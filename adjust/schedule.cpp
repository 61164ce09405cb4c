// Bunches of subtrees, and the space that their updates take.

#include "adjust/schedule.h"

#include <algorithm>

#include "adjust/stair.h"

namespace vornadjust {

static const double LEAST_SHARED = 2e6; // operations below which sharing costs more than it gains
static const int SHARES = 24;           // subtrees are at most this part of the whole

std::size_t Schedule::bunch_stack() const
{
    std::size_t most = 0;
    for (const Bunch &b : bunch) most = std::max(most, b.stack);
    return most;
}

double supernode_operations(const Symbolic &symbolic, int s)
{
    const double w = symbolic.width(s), r = symbolic.below(s);
    return w * (r * r + r * w + w * w / 3.0) + 1000.0;
}

// Operations of the subtree of each supernode.
static std::vector<double> subtree_operations(const Symbolic &symbolic)
{
    std::vector<double> sum((std::size_t)symbolic.nsuper, 0.0);
    for (int s = 0; s < symbolic.nsuper; s++) {
        sum[s] += supernode_operations(symbolic, s);
        if (symbolic.parent[s] >= 0) sum[symbolic.parent[s]] += sum[s];
    }
    return sum;
}

// The most that lies on a stack while supernodes from first on are worked off in turn: a supernode puts
// its update there while those of its children still are.
class StackMeter {
public:
    StackMeter(const Symbolic &pattern, const std::vector<char> &crown) : symbolic(pattern), in_crown(crown) {}

    void work_off(int s, std::size_t children)
    {
        const std::size_t own = keeps(s) ? stair_size(symbolic.below(s)) : 0;
        peak = std::max(peak, height + own);
        height = height - children + own;
    }

    // Whether the update of s goes to the stack of the part of the tree that s is in.
    bool keeps(int s) const { return symbolic.parent[s] >= 0 && in_crown[symbolic.parent[s]] == in_crown[s]; }

    std::size_t peak = 0;

private:
    const Symbolic &symbolic;
    const std::vector<char> &in_crown;
    std::size_t height = 0;
};

// Numbers that the updates of the children of each supernode take on the stack.
static std::vector<std::size_t> children_sizes(const Symbolic &symbolic, const StackMeter &meter)
{
    std::vector<std::size_t> size((std::size_t)symbolic.nsuper, 0);
    for (int s = 0; s < symbolic.nsuper; s++)
        if (meter.keeps(s)) size[symbolic.parent[s]] += stair_size(symbolic.below(s));
    return size;
}

static void bunch_subtrees(const Symbolic &symbolic, const std::vector<double> &subtree, double share, Schedule &plan)
{
    int first = 0;
    double sum = 0.0;
    const auto close = [&](int end) {
        if (end > first) plan.bunch.push_back(Bunch{first, end, sum, 0});
        sum = 0.0;
    };
    for (int s = 0; s < symbolic.nsuper; s++) {
        const int p = symbolic.parent[s];
        if (plan.in_crown[s]) {
            close(s);
            first = s + 1;
            plan.crown.push_back(s);
        } else if (p < 0 || plan.in_crown[p]) {
            sum += subtree[s];
            if (sum > 0.5 * share) {
                close(s + 1);
                first = s + 1;
            }
        }
    }
    close(symbolic.nsuper);
}

static void measure_stacks(const Symbolic &symbolic, Schedule &plan)
{
    const std::vector<std::size_t> children = children_sizes(symbolic, StackMeter(symbolic, plan.in_crown));
    for (Bunch &b : plan.bunch) {
        StackMeter meter(symbolic, plan.in_crown);
        for (int s = b.first; s < b.end; s++) meter.work_off(s, children[s]);
        b.stack = meter.peak;
    }
    StackMeter meter(symbolic, plan.in_crown);
    for (const int s : plan.crown) meter.work_off(s, children[s]);
    plan.crown_stack = meter.peak;
}

Schedule make_schedule(const Symbolic &symbolic)
{
    const std::vector<double> subtree = subtree_operations(symbolic);
    Schedule plan;
    for (int s = 0; s < symbolic.nsuper; s++)
        if (symbolic.parent[s] < 0) plan.operations += subtree[s];
    const double share = std::max(plan.operations / SHARES, LEAST_SHARED);
    for (int s = 0; s < symbolic.nsuper; s++) plan.in_crown.push_back(subtree[s] > share);
    bunch_subtrees(symbolic, subtree, share, plan);
    measure_stacks(symbolic, plan);
    plan.held.assign((std::size_t)symbolic.nsuper, 0);
    for (int s = 0; s < symbolic.nsuper; s++)
        if (!plan.in_crown[s] && symbolic.parent[s] >= 0 && plan.in_crown[symbolic.parent[s]]) {
            plan.held[s] = plan.held_size;
            plan.held_size += stair_size(symbolic.below(s));
        }
    std::stable_sort(plan.bunch.begin(), plan.bunch.end(),
                     [](const Bunch &a, const Bunch &b) { return a.operations > b.operations; });
    return plan;
}

} // namespace vornadjust
