#pragma once

#include <memory>
#include <string>

namespace orvane::bench {

/// The floor of everything that shows pictures: libav opens, seeks and decodes on one thread, without other
/// work.
class PlainDecoding {
  public:
    explicit PlainDecoding(const std::string& path); ///< throws std::runtime_error
    ~PlainDecoding();
    /// Decodes from the previous key picture to the first picture at or after that second.
    void seekTo(double seconds);
    void decodeNext();
    /// Decodes the remaining pictures and returns their number.
    int decodeRest();

  private:
    struct State;
    const std::unique_ptr<State> state_;
};

} // namespace orvane::bench
