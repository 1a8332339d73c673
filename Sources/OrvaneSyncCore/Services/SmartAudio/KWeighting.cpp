#include "OrvaneSyncCore/Services/SmartAudio/KWeighting.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvane {

namespace {

/// Samples that are prepared at a time; they stay in the CPU's first cache.
constexpr std::size_t pieceFrames = 256;

/// Far below any measurable value.
constexpr double inaudible = 1e-100;

/// The coefficients that ITU-R BS.1770-4 prints, and the one rate for which it does.
constexpr double printedRate = 48000;
constexpr KWeighting::Coefficients printed{{1.53512485958697, -2.69169618940638, 1.19839281085285},
                                           {-1.69065929318241, 0.73248077421585},
                                           {-1.99004745483398, 0.99007225036621}};

/// The analogue filters behind those numbers (B. De Man, "Evaluation of Implementations of the EBU R128
/// Loudness Measurement", AES 2018). The bilinear transform of both at 48 kHz gives the printed numbers to 11
/// digits.
struct Analogue {
    double hertz;   ///< corner frequency
    double quality; ///< Q
};
constexpr Analogue analogueShelf{1681.974450955533, 0.7071752369554196};
constexpr Analogue analogueHighPass{38.13547087602444, 0.5003270373238773};
constexpr double shelfGainDB = 3.999843853973347;
constexpr double shelfCornerShare = 0.4996667741545416; ///< of the gain in dB, reached at the corner

/// A corner at half the sample rate or above is impossible; it is limited to just below, where the filter is
/// stable.
constexpr double highestCorner = 0.49; // of the sample rate

/// The bilinear transform replaces s by the tangent of half the angle, so that the corner keeps its
/// frequency.
double corner(const Analogue& filter, double sampleRate) {
    return std::tan(std::numbers::pi * std::min(filter.hertz / sampleRate, highestCorner));
}

/// The denominator without its leading 1.
std::array<double, 2> denominator(const Analogue& filter, double k) {
    const double leading = 1 + k / filter.quality + k * k;
    return {2 * (k * k - 1) / leading, (1 - k / filter.quality + k * k) / leading};
}

} // namespace

KWeighting::Coefficients KWeighting::coefficients(double sampleRate) {
    if (sampleRate == printedRate || !(sampleRate > 0)) return printed;
    const double k = corner(analogueShelf, sampleRate);
    const double leading = 1 + k / analogueShelf.quality + k * k;
    const double high = std::pow(10, shelfGainDB / 20);
    const double middle = std::pow(high, shelfCornerShare);
    return {{(high + middle * k / analogueShelf.quality + k * k) / leading, 2 * (k * k - high) / leading,
             (high - middle * k / analogueShelf.quality + k * k) / leading},
            denominator(analogueShelf, k),
            denominator(analogueHighPass, corner(analogueHighPass, sampleRate))};
}

KWeighting::KWeighting(std::size_t channels, double sampleRate)
    : channels_(channels), coefficients_(coefficients(sampleRate)), groups_((channels + lanes - 1) / lanes),
      interleaved_(pieceFrames) {}

void KWeighting::add(std::span<const float* const> channels, std::size_t offset, std::size_t frames) {
    const auto& [shelfB, shelfA, highPassA] = coefficients_;
    std::array<float, pieceFrames> piece; // written before it is read
    for (std::size_t index = 0; index < groups_.size(); ++index) {
        const std::size_t first = index * lanes;
        const std::size_t count = std::min(lanes, channels_ - first);
        // Copied one by one, as otherwise the compiler does not keep them in registers.
        const Group& group = groups_[index];
        Lanes shelf1 = group.shelf1, shelf2 = group.shelf2;
        Lanes highPass1 = group.highPass1, highPass2 = group.highPass2;
        Lanes energy = group.energy;
        for (std::size_t done = 0; done < frames; done += pieceFrames) {
            const std::size_t some = std::min(pieceFrames, frames - done);
            for (std::size_t lane = 0; lane < count; ++lane) {
                std::copy_n(channels[first + lane] + offset + done, some, piece.begin());
                platform::vector::silenceNonFinite(std::span(piece).first(some));
                for (std::size_t i = 0; i < some; ++i) interleaved_[i][lane] = piece[i];
            }
            for (std::size_t i = 0; i < some; ++i) {
                // The newest delayed value is used last, so that everything else can be computed before it is
                // available.
                const Lanes shelf = interleaved_[i] - shelfA[1] * shelf2 - shelfA[0] * shelf1;
                const Lanes shelved = shelfB[0] * shelf + shelfB[1] * shelf1 + shelfB[2] * shelf2;
                shelf2 = shelf1;
                shelf1 = shelf;
                const Lanes passed = shelved - highPassA[1] * highPass2 - highPassA[0] * highPass1;
                const Lanes weighted = passed - 2.0 * highPass1 + highPass2;
                highPass2 = highPass1;
                highPass1 = passed;
                energy += weighted * weighted;
            }
        }
        groups_[index] = {shelf1, shelf2, highPass1, highPass2, energy};
    }
}

std::vector<double> KWeighting::takeEnergies() {
    std::vector<double> energies;
    for (std::size_t channel = 0; channel < channels_; ++channel)
        energies.push_back(groups_[channel / lanes].energy[channel % lanes]);
    for (Group& group : groups_) group.energy = Lanes{};
    settle();
    return energies;
}

/// Sets the state to 0 when its decay is below any measurable value, so that silence is not computed with
/// slow denormal numbers.
void KWeighting::settle() {
    for (Group& group : groups_)
        for (Lanes* values : {&group.shelf1, &group.shelf2, &group.highPass1, &group.highPass2})
            for (std::size_t lane = 0; lane < lanes; ++lane)
                if (std::abs((*values)[lane]) < inaudible) (*values)[lane] = 0;
}

} // namespace orvane
