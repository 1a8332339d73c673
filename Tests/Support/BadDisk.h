#pragma once

#include <string>

namespace orvane::test {

/// While it exists, the system refuses to read one file after `goodReads` successful reads. Only one at a
/// time. Media libraries are affected in a program that exports its symbols.
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
