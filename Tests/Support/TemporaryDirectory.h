#pragma once

#include <string>
#include <string_view>

namespace orvane::test {

/// A folder of a test's own, removed with everything in it when the object goes.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Absolute, links resolved.
    const std::string& path() const { return path_; }
    std::string path(std::string_view below) const;
    /// Writes a file, making the folders above it, and returns its path.
    std::string write(std::string_view below, std::string_view contents) const;
    /// The bytes of a file; a failure of the test when there is none.
    std::string read(std::string_view below) const;

  private:
    std::string path_;
};

/// Sets an environment variable (or removes it, for a null value) until the object goes. One thread.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const char* value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    std::string name_;
    std::string before_;
    bool wasSet_;
};

} // namespace orvane::test
