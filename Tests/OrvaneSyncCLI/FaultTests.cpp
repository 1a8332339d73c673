#include "MediaFactory/MediaFactory.h"
#include "MediaFactory/SmallShoot.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace orvane::test {
namespace {

#ifdef ORVANE_SANITIZED
constexpr bool canPreload = false; // the sanitizer's own library must be the first one
#else
constexpr bool canPreload = true;
#endif

struct Ended {
    int status = 0; ///< above 128: ended by that signal
    std::string out, err;
    bool wasHit = false; ///< a call of the faulty kind failed
};

/// Runs the program in a folder of its own that holds settings, work, caches and the shoot.
class Machine {
  public:
    explicit Machine(std::string folder) : folder_(std::move(folder)) {
        std::filesystem::create_directories(path(""));
        makeSmallShoot(path("shoot"));
    }
    std::string path(const std::string& below) const { return folder_ + "/disk/" + below; }

    /// `fault`: in the syntax of the fault layer, without the folder; empty for none.
    Ended run(const std::string& arguments, const std::string& input = "",
              const std::string& fault = "") const {
        platform::files::writeAtomically(beside("in"), input);
        std::filesystem::remove(beside("hits"));
        std::string command;
        for (const char* kind : {"CONFIG", "DATA", "CACHE"})
            command += std::string("XDG_") + kind + "_HOME='" + path("home") + "' ";
        if (!fault.empty())
            command += "ORVANE_FAULT='" + fault + ":" + path("") + "' ORVANE_FAULT_REPORT='" +
                       beside("hits") + "' LD_PRELOAD='" ORVANE_FAULT_LAYER "' ";
        command += "'" ORVANESYNC_PROGRAM "' " + arguments + " <'" + beside("in") + "' >'" + beside("out") +
                   "' 2>'" + beside("err") + "'";
        const int status = std::system(command.c_str());
        return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
                platform::files::readText(beside("out")), platform::files::readText(beside("err")),
                std::filesystem::exists(beside("hits"))};
    }
    /// Removes what runs have left; keeps the shoot.
    void clear() const {
        std::filesystem::remove_all(path("home"));
        std::filesystem::remove_all(path("results"));
        std::filesystem::create_directories(path("results"));
    }
    std::vector<std::string> results() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path("results")))
            names.push_back(entry.path().filename());
        return names;
    }

    /// Whether clips that could once not be read are kept beside what was saved later.
    bool keepsUnreadableClips() const {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path("home")))
            if (entry.path().filename() == "groups.json.unreadable")
                return platform::files::readText(entry.path()).find("\"clipName\"") != std::string::npos;
        return false;
    }

  private:
    /// A file that the test itself writes and reads.
    std::string beside(const std::string& name) const { return folder_ + "/" + name; }

    std::string folder_;
};

/// Calls use(fault) for one failing call after another, until there are no more calls: for each of the first
/// ones, then for fewer, at places that depend on the seed.
template <class Use>
void forEachFault(const std::string& kind, std::mt19937& random, Use use) {
    constexpr int eachUpTo = 5;
    const int mostOfAKind = kind == "memory" ? 16 : 7; // there are some thousands of these calls
    long number = 1;
    for (int tried = 0; tried < mostOfAKind; ++tried) {
        const std::string fault = kind + ":" + std::to_string(number);
        SCOPED_TRACE("ORVANE_FAULT=" + fault);
        if (!use(fault)) {
            EXPECT_GT(tried, 0) << "no call of this kind comes through the layer";
            return;
        }
        const long step = number < eachUpTo ? 1 : std::max<long>(number, 1);
        number += std::uniform_int_distribution<long>(1, step)(random);
        if (testing::Test::HasFailure()) return;
    }
}

/// Whichever call the system refuses, the command ends by itself and either reports it or succeeds without
/// the call. It leaves no part of a document and no other file. The next run on a working disk gives the
/// usual result.
TEST(Faults, leaveNothingHalfWrittenAndNothingFalseRemembered) {
    if (!canPreload) GTEST_SKIP() << "not with sanitizers";
    const TemporaryDirectory folder;
    const Machine machine(folder.path("machine"));
    const std::string sync =
        "sync '" + machine.path("shoot") + "' -o '" + machine.path("results/out.fcpxml") + "'";
    const auto document = [&] { return platform::files::readText(machine.path("results/out.fcpxml")); };
    machine.clear();
    ASSERT_EQ(machine.run(sync).status, 0);
    const std::string whole = document();
    std::mt19937 random(randomSeed());
    int endedWithoutMemory = 0;
    for (const std::string kind : {"open", "read", "write", "rename", "sync", "memory"})
        forEachFault(kind, random, [&](const std::string& fault) {
            machine.clear();
            const Ended ended = machine.run(sync, "", fault);
            EXPECT_LE(ended.status, 1) << ended.err;
            EXPECT_EQ(ended.status == 1, ended.err.find("error: ") != std::string::npos) << ended.err;
            const auto results = machine.results();
            if (ended.status == 0) {
                EXPECT_EQ(results, std::vector<std::string>{"out.fcpxml"});
                EXPECT_TRUE(document().ends_with("</fcpxml>\n"));
                EXPECT_TRUE(document() == whole || ended.err.find("warning: ") != std::string::npos)
                    << "a document that lacks something, without a word: " << ended.err;
            } else {
                // Memory may run out after the document was written.
                EXPECT_TRUE(results.empty() || (kind == "memory" && document() == whole)) << results.front();
            }
            // These runs take most of the time, and a run that ended for lack of memory has written nothing.
            if (kind == "memory" && ++endedWithoutMemory % 4 != 0) return ended.wasHit;
            const Ended after = machine.run(sync);
            EXPECT_EQ(after.status, 0) << after.err;
            EXPECT_EQ(document(), whole) << "something false was remembered";
            return ended.wasHit;
        });
}

/// A result from a part of a recording is an error: the command names the file and how far it was read, and
/// leaves no file. Tests our own reader, several readers at once, and the helper's reader.
TEST(Faults, ofReadingAreNoShorterResults) {
    if (!canPreload) GTEST_SKIP() << "not with sanitizers";
    constexpr std::size_t frames = 20 * 48000;
    const TemporaryDirectory folder;
    const Machine machine(folder.path("machine"));
    const std::string body = "AIFFCOMM" + be32(18) + be16(1) + be32(frames) + be16(16) + be16(0x400E) +
                             be64(0xBB80ULL << 48U) + "SSND" + be32(8 + 2 * frames) + be64(0) +
                             std::string(2 * frames, '\1');
    platform::files::writeAtomically(machine.path("a.aif"), "FORM" + be32(body.size()) + body);
    WaveMaker().format({}).silence(frames).writeTo(machine.path("a.wav"));
    struct Case {
        const char* command;
        const char* output;
        const char* fault;
        bool isOfHelperToo = true; ///< the helper reads longer blocks, and fewer of them
        const char* ending = "";
    };
    const std::vector<Case> cases{{"solo", "--channel 1 -o", "read:100"},
                                  {"preview", "--gain 6 -o", "read:100"},
                                  {"mixdown", "-o", "read:100"},
                                  {"mixdown", "-o", "read:300", false},
                                  {"waveform", "--png", "read:100"},
                                  {"loudness", "", "read:100"},
                                  {"analyze", "", "read:100"},
                                  {"play", "--render", "read:100", true, ".wav"}};
    for (const Case& row : cases)
        for (const std::string sound : {"a.wav", "a.aif"}) {
            if (sound == "a.aif" && !row.isOfHelperToo) continue;
            SCOPED_TRACE(row.command + (" " + sound) + " " + row.fault);
            machine.clear();
            std::string arguments = std::string(row.command) + " '" + machine.path(sound) + "' " + row.output;
            if (*row.output != '\0') arguments += " '" + machine.path("results/out") + row.ending + "'";
            ASSERT_EQ(machine.run(arguments).status, 0);
            machine.clear();
            const Ended ended = machine.run(arguments, "", row.fault);
            EXPECT_TRUE(ended.wasHit);
            EXPECT_EQ(ended.status, 1) << ended.out;
            EXPECT_NE(ended.err.find(sound), std::string::npos) << ended.err;
            EXPECT_NE(ended.err.find(" of 0:20: "), std::string::npos) << ended.err;
            EXPECT_EQ(machine.results(), std::vector<std::string>());
        }
}

/// A session that is edited and saved while the disk refuses a call opens again with its content before or
/// after an edit, and the program reports what it could not save.
TEST(Faults, neverTakeWorkThatWasSaved) {
    if (!canPreload) GTEST_SKIP() << "not with sanitizers";
    using platform::JSON;
    const TemporaryDirectory folder;
    const Machine machine(folder.path("machine"));
    int number = 0;
    const auto message = [&number](const std::string& method, const std::string& parameters) {
        return R"({"jsonrpc":"2.0","id":)" + std::to_string(++number) + R"(,"method":")" + method +
               R"(","params":)" + parameters + "}\n";
    };
    const std::string open = message("loadMostRecentSession", "{}") + message("state", "{}");
    const auto names = [&](const Ended& ended) {
        std::vector<std::string> found;
        const JSON reply = JSON::parse(ended.out.substr(ended.out.rfind('\n', ended.out.size() - 2) + 1));
        for (const JSON& group : *reply.find("result")->find("syncGroups")->elements()) {
            const JSON* name = group.find("manualClipName");
            found.push_back(name != nullptr ? *name->string() : "");
        }
        return found;
    };
    machine.clear();
    const std::string shoot = "\"" + machine.path("shoot") + "\"";
    const Ended first = machine.run(
        "serve", message("setFolders", "{\"videoFolder\":" + shoot + ",\"audioFolder\":" + shoot + "}") +
                     message("startScan", "{}") + message("saveSession", "{}") + message("state", "{}"));
    ASSERT_EQ(first.status, 0) << first.err;
    const JSON state = JSON::parse(first.out.substr(first.out.rfind('\n', first.out.size() - 2) + 1));
    const std::string id =
        *state.find("result")->find("syncGroups")->elements()->front().find("id")->string();
    const std::vector<std::string> before = names(machine.run("serve", open));
    ASSERT_FALSE(before.empty());
    const std::string saved = machine.path("saved");
    std::filesystem::copy(machine.path("home"), saved, std::filesystem::copy_options::recursive);
    std::mt19937 random(randomSeed());
    for (const std::string kind : {"open", "read", "write", "rename", "sync", "memory"})
        forEachFault(kind, random, [&](const std::string& fault) {
            machine.clear();
            std::filesystem::copy(saved, machine.path("home"), std::filesystem::copy_options::recursive);
            const Ended ended = machine.run(
                "serve",
                message("loadMostRecentSession", "{}") +
                    message("setManualClipName", "{\"groupID\":\"" + id + "\",\"name\":\"New\"}") +
                    message("saveSession", "{}"),
                fault);
            EXPECT_LE(ended.status, 1) << ended.err;
            const std::vector<std::string> after = names(machine.run("serve", open));
            const bool isNew = !after.empty() && after.front() == "New";
            EXPECT_TRUE(isNew || after == before || (after.empty() && machine.keepsUnreadableClips()));
            EXPECT_TRUE(isNew || ended.wasHit);
            EXPECT_TRUE(isNew || ended.err.find("error") != std::string::npos ||
                        ended.out.find("\"error\"") != std::string::npos)
                << "an edit was lost without a word";
            return ended.wasHit;
        });
}

} // namespace
} // namespace orvane::test
