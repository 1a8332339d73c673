#pragma once

#include "BigInt/BFraction.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::fcpxml {

/// How a frame is chosen for a retimed clip, or when rounding to frames.
enum class FrameSampling {
    floor,
    nearestNeighbor,
    frameBlending,
    opticalFlowClassic,
    opticalFlow,
    opticalFlowFrc
};
std::string_view attributeText(FrameSampling sampling);

/// An exact rational number of seconds, independent of any frame rate.
class Time {
  public:
    Time() = default;
    Time(std::int64_t numerator, std::int64_t denominator) : value_(numerator, denominator) {}
    explicit Time(BFraction value) : value_(std::move(value)) {}
    /// Parses the form of the document, such as "1001/30000s" or "5s", anywhere in the text. Nothing if there
    /// is none, or for numbers beyond 64 bits.
    static std::optional<Time> fromString(std::string_view text);

    const BFraction& value() const { return value_; }
    /// The form of the document: never a decimal point.
    std::string description() const;
    double toDouble() const { return value_.asDouble(); }
    float toFloat() const { return static_cast<float>(value_.asDouble()); }

    /// The time as a whole multiple of the frame duration: the one towards zero, or with `nearestNeighbor`
    /// the nearest, halves away from zero. The frame duration is above zero.
    Time toFrame(const Time& frameDuration, FrameSampling sampling = FrameSampling::floor) const;

    friend Time operator+(const Time& a, const Time& b) { return Time(a.value_ + b.value_); }
    friend Time operator-(const Time& a, const Time& b) { return Time(a.value_ - b.value_); }
    friend Time operator*(const Time& a, const BFraction& b) { return Time(a.value_ * b); }
    friend Time operator*(const Time& a, std::int64_t b) { return Time(a.value_ * BFraction(b, 1)); }
    friend Time operator*(std::int64_t a, const Time& b) { return b * a; }
    friend Time operator/(const Time& a, std::int64_t b) { return Time(a.value_ / BFraction(b, 1)); }
    friend BFraction operator/(const Time& a, const Time& b) { return a.value_ / b.value_; }
    Time& operator+=(const Time& other) { return *this = *this + other; }
    Time& operator-=(const Time& other) { return *this = *this - other; }
    Time& operator*=(const BFraction& factor) { return *this = *this * factor; }
    Time& operator/=(const BFraction& divisor) { return *this = Time(value_ / divisor); }
    Time operator-() const { return Time(-value_); }
    Time magnitude() const { return Time(value_.abs()); }
    Time reciprocal() const { return Time(value_.invert()); }

    friend bool operator==(const Time&, const Time&) = default;
    friend std::strong_ordering operator<=>(const Time& a, const Time& b) { return a.value_ <=> b.value_; }

    static Time zero() { return {0, 1}; }
    static Time second() { return {1, 1}; }
    static Time minute() { return {60, 1}; }
    static Time hour() { return {3600, 1}; }
    static Time frameAt23_98fps() { return {1001, 24000}; }
    static Time frameAt24fps() { return {1, 24}; }
    static Time frameAt25fps() { return {1, 25}; }
    static Time frameAt29_97fps() { return {1001, 30000}; }
    static Time frameAt30fps() { return {1, 30}; }
    static Time frameAt47_95fps() { return {1001, 48000}; }
    static Time frameAt48fps() { return {1, 48}; }
    static Time frameAt50fps() { return {1, 50}; }
    static Time frameAt59_94fps() { return {1001, 60000}; }
    static Time frameAt60fps() { return {1, 60}; }
    static Time frameAt90fps() { return {1, 90}; }
    static Time frameAt100fps() { return {1, 100}; }
    static Time frameAt119_88fps() { return {1001, 120000}; }
    static Time frameAt120fps() { return {1, 120}; }
    static Time sampleAt48kHz() { return {1, 48000}; }
    static Time sampleAt44_1kHz() { return {1, 44100}; }

  private:
    BFraction value_;
};

} // namespace orvane::fcpxml

template <>
struct std::hash<orvane::fcpxml::Time> {
    std::size_t operator()(const orvane::fcpxml::Time& time) const noexcept { return time.value().hash(); }
};
