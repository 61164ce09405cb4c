// The networks of include/vorn/network.h: what the rooms of the host read and compute, as values.

#include "vorn/network.h"

#include <istream>
#include <iterator>
#include <new>

#include "host/application/array_text.h"
#include "host/application/read_access.h"
#include "host/formats/import.h"
#include "host/input/names.h"
#include "host/input/network_file.h"
#include "host/own/simulate.h"
#include "host/results/html_page.h"
#include "host/results/json_writer.h"
#include "host/run/network_run.h"
#include "host/run/silence.h"
#include "host/system/temporary_file.h"
#include "vorn/version.h"

namespace vornapi {

namespace {

Fault fault_of(const vornhost::Fault &fault)
{
    return {fault.file, fault.at.line, fault.at.column, fault.what, fault.remedy};
}

class Steps : public vornhost::Progress {
public:
    explicit Steps(const vornapi::Progress &function) : told(function) {}
    void begin(const char *name) override
    {
        step = name;
        told(step, 0.0);
    }
    void share(double done) override { told(step, done); }

private:
    const vornapi::Progress &told;
    std::string step;
};

using File = std::unique_ptr<FILE, int (*)(FILE *)>;

std::string text_of(FILE *file)
{
    std::string text;
    char piece[1 << 14];
    rewind(file);
    for (size_t n; (n = fread(piece, 1, sizeof piece, file)) > 0;) text.append(piece, n);
    return text;
}

Point point_of(const vornhost::PointResult &from)
{
    Point p;
    p.name = from.name;
    p.station = from.station;
    for (size_t k = 0; k < 3; k++) {
        p.approximate[k] = from.approximate[k];
        p.adjusted[k] = from.adjusted[k];
        p.deviation[k] = from.deviation[k];
        p.code[k] = from.code[k];
    }
    if (from.ellipse[0]) p.ellipse = Ellipse{from.ellipse[0]->a, from.ellipse[0]->b, from.ellipse[0]->bearing};
    return p;
}

Residual residual_of(const vornhost::Results &results, const vornhost::ResidualResult &from)
{
    Residual r;
    r.kind = from.kind;
    r.component = from.component;
    r.unit = from.unit;
    r.from = from.from;
    r.to = from.to;
    r.at = results.words_of(from).at;
    r.id = results.words_of(from).id;
    r.file = from.file;
    r.line = from.line;
    r.value = from.value;
    r.sigma = from.sigma;
    r.residual = from.residual;
    r.adjusted = from.adjusted;
    r.redundancy = from.redundancy;
    r.normalised = from.normalised;
    r.checked = from.checked;
    if (!from.test) return r;
    r.p_value = from.test->probability;
    r.detectable = from.test->detectable;
    r.bias_to_noise = from.test->bias_to_noise;
    r.shift = from.test->shift;
    return r;
}

Result result_of(vornhost::Results &&all)
{
    Result r;
    r.whole = std::make_shared<const vornhost::Results>(std::move(all));
    const vornhost::Results &from = *r.whole;
    r.outcome = from.adjusted ? Outcome::adjusted : Outcome::refused;
    r.notes = from.notes;
    r.datum = from.datum;
    r.dimension = from.dimension;
    r.degrees_of_freedom = from.degrees_of_freedom;
    r.sigma_aposteriori = from.sigma_aposteriori;
    if (from.variance_test) r.variance_test = from.variance_test->passed();
    r.points.reserve(from.points.size());
    r.residuals.reserve(from.residuals.size());
    for (const vornhost::PointResult &p : from.points) r.points.push_back(point_of(p));
    for (const vornhost::ResidualResult &v : from.residuals) r.residuals.push_back(residual_of(from, v));
    for (const size_t i : from.suspicious) r.residuals[i].suspicious = true;
    r.covariance_points = from.covariance_points;
    r.covariance_matrix = from.covariances;
    if (!from.adjusted) r.faults = why_not(from.file, from.words);
    return r;
}

// What the run lost and what is no number spoils the results, however the adjustment ended.
std::vector<Fault> losses(const vornhost::NetworkRun &run)
{
    std::vector<std::string> lines;
    if (run.results.adjusted) lines = not_numbers(run.results);
    lines.insert(lines.end(), run.outcome.spoilt.begin(), run.outcome.spoilt.end());
    lines.insert(lines.end(), run.outcome.lost.begin(), run.outcome.lost.end());
    std::vector<Fault> faults;
    faults.reserve(lines.size());
    for (const std::string &line : lines) faults.push_back({run.results.file, 0, 0, line, ""});
    return faults;
}

Result refused(const std::string &file, const std::string &sentence)
{
    Result result;
    result.faults = {{file, 0, 0, sentence, ""}};
    return result;
}

Result adjust_model(vornhost::Model model, bool from_file, const Options &options)
{
    model.threads = options.threads;
    model.covariance_points = options.covariances;
    const File report(vornhost::temporary_file(), [](FILE *f) { return f ? fclose(f) : 0; });
    if (!report) return refused(model.path, "the system gives no temporary file for the report");
    vornhost::Silence silence;
    Steps steps(options.progress);
    vornhost::NetworkRun run =
        run_network(model, report.get(), silence, VORN_VERSION, {options.progress ? &steps : nullptr, options.cancel});
    Result result;
    if (run.stopped) {
        result.outcome = Outcome::cancelled;
        return result;
    }
    const std::vector<Fault> lost = losses(run);
    result = result_of(std::move(run.results));
    for (const Fault &fault : lost) {
        result.faults.push_back(fault);
        result.outcome = Outcome::refused;
    }
    result.lines =
        std::make_shared<const vornhost::InputLines>(from_file ? vornhost::InputLines(model) : vornhost::InputLines());
    if (options.report) result.report = text_of(report.get());
    return result;
}

} // namespace

std::vector<Fault> why_not(const std::string &file, const std::vector<std::string> &words)
{
    Fault fault;
    fault.file = file;
    if (!words.empty()) fault.sentence = words[0];
    for (size_t i = 1; i < words.size(); i++) fault.remedy += (i > 1 ? "; " : "") + words[i];
    return {fault};
}

std::string Fault::text() const
{
    vornhost::Fault fault;
    fault.file = file;
    fault.at.line = line;
    fault.at.column = column;
    fault.what = sentence;
    fault.remedy = remedy;
    return fault.line();
}

const Point *Result::point(const std::string &name) const
{
    for (const Point &p : points)
        if (p.name == name) return &p;
    return nullptr;
}

std::optional<Covariance> Result::covariance(const std::string &first, const std::string &second) const
{
    const size_t n = covariance_points.size();
    size_t i = 0, j = 0;
    while (i < n && covariance_points[i] != first) i++;
    while (j < n && covariance_points[j] != second) j++;
    if (i == n || j == n) return std::nullopt;
    Covariance c;
    for (size_t a = 0; a < 3; a++)
        for (size_t b = 0; b < 3; b++) c[3 * a + b] = covariance_matrix[(3 * i + a) * 3 * n + 3 * j + b];
    return c;
}

std::string Result::json() const { return whole ? to_json(*whole) : std::string(); }

std::string Result::page() const { return whole ? to_html(*whole, *lines, vornhost::utc_now()) : std::string(); }

Network::Network(std::shared_ptr<const Read> what) : read(std::move(what)) {}

Result Network::adjust(const Options &options) const noexcept
{
    try {
        return adjust_model(read->model.twin(), read->from_file, options);
    } catch (const std::bad_alloc &) {
        return refused("", "out of memory");
    } catch (const std::exception &error) {
        return refused("", error.what());
    }
}

const std::string &Network::title() const { return read->model.title; }

int Network::points() const { return (int)(read->model.stations.size() + read->model.targets.size()); }

std::vector<std::string> Network::point_names() const
{
    const vornhost::Model &model = read->model;
    std::vector<std::string> names;
    names.reserve((size_t)points());
    for (int p = 0; p < points(); p++) names.push_back(shown_name(model, record_name(model, p)));
    return names;
}

Reading Network::simulate(std::uint64_t seed, double noise) const
{
    Reading reading;
    vornhost::Model drawn = read->model.twin();
    const std::vector<std::string> words = vornhost::simulate(drawn, seed, noise);
    if (!words.empty()) reading.faults = why_not(drawn.path, words);
    if (words.empty()) reading.network = Network(std::make_shared<const Read>(Read{std::move(drawn), read->from_file}));
    return reading;
}

Reading ReadAccess::finish(vornhost::Model model, const vornhost::Faults &faults, bool read, bool from_file)
{
    Reading reading;
    for (const vornhost::Fault &fault : faults.kept()) reading.faults.push_back(fault_of(fault));
    if (read)
        reading.network = Network(std::make_shared<const Network::Read>(Network::Read{std::move(model), from_file}));
    return reading;
}

Reading read_arrays(const Arrays &arrays, const std::string &name)
{
    Reading reading;
    reading.faults = vornhost::faults_of(arrays);
    if (!reading.faults.empty()) return reading;
    vornhost::Model model;
    vornhost::Faults faults;
    const bool read = vornhost::read_network_text(name, vornhost::text_of(arrays), model, faults);
    return ReadAccess::finish(std::move(model), faults, read);
}

Reading read_file(const std::string &path)
{
    vornhost::Model model;
    vornhost::Faults faults;
    std::vector<std::string> notes;
    const bool read = vornhost::read_any_network(path, model, notes, faults);
    Reading reading = ReadAccess::finish(std::move(model), faults, read, true);
    reading.notes = std::move(notes);
    return reading;
}

Reading read_text(const std::string &text, const std::string &name)
{
    vornhost::Model model;
    vornhost::Faults faults;
    const bool read = vornhost::read_network_text(name, text, model, faults);
    return ReadAccess::finish(std::move(model), faults, read);
}

Reading read_stream(std::istream &stream, const std::string &name)
{
    return read_text(std::string(std::istreambuf_iterator<char>(stream), {}), name);
}

const char *version() { return VORN_VERSION; }

} // namespace vornapi
