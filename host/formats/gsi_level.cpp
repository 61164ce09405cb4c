#include "host/formats/gsi_level.h"

#include <set>

#include "host/formats/gsi_block.h"
#include "host/formats/level_book.h"

namespace vornhost {

namespace {

// Indexes of words.
enum Gsi {
    gsi_point = 11,
    gsi_distance = 32,
    gsi_line = 41,
    gsi_back = 331,
    gsi_fore = 332,
    gsi_back_again = 335,
    gsi_fore_again = 336,
    gsi_side = 333,
    gsi_sum = 573,
    gsi_line_length = 574,
    gsi_height = 83
};

constexpr const char *collimation_check = "10";

// Reads one file of a level; the members are what its steps share.
class GsiLevelReader {
public:
    GsiLevelReader(const RecordLines &its_file, const ImportOptions &its_options, RecordAccount &its_account,
                   Draft &its_draft, Faults &all)
        : file(its_file), options(its_options), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        for (const RecordLine &line : file.lines()) {
            if (trimmed(line.text).empty()) continue;
            account.read_one();
            GsiBlock block;
            if (read_gsi_block(file, line, block, faults)) take(block);
        }
        return draft_level_book(std::move(book), options, account, draft, faults);
    }

private:
    void take(const GsiBlock &block)
    {
        if (const GsiWord *line = block.find(gsi_line))
            open_line(block, *line);
        else if (skipping)
            account.leave_out(block.at, "a collimation check");
        else if (!block.find(gsi_point))
            account.leave_out(block.at, "a block without a point (word 11)");
        else if (block.has_any({gsi_back, gsi_fore, gsi_back_again, gsi_fore_again, gsi_side}))
            take_reading(block);
        else if (block.has_any({gsi_sum, gsi_line_length}))
            closed = true; // sums and the height are computed
        else if (block.find(gsi_height))
            add_height(block);
        else
            account.leave_out(block.at, "a block without a reading of the staff");
    }

    // The method is the last digit or two, behind a question mark and filling.
    void open_line(const GsiBlock &block, const GsiWord &word)
    {
        skipping = word.data.size() > 1 && word.data.substr(word.data.size() - 2) == collimation_check;
        closed = true;
        LevelLine line;
        line.where = block.at;
        book.lines.push_back(std::move(line));
    }

    std::string name(const GsiBlock &block)
    {
        const GsiWord &word = *block.find(gsi_point);
        const std::string text = word.text();
        return text.empty() || text == "0" ? std::string() : point_name(text, word.at, faults);
    }

    LevelStation &station()
    {
        if (book.lines.empty()) book.lines.emplace_back();
        std::vector<LevelStation> &stations = book.lines.back().stations;
        if (closed || stations.empty()) stations.emplace_back();
        if (closed) seen.clear();
        closed = false;
        return stations.back();
    }

    void take_reading(const GsiBlock &block)
    {
        for (const int index : {gsi_back, gsi_fore, gsi_back_again, gsi_fore_again, gsi_side}) {
            const GsiWord *word = block.find(index);
            if (!word) continue;
            const std::optional<double> value = metres(*word);
            if (!value) continue;
            LevelReading reading;
            reading.point = name(block);
            reading.value = *value;
            reading.where = block.at;
            if (const GsiWord *distance = block.find(gsi_distance)) reading.distance = metres(*distance);
            add(index, std::move(reading));
            return;
        }
        account.leave_out(block.at, "a reading without a value");
    }

    std::optional<double> metres(const GsiWord &word) { return gsi_length(word, faults); }

    // A side sight belongs to the station of the last reading back; another reading of a kind that is there begins the
    // next station.
    void add(int index, LevelReading reading)
    {
        if (index == gsi_side) {
            if (book.lines.empty() || book.lines.back().stations.empty())
                account.leave_out(reading.where, "an intermediate sight before a reading back");
            else
                book.lines.back().stations.back().side.push_back(std::move(reading));
            return;
        }
        if (seen.count(index)) closed = true;
        LevelStation &open = station();
        seen.insert(index);
        (index == gsi_back || index == gsi_back_again ? open.back : open.fore).push_back(std::move(reading));
    }

    // Heights behind the first are computed by the instrument.
    void add_height(const GsiBlock &block)
    {
        const bool first = book.lines.empty() || book.lines.back().stations.empty();
        if (!first) {
            account.leave_out(block.at, "a height that the instrument computed");
            return;
        }
        DraftPoint point;
        point.name = name(block);
        point.where = block.at;
        point.value[2] = metres(*block.find(gsi_height));
        if (point.name.empty())
            account.leave_out(block.at, "a height of a point without a name");
        else
            book.points.push_back(std::move(point));
    }

    const RecordLines &file;
    const ImportOptions &options;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    LevelBook book;
    std::set<int> seen; // kinds of readings of the open station
    bool closed = true, skipping = false;
};

} // namespace

bool is_gsi_level(const RecordLines &file)
{
    Faults unheard; // lines are read again
    for (const RecordLine &line : file.lines()) {
        GsiBlock block;
        if (trimmed(line.text).empty() || !read_gsi_block(file, line, block, unheard)) continue;
        if (block.has_any({gsi_back, gsi_fore, gsi_back_again, gsi_fore_again})) return true;
        if (const GsiWord *word = block.find(gsi_line); word && word->data.substr(0, 1) == "?") return true;
    }
    return false;
}

bool read_gsi_level(const RecordLines &file, const ImportOptions &options, RecordAccount &account, Draft &draft,
                    Faults &faults)
{
    return GsiLevelReader(file, options, account, draft, faults).read();
}

} // namespace vornhost
