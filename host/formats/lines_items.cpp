#include "host/formats/lines_items.h"

#include <cmath>

#include "host/input/angle.h"
#include "host/input/number.h"

namespace vornhost {

void LineItems::fault(const std::string &what, const std::string &remedy)
{
    const Source at = next < line.items.size() ? line.items[next].at : line.at;
    if (is_good) faults.add(at, what, remedy);
    is_good = false;
}

bool LineItems::need(const char *what)
{
    if (left() == 0) fault("line " + quote(line.code) + " ends before " + what, "complete it or take it out");
    return left() > 0 && is_good;
}

std::string LineItems::name()
{
    if (!need("a name")) return std::string();
    return std::string(line.items[next++].text);
}

std::vector<std::string> LineItems::names(size_t count)
{
    std::vector<std::string> out(1);
    if (!need("the names")) return std::vector<std::string>(count);
    for (const char c : item(0).text)
        if (c == '-')
            out.emplace_back();
        else
            out.back() += c;
    bool empty = false;
    for (const std::string &each : out) empty = empty || each.empty();
    if (out.size() != count || empty) {
        fault(quote(item(0).text) + " is not " + std::to_string(count) + " names joined by -",
              count == 2 ? "write two, like A-B; names themselves have no -"
                         : "write three, like A-B-C; names themselves have no -");
        return std::vector<std::string>(count);
    }
    for (size_t i = 0; i < out.size(); i++)
        for (size_t j = 0; j < i; j++)
            if (out[i] == out[j]) fault("point " + quote(out[i]) + " stands twice here", "name different points");
    if (count == 3 && options.from_first) std::swap(out[0], out[1]);
    next++;
    return out;
}

double LineItems::number()
{
    if (!need("a value")) return 0.0;
    double value = 0.0;
    if (read_number(item(0).text, value) != Reading::Number)
        fault(quote(item(0).text) + " is not a number", number_remedy(item(0).text));
    else
        next++;
    return value;
}

std::optional<double> LineItems::measured(bool is_angle)
{
    if (left() > 0 && item(0).text == "?") {
        next++;
        return std::nullopt;
    }
    return is_angle ? angle() : number();
}

double LineItems::angle_of(const LineItem &from, std::string_view text)
{
    double value = 0.0;
    const bool parts = text.find('-', 1) != std::string_view::npos;
    if (options.gons || !parts) {
        const bool read = read_number(text, value) == Reading::Number;
        if (read && (options.gons || value == std::floor(value))) return value;
        const bool decimal = read && !options.gons;
        fault(decimal ? quote(from.text) + " can be decimal degrees, or degrees, minutes and seconds"
                      : quote(from.text) + " is not an angle",
              options.gons ? "write gon with a decimal point" : "write it like 60-21-42.5");
    } else if (!read_dms(text, value)) {
        fault(quote(from.text) + " is not an angle", "write it like 60-21-42.5");
    }
    return value;
}

double LineItems::angle()
{
    if (!need("an angle")) return 0.0;
    const double value = angle_of(item(0), item(0).text);
    if (is_good) next++;
    return value;
}

double LineItems::bearing()
{
    if (!need("a bearing")) return 0.0;
    const std::string text = capitals(item(0).text);
    const char first = text.front(), last = text.back();
    if (first != 'N' && first != 'S') return angle();
    if (text.size() < 3 || (last != 'E' && last != 'W') || options.gons) {
        fault(quote(item(0).text) + " is not a bearing",
              options.gons ? "write an azimuth in gon" : "write it like N34-23-45.7E");
        return 0.0;
    }
    const double value = angle_of(item(0), std::string_view(text).substr(1, text.size() - 2));
    if (is_good && !(value >= 0.0 && value <= 90.0))
        fault(quote(item(0).text) + " is not a bearing", "write it from 0 to 90 degrees");
    if (is_good) next++;
    const double from_north = first == 'N' ? value : 180.0 - value;
    return last == 'E' || from_north == 0.0 ? from_north : 360.0 - from_north;
}

LineSigma LineItems::sigma()
{
    const std::string_view text = item(0).text;
    LineSigma out;
    if (text == "&") return next++, out;
    if (text == "!" || text == "*") {
        out.kind = text == "!" ? LineSigma::fixed : LineSigma::free;
        return next++, out;
    }
    out.kind = LineSigma::number;
    out.value = number();
    if (is_good && !(out.value > 0.0)) {
        next--;
        fault("standard deviation " + quote(text) + " is not above 0", "write ! for what is fixed");
    }
    return out;
}

std::vector<LineSigma> LineItems::sigmas(size_t values)
{
    std::vector<LineSigma> out(values);
    size_t count = left();
    if (count > 0 && item(count - 1).text.find('/') != std::string_view::npos) count--;
    if (count == 0 || !is_good) return out;
    if (count != values) {
        next = line.items.size() - left() + (count > values ? values : count);
        if (next >= line.items.size()) next = line.items.size() - 1;
        fault(std::to_string(count) + " items stand behind " + std::to_string(values) + " values",
              "write a standard deviation for each, or for none, and heights like 1.55/1.30");
        return out;
    }
    for (LineSigma &each : out)
        if (is_good) each = sigma();
    return out;
}

std::optional<LineHeights> LineItems::heights()
{
    if (left() == 0 || !is_good) return std::nullopt;
    const std::string_view text = item(0).text;
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return std::nullopt;
    LineHeights out;
    out.at = item(0).at;
    if (read_number(text.substr(0, slash), out.instrument) != Reading::Number ||
        read_number(text.substr(slash + 1), out.target) != Reading::Number)
        fault(quote(text) + " is not a height of instrument and one of target", "write them like 1.55/1.30");
    else
        next++;
    return out;
}

void LineItems::end()
{
    if (left() > 0 && is_good) fault(quote(item(0).text) + " is not expected here", "take it out");
}

} // namespace vornhost
