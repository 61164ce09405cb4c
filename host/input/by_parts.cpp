#include "host/input/by_parts.h"

#include "host/input/faults.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

const char *const leave_out_option = "leave out --by-parts";

class Refusals {
public:
    explicit Refusals(const Model &network) : model(network) {}

    void refuse(const std::string &what, Source where)
    {
        lines.push_back(what + " (" + place(model, where) + "): " + leave_out_option);
    }

    // The place of the first row stands for the table.
    template <class Record> void table(const List<Record> &list, const char *what)
    {
        if (list.size() > 0) refuse(what, list.where[0]);
    }

    void covariances()
    {
        if (model.covariances.size() == 0) return;
        const std::string name = quote(model.covariances.records[0].name);
        refuse("rows that share a covariance, here " + name + ", are not divided", model.covariances.where[0]);
    }

    void setting(bool given, const char *what)
    {
        if (given) refuse(what, Source());
    }

    // Points of the networks that this one is joined with.
    template <class Record> void connected(const List<Record> &list)
    {
        for (size_t i = 0; i < list.size(); i++) {
            if (list.records[i].status < 0 || list.records[i].iconn == 0) continue;
            refuse("points that are exported or imported are not divided", list.where[i]);
            return;
        }
    }

    void coordinates()
    {
        size_t missing = 0;
        std::string first;
        count_missing(model.stations, missing, first);
        count_missing(model.targets, missing, first);
        if (missing == 0) return;
        lines.push_back(std::to_string(missing) + (missing == 1 ? " point has" : " points have") +
                        " no first coordinates (first: " + first +
                        "): write them, vorn adjust --update gives them, or " + leave_out_option);
    }

    std::vector<std::string> lines;

private:
    template <class Record> void count_missing(const List<Record> &list, size_t &missing, std::string &first) const
    {
        for (size_t i = 0; i < list.size(); i++) {
            if (list.records[i].status != STATUS_COMPUTE) continue;
            if (missing++ == 0) first = shown_name(model, list.records[i].name) + ", " + place(model, list.where[i]);
        }
    }

    const Model &model;
};

} // namespace

std::vector<std::string> not_by_parts(const Model &model)
{
    Refusals r(model);
    if (model.solver != Solver::Sparse)
        r.lines.push_back("only the solver sparse divides a network (" + model.path + "): write --solver sparse");
    r.setting(model.crs.given(), "a network in a reference system, section [crs], is not divided");
    r.table(model.cameras, "table cameras is not divided");
    r.table(model.images, "table images is not divided");
    r.covariances();
    r.table(model.transformations, "table transformations is not divided");
    r.table(model.deflections, "table deflections is not divided");
    r.table(model.left_out, "table left_out is not divided");
    r.setting(model.p.lumpmethod != 0, "a network with lumps is not divided");
    r.connected(model.stations);
    r.connected(model.targets);
    r.setting(model.centring.shared, "centring = \"each_stand\" in [sigma] is not divided");
    r.setting(model.tests.snoop, "snooping is not divided");
    r.setting(model.tests.robust != Robust::none, "a robust adjustment is not divided");
    r.setting(model.components != Components::none, "variance components are not divided");
    r.coordinates();
    return r.lines;
}

} // namespace vornhost
