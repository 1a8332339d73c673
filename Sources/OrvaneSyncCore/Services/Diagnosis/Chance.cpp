#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"

#include <algorithm>
#include <cmath>

namespace orvane::chance {

double atLeast(int least, double mean) {
    if (least <= 0) return 1;
    if (!(mean > 0)) return 0;
    // Adds the small probabilities: 1 minus the large ones would lose them in rounding.
    double term = std::exp(-mean + least * std::log(mean) - std::lgamma(least + 1.0));
    double sum = 0;
    constexpr double smallestTerm = 1e-18;
    for (int k = least; term > smallestTerm || k < mean; ++k) {
        sum += term;
        term *= mean / (k + 1);
    }
    return std::min(sum, 1.0);
}

double atLeast(int least, int tries, double probability) {
    if (least <= 0 || probability >= 1) return 1;
    if (least > tries || !(probability > 0)) return 0;
    double sum = 0;
    for (int k = least; k <= tries; ++k)
        sum += std::exp(std::lgamma(tries + 1.0) - std::lgamma(k + 1.0) - std::lgamma(tries - k + 1.0) +
                        k * std::log(probability) + (tries - k) * std::log1p(-probability));
    return std::min(sum, 1.0);
}

} // namespace orvane::chance
