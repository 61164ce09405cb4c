// Values as bytes, and back, for processes of one program on machines of one kind.

#ifndef VORNHOST_BYTES_H
#define VORNHOST_BYTES_H

#include <cstring>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace vornhost {

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

private:
    const std::string &bytes;
    size_t at = 0;
};

} // namespace vornhost

#endif
