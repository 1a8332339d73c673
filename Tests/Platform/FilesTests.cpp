#include "Platform/Files.h"
#include "Platform/Folders.h"

#include "Platform/FileLock.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>
#include <unistd.h>

namespace orvane::platform {
namespace {

namespace fs = std::filesystem;
using test::ScopedEnvironment;
using test::TemporaryDirectory;

std::set<std::string> walked(const std::string& folder, files::Hidden hidden = files::Hidden::skip) {
    std::set<std::string> found;
    files::walk(
        folder,
        [&](const std::string& path, files::WalkEntry kind) {
            const char* const mark = kind == files::WalkEntry::directory    ? "/"
                                     : kind == files::WalkEntry::brokenLink ? " (broken)"
                                                                            : "";
            EXPECT_TRUE(found.insert(path.substr(folder.size() + 1) + mark).second) << path;
        },
        [](const std::string& path) { return !path.ends_with("skipped"); }, hidden);
    return found;
}

unsigned permissions(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777U;
}

TEST(Files, aWriteKeepsPermissionsAndLinks) {
    const TemporaryDirectory folder;
    const std::string real = folder.write("real/file", "old");
    ASSERT_EQ(::chmod(real.c_str(), 0640), 0);
    fs::create_symlink("real/file", folder.path("link"));
    fs::create_symlink("real/new", folder.path("dangling"));

    files::writeAtomically(folder.path("link"), "new");
    files::writeAtomically(folder.path("dangling"), "made");

    EXPECT_EQ(folder.read("real/file"), "new");
    EXPECT_EQ(permissions(real), 0640U);
    EXPECT_EQ(folder.read("real/new"), "made");
    EXPECT_TRUE(fs::is_symlink(folder.path("link")) && fs::is_symlink(folder.path("dangling")));
    EXPECT_NO_THROW(files::writeAtomically("/dev/null", "gone"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(Files, aFailedWriteLeavesNothingAndSaysWhy) {
    const TemporaryDirectory folder;
    fs::create_directories(folder.path("is a folder/child"));
    for (const std::string name : {"is a folder", "absent/file", "f\xFF/x"}) {
        try {
            files::writeAtomically(folder.path(name), "x");
            ADD_FAILURE() << name;
        } catch (const FileError& error) {
            const std::string reason = error.what();
            EXPECT_NE(reason.find(folder.path()), std::string::npos) << reason;
            EXPECT_EQ(reason.find('\xFF'), std::string::npos) << reason;
        }
    }
    EXPECT_EQ(walked(folder.path(), files::Hidden::include),
              (std::set<std::string>{"is a folder/", "is a folder/child/"}));
    if (::geteuid() != 0) {
        folder.write("locked/file", "old");
        ASSERT_EQ(::chmod(folder.path("locked").c_str(), 0500), 0);
        EXPECT_THROW(files::writeAtomically(folder.path("locked/file"), "new"), FileError);
        EXPECT_EQ(folder.read("locked/file"), "old");
    }
}

TEST(Files, aFileMadeMeanwhileIsKept) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("a");
    const auto write = [&](files::Existing answer, bool throws) {
        files::writeAtomically(path, "new", [&] {
            folder.write("a", "came meanwhile");
            if (throws) throw std::invalid_argument("refused");
            return answer;
        });
    };
    EXPECT_THROW(write(files::Existing::keep, false), FileError);
    EXPECT_THROW(write(files::Existing::replace, true), std::invalid_argument);
    EXPECT_EQ(folder.read("a"), "came meanwhile");
    EXPECT_EQ(walked(folder.path(), files::Hidden::include), std::set<std::string>{"a"});
    write(files::Existing::replace, false);
    EXPECT_EQ(folder.read("a"), "new");
}

TEST(Files, whatIsKeptBesideAFileIsKeptOnceAndNeverReplaced) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("a");
    folder.write("a.other", "older");
    folder.write("a", "1");
    for (int time = 0; time < 3; ++time) // as before several writes that fail
        EXPECT_EQ(files::keepBeside(path, files::otherSuffix), path + ".other-2");
    files::writeAtomically(path, "2");
    EXPECT_EQ(files::keepBeside(path, files::otherSuffix), path + ".other-3");
    EXPECT_EQ(folder.read("a.other") + folder.read("a.other-2") + folder.read("a.other-3"), "older12");
    EXPECT_EQ(files::childNames(folder.path())->size(), 4U);
    EXPECT_THROW(files::keepBeside(folder.path("missing"), files::otherSuffix), FileError);
}

TEST(Files, theOldestFilesKeptBesideAreRemoved) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("a");
    folder.write("a.other-x", "no number");
    for (int i = 1; i <= 12; ++i) {
        files::writeAtomically(path, std::to_string(i));
        files::keepBeside(path, files::otherSuffix);
    }
    std::string left;
    for (int i = 8; i <= 12; ++i) left += folder.read("a.other-" + std::to_string(i));
    EXPECT_EQ(left, "89101112");
    EXPECT_EQ(files::childNames(folder.path())->size(), 7U);
}

TEST(Files, aLockThatIsNeverReleasedIsAnError) {
    const TemporaryDirectory folder;
    {
        const FileLock lock = FileLock::ofFolder(folder.path());
        EXPECT_THROW(FileLock::ofFolder(folder.path(), std::chrono::milliseconds(0)), FileError);
    }
    FileLock::ofFolder(folder.path(), std::chrono::milliseconds(0));
}

TEST(Files, readsWholeFilesUpToALimit) {
    const TemporaryDirectory folder;
    const std::string bytes(200000, '\x7F');
    const std::string path = folder.write("n\xFF\xFE", bytes);
    EXPECT_EQ(files::readText(path), bytes);
    EXPECT_EQ(files::readText(path, bytes.size()), bytes);
    EXPECT_THROW(files::readText(path, bytes.size() - 1), FileError);
    EXPECT_FALSE(files::readText("/proc/self/status").empty()) << "files that claim no size";
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    for (const std::string& other : {folder.path(), folder.path("pipe"), std::string("/dev/zero")})
        EXPECT_THROW(files::readText(other), FileError) << other;
    EXPECT_EQ(files::attributes(path)->size, 200000);
    EXPECT_FALSE(files::exists(folder.path("absent")));
}

TEST(Files, aWalkSeesEachEntryOnce) {
    const TemporaryDirectory folder;
    for (const char* name : {"b/c/deep", "a", "b/n\xFF", ".hidden/x", ".dot", "skipped/x"})
        folder.write(name, "");
    fs::create_directory_symlink(folder.path(), folder.path("b/loop"));
    fs::create_symlink("../a", folder.path("b/link"));
    fs::create_symlink("nowhere", folder.path("b/dangling"));
    ASSERT_EQ(::mkfifo(folder.path("b/pipe").c_str(), 0600), 0);

    const std::set<std::string> plain{"b/",     "b/c/",     "b/c/deep",           "a", "b/n\xFF", "b/loop/",
                                      "b/link", "skipped/", "b/dangling (broken)"};
    EXPECT_EQ(walked(folder.path()), plain);
    std::set<std::string> all = plain;
    all.insert({".hidden/", ".hidden/x", ".dot"});
    EXPECT_EQ(walked(folder.path(), files::Hidden::include), all);
    EXPECT_FALSE(files::walk(
        folder.path("absent"), [](auto&, auto) {}, [](auto&) { return true; }));
}

TEST(Files, standardizedPaths) {
    const TemporaryDirectory folder;
    folder.write("real/sub/file", "");
    fs::create_directory_symlink(folder.path("real/sub"), folder.path("jump"));
    const auto check = [&](const char* name, const char* from, const char* to) {
        EXPECT_EQ(files::standardized(folder.path(from)), folder.path(to)) << name;
    };
    check("dots", "real/./sub//../sub/file", "real/sub/file");
    check("a slash at the end", "real/sub/", "real/sub");
    check("the folder above a link is that of its target", "jump/../x", "real/x");
    check("links among the folders", "jump/file", "real/sub/file");
    check("a link at the end stays", "jump", "jump");
    check("what is not there", "absent/a/../b", "absent/b");
    check("a folder above at the end", "real/sub/..", "real");
    EXPECT_EQ(files::standardized("/"), "/");
    EXPECT_EQ(files::standardized("/.."), "/");
    EXPECT_EQ(files::standardized("x"), fs::current_path().string() + "/x");
}

TEST(Files, baseDirectories) {
    const ScopedEnvironment home("HOME", "/home/someone");
    const ScopedEnvironment data("XDG_DATA_HOME", "/data"), config("XDG_CONFIG_HOME", "relative/is/ignored"),
        cache("XDG_CACHE_HOME", nullptr);
    EXPECT_EQ(files::dataHome(), "/data");
    EXPECT_EQ(files::configHome(), "/home/someone/.config");
    EXPECT_EQ(files::cacheHome(), "/home/someone/.cache");
}

TEST(Files, foldersAreMadeAndRemoved) {
    const TemporaryDirectory folder;
    files::createDirectories(folder.path("a/b/c/"));
    EXPECT_EQ(permissions(folder.path("a/b")), 0700U);
    EXPECT_NO_THROW(files::createDirectories(folder.path("a/b")));
    files::createUsualDirectories(folder.path("usual/b"));
    const mode_t hidden = ::umask(0);
    ::umask(hidden);
    EXPECT_EQ(permissions(folder.path("usual/b")), 0777U & ~hidden);
    EXPECT_EQ(files::makePrivate(folder.path("usual")) + files::makePrivate(folder.path("absent")), "");
    EXPECT_EQ(permissions(folder.path("usual")), 0700U);
    files::removeTree(folder.path("usual"));
    folder.write("file", "kept");
    EXPECT_THROW(files::createDirectories(folder.path("file/below")), FileError);
    fs::create_symlink(folder.path("file"), folder.path("a/link"));
    files::removeTree(folder.path("a"));
    EXPECT_EQ(walked(folder.path()), std::set<std::string>{"file"});
    EXPECT_THROW(files::remove(folder.path("absent")), FileError);
}

} // namespace
} // namespace orvane::platform
