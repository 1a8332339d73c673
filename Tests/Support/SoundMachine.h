#pragma once

#include "Platform/Playback/SoundDevice.h"

#include <array>
#include <chrono>
#include <memory>
#include <string>

namespace orvane::test {

/// A machine whose one device can be plugged in and out, and asks when the test says so.
struct SoundMachine {
    bool isPlugged = true;
    int attempts = 0;
    platform::SoundDeviceCallback* callback = nullptr; ///< of the open device
    std::array<float, 512> left{}, right{};

    void ask(std::chrono::nanoseconds latency = std::chrono::milliseconds(20)) {
        if (isPlugged && callback != nullptr) callback->fill(left.data(), right.data(), left.size(), latency);
    }
    std::unique_ptr<platform::SoundDevices> devices() {
        struct Device final : platform::SoundDevice {
            SoundMachine& machine;
            explicit Device(SoundMachine& owner) : machine(owner) {}
            ~Device() override { machine.callback = nullptr; }
            std::string name() const override { return "test device"; }
        };
        struct Devices final : platform::SoundDevices {
            SoundMachine& machine;
            explicit Devices(SoundMachine& owner) : machine(owner) {}
            std::unique_ptr<platform::SoundDevice>
            openDefault(double /*rate*/, platform::SoundDeviceCallback& asked) override {
                ++machine.attempts;
                if (!machine.isPlugged) return nullptr;
                machine.callback = &asked;
                return std::make_unique<Device>(machine);
            }
            std::string defaultName() override { return {}; }
        };
        return std::make_unique<Devices>(*this);
    }
};

} // namespace orvane::test
