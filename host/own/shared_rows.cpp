#include "host/own/shared_rows.h"

#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace vornhost {

namespace {

const char *const correction_names[] = {"instrument", "ellipsoid", "projection", "arc_to_chord", "convergence"};

// Appends values to bytes.
class Packer {
public:
    explicit Packer(std::string *all) : bytes(*all) {}

    template <class Value> void operator()(const Value &x)
    {
        static_assert(std::is_arithmetic_v<Value>, "numbers lie as they are");
        bytes.append(reinterpret_cast<const char *>(&x), sizeof x);
    }
    void operator()(const std::string &text)
    {
        (*this)(text.size());
        bytes += text;
    }
    template <class Value> void operator()(const std::optional<Value> &x)
    {
        (*this)(x.has_value());
        if (x) (*this)(*x);
    }
    void operator()(const ObservationTestResult &t);
    void operator()(const CorrectionResult &c)
    {
        int name = 0;
        while (std::strcmp(correction_names[name], c.name) != 0) name++;
        (*this)(name), (*this)(c.value);
    }
    void operator()(const std::vector<CorrectionResult> &list)
    {
        (*this)(list.size());
        for (const CorrectionResult &c : list) (*this)(c);
    }
    void operator()(const std::shared_ptr<const RowWords> &words);

private:
    std::string &bytes;
};

// Takes values from bytes, in the same order.
class Unpacker {
public:
    explicit Unpacker(const std::string &all) : bytes(all) {}

    bool at_end() const { return at == bytes.size(); }
    template <class Value> void operator()(Value &x)
    {
        static_assert(std::is_arithmetic_v<Value>, "numbers lie as they are");
        std::memcpy(&x, bytes.data() + at, sizeof x);
        at += sizeof x;
    }
    void operator()(std::string &text)
    {
        size_t n = 0;
        (*this)(n);
        text.assign(bytes, at, n);
        at += n;
    }
    template <class Value> void operator()(std::optional<Value> &x)
    {
        bool there = false;
        (*this)(there);
        x.reset();
        if (there) (*this)(x.emplace());
    }
    void operator()(ObservationTestResult &t);
    void operator()(CorrectionResult &c)
    {
        int name = 0;
        (*this)(name), (*this)(c.value);
        c.name = correction_names[name];
    }
    void operator()(std::vector<CorrectionResult> &list)
    {
        size_t n = 0;
        (*this)(n);
        list.resize(n);
        for (CorrectionResult &c : list) (*this)(c);
    }
    void operator()(std::shared_ptr<const RowWords> &words);

private:
    const std::string &bytes;
    size_t at = 0;
};

// All that a record has, for both.
template <class Pass, class Record> void pass_test(Pass &pass, Record &t)
{
    pass(t.probability), pass(t.detectable), pass(t.bias_to_noise), pass(t.shift), pass(t.rejected);
}

template <class Pass, class Record> void pass_words(Pass &pass, Record &w)
{
    pass(w.at), pass(w.setup), pass(w.set), pass(w.id), pass(w.remark);
}

template <class Pass, class Record> void pass_residual(Pass &pass, Record &r)
{
    pass(r.kind), pass(r.component), pass(r.unit), pass(r.from), pass(r.to), pass(r.file), pass(r.line);
    pass(r.words), pass(r.value), pass(r.sigma), pass(r.residual), pass(r.observed), pass(r.raw), pass(r.corrections);
    pass(r.adjusted), pass(r.deviation), pass(r.redundancy), pass(r.normalised), pass(r.checked), pass(r.weight);
    pass(r.test), pass(r.outside), pass(r.normal), pass(r.normal_divided), pass(r.tau), pass(r.tau_divided);
}

void Packer::operator()(const ObservationTestResult &t) { pass_test(*this, t); }
void Unpacker::operator()(ObservationTestResult &t) { pass_test(*this, t); }

void Packer::operator()(const std::shared_ptr<const RowWords> &words)
{
    (*this)(words != nullptr);
    if (words) pass_words(*this, *words);
}

void Unpacker::operator()(std::shared_ptr<const RowWords> &words)
{
    bool there = false;
    (*this)(there);
    if (!there) return;
    RowWords w;
    pass_words(*this, w);
    words = std::make_shared<const RowWords>(std::move(w));
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
