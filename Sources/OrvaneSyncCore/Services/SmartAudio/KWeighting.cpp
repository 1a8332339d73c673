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
    : coefficients_(std::abs(sampleRate - 44100.0) <= 1.0 ? coefficients44100 : coefficients48000),
      groups_((channels + lanes - 1) / lanes), interleaved_(pieceFrames) {}

void KWeighting::addEnergies(std::span<const float* const> channels, std::size_t offset, std::size_t frames,
                             std::span<double> energies) {
    const auto& [shelfB, shelfA, highPassA] = coefficients_;
    std::array<float, pieceFrames> piece; // NOLINT: filled before it is read
    for (std::size_t group = 0; group < groups_.size(); ++group) {
        const std::size_t first = group * lanes;
        const std::size_t count = std::min(lanes, channels.size() - first);
        Delays delays = groups_[group];
        Lanes energy{};
        for (std::size_t done = 0; done < frames; done += pieceFrames) {
            const std::size_t some = std::min(pieceFrames, frames - done);
            for (std::size_t lane = 0; lane < count; ++lane) {
                std::copy_n(channels[first + lane] + offset + done, some, piece.begin());
                platform::vector::silenceNonFinite(std::span(piece).first(some));
                for (std::size_t i = 0; i < some; ++i) interleaved_[i][lane] = piece[i];
            }
            for (std::size_t i = 0; i < some; ++i) {
                // The newest delayed value comes last: everything else can be ready when it is.
                const Lanes shelf = interleaved_[i] - shelfA[1] * delays.shelf2 - shelfA[0] * delays.shelf1;
                const Lanes bent = shelfB[0] * shelf + shelfB[1] * delays.shelf1 + shelfB[2] * delays.shelf2;
                delays.shelf2 = delays.shelf1;
                delays.shelf1 = shelf;
                const Lanes passed = bent - highPassA[1] * delays.highPass2 - highPassA[0] * delays.highPass1;
                const Lanes weighted = passed - 2.0 * delays.highPass1 + delays.highPass2;
                delays.highPass2 = delays.highPass1;
                delays.highPass1 = passed;
                energy += weighted * weighted;
            }
        }
        groups_[group] = delays;
        for (std::size_t lane = 0; lane < count; ++lane) energies[first + lane] += energy[lane];
    }
}

void KWeighting::settle() {
    for (Delays& delays : groups_)
        for (Lanes* values : {&delays.shelf1, &delays.shelf2, &delays.highPass1, &delays.highPass2})
            for (std::size_t lane = 0; lane < lanes; ++lane)
                if (std::abs((*values)[lane]) < inaudible) (*values)[lane] = 0;
}

} // namespace orvane
