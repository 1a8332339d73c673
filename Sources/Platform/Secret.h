#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace orvane::platform {

/// A text that gives access to something, such as a token. Its memory is overwritten when it is destroyed.
/// From then on a process that has held one writes no core file, and no other process of the user may read
/// its memory.
class Secret {
  public:
    Secret() = default;
    explicit Secret(std::string text);
    ~Secret() { wipe(); }
    Secret(const Secret& other) : Secret(other.text_) {}
    Secret(Secret&& other) noexcept : text_(std::move(other.text_)) { other.wipe(); }
    Secret& operator=(Secret other) noexcept {
        text_.swap(other.text_);
        return *this;
    }

    bool empty() const { return text_.empty(); }
    /// For code that sends or keeps it. Never put it into a message, a log, a command line or a file that
    /// others may read.
    const std::string& reveal() const { return text_; }
    bool operator==(const Secret& other) const;

    /// Overwrites a text that held a secret.
    static void wipe(std::string& text);

  private:
    void wipe() { wipe(text_); }

    std::string text_;
};

} // namespace orvane::platform
