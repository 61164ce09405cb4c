#include "host/formats/gsi_block.h"

#include <algorithm>
#include <cmath>

#include "host/formats/number_text.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr double foot = 0.3048; // metres

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Two digits, or three; the places behind 11 and 41 are the number of the block.
int index_of(std::string_view head)
{
    const int two = (head[0] - '0') * 10 + (head[1] - '0');
    return two != 11 && two != 41 && is_digit(head[2]) ? two * 10 + (head[2] - '0') : two;
}

void word_fault(const GsiWord &word, const std::string &what, const std::string &remedy, Faults &faults)
{
    faults.add(word.at, "word " + std::to_string(word.index) + ": " + what, remedy);
}

// The data as a signed whole number.
std::optional<double> whole(const GsiWord &word, Faults &faults)
{
    if (word.empty()) return std::nullopt;
    const std::string_view data = trimmed(word.data);
    double value = 0.0;
    if (!std::all_of(data.begin(), data.end(), is_digit) || read_number(data, value) != Reading::Number) {
        word_fault(word, quote(word.data) + " is not a number", "write digits in all places", faults);
        return std::nullopt;
    }
    return word.sign == '-' ? -value : value;
}

// DDDMMSSs, with tenths of seconds.
std::optional<double> sexagesimal(const GsiWord &word, double value, Faults &faults)
{
    const double size = std::fabs(value);
    const double degrees = std::floor(size / 1e5), minutes = std::floor((size - degrees * 1e5) / 1e3);
    const double tenths = size - degrees * 1e5 - minutes * 1e3;
    if (minutes >= 60.0 || tenths >= 600.0) {
        word_fault(word, quote(word.data) + " is not in degrees, minutes and tenths of seconds", "correct it", faults);
        return std::nullopt;
    }
    return std::copysign(degrees + (minutes * 600.0 + tenths) / 36000.0, value);
}

} // namespace

bool GsiWord::empty() const
{
    const std::string_view content = data.substr(std::min(data.find_first_not_of("0 "), data.size()));
    return data.find('?') != std::string_view::npos ||
           (!content.empty() && content.find_first_not_of("- ") == std::string_view::npos);
}

std::string GsiWord::text() const
{
    const std::string_view all = trimmed(data);
    const std::string_view content = all.substr(std::min(all.find_first_not_of('0'), all.size()));
    if (empty()) return std::string();
    return content.empty() && !all.empty() ? "0" : std::string(content);
}

const GsiWord *GsiBlock::find(int index) const
{
    const auto found =
        std::find_if(words.begin(), words.end(), [index](const GsiWord &word) { return word.index == index; });
    return found == words.end() ? nullptr : &*found;
}

bool GsiBlock::has_any(std::initializer_list<int> indexes) const
{
    return std::any_of(indexes.begin(), indexes.end(), [this](int index) { return find(index); });
}

bool looks_like_gsi(std::string_view line)
{
    const bool wide = line.substr(0, 1) == "*";
    if (wide) line.remove_prefix(1);
    const size_t width = wide ? 23 : 15;
    if (line.size() < width || !is_digit(line[0]) || !is_digit(line[1])) return false;
    const auto filling = [](char c) { return is_digit(c) || c == '.' || c == '?'; };
    return std::all_of(line.begin() + 2, line.begin() + 6, filling) && (line[6] == '+' || line[6] == '-') &&
           (line.size() == width || line[width] == ' ');
}

bool read_gsi_block(const RecordLines &file, const RecordLine &line, GsiBlock &block, Faults &faults)
{
    std::string_view text = line.text.substr(0, line.text.find_last_not_of(" \t") + 1);
    const bool wide = text.substr(0, 1) == "*";
    const size_t width = wide ? 23 : 15;
    block.words.clear();
    block.at = file.place(line);
    for (size_t at = wide ? 1 : 0; at < text.size(); at += width + 1) {
        // Blanks at the end of the line belong to the last word.
        const std::string_view piece = line.text.substr(at, width);
        const Source place = file.place(line, at);
        if (piece.size() < width) {
            faults.add(place, "the last word is cut off",
                       "a word has " + std::to_string(width) + " places and a blank behind it");
            return false;
        }
        if (!is_digit(piece[0]) || !is_digit(piece[1]) || (piece[6] != '+' && piece[6] != '-') ||
            (at + width < text.size() && text[at + width] != ' ')) {
            faults.add(place, quote(piece) + " is not a word of GSI-" + (wide ? "16" : "8"),
                       "a word has an index in places 1 and 2, a sign in place 7 and a blank behind its data");
            return false;
        }
        block.words.push_back({index_of(piece), piece[5], piece[6], piece.substr(7), place});
    }
    return true;
}

std::optional<double> gsi_length(const GsiWord &word, Faults &faults)
{
    if (word.empty()) return std::nullopt;
    if (word.unit == '.' && word.data.find('.') != std::string_view::npos) {
        double value = 0.0;
        if (read_number(trimmed(word.data), value) == Reading::Number) return word.sign == '-' ? -value : value;
    }
    const std::optional<double> value = whole(word, faults);
    if (!value) return std::nullopt;
    switch (word.unit) {
    case '.':
    case '0': return *value / 1e3;
    case '1': return *value / 1e3 * foot;
    case '6': return *value / 1e4;
    case '7': return *value / 1e4 * foot;
    case '8': return *value / 1e5;
    default:
        word_fault(word, std::string("unit ") + word.unit + " is not one of lengths",
                   "0, 6 and 8 are metres, 1 and 7 feet", faults);
        return std::nullopt;
    }
}

std::optional<double> gsi_angle(const GsiWord &word, CircleUnit unit, Faults &faults)
{
    const std::optional<double> value = whole(word, faults);
    if (!value) return std::nullopt;
    const double circle = full_circle(unit);
    std::optional<double> share; // of the circle
    double own = 400.0;
    switch (word.unit) {
    case '2': share = *value / 1e5; break;
    case '3': share = *value / 1e5, own = 360.0; break;
    case '4': share = sexagesimal(word, *value, faults), own = 360.0; break;
    case '5': share = *value / 1e4, own = 6400.0; break;
    default:
        word_fault(word, std::string("unit ") + word.unit + " is not one of angles",
                   "2 is gon, 3 decimal degrees, 4 degrees-minutes-seconds, 5 mil", faults);
    }
    if (!share) return std::nullopt;
    return own == circle ? *share : tidy(*share / own * circle, circle);
}

std::optional<CircleUnit> gsi_circle(const GsiWord &word)
{
    if (word.unit == '3') return CircleUnit::degree;
    if (word.unit == '4') return CircleUnit::dms;
    return word.unit == '2' || word.unit == '5' ? std::optional(CircleUnit::gon) : std::nullopt;
}

} // namespace vornhost
