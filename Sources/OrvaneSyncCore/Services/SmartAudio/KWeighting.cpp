#include "OrvaneSyncCore/Services/SmartAudio/KWeighting.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// Samples that are made ready at a time; they stay in the nearest cache.
constexpr std::size_t pieceFrames = 256;

/// Far below anything that a measurement could show.
constexpr double inaudible = 1e-100;

} // namespace

const KWeighting::Coefficients KWeighting::coefficients48000{
    {1.53512485958697, -2.69169618940638, 1.19839281085285},
    {-1.69065929318241, 0.73248077421585},
    {-1.99004745483398, 0.99007225036621}};

const KWeighting::Coefficients KWeighting::coefficients44100{
    {1.53084035300175, -2.65093929292214, 1.16904175313036},
    {-1.66365511325602, 0.71259542607547},
    {-1.98916967058681, 0.9891928641778}};

KWeighting::KWeighting(std::size_t channels, double sampleRate)
    : channels_(channels),
      coefficients_(std::abs(sampleRate - 44100.0) <= 1.0 ? coefficients44100 : coefficients48000),
      groups_((channels + lanes - 1) / lanes), interleaved_(pieceFrames) {}

void KWeighting::add(std::span<const float* const> channels, std::size_t offset, std::size_t frames) {
    const auto& [shelfB, shelfA, highPassA] = coefficients_;
    std::array<float, pieceFrames> piece; // NOLINT: filled before it is read
    for (std::size_t index = 0; index < groups_.size(); ++index) {
        const std::size_t first = index * lanes;
        const std::size_t count = std::min(lanes, channels_ - first);
        // Copied one by one: only so does the compiler keep them in registers.
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
                // The newest delayed value comes last: everything else can be ready when it is.
                const Lanes shelf = interleaved_[i] - shelfA[1] * shelf2 - shelfA[0] * shelf1;
                const Lanes bent = shelfB[0] * shelf + shelfB[1] * shelf1 + shelfB[2] * shelf2;
                shelf2 = shelf1;
                shelf1 = shelf;
                const Lanes passed = bent - highPassA[1] * highPass2 - highPassA[0] * highPass1;
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

/// Ends what a filter still rings with once nobody could measure it, so that silence is not computed with
/// numbers too small for the machine's arithmetic.
void KWeighting::settle() {
    for (Group& group : groups_)
        for (Lanes* values : {&group.shelf1, &group.shelf2, &group.highPass1, &group.highPass2})
            for (std::size_t lane = 0; lane < lanes; ++lane)
                if (std::abs((*values)[lane]) < inaudible) (*values)[lane] = 0;
}

} // namespace orvane
