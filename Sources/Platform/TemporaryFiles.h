#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace orvane::platform::files {

// What the operations on files share; for Platform alone.

/// Throws the FileError for an operation that the system refused; `operation` such as "can't read".
[[noreturn]] void fail(const char* operation, const std::string& path, int reason);

/// An open file descriptor.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    /// False with errno when the system reports a late write error.
    bool close();

  private:
    int number_;
};

/// A name beside the file that no other writer uses; a file of that name is removed again unless it was put
/// in its place.
class TemporaryName {
  public:
    explicit TemporaryName(const std::string& path);
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    const std::string& path() const { return path_; }
    void keep() { isKept_ = true; }

  private:
    const std::string path_;
    bool isKept_ = false;
};

} // namespace orvane::platform::files
