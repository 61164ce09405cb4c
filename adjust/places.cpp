// Places of rows, from the usable rows of each number. These are 0 to 3, digits to the base 4 of which 26 fit exactly
// into a double; as a number belongs to one rank, sums over ranks only fill in digits. Numbers are gone through in
// windows of a million doubles.

#include "adjust/places.h"

#include <algorithm>
#include <bitset>

namespace vornadjust {

namespace {

const std::int64_t digits = 26;                // in a double, of two bits each
const std::int64_t most_words = 1 << 20;       // in a window
const std::uint64_t ones = 0x5555555555555555; // low bits of all digits

int sum_of_digits(std::uint64_t x)
{
    return (int)(std::bitset<64>(x & ones).count() + 2 * std::bitset<64>(x >> 1 & ones).count());
}

} // namespace

std::vector<int> find_places(const Share &share, const Equations &e, const OwnObservations &own)
{
    std::vector<int> place((std::size_t)e.rows(), -1);
    int before = 0, counted = 0, placed = 0; // usable rows before the word; own rows that are done
    std::vector<double> counts;
    const auto number = [&](int row) { return own.number(e.observation[row]); };
    for (std::int64_t first = 0; first < own.all; first += digits * most_words) {
        const std::int64_t words = std::min(most_words, (own.all - first + digits - 1) / digits);
        counts.assign((std::size_t)words, 0.0);
        for (; counted < e.rows() && number(counted) < first + digits * words; counted++) {
            const std::int64_t at = number(counted) - first;
            if (e.usable[counted]) counts[at / digits] += (double)(std::uint64_t{1} << 2 * (at % digits));
        }
        share.sum(&counts);
        for (std::int64_t w = 0; w < words; w++) {
            const auto word = (std::uint64_t)counts[w];
            for (; placed < counted && number(placed) - first < digits * (w + 1); placed++) {
                const std::uint64_t lower = (std::uint64_t{1} << 2 * ((number(placed) - first) % digits)) - 1;
                if (e.usable[placed]) place[placed] = before + sum_of_digits(word & lower) + e.component[placed];
            }
            before += sum_of_digits(word);
        }
    }
    return place;
}

} // namespace vornadjust
