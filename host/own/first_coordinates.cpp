#include "host/own/first_coordinates.h"

#include <memory>
#include <string>
#include <unordered_map>

#include "host/input/names.h"
#include "host/own/local_frame.h"
#include "host/system/temporary_file.h"

namespace vornhost {

namespace {

constexpr size_t most_points = 20; // named in lines of their own

using File = std::unique_ptr<FILE, int (*)(FILE *)>;

template <class Record> int missing(const List<Record> &list)
{
    int n = 0;
    for (const Record &r : list.records) n += r.status == STATUS_COMPUTE;
    return n;
}

// Heights in the file's unit, along the height differences of a levelling network.
class Levelling {
public:
    explicit Levelling(Model &model) : network(model)
    {
        add_points(network.stations);
        add_points(network.targets);
        const double metres = metres_per_unit(network.p);
        for (const measure_input &m : network.heightdiffs.records) {
            const auto from = index.find(m.from), to = index.find(m.to);
            if (m.typ <= 0 || from == index.end() || to == index.end()) continue;
            const double rise = m.val - (m.h2 - m.h1) / metres;
            steps[from->second].push_back({to->second, rise});
            steps[to->second].push_back({from->second, -rise});
        }
    }

    void carry()
    {
        std::vector<int> reached;
        for (int i = 0; i < (int)height.size(); i++)
            if (known[(size_t)i]) reached.push_back(i);
        spread(reached);
        for (int i = 0; i < (int)height.size(); i++) {
            if (known[(size_t)i]) continue;
            known[(size_t)i] = true;
            spread({i});
        }
        write(network.stations);
        write(network.targets);
    }

private:
    struct Step {
        int to;
        double rise;
    };

    template <class Record> void add_points(const List<Record> &list)
    {
        for (const Record &r : list.records) {
            if (r.status <= 0) continue;
            index.emplace(r.name, (int)height.size());
            height.push_back(r.status == STATUS_COMPUTE ? 0.0 : r.x[2]);
            known.push_back(r.status != STATUS_COMPUTE);
            steps.emplace_back();
        }
    }

    void spread(std::vector<int> reached)
    {
        for (size_t i = 0; i < reached.size(); i++)
            for (const Step &s : steps[(size_t)reached[i]]) {
                if (known[(size_t)s.to]) continue;
                known[(size_t)s.to] = true;
                height[(size_t)s.to] = height[(size_t)reached[i]] + s.rise;
                reached.push_back(s.to);
            }
    }

    template <class Record> void write(List<Record> &list)
    {
        for (Record &r : list.records) {
            if (r.status != STATUS_COMPUTE) continue;
            r.x[2] = height[(size_t)index.at(r.name)];
            r.status = STATUS_ON;
        }
    }

    Model &network;
    std::unordered_map<std::string, int> index;
    std::vector<double> height;
    std::vector<bool> known;
    std::vector<std::vector<Step>> steps;
};

template <class Record> void name_missing(const Model &network, const List<Record> &list, FirstValues &values)
{
    for (size_t i = 0; i < list.size(); i++)
        if (list.records[i].status == STATUS_COMPUTE)
            values.words.push_back("first coordinates of " + plain_name(list.records[i].name) + " are missing (" +
                                   place(network, list.where[i]) + ")");
}

// A planned network has no observed values to compute from.
FirstValues refuse_planned(const Model &network)
{
    FirstValues values;
    name_missing(network, network.stations, values);
    name_missing(network, network.targets, values);
    if (values.words.size() > most_points) {
        const size_t more = values.words.size() - most_points;
        values.words.resize(most_points);
        values.words.push_back("and of " + std::to_string(more) + " more points");
    }
    values.words.push_back("a propagation takes no observed values: write approximate coordinates");
    return values;
}

std::string computed(int n, const char *what)
{
    return std::string("first ") + what + " of " + std::to_string(n) + (n == 1 ? " point" : " points") +
           " were computed";
}

} // namespace

FirstValues find_first_coordinates(Model &network)
{
    if (missing(network.stations) + missing(network.targets) == 0) return {};
    if (network.p.dim == 1) {
        const int n = missing(network.stations) + missing(network.targets);
        Levelling(network).carry();
        return {{"first heights of " + std::to_string(n) + (n == 1 ? " point were computed" : " points were computed")},
                {}};
    }
    if (network.mode == Mode::Propagation) return refuse_planned(network);
    const File report(temporary_file(), fclose);
    const int images = network.p.iphoto;
    network.p.iphoto = 0;
    FirstValues values = compute_first_values(network, report.get());
    network.p.iphoto = images;
    if (values.words.empty()) return values;
    const int n = missing(network.stations) + missing(network.targets);
    if (place_by_local_frames(network)) return {{computed(n, "coordinates")}, {}};
    return values;
}

} // namespace vornhost
