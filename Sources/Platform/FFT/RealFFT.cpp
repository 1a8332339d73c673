#include "Platform/FFT/RealFFT.h"

#include <cassert>
#include <kiss_fftr.h>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

namespace orvane::platform {

namespace {

struct Free {
    void operator()(kiss_fftr_state* plan) const { kiss_fftr_free(plan); }
};
using Plan = std::unique_ptr<kiss_fftr_state, Free>;

Plan plan(std::size_t size, bool inverse) {
    Plan made(kiss_fftr_alloc(static_cast<int>(size), inverse ? 1 : 0, nullptr, nullptr));
    if (!made) throw std::bad_alloc();
    return made;
}

} // namespace

struct RealFFT::Plans {
    explicit Plans(std::size_t size)
        : forward(plan(size, false)), inverse(plan(size, true)), bins(size / 2 + 1) {}

    Plan forward, inverse;
    std::vector<kiss_fft_cpx> bins;
};

RealFFT::RealFFT(std::size_t size) : size_(size) {
    constexpr std::size_t most = std::numeric_limits<int>::max() / 4;
    if (size < 2 || size % 2 != 0 || size > most)
        throw std::invalid_argument("a transform needs an even number of samples");
    plans_ = std::make_unique<Plans>(size);
}
RealFFT::~RealFFT() = default;
RealFFT::RealFFT(RealFFT&&) noexcept = default;
RealFFT& RealFFT::operator=(RealFFT&&) noexcept = default;

void RealFFT::forward(std::span<const float> samples, std::span<std::complex<float>> spectrum) {
    assert(samples.size() == size_ && spectrum.size() == bins());
    kiss_fftr(plans_->forward.get(), samples.data(), plans_->bins.data());
    for (std::size_t i = 0; i < spectrum.size(); ++i) spectrum[i] = {plans_->bins[i].r, plans_->bins[i].i};
}

void RealFFT::inverse(std::span<const std::complex<float>> spectrum, std::span<float> samples) {
    assert(samples.size() == size_ && spectrum.size() == bins());
    for (std::size_t i = 0; i < spectrum.size(); ++i)
        plans_->bins[i] = {spectrum[i].real(), spectrum[i].imag()};
    plans_->bins.front().i = plans_->bins.back().i = 0;
    kiss_fftri(plans_->inverse.get(), plans_->bins.data(), samples.data());
    const float scale = 1.0F / static_cast<float>(size_);
    for (float& sample : samples) sample *= scale;
}

} // namespace orvane::platform
