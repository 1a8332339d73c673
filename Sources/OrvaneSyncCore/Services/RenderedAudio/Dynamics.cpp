#include "OrvaneSyncCore/Services/RenderedAudio/Dynamics.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

std::size_t samplesIn(double seconds, double sampleRate) {
    return std::max<std::size_t>(static_cast<std::size_t>(std::lround(seconds * sampleRate)), 1);
}

/// The share of the remaining difference that one sample removes in an exponential approach.
double shareOfASample(double timeConstant, double sampleRate) {
    return 1 - std::exp(-1 / (timeConstant * sampleRate));
}

double linear(double decibels) { return std::pow(10, decibels / 20); }

} // namespace

SlidingMaximum::SlidingMaximum(std::size_t length) : ring_(length) {}

float SlidingMaximum::add(float value) {
    const std::size_t length = ring_.size();
    const auto wrapped = [&](std::size_t place) { return place >= length ? place - length : place; };
    if (count_ > 0 && at_ - ring_[first_].at >= length) {
        first_ = wrapped(first_ + 1);
        --count_;
    }
    while (count_ > 0 && ring_[wrapped(first_ + count_ - 1)].value <= value) --count_;
    ring_[wrapped(first_ + count_)] = {at_, value};
    ++count_;
    ++at_;
    return ring_[first_].value;
}

Compressor::Compressor(const Curve& curve, double sampleRate)
    : curve_(curve), attack_(shareOfASample(curve.attackSeconds, sampleRate)),
      release_(shareOfASample(curve.releaseSeconds, sampleRate)),
      threshold_(static_cast<float>(linear(curve.thresholdDB))), level_(samplesIn(levelSeconds, sampleRate)),
      gain_(linear(curve.makeUpDB)) {}

double Compressor::wantedReductionDB(float level) {
    if (level <= threshold_) return 0;
    if (level != lastLevel_) {
        lastLevel_ = level;
        lastWanted_ =
            (20 * std::log10(static_cast<double>(level)) - curve_.thresholdDB) * (1 - 1 / curve_.ratio);
    }
    return lastWanted_;
}

double Compressor::operator()(double in) {
    constexpr double inaudibleDB = 1e-5;
    const double wanted = wantedReductionDB(level_.add(static_cast<float>(std::abs(in))));
    const double way = wanted - reductionDB_;
    if (std::abs(way) > inaudibleDB) {
        reductionDB_ += way * (way > 0 ? attack_ : release_);
        constexpr double naturalPerDB = 0.11512925464970229; // ln(10) / 20
        gain_ = std::exp((curve_.makeUpDB - reductionDB_) * naturalPerDB);
    }
    return in * gain_;
}

// The window of the peak is one sample longer than the attack, so that the output sample is still in it.
Limiter::Limiter(double attackSeconds, double decaySeconds, double sampleRate)
    : decay_(shareOfASample(decaySeconds, sampleRate)), peak_(samplesIn(attackSeconds, sampleRate) + 1),
      delayed_(samplesIn(attackSeconds, sampleRate), 0.0), gains_(delayed_.size(), 1.0),
      sum_(static_cast<double>(gains_.size())), resting_(gains_.size()) {}

double Limiter::operator()(double in) {
    constexpr double inaudible = 1e-7;
    const float peak = peak_.add(static_cast<float>(std::abs(in)));
    const double allowed = peak > 1 ? 1 / static_cast<double>(peak) : 1.0;
    if (allowed <= gain_)
        gain_ = allowed;
    else
        gain_ += (allowed - gain_) * decay_;
    if (allowed == 1 && 1 - gain_ < inaudible) gain_ = 1;

    const double out = delayed_[at_];
    delayed_[at_] = in;
    sum_ += gain_ - gains_[at_];
    gains_[at_] = gain_;
    at_ = at_ + 1 == gains_.size() ? 0 : at_ + 1;
    resting_ = gain_ == 1 ? std::min(resting_ + 1, gains_.size()) : 0;
    if (resting_ == gains_.size()) {
        sum_ = static_cast<double>(gains_.size()); // removes accumulated rounding errors
        return std::clamp(out, -1.0, 1.0);
    }
    return std::clamp(out * sum_ / static_cast<double>(gains_.size()), -1.0, 1.0);
}

} // namespace orvane
