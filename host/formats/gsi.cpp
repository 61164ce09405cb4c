#include "host/formats/gsi.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "host/formats/field_book_draft.h"
#include "host/formats/gsi_block.h"
#include "host/formats/gsi_level.h"
#include "host/formats/number_text.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

// Indexes of words.
enum Gsi {
    gsi_point = 11,
    gsi_direction = 21,
    gsi_zenith = 22,
    gsi_slope = 31,
    gsi_horizontal = 32,
    gsi_rise = 33,
    gsi_code = 41,
    gsi_information = 42,
    gsi_second_information = 43,
    gsi_corrections = 51,
    gsi_east = 81,
    gsi_north = 82,
    gsi_height = 83,
    gsi_station_east = 84,
    gsi_station_north = 85,
    gsi_station_height = 86,
    gsi_target_height = 87,
    gsi_instrument_height = 88
};

// What word 51 says of the distances of a file.
struct Corrections {
    MaybeNumber least_ppm, most_ppm;
    std::map<double, Source> constants; // millimetres, each with its first place
};

// Reads one file of a total station; the members are what its steps share.
class GsiReader {
public:
    GsiReader(const RecordLines &its_file, const ImportOptions &its_options, RecordAccount &its_account,
              Draft &its_draft, Faults &all)
        : file(its_file), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        find_unit();
        for (const RecordLine &line : file.lines()) {
            if (trimmed(line.text).empty()) continue;
            account.read_one();
            GsiBlock block;
            if (read_gsi_block(file, line, block, faults)) take(block);
        }
        note_corrections();
        note_feet();
        if (computed.line > 0)
            account.note(computed, "coordinates in sights (words 81 to 83) are the instrument's and not taken");
        return draft_field_book(book, options, account, draft, faults);
    }

private:
    // That of the first angle.
    void find_unit()
    {
        Faults unheard; // lines are read again
        for (const RecordLine &line : file.lines()) {
            GsiBlock block;
            if (trimmed(line.text).empty() || !read_gsi_block(file, line, block, unheard)) continue;
            for (const int index : {gsi_direction, gsi_zenith})
                if (const GsiWord *word = block.find(index)) {
                    if (const std::optional<CircleUnit> unit = gsi_circle(*word)) {
                        book.unit = *unit;
                        return;
                    }
                }
        }
    }

    void take(const GsiBlock &block)
    {
        const bool sight = block.has_any({gsi_direction, gsi_zenith, gsi_slope, gsi_horizontal, gsi_rise});
        if (const GsiWord *code = block.find(gsi_code))
            take_code(block, *code);
        else if (!block.find(gsi_point))
            account.leave_out(block.at, "a block without a point (word 11)");
        else if (sight)
            take_sight(block);
        else if (block.has_any({gsi_station_east, gsi_station_north, gsi_station_height, gsi_instrument_height}))
            open_station(block);
        else if (block.has_any({gsi_east, gsi_north, gsi_height}))
            add_point(block, gsi_east);
        else
            account.leave_out(block.at, "a block without readings or coordinates");
    }

    // Codes are the user's own, but for those that open a set-up.
    void take_code(const GsiBlock &block, const GsiWord &word)
    {
        const std::string code = word.text();
        const GsiWord *information = block.find(gsi_information);
        const bool station =
            std::find(options.station_codes.begin(), options.station_codes.end(), code) != options.station_codes.end();
        if (station && information && !information->empty()) {
            FieldSetup setup;
            setup.station = point_name(information->text(), information->at, faults);
            setup.height = length(block, gsi_second_information);
            open(std::move(setup), block.at);
        } else if (station)
            faults.add(word.at, "code block " + quote(code) + " opens a set-up and has no name in word 42",
                       "write the station there, or name other codes with --station-code");
        else if (code == "3" && information)
            target_height = length(block, gsi_information);
        else
            account.leave_out(block.at, "code block " + quote(code) +
                                            ", which opens no set-up (--station-code names those that do)");
    }

    void open(FieldSetup setup, Source at)
    {
        setup.where = at;
        target_height.reset();
        book.setups.push_back(std::move(setup));
    }

    void open_station(const GsiBlock &block)
    {
        FieldSetup setup;
        setup.station = name(block);
        setup.height = length(block, gsi_instrument_height);
        open(std::move(setup), block.at);
        if (block.has_any({gsi_station_east, gsi_station_north, gsi_station_height}))
            add_point(block, gsi_station_east);
    }

    std::string name(const GsiBlock &block)
    {
        const GsiWord &word = *block.find(gsi_point);
        return point_name(word.text(), word.at, faults);
    }

    // East, north and height in words of this index and the two behind it.
    void add_point(const GsiBlock &block, int east)
    {
        DraftPoint point;
        point.name = name(block);
        point.where = block.at;
        point.value = {length(block, east + 1), length(block, east), length(block, east + 2)};
        if (point.value[0] && point.value[1]) places[{*point.value[1], *point.value[0]}] = point.name;
        book.points.push_back(std::move(point));
    }

    void take_sight(const GsiBlock &block)
    {
        if (!find_setup(block)) return;
        FieldSetup &setup = book.setups.back();
        if (const MaybeNumber height = length(block, gsi_instrument_height)) {
            if (!setup.height) setup.height = height;
            if (std::fabs(*setup.height - *height) > 5e-5)
                account.note(block.at, "height of instrument " + number_text(*height) + " m, not " +
                                           number_text(*setup.height) + " m as before: the first one is taken");
        }
        FieldSight sight;
        sight.target = name(block);
        sight.where = block.at;
        sight.direction = angle(block, gsi_direction);
        sight.zenith = angle(block, gsi_zenith);
        sight.length = {length(block, gsi_slope), length(block, gsi_horizontal), length(block, gsi_rise)};
        sight.target_height = block.find(gsi_target_height) ? length(block, gsi_target_height) : target_height;
        look_at_corrections(block);
        if (computed.line == 0 && block.has_any({gsi_east, gsi_north, gsi_height})) computed = block.at;
        setup.sights.push_back(std::move(sight));
    }

    // Where no block opens a set-up, the coordinates of the station or the user say where the instrument stood.
    bool find_setup(const GsiBlock &block)
    {
        const MaybeNumber east = length(block, gsi_station_east), north = length(block, gsi_station_north);
        if (east && north) {
            const auto place = places.find({*east, *north});
            const std::string station = place == places.end() ? std::string() : place->second;
            if (!station.empty() && (book.setups.empty() || book.setups.back().station != station)) {
                FieldSetup setup;
                setup.station = station;
                open(std::move(setup), block.at);
            }
        }
        if (book.setups.empty() && !options.station.empty()) {
            FieldSetup setup;
            setup.station = options.station;
            open(std::move(setup), block.at);
        }
        if (!book.setups.empty()) return true;
        if (!asked)
            faults.add(block.at, "a sight before any set-up: nothing says where the instrument stood",
                       "name the station with --station NAME, or the codes of the blocks that open set-ups with "
                       "--station-code");
        asked = true;
        return false;
    }

    MaybeNumber length(const GsiBlock &block, int index)
    {
        const GsiWord *word = block.find(index);
        if (!word) return std::nullopt;
        if ((word->unit == '1' || word->unit == '7') && feet.line == 0) feet = word->at;
        return gsi_length(*word, faults);
    }

    MaybeNumber angle(const GsiBlock &block, int index)
    {
        const GsiWord *word = block.find(index);
        return word ? gsi_angle(*word, book.unit, faults) : std::nullopt;
    }

    // Millionths, then behind a second sign a constant in mm.
    void look_at_corrections(const GsiBlock &block)
    {
        const GsiWord *word = block.find(gsi_corrections);
        if (!word) return;
        const size_t second = word->data.find_first_of("+-");
        double ppm = 0.0, constant = 0.0;
        if (second == std::string_view::npos || read_number(word->data.substr(0, second), ppm) != Reading::Number ||
            read_number(word->data.substr(second + 1), constant) != Reading::Number)
            return;
        if (word->sign == '-') ppm = -ppm;
        if (word->data[second] == '-') constant = -constant;
        corrections.least_ppm = std::min(corrections.least_ppm.value_or(ppm), ppm);
        corrections.most_ppm = std::max(corrections.most_ppm.value_or(ppm), ppm);
        corrections.constants.insert({constant, word->at});
    }

    void note_corrections()
    {
        if (!corrections.least_ppm) return;
        std::string constants;
        for (const auto &[constant, at] : corrections.constants)
            constants += (constants.empty() ? "" : " and ") + number_text(constant);
        account.note(Source(), "distances are taken as recorded, with what word 51 says in them: " +
                                   number_text(*corrections.least_ppm) + " to " + number_text(*corrections.most_ppm) +
                                   " ppm, prism constant " + constants + " mm");
        if (corrections.constants.size() > 1)
            account.note(corrections.constants.rbegin()->second, "another prism constant than before");
    }

    void note_feet()
    {
        if (feet.line > 0) account.note(feet, "lengths in feet are taken as international feet of 0.3048 m");
    }

    const RecordLines &file;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    FieldBook book;
    MaybeNumber target_height;                               // for sights that name none
    std::map<std::pair<double, double>, std::string> places; // points by east and north
    Corrections corrections;
    Source feet;     // the first length in feet
    Source computed; // the first sight with coordinates
    bool asked = false;
};

} // namespace

bool read_gsi(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
              Faults &faults)
{
    if (is_gsi_level(file)) return read_gsi_level(file, options, account, draft, faults);
    return GsiReader(file, options, account, draft, faults).read();
}

} // namespace vornhost
