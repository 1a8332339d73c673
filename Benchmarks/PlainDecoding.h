#pragma once

#include <memory>
#include <string>

namespace orvane::bench {

/// The floor of whatever shows pictures: libav opens, seeks and decodes, on one thread, and nothing else is
/// done.
class PlainDecoding {
  public:
    explicit PlainDecoding(const std::string& path); ///< throws std::runtime_error
    ~PlainDecoding();
    /// Decodes from the key picture in front up to the first picture at or behind that second.
    void seekTo(double seconds);
    void decodeNext();
    /// How many pictures follow, decoded.
    int decodeRest();

  private:
    struct State;
    const std::unique_ptr<State> state_;
};

} // namespace orvane::bench
