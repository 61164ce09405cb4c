#include "host/formats/network_writer.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <numeric>

#include "host/formats/number_text.h"
#include "host/formats/writer_table.h"
#include "host/input/faults.h"

namespace vornhost {

namespace {

struct KindWords {
    const char *table;
    bool angle;     // value is an angle
    int components; // of a value
    bool has_sigma; // key in [sigma]
};

const KindWords kind_words[draft_kinds] = {{"distances", false, 1, true},
                                           {"horizontal_distances", false, 1, true},
                                           {"height_differences", false, 1, true},
                                           {"directions", true, 1, true},
                                           {"vertical_angles", true, 1, true},
                                           {"azimuths", true, 1, true},
                                           {"bearings", true, 1, false},
                                           {"angles", true, 1, true},
                                           {"baselines", false, 3, false},
                                           {"coordinates", false, 3, false},
                                           {"coordinate_differences", false, 3, false},
                                           {"scale_bars", false, 1, false}};

const char *code_word(int code)
{
    static const std::map<int, const char *> words = {{CODE_FREE, "free"},
                                                      {CODE_NO_DATUM, "no_datum"},
                                                      {CODE_WEIGHTED, "weighted"},
                                                      {CODE_FIXED, "fixed"},
                                                      {CODE_ABSENT, "absent"}};
    return words.at(code);
}

std::string maybe_text(const MaybeNumber &value) { return value ? number_text(*value) : std::string(); }
std::string maybe_word(const std::string &word) { return word.empty() ? word : word_cell(word); }

// The one value that all rows with a sigma share.
MaybeNumber common_sigma(const std::vector<DraftRow> &rows)
{
    MaybeNumber common;
    for (const DraftRow &row : rows) {
        if (!row.sigma[0]) continue;
        if (common && *common != *row.sigma[0]) return std::nullopt;
        common = row.sigma[0];
    }
    return common;
}

// The last note is the account: it is always there.
std::vector<std::string> note_lines(const Draft &draft, const std::string &file)
{
    constexpr size_t most = 50;
    std::vector<std::string> lines;
    const size_t n = draft.notes.size();
    for (size_t i = 0; i < n; i++) {
        const DraftNote &note = draft.notes[i];
        if (n > most && i == most - 1) lines.push_back("and " + std::to_string(n - most) + " more");
        if (i >= most - 1 && i + 1 < n) continue;
        const std::string line = note.at.line > 0 ? ":" + std::to_string(note.at.line) : std::string();
        lines.push_back(printable(file + line + ": " + note.text));
    }
    return lines;
}

// Writes one draft; the members are what its steps share.
class Writer {
public:
    explicit Writer(const Draft &its_draft) : draft(its_draft) { settle_sigmas(); }

    WrittenNetwork write()
    {
        write_head();
        write_settings();
        line("[tables]");
        write_points(true);
        write_points(false);
        write_setups();
        write_transformations();
        for (size_t kind = 0; kind < draft_kinds; kind++)
            if (!draft.rows[kind].empty()) write_rows((DraftKind)kind);
        for (const DraftCovariance &group : draft.covariances) write_covariance(group);
        return std::move(out);
    }

private:
    template <class Record, class Text>
    static std::vector<std::string> column(const std::vector<Record> &rows, const Text &text)
    {
        std::vector<std::string> cells(rows.size());
        std::transform(rows.begin(), rows.end(), cells.begin(), text);
        return cells;
    }

    void line(const std::string &text, Source origin = Source())
    {
        out.text += text + '\n';
        out.origins.push_back(origin);
    }
    void blank() { line(""); }

    // The table's heading has no origin; rows have theirs.
    template <class Record> void table(const char *name, const WriterTable &cells, const std::vector<Record> &rows)
    {
        out.text += std::string(name) + " = " + cells.text() + '\n';
        out.origins.resize(out.origins.size() + 2);
        for (const Record &row : rows) out.origins.push_back(row.where);
        out.origins.emplace_back();
    }

    // Standard deviations that all rows of a kind share stand in [sigma].
    void settle_sigmas()
    {
        for (size_t kind = 0; kind < draft_kinds; kind++) {
            const bool by_length = (DraftKind)kind == DraftKind::height_difference && draft.sigma_per_root_km;
            if (kind_words[kind].has_sigma && !by_length) shared_sigma[kind] = common_sigma(draft.rows[kind]);
        }
    }

    void write_head()
    {
        line("# From " + file_name() + "; column remark has the lines there.");
        if (draft.description.size() > 1)
            for (const std::string &text : draft.description) line("# " + printable(text));
        const std::vector<std::string> notes = note_lines(draft, file_name());
        if (!notes.empty()) line("#");
        for (const std::string &note : notes) line("# " + note);
        blank();
    }

    void write_settings()
    {
        line("[run]");
        if (!draft.title.empty()) line("title = " + toml_text(printable(draft.title)));
        line("dimension = " + std::to_string(draft.dimension));
        blank();
        write_units();
        write_crs();
        if (draft.azimuth_rotation) {
            line("[earth]");
            line("azimuth_rotation = " + angle_text(*draft.azimuth_rotation, true));
            blank();
        }
        write_sigmas();
    }

    void write_crs()
    {
        if (draft.crs.empty()) return;
        line("[crs]");
        for (const auto &[key, value] : draft.crs) {
            std::string text = key;
            line(text.append(" = ").append(value));
        }
        blank();
    }

    bool has_angles() const
    {
        for (size_t kind = 0; kind < draft_kinds; kind++)
            if (kind_words[kind].angle && !draft.rows[kind].empty()) return true;
        return false;
    }

    void write_units()
    {
        const DraftUnits &u = draft.units;
        const bool angles = has_angles();
        const std::pair<const char *, std::string> keys[] = {{"length", u.length},
                                                             {"angle", angles ? u.angle : ""},
                                                             {"sigma_length", u.sigma_length},
                                                             {"sigma_angle", angles ? u.sigma_angle : ""}};
        line("[units]");
        for (const auto &[key, word] : keys)
            if (!word.empty()) line(std::string(key) + " = " + toml_text(word));
        blank();
    }

    void write_sigmas()
    {
        std::vector<std::string> keys;
        for (size_t kind = 0; kind < draft_kinds; kind++)
            if (shared_sigma[kind])
                keys.push_back(std::string(kind_words[kind].table) + " = " + number_text(*shared_sigma[kind]));
        if (draft.sigma_per_root_km) keys.push_back("height_difference_km = " + number_text(*draft.sigma_per_root_km));
        for (const auto &[key, value] : draft.sigma) keys.push_back(key + " = " + number_text(value));
        if (keys.empty()) return;
        line("[sigma]");
        for (const std::string &key : keys) line(key);
        blank();
    }

    // In degrees-minutes-seconds a setting is a text, a cell is not.
    std::string angle_text(double value, bool setting) const
    {
        if (!draft.units.dms) return number_text(value);
        return setting ? toml_text(dms_text(value)) : dms_text(value);
    }

    void write_points(bool stations)
    {
        std::vector<DraftPoint> points;
        for (const DraftPoint &point : draft.points)
            if (point.station == stations) points.push_back(point);
        if (points.empty()) return;
        WriterTable cells(points.size());
        cells.add("name", CellKind::word, column(points, [](const DraftPoint &p) { return word_cell(p.name); }));
        for (size_t axis = 0; axis < 3; axis++)
            cells.add(
                axis < 2 && !draft.crs.empty() ? (axis == 0 ? "latitude" : "longitude") : std::string(1, "xyz"[axis]),
                CellKind::number, column(points, [axis](const DraftPoint &p) { return maybe_text(p.value[axis]); }));
        for (size_t axis = 0; axis < 3; axis++)
            cells.add(std::string("s") + "xyz"[axis], CellKind::number,
                      column(points, [axis](const DraftPoint &p) { return maybe_text(p.sigma[axis]); }));
        add_codes(cells, points);
        cells.add("status", CellKind::word,
                  column(points, [](const DraftPoint &p) { return std::string(p.off ? "off" : ""); }));
        table(stations ? "stations" : "targets", cells, points);
        blank();
    }

    // One column for all coordinates where each point has one code, otherwise a column a coordinate.
    void add_codes(WriterTable &cells, const std::vector<DraftPoint> &points) const
    {
        const size_t first = draft.dimension == 1 ? 2 : 0, end = draft.dimension == 2 ? 2 : 3;
        bool one = true;
        for (const DraftPoint &point : points)
            for (size_t axis = first; axis < end; axis++) one = one && point.code[axis] == point.code[first];
        const auto code = [](size_t axis) {
            return [axis](const DraftPoint &p) { return std::string(p.off ? "" : code_word(p.code[axis])); };
        };
        if (one) {
            cells.add("code", CellKind::word, column(points, code(first)));
            return;
        }
        for (size_t axis = first; axis < end; axis++)
            cells.add(std::string("code_") + "xyz"[axis], CellKind::word, column(points, code(axis)));
    }

    void write_setups()
    {
        if (draft.setups.empty()) return;
        const std::vector<DraftSetup> &rows = draft.setups;
        WriterTable cells(rows.size());
        cells.add("station", CellKind::word, column(rows, [](const DraftSetup &s) { return word_cell(s.station); }));
        cells.add("setup", CellKind::word, column(rows, [](const DraftSetup &s) { return word_cell(s.setup); }));
        cells.add("h", CellKind::number, column(rows, [](const DraftSetup &s) { return maybe_text(s.height); }));
        cells.add("orientation", CellKind::number, column(rows, [this](const DraftSetup &s) {
                      return s.orientation ? angle_text(*s.orientation, false) : std::string();
                  }));
        table("setups", cells, rows);
        blank();
    }

    void write_transformations()
    {
        const std::vector<Draft::Transformation> &rows = draft.transformations;
        if (rows.empty()) return;
        using Row = Draft::Transformation;
        WriterTable cells(rows.size());
        cells.add("name", CellKind::word, column(rows, [](const Row &t) { return word_cell(t.name); }));
        cells.add("system", CellKind::word, column(rows, [](const Row &t) { return word_cell(t.system); }));
        cells.add("epoch", CellKind::number, column(rows, [](const Row &t) { return maybe_text(t.epoch); }));
        table("transformations", cells, rows);
        blank();
    }

    void write_rows(DraftKind kind)
    {
        const std::vector<DraftRow> &rows = draft.of(kind);
        WriterTable cells(rows.size());
        add_ends(cells, kind, rows);
        add_values(cells, kind, rows);
        add_deviations(cells, kind, rows);
        const auto number = [&](const char *name, MaybeNumber DraftRow::*member) {
            cells.add(name, CellKind::number,
                      column(rows, [member](const DraftRow &r) { return maybe_text(r.*member); }));
        };
        const auto word = [&](const char *name, std::string DraftRow::*member) {
            cells.add(name, CellKind::word,
                      column(rows, [member](const DraftRow &r) { return maybe_word(r.*member); }));
        };
        number("h1", &DraftRow::h1);
        number("h2", &DraftRow::h2);
        number("length", &DraftRow::length);
        word("setup", &DraftRow::setup);
        word("set", &DraftRow::set);
        word("covariance", &DraftRow::covariance);
        word("transformation", &DraftRow::transformation);
        word("level", &DraftRow::level);
        cells.add("use", CellKind::word,
                  column(rows, [](const DraftRow &r) { return std::string(r.use ? "" : "no"); }));
        word("id", &DraftRow::id);
        cells.add("remark", CellKind::word, column(rows, [this](const DraftRow &r) { return remark(r.where); }));
        table(kind_words[(size_t)kind].table, cells, rows);
        blank();
    }

    // Without its folder.
    std::string file_name() const { return printable(std::filesystem::path(draft.file).filename().string()); }

    std::string remark(Source where) const
    {
        return where.line > 0 ? word_cell(file_name() + ":" + std::to_string(where.line)) : std::string();
    }

    static void add_ends(WriterTable &cells, DraftKind kind, const std::vector<DraftRow> &rows)
    {
        if (kind == DraftKind::angle)
            cells.add("at", CellKind::word, column(rows, [](const DraftRow &r) { return word_cell(r.at); }));
        const bool one = kind == DraftKind::coordinates;
        cells.add(one ? "name" : "from", CellKind::word,
                  column(rows, [](const DraftRow &r) { return word_cell(r.from); }));
        if (!one) cells.add("to", CellKind::word, column(rows, [](const DraftRow &r) { return word_cell(r.to); }));
    }

    void add_values(WriterTable &cells, DraftKind kind, const std::vector<DraftRow> &rows) const
    {
        const KindWords &words = kind_words[(size_t)kind];
        const bool one = words.components == 1;
        for (size_t axis = 0; axis < (size_t)words.components; axis++) {
            const std::string letter(1, "xyz"[axis]);
            const std::string name = one ? "value" : kind == DraftKind::coordinates ? letter : "d" + letter;
            cells.add(name, CellKind::number,
                      column(rows,
                             [&](const DraftRow &r) {
                                 if (!r.value[axis]) return std::string();
                                 return words.angle ? angle_text(*r.value[axis], false) : number_text(*r.value[axis]);
                             }),
                      one);
        }
    }

    void add_deviations(WriterTable &cells, DraftKind kind, const std::vector<DraftRow> &rows) const
    {
        static const char *const products[] = {"cxx", "cyy", "czz", "cxy", "cxz", "cyz"};
        static const char *const sigmas[] = {"sx", "sy", "sz"};
        const KindWords &words = kind_words[(size_t)kind];
        const bool shared = shared_sigma[(size_t)kind].has_value();
        for (size_t axis = 0; axis < (size_t)words.components && !shared; axis++)
            cells.add(words.components == 1 ? "sigma" : sigmas[axis], CellKind::number,
                      column(rows, [axis](const DraftRow &r) { return maybe_text(r.sigma[axis]); }));
        for (size_t i = 0; i < 6; i++)
            cells.add(products[i], CellKind::number,
                      column(rows, [i](const DraftRow &r) { return maybe_text(r.product[i]); }));
    }

    // Components count as the tables stand, whatever their order in the foreign file.
    void write_covariance(const DraftCovariance &group)
    {
        const size_t n = group.components.size();
        std::vector<size_t> order(n), place(n);
        std::iota(order.begin(), order.end(), (size_t)0);
        std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
            const DraftComponent &p = group.components[a], &q = group.components[b];
            return std::tie(p.kind, p.row, p.axis) < std::tie(q.kind, q.row, q.axis);
        });
        for (size_t i = 0; i < n; i++) place[order[i]] = i;
        std::map<std::pair<size_t, size_t>, double> elements;
        size_t width = 0, at = 0;
        for (size_t i = 0; i < n; i++)
            for (size_t j = i; j < std::min(i + group.width + 1, n); j++, at++) {
                const double value = group.elements[at];
                if (value == 0.0) continue;
                const auto [row, col] = std::minmax(place[i], place[j]);
                elements[{row, col}] = value;
                width = std::max(width, col - row);
            }
        line("[covariances." + group.name + "]", group.where);
        line("form = \"band\"");
        line("width = " + std::to_string(width));
        line("matrix = \"\"\"", group.where);
        write_band(elements, n, width, group.where);
        line("\"\"\"");
        blank();
    }

    // A row of the matrix a line, broken where it is long.
    void write_band(const std::map<std::pair<size_t, size_t>, double> &elements, size_t n, size_t width, Source where)
    {
        constexpr size_t longest = 120;
        for (size_t i = 0; i < n; i++) {
            std::string text;
            for (size_t j = i; j < std::min(i + width + 1, n); j++) {
                const auto found = elements.find({i, j});
                text += (text.empty() ? "" : " ") + (found == elements.end() ? "0" : number_text(found->second));
                if (text.size() < longest) continue;
                line(text, where);
                text.clear();
            }
            if (!text.empty()) line(text, where);
        }
    }

    const Draft &draft;
    std::array<MaybeNumber, draft_kinds> shared_sigma;
    WrittenNetwork out;
};

} // namespace

WrittenNetwork write_network(const Draft &draft) { return Writer(draft).write(); }

std::vector<std::string> note_lines(const Draft &draft) { return note_lines(draft, draft.file); }

} // namespace vornhost
