#pragma once

#include <compare>
#include <cstdint>

namespace halvern {

/// The time between two samples, kept in internal units of 1/64 microsecond: 64 a microsecond,
/// 64,000 a millisecond. Whole numbers of a larger unit drop the rest. Tests as true when it is
/// above zero; zero means that a line has none.
class SampleInterval {
public:
    static constexpr int kPerUs = 64;
    static constexpr int kPerMs = 64000;

    constexpr SampleInterval() = default;
    explicit constexpr SampleInterval(int internal) : internal_(internal) {}
    static constexpr SampleInterval of_us(int us) { return SampleInterval(us * kPerUs); }
    static constexpr SampleInterval of_ms(int ms) { return SampleInterval(ms * kPerMs); }

    explicit constexpr operator bool() const { return internal_ > 0; }
    constexpr auto operator<=>(const SampleInterval&) const = default;

    constexpr int internal() const { return internal_; }
    constexpr int us() const { return internal_ / kPerUs; }
    constexpr int whole_ms() const { return internal_ / kPerMs; }
    constexpr bool is_whole_ms() const { return internal_ % kPerMs == 0; }
    constexpr double ms() const { return static_cast<double>(internal_) / kPerMs; }  ///< exact

    /// Whole samples in a time; the rest of a sample is dropped. Not for an interval of zero.
    constexpr std::int64_t samples_in(std::int64_t ms) const { return ms * kPerMs / internal_; }

private:
    int internal_ = 0;
};

}  // namespace halvern
