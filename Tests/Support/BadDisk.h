#pragma once

#include <string>

namespace orvane::test {

/// While it lives, the system refuses to read one file, after some reads that go well. One at a time. Media
/// libraries notice it in a program that exports its symbols.
class BadDisk {
  public:
    explicit BadDisk(const std::string& path, int goodReads = 0);
    ~BadDisk();
    BadDisk(const BadDisk&) = delete;
    BadDisk& operator=(const BadDisk&) = delete;
    /// Whether a read was refused so far.
    bool hasFailed() const;
};

} // namespace orvane::test
