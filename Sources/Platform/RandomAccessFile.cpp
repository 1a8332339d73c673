#include "Platform/RandomAccessFile.h"

#include "Platform/InterfaceThread.h"
#include "Platform/ReadErrorWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::platform {

namespace {

/// Reads up to the requested bytes; fewer at the end of the file or on an error. A header walk treats both
/// alike; a caller that must distinguish them keeps a ReadErrorWatch.
std::size_t readAt(int descriptor, std::uint64_t position, std::span<std::byte> into) {
    assertMayBlock("reading a file");
    std::size_t done = 0;
    while (done < into.size()) {
        const ssize_t count =
            ::pread(descriptor, into.data() + done, into.size() - done, static_cast<off_t>(position + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) ReadErrorWatch::report();
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace

struct RandomAccessFile::State {
    int descriptor = -1;
    std::span<const std::byte> memory; ///< the whole file, when there is no descriptor
    std::uint64_t size = 0;
    std::uint64_t windowStart = 0;
    std::size_t windowCount = 0;
    std::array<std::byte, windowBytes> window; // written before it is read

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (descriptor >= 0) ::close(descriptor);
    }

    bool holds(std::uint64_t position, std::size_t count) const {
        return position >= windowStart && position - windowStart <= windowCount &&
               count <= windowCount - (position - windowStart);
    }
};

RandomAccessFile::RandomAccessFile(std::unique_ptr<State> state) : state_(std::move(state)) {}
RandomAccessFile::RandomAccessFile(RandomAccessFile&&) noexcept = default;
RandomAccessFile& RandomAccessFile::operator=(RandomAccessFile&&) noexcept = default;
RandomAccessFile::~RandomAccessFile() = default;

std::optional<RandomAccessFile> RandomAccessFile::open(const std::string& path) {
    assertMayBlock("reading a file");
    // O_NONBLOCK: a named pipe called take.wav must not block a scan.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        ReadErrorWatch::reportUnlessAbsent(errno);
        return std::nullopt;
    }
    std::unique_ptr<State> state(new State); // not make_unique, which would clear the window
    state->descriptor = descriptor;
    struct stat attributes {};
    if (::fstat(descriptor, &attributes) != 0 || !S_ISREG(attributes.st_mode)) return std::nullopt;
    state->size = static_cast<std::uint64_t>(attributes.st_size);
    return RandomAccessFile(std::move(state));
}

RandomAccessFile RandomAccessFile::overBytes(std::span<const std::byte> bytes) {
    std::unique_ptr<State> state(new State);
    state->memory = bytes;
    state->size = bytes.size();
    return RandomAccessFile(std::move(state));
}

std::uint64_t RandomAccessFile::size() const { return state_->size; }

ByteCursor RandomAccessFile::peek(std::uint64_t position, std::size_t count) {
    State& s = *state_;
    if (position >= s.size) return {};
    count = static_cast<std::size_t>(std::min<std::uint64_t>({count, windowBytes, s.size - position}));
    if (s.descriptor < 0) return ByteCursor(s.memory.subspan(static_cast<std::size_t>(position), count));
    if (!s.holds(position, count)) {
        s.windowStart = position;
        // Not past the end, which would take another call to detect.
        const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(windowBytes, s.size - position));
        s.windowCount = readAt(s.descriptor, position, std::span(s.window).first(room));
        count = std::min(count, s.windowCount);
    }
    return ByteCursor(std::span<const std::byte>(s.window).subspan(
        static_cast<std::size_t>(position - s.windowStart), count));
}

std::vector<std::byte> RandomAccessFile::read(std::uint64_t position, std::uint64_t count) {
    State& s = *state_;
    if (position >= s.size) return {};
    const auto wanted = static_cast<std::size_t>(std::min(count, s.size - position));
    if (s.descriptor < 0 || s.holds(position, wanted)) {
        const auto bytes = s.descriptor < 0 ? s.memory.subspan(static_cast<std::size_t>(position), wanted)
                                            : std::span<const std::byte>(s.window).subspan(
                                                  static_cast<std::size_t>(position - s.windowStart), wanted);
        return {bytes.begin(), bytes.end()};
    }
    std::vector<std::byte> bytes(wanted);
    bytes.resize(readAt(s.descriptor, position, bytes));
    return bytes;
}

std::size_t RandomAccessFile::readInto(std::uint64_t position, std::span<std::byte> into) const {
    const State& s = *state_;
    if (position >= s.size) return 0;
    into = into.first(static_cast<std::size_t>(std::min<std::uint64_t>(into.size(), s.size - position)));
    if (s.descriptor >= 0) return readAt(s.descriptor, position, into);
    std::copy_n(s.memory.begin() + static_cast<std::ptrdiff_t>(position), into.size(), into.begin());
    return into.size();
}

} // namespace orvane::platform
