#include "host/own/shared_rows.h"

#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "host/own/bytes.h"

namespace vornhost {

namespace {

const char *const correction_names[] = {"instrument", "ellipsoid", "projection", "arc_to_chord", "convergence"};

void pass(Packer &pack, const CorrectionResult &c)
{
    int name = 0;
    while (std::strcmp(correction_names[name], c.name) != 0) name++;
    pack(name), pack(c.value);
}

void pass(Unpacker &take, CorrectionResult &c)
{
    int name = 0;
    take(name), take(c.value);
    c.name = correction_names[name];
}

void pass(Packer &pack, const std::vector<CorrectionResult> &list)
{
    pack(list.size());
    for (const CorrectionResult &c : list) pass(pack, c);
}

void pass(Unpacker &take, std::vector<CorrectionResult> &list)
{
    size_t n = 0;
    take(n);
    list.resize(n);
    for (CorrectionResult &c : list) pass(take, c);
}

// All that a record has, for both.
template <class Pass, class Record> void pass_test(Pass &pass, Record &t)
{
    pass(t.probability), pass(t.detectable), pass(t.bias_to_noise), pass(t.shift), pass(t.rejected);
}

template <class Pass, class Record> void pass_words(Pass &pass, Record &w)
{
    pass(w.at), pass(w.setup), pass(w.set), pass(w.id), pass(w.remark);
}

void pass(Packer &pack, const std::optional<ObservationTestResult> &t)
{
    pack(t.has_value());
    if (t) pass_test(pack, *t);
}

void pass(Unpacker &take, std::optional<ObservationTestResult> &t)
{
    bool there = false;
    take(there);
    t.reset();
    if (there) pass_test(take, t.emplace());
}

void pass(Packer &pack, const std::shared_ptr<const RowWords> &words)
{
    pack(words != nullptr);
    if (words) pass_words(pack, *words);
}

void pass(Unpacker &take, std::shared_ptr<const RowWords> &words)
{
    bool there = false;
    take(there);
    if (!there) return;
    RowWords w;
    pass_words(take, w);
    words = std::make_shared<const RowWords>(std::move(w));
}

template <class Pass, class Record> void pass_residual(Pass &way, Record &r)
{
    way(r.kind), way(r.component), way(r.unit), way(r.from), way(r.to), way(r.file), way(r.line);
    pass(way, r.words), way(r.value), way(r.sigma), way(r.residual), way(r.observed), way(r.raw);
    pass(way, r.corrections), way(r.adjusted), way(r.deviation), way(r.redundancy), way(r.normalised), way(r.checked);
    way(r.weight), pass(way, r.test), way(r.outside), way(r.normal), way(r.normal_divided), way(r.tau);
    way(r.tau_divided);
}

} // namespace

std::string packed(const std::vector<ResidualResult> &residuals, const std::vector<size_t> &places)
{
    std::string bytes;
    Packer pack(&bytes);
    for (size_t i = 0; i < residuals.size(); i++) {
        pack(places[i]);
        pass_residual(pack, residuals[i]);
    }
    return bytes;
}

void unpack(const std::string &bytes, size_t first, std::vector<ResidualResult> *block)
{
    Unpacker take(bytes);
    while (!take.at_end()) {
        size_t place = 0;
        take(place);
        pass_residual(take, (*block)[place - first]);
    }
}

std::vector<ResidualResult> fetch_rows(const ObservationResults &own, vornadjust::Ranks &ranks, size_t first,
                                       size_t count)
{
    double asked[2] = {(double)first, (double)count};
    ranks.hear(asked, 2);
    std::vector<ResidualResult> block(count);
    for (const std::string &bytes : ranks.bring({})) unpack(bytes, first, &block);
    std::vector<ResidualResult> mine = own.make(first, count);
    const std::vector<size_t> places = own.places(first, count);
    for (size_t i = 0; i < mine.size(); i++) block[places[i] - first] = std::move(mine[i]);
    return block;
}

void serve_rows(const ObservationResults &own, vornadjust::Ranks &ranks)
{
    for (;;) {
        double asked[2] = {0.0, 0.0};
        ranks.hear(asked, 2);
        const size_t first = (size_t)asked[0], count = (size_t)asked[1];
        ranks.bring(packed(own.make(first, count), own.places(first, count)));
    }
}

} // namespace vornhost
