#include "host/own/first_coordinates.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "host/input/names.h"
#include "host/own/parts.h"
#include "host/own/round_doubts.h"
#include "host/own/start_words.h"
#include "host/preparation/first_values.h"
#include "host/preparation/lump_checks.h"
#include "host/preparation/start/start.h"
#include "host/system/temporary_file.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr size_t most_points = 20; // named in lines of their own

template <class Record> int missing(const List<Record> &list)
{
    int n = 0;
    for (const Record &r : list.records) n += r.status == STATUS_COMPUTE;
    return n;
}

template <class Record> void name_missing(const Model &network, const List<Record> &list, FirstNumbers &first)
{
    for (size_t i = 0; i < list.size(); i++)
        if (list.records[i].status == STATUS_COMPUTE)
            first.words.push_back("first coordinates of " + shown_name(network, list.records[i].name) +
                                  " are missing (" + place(network, list.where[i]) + ")");
}

// A planned network has no observed values to compute from.
FirstNumbers refuse_planned(const Model &network)
{
    FirstNumbers first;
    name_missing(network, network.stations, first);
    name_missing(network, network.targets, first);
    if (first.words.size() > most_points) {
        const size_t more = first.words.size() - most_points;
        first.words.resize(most_points);
        first.words.push_back("and of " + std::to_string(more) + " more points");
    }
    first.words.push_back("a propagation takes no observed values: write approximate coordinates");
    return first;
}

bool is_given(const Model &network, const PointPlace &point, int axis)
{
    const auto given = [&](const auto &r) { return r.status != STATUS_COMPUTE || is_held(r.ix[axis]); };
    return point.station ? given(network.stations.records[(size_t)point.record])
                         : given(network.targets.records[(size_t)point.record]);
}

// The coordinate that a dimension does not have stands in formulas with its value.
start::Known known(const Model &network, const Numbers &numbers, int point, int axis)
{
    const int unknown = 3 * point + axis;
    if (numbers.absent.count(unknown) > 0) return start::Known::nothing;
    const bool absent = numbers.model.code[(size_t)unknown] == va::Code::absent;
    return absent || is_given(network, numbers.points[(size_t)point], axis) ? start::Known::given
                                                                            : start::Known::wanted;
}

start::Given what_is_given(const Model &network, const Numbers &numbers)
{
    start::Given given;
    for (int p = 0; p < numbers.model.n_points; p++)
        for (int k = 0; k < 3; k++) given.coordinate.push_back(known(network, numbers, p, k));
    for (const SetupPlace &setup : numbers.setups) given.setup.push_back(setup.orientation_given);
    return given;
}

// Values of the numbers into the records that want them, in the file's unit.
void write_records(Model &network, const Numbers &numbers)
{
    const double unit = metres_per_unit(network.p);
    const auto write = [&](auto &r, size_t p) {
        if (r.status != STATUS_COMPUTE) return;
        for (int k = 0; k < 3; k++)
            if (!is_held(r.ix[k]) && numbers.model.code[3 * p + (size_t)k] != va::Code::absent)
                r.x[k] = (numbers.model.value[3 * p + (size_t)k] + numbers.origin[k]) / unit;
        r.status = STATUS_ON;
    };
    for (size_t p = 0; p < numbers.points.size(); p++) {
        const PointPlace &place = numbers.points[p];
        if (place.station)
            write(network.stations.records[(size_t)place.record], p);
        else
            write(network.targets.records[(size_t)place.record], p);
    }
}

// Given coordinates that lie elsewhere give way to what the sights say, as far as they are not held.
void replace_displaced(Model &network, const Numbers &numbers, const std::vector<start::Displaced> &displaced)
{
    for (const start::Displaced &d : displaced) {
        const PointPlace &at = numbers.points[(size_t)d.point];
        (at.station ? network.stations.records[(size_t)at.record].status
                    : network.targets.records[(size_t)at.record].status) = STATUS_COMPUTE;
    }
}

// Lumps that show too little count as unmoved.
void settle(Model &network, FirstNumbers &first)
{
    for (const LumpNote &lump : settle_lumps(network))
        first.notes.push_back(place(network, lump.where) + ": " + lump.text);
}

// Numbers at the coordinates that were found, for lumps that have settled and for what centring adds to the standard
// deviations there, with the orientations that were found.
Numbers numbers_again(Model &network, const Reference *reference, const Numbers &found)
{
    Numbers numbers = make_numbers(network, reference);
    for (const DoubtfulZero &d : found.doubtful)
        numbers.model.observations[(size_t)d.row].setup = found.model.observations[(size_t)d.row].setup;
    for (size_t s = 0; s < numbers.model.setups.size(); s++)
        for (int k = 0; k < 3; k++) {
            const size_t angle = (size_t)numbers.model.setups[s].first + (size_t)k;
            numbers.model.value[angle] = numbers.model.start[angle] = found.model.value[angle];
        }
    return numbers;
}

// Whether the numbers hold what was computed from first coordinates: lumps, variances of centring, verticals under
// antennas.
bool depend_on_coordinates(const Model &network)
{
    const RowNotes &baselines = network.baselines.notes;
    return network.p.lumpmethod != 0 || network.centring.any() || !baselines.h1.empty() || !baselines.h2.empty();
}

// The engine's own approximation, which starts in space from sights alone.
bool by_the_engine(Model &network)
{
    using File = std::unique_ptr<FILE, int (*)(FILE *)>;
    const File report(temporary_file(), fclose);
    const int images = network.p.iphoto;
    network.p.iphoto = 0;
    const FirstValues values = compute_first_values(network, report.get());
    network.p.iphoto = images;
    return values.words.empty() && missing(network.stations) + missing(network.targets) == 0;
}

// First values without the directions whose round is in doubt; with them where that does not find any.
start::Start find_without_doubtful(const Model &network, Numbers &numbers)
{
    const start::Given given = what_is_given(network, numbers);
    if (numbers.doubtful.empty()) return start::find_start(&numbers.model, given);
    const std::vector<double> before = numbers.model.value;
    use_doubtful(numbers, false);
    start::Start found = start::find_start(&numbers.model, given);
    use_doubtful(numbers, true);
    if (found.found()) return found;
    numbers.model.value = before;
    return start::find_start(&numbers.model, given);
}

void settle_rounds(const Model &network, FirstNumbers &first)
{
    for (std::string &line : settle_doubtful(network, first.numbers)) first.notes.push_back(std::move(line));
}

std::string computed(int n, const char *what)
{
    return std::string("first ") + what + " of " + std::to_string(n) + (n == 1 ? " point" : " points") +
           " were computed";
}

} // namespace

FirstNumbers make_first_numbers(Model &network, const Reference *reference, va::Ranks *ranks)
{
    const int n = missing(network.stations) + missing(network.targets);
    if (n > 0 && network.mode == Mode::Propagation && network.p.dim != 1) return refuse_planned(network);
    FirstNumbers first;
    if (n == 0) settle(network, first);
    first.numbers = make_numbers(network, reference, ranks);
    if (n == 0) settle_rounds(network, first);
    share_setups(network, ranks, &first.numbers);
    if (n == 0) return first;
    const start::Start found = find_without_doubtful(network, first.numbers);
    if (found.found()) {
        replace_displaced(network, first.numbers, found.displaced);
        write_records(network, first.numbers);
    } else if (!found.missing.empty() && found.degenerate.empty() && network.p.dim != 1 && by_the_engine(network))
        first.numbers = make_numbers(network, reference);
    else
        first.words = start_refusals(network, first.numbers, found);
    if (!first.words.empty()) return first;
    first.notes = start_notes(network, first.numbers, found);
    first.notes.insert(first.notes.begin(), computed(n, network.p.dim == 1 ? "heights" : "coordinates"));
    settle_rounds(network, first);
    settle(network, first);
    if (depend_on_coordinates(network)) first.numbers = numbers_again(network, reference, first.numbers);
    return first;
}

} // namespace vornhost
