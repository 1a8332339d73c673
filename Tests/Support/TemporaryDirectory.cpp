#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace orvane::test {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (fs::canonical(fs::temp_directory_path()) / "orvane-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder: " + pattern);
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    for (const auto& entry :
         fs::recursive_directory_iterator(path_, fs::directory_options::skip_permission_denied, ignored))
        if (entry.is_directory(ignored) && !entry.is_symlink(ignored))
            fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(path_, ignored);
}

std::string TemporaryDirectory::path(std::string_view below) const {
    return path_ + "/" + std::string(below);
}

std::string TemporaryDirectory::write(std::string_view below, std::string_view contents) const {
    const fs::path file = path(below);
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(contents.data(), static_cast<std::streamsize>(contents.size()));
    return file.string();
}

std::string TemporaryDirectory::read(std::string_view below) const {
    std::ifstream stream(path(below), std::ios::binary);
    EXPECT_TRUE(stream.good()) << "no file " << below;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value) : name_(name) {
    const char* before = std::getenv(name);
    wasSet_ = before != nullptr;
    if (wasSet_) before_ = before;
    if (value != nullptr)
        ::setenv(name, value, 1);
    else
        ::unsetenv(name);
}

ScopedEnvironment::~ScopedEnvironment() {
    if (wasSet_)
        ::setenv(name_.c_str(), before_.c_str(), 1);
    else
        ::unsetenv(name_.c_str());
}

} // namespace orvane::test
