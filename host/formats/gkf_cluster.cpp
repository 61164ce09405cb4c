#include "host/formats/gkf_cluster.h"

#include <algorithm>
#include <cmath>

#include "host/formats/gkf_tag.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Elements of a symmetric band matrix: full rows but for the last ones.
size_t band_size(size_t n, size_t width) { return n * (width + 1) - width * (width + 1) / 2; }

// Index of the element (i, j), i <= j <= i + width, in a band by rows of n.
size_t band_index(size_t n, size_t width, size_t i, size_t j)
{
    const size_t full = n - width; // rows with width + 1 elements
    const size_t before = i <= full ? i * (width + 1) : band_size(n, width) - (n - i) * (n - i + 1) / 2;
    return before + (j - i);
}

} // namespace

void GkfCluster::add(GkfObservation observation, const std::vector<Value> &values)
{
    for (const Value &value : values) entries.push_back({observations.size(), value});
    observations.push_back(std::move(observation));
}

void GkfCluster::finish(const XmlElement *matrix)
{
    if (context.faults.count() > faults_before) return;
    if (matrix) {
        Band band;
        if (!read_matrix(*matrix, band)) return;
        for (GkfObservation &observation : observations) observation.row.sigma = {};
        band = struck(band);
        note_reflection(band);
        if (band.width == 0)
            set_sigmas(band);
        else if (!set_products(band))
            set_group(band, matrix->at);
    } else {
        require_sigmas();
    }
    hand_over();
}

bool GkfCluster::read_matrix(const XmlElement &matrix, Band &band)
{
    GkfTag tag(matrix, {"dim", "band"}, context.faults);
    if (!tag.given("dim")) tag.missing("dim", "write the number of observations");
    if (!tag.given("band")) tag.missing("band", "write band=\"0\" for variances only");
    const std::optional<int> dim = tag.whole("dim", 1), width = tag.whole("band", 0);
    if (!dim || !width) return false;
    const size_t n = entries.size();
    if ((size_t)*dim != n) {
        tag.fault("dim",
                  "the matrix has " + std::to_string(*dim) + " rows, its cluster " + std::to_string(n) + " values",
                  "write dim=\"" + std::to_string(n) + "\" and as many rows");
        return false;
    }
    if (*width >= *dim) {
        tag.fault("band", "band " + std::to_string(*width) + " is not below " + std::to_string(*dim),
                  "write at most " + std::to_string(*dim - 1));
        return false;
    }
    band.width = (size_t)*width;
    return read_elements(matrix, band_size(n, band.width), band.elements);
}

bool GkfCluster::read_elements(const XmlElement &matrix, size_t count, std::vector<double> &elements)
{
    const std::string_view text = matrix.text;
    for (size_t at = 0; at < text.size();) {
        if (is_blank(text[at])) {
            at++;
            continue;
        }
        const size_t from = at;
        while (at < text.size() && !is_blank(text[at])) at++;
        double value = 0.0;
        if (read_number(text.substr(from, at - from), value) == Reading::Number) {
            elements.push_back(value);
            continue;
        }
        context.faults.add(matrix.place(from), quote(text.substr(from, at - from)) + " is not a number in cov-mat",
                           number_remedy(text.substr(from, at - from)));
        return false;
    }
    if (elements.size() == count) return true;
    context.faults.add(matrix.at,
                       "cov-mat has " + std::to_string(elements.size()) + " elements, dim and band ask for " +
                           std::to_string(count),
                       "write the upper triangle by rows, row i from column i to i + band");
    return false;
}

// The matrix of the values that take part, in our units and senses; as narrow as its elements allow.
GkfCluster::Band GkfCluster::struck(const Band &band)
{
    const size_t n = entries.size();
    std::vector<Entry> kept;
    std::vector<size_t> old;
    for (size_t i = 0; i < n; i++)
        if (taken(entries[i])) {
            kept.push_back(entries[i]);
            old.push_back(i);
        }
    const auto element = [&](size_t i, size_t j) {
        if (old[j] - old[i] > band.width) return 0.0;
        const double scale = kept[i].value.scale * kept[j].value.scale;
        return scale * band.elements[band_index(n, band.width, old[i], old[j])];
    };
    const size_t most = kept.empty() ? 0 : std::min(band.width, kept.size() - 1);
    Band out;
    for (size_t i = 0; i < kept.size(); i++)
        for (size_t j = i; j <= std::min(i + most, kept.size() - 1); j++)
            if (element(i, j) != 0.0) out.width = std::max(out.width, j - i);
    for (size_t i = 0; i < kept.size(); i++)
        for (size_t j = i; j <= std::min(i + out.width, kept.size() - 1); j++) out.elements.push_back(element(i, j));
    entries = std::move(kept);
    return out;
}

// Variances alone.
void GkfCluster::set_sigmas(const Band &band)
{
    for (size_t i = 0; i < entries.size(); i++) {
        GkfObservation &observation = observations[entries[i].observation];
        if (!(band.elements[i] > 0.0)) {
            context.faults.add(observation.row.where, "variance of " + observation.words + " is not above 0 in cov-mat",
                               "write the square of its standard deviation");
            continue;
        }
        const double sigma = std::sqrt(band.elements[i]);
        if (observation.kind != DraftKind::baseline)
            observation.row.sigma[(size_t)entries[i].value.axis] = sigma;
        else
            observation.row.product[(size_t)entries[i].value.axis] = band.elements[i];
    }
}

// Baselines each correlated in themselves have columns of their own for that. False when the matrix ties more.
bool GkfCluster::set_products(const Band &band)
{
    static constexpr size_t product_of[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
    const size_t n = entries.size();
    for (const bool writing : {false, true})
        for (size_t i = 0; i < n; i++)
            for (size_t j = i; j <= std::min(i + band.width, n - 1); j++) {
                const double value = band.elements[band_index(n, band.width, i, j)];
                if (value == 0.0) continue;
                GkfObservation &observation = observations[entries[i].observation];
                if (observation.kind != DraftKind::baseline || entries[i].observation != entries[j].observation)
                    return false;
                const size_t product = product_of[entries[i].value.axis][entries[j].value.axis];
                if (writing) observation.row.product[product] = value;
            }
    return true;
}

void GkfCluster::set_group(const Band &band, Source at)
{
    group = "C" + std::to_string(context.draft.covariances.size() + 1);
    group_at = at;
    group_band = band;
    for (const Entry &entry : entries) observations[entry.observation].row.covariance = group;
}

void GkfCluster::note_reflection(const Band &band)
{
    if (!context.axes.turned()) return;
    const size_t n = entries.size();
    const auto is_y = [&](size_t i) { return entries[i].value.axis == 1; };
    for (size_t i = 0; i < n; i++)
        for (size_t j = i + 1; j <= std::min(i + band.width, n - 1); j++)
            if (is_y(i) != is_y(j) && band.elements[band_index(n, band.width, i, j)] != 0.0)
                context.tie_y_reflected = true;
}

void GkfCluster::require_sigmas()
{
    for (const GkfObservation &observation : observations) {
        const bool by_length = observation.kind == DraftKind::height_difference && observation.row.length;
        if (observation.row.sigma[0] || by_length || !observation.reason.empty()) continue;
        const bool plain = observation.kind != DraftKind::baseline && observation.kind != DraftKind::coordinates &&
                           observation.kind != DraftKind::coordinate_difference;
        context.faults.add(observation.row.where, observation.words + " has no standard deviation",
                           plain ? "write stdev, or a default in points-observations" : "write a cov-mat");
    }
}

void GkfCluster::hand_over()
{
    Draft &draft = context.draft;
    std::vector<size_t> rows(observations.size());
    for (size_t i = 0; i < observations.size(); i++) {
        GkfObservation &observation = observations[i];
        context.observations++;
        if (!observation.reason.empty()) {
            context.left_out++;
            context.note(observation.row.where, observation.words + " is left out: " + observation.reason);
            continue;
        }
        rows[i] = draft.of(observation.kind).size();
        draft.of(observation.kind).push_back(observation.row);
    }
    if (group.empty()) return;
    DraftCovariance covariance;
    covariance.name = group;
    covariance.where = group_at;
    covariance.width = group_band.width;
    covariance.elements = group_band.elements;
    for (const Entry &entry : entries) {
        const DraftKind kind = observations[entry.observation].kind;
        covariance.components.push_back({kind, rows[entry.observation], entry.value.axis});
    }
    draft.covariances.push_back(std::move(covariance));
}

const XmlElement *matrix_of(const XmlElement &cluster, Faults &faults)
{
    const XmlElement *matrix = nullptr;
    for (const XmlElement &child : cluster.children) {
        if (matrix)
            faults.add(child.at, "element " + quote(child.name) + " stands behind cov-mat",
                       "put cov-mat last in " + cluster.name);
        else if (child.name == "cov-mat")
            matrix = &child;
    }
    return matrix;
}

} // namespace vornhost
