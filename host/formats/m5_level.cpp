#include "host/formats/m5_level.h"

#include "host/formats/level_book.h"

namespace vornhost {

namespace {

// Places of the information block, and the words of the instrument's texts that change what counts.
constexpr size_t point_first = 1, point_last = 8, line_first = 24, line_last = 27;

bool holds(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

// Reads one file; the members are what its steps share.
class M5LevelReader {
public:
    M5LevelReader(const ImportOptions &its_options, RecordAccount &its_account, Draft &its_draft, Faults &all)
        : options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read(const std::vector<M5Line> &lines)
    {
        for (const M5Line &line : lines) take(line);
        return draft_level_book(std::move(book), options, account, draft, faults);
    }

private:
    void take(const M5Line &line)
    {
        if (line.faulty || holds(line.information, "#####"))
            account.leave_out(line.at, "a line that the instrument marked as faulty");
        else if (line.is_text())
            take_text(line);
        else if (line.find_any({"Rb", "Lr", "Rf", "Lv", "Rz", "Lz"}))
            take_reading(line);
        else if (line.find_any({"Sh", "dz", "Db", "Df"}))
            account.leave_out(line.at, "sums that the instrument computed");
        else if (line.find("Z"))
            take_height(line);
        else
            account.leave_out(line.at, "a line without a reading of the staff");
    }

    void take_text(const M5Line &line)
    {
        if (holds(line.information, "Start-Line"))
            open_line(line);
        else if (holds(line.information, "Measurement repeated"))
            drop_reading();
        else if (holds(line.information, "Station repeated"))
            drop_station();
        else if (!holds(line.information, "Line") && !holds(line.information, "ntermediate") &&
                 !holds(line.information, "nterm."))
            account.leave_out(line.at, "a text of the instrument or of its user");
    }

    void open_line(const M5Line &line)
    {
        LevelLine next;
        next.where = line.at;
        book.lines.push_back(std::move(next));
        number.reset();
        closed = true;
        last = nullptr;
    }

    std::string name(const M5Line &line)
    {
        const std::string_view text = line.information_at(point_first, point_last);
        return text.empty() ? std::string() : point_name(text, line.at, faults);
    }

    // Another number in the last places is another line.
    void follow_number(const M5Line &line)
    {
        const std::string_view text = line.information_at(line_first, line_last);
        if (text.empty()) return;
        if (number && *number != text) open_line(line);
        number = text;
    }

    void take_reading(const M5Line &line)
    {
        follow_number(line);
        const M5Value *back = line.find_any({"Rb", "Lr"}), *fore = line.find_any({"Rf", "Lv"}),
                      *side = line.find_any({"Rz", "Lz"});
        const std::optional<double> value = m5_length(back ? back : fore ? fore : side, faults);
        if (!value) {
            account.leave_out(line.at, "a reading without a value");
            return;
        }
        LevelReading reading;
        reading.point = name(line);
        reading.value = *value;
        reading.distance = m5_length(line.find_any({"HD", "E"}), faults);
        reading.where = line.at;
        if (side)
            add_side(std::move(reading));
        else
            add(back ? &LevelStation::back : &LevelStation::fore, station(), std::move(reading));
    }

    std::vector<LevelStation> &stations()
    {
        if (book.lines.empty()) book.lines.emplace_back();
        return book.lines.back().stations;
    }

    LevelStation &station()
    {
        if (closed || stations().empty()) stations().emplace_back();
        closed = false;
        return stations().back();
    }

    using Readings = std::vector<LevelReading> LevelStation::*;

    void add(Readings readings, LevelStation &to, LevelReading reading)
    {
        (to.*readings).push_back(std::move(reading));
        last = readings;
    }

    void add_side(LevelReading reading)
    {
        if (stations().empty())
            account.leave_out(reading.where, "an intermediate sight before a reading back");
        else
            add(&LevelStation::side, stations().back(), std::move(reading));
    }

    // The reading before is measured again.
    void drop_reading()
    {
        if (!last || stations().empty() || (stations().back().*last).empty()) return;
        std::vector<LevelReading> &readings = stations().back().*last;
        account.leave_out(readings.back().where, "a reading that was repeated");
        readings.pop_back();
        last = nullptr;
    }

    void drop_station()
    {
        if (stations().empty()) return;
        const LevelStation &dropped = stations().back();
        for (const auto *readings : {&dropped.back, &dropped.fore, &dropped.side})
            for (const LevelReading &reading : *readings)
                account.leave_out(reading.where, "a station that was repeated");
        stations().pop_back();
        closed = true;
        last = nullptr;
    }

    // The first height of a line is given; the others close a station, or belong to an intermediate sight.
    void take_height(const M5Line &line)
    {
        follow_number(line);
        const std::string its_name = name(line);
        if (stations().empty() && !its_name.empty()) {
            DraftPoint point;
            point.name = its_name;
            point.where = line.at;
            point.value[2] = m5_length(line.find("Z"), faults);
            book.points.push_back(std::move(point));
            return;
        }
        account.leave_out(line.at, "a height that the instrument computed");
        if (stations().empty()) return;
        const LevelStation &open = stations().back();
        if (!open.back.empty() && !open.fore.empty()) closed = true;
    }

    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    LevelBook book;
    std::optional<std::string_view> number; // of the line
    bool closed = true;
    Readings last = nullptr; // of the last station, where the last reading stands
};

} // namespace

bool read_m5_level(const std::vector<M5Line> &lines, const ImportOptions &options, RecordAccount &account, Draft &draft,
                   Faults &faults)
{
    return M5LevelReader(options, account, draft, faults).read(lines);
}

} // namespace vornhost
