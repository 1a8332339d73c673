#pragma once

#include <string>
#include <string_view>

namespace orvane::test {

/// A folder for one test; the destructor removes it with its contents.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Absolute, links resolved.
    const std::string& path() const { return path_; }
    std::string path(std::string_view below) const;
    /// Writes a file, makes the folders above it, and returns its path.
    std::string write(std::string_view below, std::string_view contents) const;
    /// The bytes of a file; a missing file fails the test.
    std::string read(std::string_view below) const;

  private:
    std::string path_;
};

/// Sets an environment variable (or removes it, for a null value) while the object exists. One thread.
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
