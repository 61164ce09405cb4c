#include "host/formats/m5.h"

#include <cmath>
#include <set>

#include "host/formats/field_book_draft.h"
#include "host/formats/m5_level.h"
#include "host/formats/m5_line.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

// Places of the information block, as instruments deliver it.
constexpr size_t code_first = 11, code_last = 15, point_first = 16, point_last = 27;

bool is_level(const std::vector<M5Line> &lines)
{
    for (const M5Line &line : lines)
        if (line.find_any({"Rb", "Rf", "Rz", "Lr", "Lv", "Lz"})) return true;
    return false;
}

// Reads one file of a total station; the members are what its steps share.
class M5Reader {
public:
    M5Reader(const std::vector<M5Line> &its_lines, const ImportOptions &its_options, RecordAccount &its_account,
             Draft &its_draft, Faults &all)
        : lines(its_lines), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        find_unit();
        for (const M5Line &line : lines) take(line);
        note_prisms();
        return draft_field_book(book, options, account, draft, faults);
    }

private:
    // That of the first angle.
    void find_unit()
    {
        for (const M5Line &line : lines)
            if (const M5Value *angle = line.find_any({"Hz", "V1", "V3"}))
                if (const std::optional<CircleUnit> unit = m5_circle(*angle)) {
                    book.unit = *unit;
                    return;
                }
    }

    void take(const M5Line &line)
    {
        if (line.faulty)
            account.leave_out(line.at, "a line that the instrument marked as faulty");
        else if (line.is_text())
            take_text(line);
        else if (line.find_any({"SD", "HD", "h", "Hz", "V1", "V2", "V3", "V4"}))
            take_sight(line);
        else if (line.find_any({"Y", "X", "Z", "E_", "N_", "Z_", "E", "N"}))
            take_coordinates(line);
        else if (code(line) == "S") // a station whose coordinates nobody knew
            open_station(line, name(line));
        else
            account.leave_out(line.at, "a line without readings or coordinates");
    }

    // Heights: that of the instrument belongs to the station above, that of the target to the sights below.
    void take_text(const M5Line &line)
    {
        const std::string_view information = trimmed(line.information);
        if (information.find("STAT") != std::string_view::npos) {
            in_orientation = true;
            instrument_height.reset();
        }
        if (information.substr(0, 5) == "POLAR") in_orientation = false;
        if (line.find("PC")) prisms.insert({std::string(line.find("PC")->number), line.at});
        if (const M5Value *height = line.find("th")) target_height = m5_length(height, faults);
        const M5Value *height = line.find("ih");
        if (!height) return;
        instrument_height = m5_length(height, faults);
        if (!book.setups.empty() && !in_orientation) book.setups.back().height = instrument_height;
    }

    std::string_view code(const M5Line &line) const { return line.information_at(code_first, code_last); }
    std::string name(const M5Line &line)
    {
        const std::string_view point = line.information_at(point_first, point_last);
        return point_name(point.empty() ? trimmed(line.information) : point, line.at, faults);
    }

    void take_coordinates(const M5Line &line)
    {
        const bool station = code(line) == "S";
        const std::string its_name = name(line);
        if (station) open_station(line, its_name);
        if (!station && its_name == last_sighted) {
            account.leave_out(line.at, "coordinates behind a sight, which the instrument computed");
            return;
        }
        DraftPoint point;
        point.name = its_name;
        point.where = line.at;
        point.value = {m5_length(line.find_any({"X", "N_", "N"}), faults),
                       m5_length(line.find_any({"Y", "E_", "E"}), faults),
                       m5_length(line.find_any({"Z", "Z_"}), faults)};
        book.points.push_back(std::move(point));
    }

    void open_station(const M5Line &line, const std::string &station)
    {
        FieldSetup setup;
        setup.station = station;
        setup.height = instrument_height;
        setup.where = line.at;
        book.setups.push_back(std::move(setup));
        last_sighted.clear();
    }

    void take_sight(const M5Line &line)
    {
        const std::string target = name(line);
        last_sighted = target;
        const std::string_view mark = code(line);
        if (in_orientation && mark.size() == 1 && mark[0] >= 'A' && mark[0] <= 'J') {
            account.leave_out(line.at, "a sight for the orientation: its circle has another zero than the sights "
                                       "behind it");
            return;
        }
        if (const M5Value *other = line.find_any({"V2", "V4"})) {
            faults.add(other->at, "vertical angles of type " + std::string(other->type) + " are not taken",
                       "record V1, from the zenith, or V3, from the horizon");
            return;
        }
        if (!find_setup(line)) return;
        FieldSight sight = sight_of(line, target);
        std::vector<FieldSight> &sights = book.setups.back().sights;
        if (!sights.empty() && is_correction(sights.back(), sight)) {
            account.leave_out(sights.back().where, "a sight that comes again with another height of its target");
            sights.pop_back();
        }
        sights.push_back(std::move(sight));
    }

    bool find_setup(const M5Line &line)
    {
        if (book.setups.empty() && !options.station.empty()) open_station(line, options.station);
        if (!book.setups.empty()) return true;
        if (!asked)
            faults.add(line.at, "a sight before any set-up: nothing says where the instrument stood",
                       "name the station with --station NAME");
        asked = true;
        return false;
    }

    FieldSight sight_of(const M5Line &line, const std::string &target)
    {
        FieldSight sight;
        sight.target = target;
        sight.where = line.at;
        sight.direction = m5_angle(line.find("Hz"), book.unit, faults);
        sight.zenith = m5_angle(line.find("V1"), book.unit, faults);
        if (const std::optional<double> elevation = m5_angle(line.find("V3"), book.unit, faults)) {
            const double circle = full_circle(book.unit), zenith = circle / 4.0 - *elevation;
            sight.zenith = tidy(zenith < 0.0 ? zenith + circle : zenith, circle);
        }
        sight.length = {m5_length(line.find("SD"), faults), m5_length(line.find("HD"), faults),
                        m5_length(line.find("h"), faults)};
        sight.target_height = target_height;
        return sight;
    }

    // The same readings with another height of the target correct an input.
    static bool is_correction(const FieldSight &a, const FieldSight &b)
    {
        return a.target == b.target && a.direction == b.direction && a.zenith == b.zenith && a.length == b.length &&
               a.target_height != b.target_height;
    }

    void note_prisms()
    {
        if (prisms.empty()) return;
        std::string all;
        for (const auto &[constant, at] : prisms) all += (all.empty() ? "" : " and ") + constant;
        account.note(Source(), "distances are taken as recorded, with the prism constants (" + all + " m) in them");
    }

    const std::vector<M5Line> &lines;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    FieldBook book;
    MaybeNumber target_height, instrument_height;
    std::string last_sighted;
    std::map<std::string, Source> prisms;
    bool in_orientation = false, asked = false;
};

} // namespace

bool read_m5(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
             Faults &faults)
{
    std::vector<M5Line> lines;
    for (const RecordLine &line : file.lines()) {
        if (trimmed(line.text).empty()) continue;
        account.read_one();
        M5Line read;
        if (read_m5_line(file, line, read, faults)) lines.push_back(std::move(read));
    }
    if (is_level(lines)) return read_m5_level(lines, options, account, draft, faults);
    return M5Reader(lines, options, account, draft, faults).read();
}

} // namespace vornhost
