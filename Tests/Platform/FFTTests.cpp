#include "Platform/FFT/RealFFT.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vector>

namespace orvane::platform {
namespace {

/// The transform agrees with its definition, and its inverse gives the input again.
TEST(RealFFT, givesTheTransformAndItsInverse) {
    std::mt19937 random(test::randomSeed());
    std::uniform_real_distribution<float> level(-1, 1);
    for (const std::size_t size : {2U, 30U, 128U, 2048U}) {
        std::vector<float> samples(size), back(size);
        for (float& sample : samples) sample = level(random);
        RealFFT fft(size);
        std::vector<std::complex<float>> spectrum(fft.bins());
        fft.forward(samples, spectrum);
        for (std::size_t k = 0; k < fft.bins(); k += std::max<std::size_t>(size / 6, 1)) {
            std::complex<double> sum;
            for (std::size_t n = 0; n < size; ++n)
                sum += std::polar<double>(1, -2 * std::numbers::pi * static_cast<double>(k * n % size) /
                                                 static_cast<double>(size)) *
                       static_cast<double>(samples[n]);
            EXPECT_NEAR(std::abs(sum - std::complex<double>(spectrum[k])), 0, 1e-4) << size << " " << k;
        }
        fft.inverse(spectrum, back);
        for (std::size_t i = 0; i < size; ++i) EXPECT_NEAR(back[i], samples[i], 1e-5) << size;
    }
    for (const std::size_t odd : {0U, 1U, 7U}) EXPECT_THROW(RealFFT{odd}, std::invalid_argument);
}

} // namespace
} // namespace orvane::platform
