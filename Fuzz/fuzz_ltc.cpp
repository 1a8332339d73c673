#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// The bytes as samples (floats of any kind, and a signal that changes its level after so many samples as a
// byte says) and as bits. What is read is a time of day.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    std::vector<float> anything(size / sizeof(float));
    if (!anything.empty()) std::memcpy(anything.data(), data, anything.size() * sizeof(float));
    std::vector<float> signal;
    std::string bits;
    float level = 1;
    for (std::size_t i = 0; i < size; ++i) {
        signal.insert(signal.end(), data[i] % 64U, level);
        level = -level;
        for (unsigned k = 0; k < 8; ++k) bits += (data[i] >> k) % 2U == 1 ? '1' : '0';
    }
    const auto check = [](const std::string& digits) {
        const auto tc = LTCDecoder::parseSMPTEFrame(digits);
        if (tc && (tc->size() != 11 || tc->substr(0, 2) > "23" || tc->substr(3, 2) > "59" ||
                   tc->substr(6, 2) > "59"))
            std::abort();
    };
    for (const auto& samples : {anything, signal})
        if (const auto found = LTCDecoder::collectBits(samples)) {
            if (found->size() < 80 || found->size() > samples.size()) std::abort();
            check(*found);
        }
    check(bits);
    return 0;
}
