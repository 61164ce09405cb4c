#include "host/formats/sdr.h"

#include <cmath>

#include "host/formats/field_book_draft.h"
#include "host/formats/number_text.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr double foot = 0.3048; // metres

// First and last columns of the fields of a record.
struct Field {
    size_t first, last;
};

// Columns of the two widths of the format.
struct Layout {
    Field station_name, station[3], station_height;
    Field point_name, point[3];
    Field from, to, slope, vertical, horizontal;
    Field target_height;
};

constexpr Layout wide = {{5, 20},
                         {{21, 36}, {37, 52}, {53, 68}},
                         {69, 84},
                         {5, 20},
                         {{21, 36}, {37, 52}, {53, 68}},
                         {5, 20},
                         {21, 36},
                         {37, 52},
                         {53, 68},
                         {69, 84},
                         {5, 20}};
constexpr Layout narrow = {{5, 8},
                           {{9, 18}, {19, 28}, {29, 38}},
                           {39, 48},
                           {5, 8},
                           {{9, 18}, {19, 28}, {29, 38}},
                           {5, 8},
                           {9, 12},
                           {13, 22},
                           {23, 32},
                           {33, 42},
                           {5, 14}};

std::string_view field(std::string_view line, Field f) { return columns(line, f.first, f.last); }

// Reads one file; the members are what its steps share.
class SdrReader {
public:
    SdrReader(const RecordLines &its_file, const ImportOptions &its_options, RecordAccount &its_account,
              Draft &its_draft, Faults &all)
        : file(its_file), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        for (const RecordLine &line : file.lines()) {
            if (trimmed(line.text).empty()) continue;
            account.read_one();
            take(line);
        }
        for (const FieldSight &sight : resection)
            account.leave_out(sight.where, "a sight of a resection without the record 02 of its station");
        return draft_field_book(book, options, account, draft, faults);
    }

private:
    void take(const RecordLine &line)
    {
        const std::string_view kind = line.text.substr(0, 2);
        if (kind == "00")
            read_header(line);
        else if (kind == "01")
            elevations = line.text.size() > 50 && line.text[50] == '2';
        else if (kind == "02")
            open_station(line);
        else if (kind == "03")
            target_height = length(line, layout->target_height);
        else if (kind == "06")
            look_at_scale(line);
        else if (kind == "08")
            add_point(line);
        else if (kind == "09")
            take_sight(line);
        else if (kind == "10")
            draft.title = utf8_text(columns(line.text, 5, 20));
        else if (kind == "13")
            take_note(line);
        else
            leave_out_other(line, kind);
    }

    void leave_out_other(const RecordLine &line, std::string_view kind)
    {
        static const std::map<std::string_view, const char *> known = {
            {"04", "collimation"},
            {"05", "atmosphere"},
            {"07", "backsight: its azimuth is computed"},
            {"11", "reduced by the instrument: its raw sight counts"},
            {"12", "set"}};
        if (const auto found = known.find(kind); found != known.end())
            account.leave_out(file.place(line), "record " + std::string(kind) + " (" + found->second + ")");
        else if (kind.size() == 2 && kind[0] >= '0' && kind[0] <= '9' && kind[1] >= '0' && kind[1] <= '9')
            account.leave_out(file.place(line), "record " + std::string(kind) + ", which is not known");
        else
            faults.add(file.place(line, 0), quote(line.text.substr(0, 4)) + " begins no record",
                       "a record has two digits and two letters before its fields");
    }

    // Six digits at the end: units of angles, lengths, pressure and temperature, then the order of coordinates.
    void read_header(const RecordLine &line)
    {
        const std::string_view text = trimmed(line.text), version = columns(line.text, 5, 20);
        layout = version.substr(0, 4) == "SDR2" ? &narrow : &wide;
        const std::string_view digits = text.size() > 6 ? text.substr(text.size() - 6) : std::string_view();
        const auto bad = [&](size_t at, const char *what) {
            faults.add(file.place(line, text.size() - 6 + at), std::string(what) + " is not known by this digit",
                       "the last six digits of the header are angle 1 degree 2 gon 4 mil, length 1 m 2 ft, pressure, "
                       "temperature, coordinates 1 north first 2 east first");
        };
        if (digits.size() < 6 || digits.find_first_not_of("0123456789") != std::string_view::npos) {
            faults.add(file.place(line), "the header does not end with the six digits of its units",
                       "write them, like 111121");
            return;
        }
        if (digits[0] != '1' && digits[0] != '2' && digits[0] != '3' && digits[0] != '4') bad(0, "the unit of angles");
        if (digits[1] != '1' && digits[1] != '2') bad(1, "the unit of lengths");
        if (digits[4] != '1' && digits[4] != '2') bad(4, "the order of coordinates");
        book.unit = digits[0] == '1' ? CircleUnit::degree : CircleUnit::gon;
        own_circle = digits[0] == '1' ? 360.0 : digits[0] == '4' ? 6400.0 : 400.0;
        metres = digits[1] == '2' ? foot : 1.0;
        east_first = digits[4] == '2';
        if (digits[1] == '2')
            account.note(file.place(line), "lengths in feet are taken as international feet of 0.3048 m");
    }

    MaybeNumber number(const RecordLine &line, Field f)
    {
        const std::string_view text = field(line.text, f);
        double value = 0.0;
        if (text.empty()) return std::nullopt;
        if (read_number(text, value) == Reading::Number) return value;
        faults.add(file.place(line, f.first - 1),
                   quote(text) + " in columns " + std::to_string(f.first) + " to " + std::to_string(f.last) +
                       " is not a number",
                   "write it with a decimal point in these columns");
        return std::nullopt;
    }
    MaybeNumber length(const RecordLine &line, Field f)
    {
        const MaybeNumber value = number(line, f);
        return value ? MaybeNumber(*value * metres) : value;
    }
    MaybeNumber angle(const RecordLine &line, Field f)
    {
        const MaybeNumber value = number(line, f);
        const double circle = full_circle(book.unit);
        if (!value || own_circle == circle) return value;
        return tidy(*value / own_circle * circle, circle);
    }
    std::string name(const RecordLine &line, Field f)
    {
        return point_name(field(line.text, f), file.place(line, f.first - 1), faults);
    }

    void open_station(const RecordLine &line)
    {
        FieldSetup setup;
        setup.station = name(line, layout->station_name);
        setup.height = length(line, layout->station_height);
        setup.where = file.place(line);
        setup.sights = std::move(resection);
        resection.clear();
        add_coordinates(line, setup.station, layout->station);
        book.setups.push_back(std::move(setup));
    }

    void add_point(const RecordLine &line) { add_coordinates(line, name(line, layout->point_name), layout->point); }

    void add_coordinates(const RecordLine &line, const std::string &its_name, const Field (&fields)[3])
    {
        DraftPoint point;
        point.name = its_name;
        point.where = file.place(line);
        const MaybeNumber first = length(line, fields[0]), second = length(line, fields[1]);
        point.value = {east_first ? second : first, east_first ? first : second, length(line, fields[2])};
        book.points.push_back(std::move(point));
    }

    void look_at_scale(const RecordLine &line)
    {
        const MaybeNumber scale = number(line, {5, 20});
        if (scale && *scale != 1.0)
            account.note(file.place(line), "scale factor " + number_text(*scale) + " is not applied to distances");
    }

    // Sights of a resection are notes before the station that they give.
    void take_note(const RecordLine &line)
    {
        const std::string_view kind = line.text.substr(2, 2);
        if (kind == "F1" || kind == "F2")
            resection.push_back(sight(line));
        else
            account.leave_out(file.place(line), "record 13 (note)");
    }

    FieldSight sight(const RecordLine &line)
    {
        FieldSight sight;
        sight.target = name(line, layout->to);
        sight.length[slope_length] = length(line, layout->slope);
        sight.zenith = angle(line, layout->vertical);
        sight.direction = angle(line, layout->horizontal);
        sight.target_height = target_height;
        sight.face = line.text.substr(2, 2) == "F2" ? 2 : 1;
        sight.where = file.place(line);
        if (elevations && sight.zenith) sight.zenith = zenith_of(*sight.zenith);
        return sight;
    }

    // Elevations are read over the full circle.
    double zenith_of(double elevation) const
    {
        const double circle = full_circle(book.unit), zenith = circle / 4.0 - elevation;
        return tidy(zenith < 0.0 ? zenith + circle : zenith, circle);
    }

    void take_sight(const RecordLine &line)
    {
        const std::string_view kind = line.text.substr(2, 2);
        if (kind != "F1" && kind != "F2") {
            account.leave_out(file.place(line), "record 09 that is not raw: corrected or reduced by the instrument");
            return;
        }
        const std::string from = name(line, layout->from);
        if (book.setups.empty() || book.setups.back().station != from) {
            FieldSetup setup;
            setup.station = from;
            setup.where = file.place(line);
            account.note(setup.where, "station " + quote(from) +
                                          " has no record 02 of its own: a set-up without a height of instrument");
            book.setups.push_back(std::move(setup));
        }
        book.setups.back().sights.push_back(sight(line));
    }

    const RecordLines &file;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    FieldBook book;
    const Layout *layout = &wide;
    double own_circle = 360.0, metres = 1.0;
    bool east_first = false, elevations = false;
    MaybeNumber target_height;
    std::vector<FieldSight> resection;
};

} // namespace

bool looks_like_sdr(std::string_view line)
{
    return line.size() > 6 && line.substr(0, 2) == "00" && line.substr(4, 3) == "SDR";
}

bool read_sdr(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
              Faults &faults)
{
    return SdrReader(file, options, account, draft, faults).read();
}

} // namespace vornhost
