#pragma once

#include "Platform/Playback/SoundDevice.h"

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <utility>

namespace orvane::test {

/// A machine with one device, which can be plugged in and out and requests sound when the test calls `ask`. A
/// player that ends on its own thread may close the device after the test.
struct SoundMachine {
    struct State {
        bool isPlugged = true;
        int attempts = 0;
        platform::SoundDeviceCallback* callback = nullptr; ///< of the open device
    };
    const std::shared_ptr<State> state = std::make_shared<State>();
    bool& isPlugged = state->isPlugged;
    int& attempts = state->attempts;
    platform::SoundDeviceCallback*& callback = state->callback;
    std::array<float, 512> left{}, right{};

    void ask(std::chrono::nanoseconds latency = std::chrono::milliseconds(20)) {
        if (isPlugged && callback != nullptr) callback->fill(left.data(), right.data(), left.size(), latency);
    }
    std::unique_ptr<platform::SoundDevices> devices() {
        struct Device final : platform::SoundDevice {
            std::shared_ptr<State> machine;
            explicit Device(std::shared_ptr<State> owner) : machine(std::move(owner)) {}
            ~Device() override { machine->callback = nullptr; }
            std::string name() const override { return "test device"; }
        };
        struct Devices final : platform::SoundDevices {
            std::shared_ptr<State> machine;
            explicit Devices(std::shared_ptr<State> owner) : machine(std::move(owner)) {}
            std::unique_ptr<platform::SoundDevice>
            openDefault(double /*rate*/, platform::SoundDeviceCallback& asked) override {
                ++machine->attempts;
                if (!machine->isPlugged) return nullptr;
                machine->callback = &asked;
                return std::make_unique<Device>(machine);
            }
            std::string defaultName() override { return {}; }
        };
        return std::make_unique<Devices>(state);
    }
};

} // namespace orvane::test
