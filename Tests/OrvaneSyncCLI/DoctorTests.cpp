#include "MediaFactory/WaveMaker.h"
#include "Platform/Files.h"
#include "Platform/InterfaceVersion.h"
#include "Platform/JSON.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

/// The texts of `doctor` about the media helper, and of a command about a file that needs it, if the helper
/// is missing, does not start, belongs to another build, or works.
TEST(Doctor, saysWhatTheMediaHelperLacks) {
    const TemporaryDirectory folder;
    const fs::path program = folder.path("bin/orvanesync"), helper = folder.path("lib/orvane_media_helper");
    fs::create_directories(program.parent_path());
    fs::create_directories(helper.parent_path());
    fs::copy_file(ORVANESYNC_PROGRAM, program);
    const std::string recording = folder.write("take.aiff", "FORM");
    const auto run = [&](const std::string& arguments, const char* errors = "&1") {
        const std::string homes = "XDG_CONFIG_HOME='" + folder.path("home") + "' XDG_DATA_HOME='" +
                                  folder.path("home") + "' XDG_CACHE_HOME='" + folder.path("home") + "' ";
        const std::string out = folder.path("out");
        std::system((homes + program.string() + " " + arguments + " >'" + out + "' 2>" + errors).c_str());
        return platform::files::readText(out);
    };
    const auto script = [&](const char* text) {
        folder.write("lib/orvane_media_helper", text);
        fs::permissions(helper, fs::perms::owner_exec, fs::perm_options::add);
    };
    struct Case {
        const char* name;
        std::function<void()> prepare;
        const char* status;
        const char* says;
    };
    const std::vector<Case> cases{
        {"missing", [] {}, "problem", "missing beside the program"},
        {"a library of it is missing", [&] { script("#!/bin/sh\nexit 127\n"); }, "problem", "libavformat59"},
        {"left over from another build",
         // The length of the answer, no read error, and two texts with their lengths.
         [&] {
             script(R"(#!/bin/sh
printf '\022\0\0\0\0\001\0\0\0\0\0\0\0009\0\0\0\0\0\0\0\0' >&3
cat <&3
)");
         },
         "problem", "is of version 9"},
        {"there",
         [&] {
             fs::remove(helper);
             fs::copy_file(ORVANE_MEDIA_HELPER, helper);
         },
         "ok", "(version " ORVANE_VERSION ")"}};
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        one.prepare();
        const platform::JSON report = platform::JSON::parse(run("doctor --json", "/dev/null"));
        for (const platform::JSON& check : *report.find("checks")->elements()) {
            if (*check.find("name")->string() != "media helper") continue;
            EXPECT_EQ(*check.find("status")->string(), one.status);
            EXPECT_NE(check.find("detail")->string()->find(one.says), std::string::npos) << check.dump();
        }
        EXPECT_NE(run("loudness '" + recording + "'")
                      .find(std::string_view(one.status) == "ok"
                                ? "no sound that can be decoded"
                                : "'orvanesync doctor' says what to install"),
                  std::string::npos);
    }
}

/// With a sound library whose configuration is empty or missing, the program runs without sound.
TEST(Doctor, runsWhereTheSystemOfSoundIsNotConfigured) {
    const TemporaryDirectory folder;
    for (const std::string& configuration : {std::string("/dev/null"), folder.path("missing.conf")}) {
        const std::string out = folder.path("out");
        const std::string command = "ALSA_CONFIG_PATH='" + configuration + "' XDG_CONFIG_HOME='" +
                                    folder.path("home") + "' " ORVANESYNC_PROGRAM " doctor >'" + out +
                                    "' 2>&1";
        std::system(command.c_str());
        const std::string report = platform::files::readText(out);
        EXPECT_NE(report.find("no sound device"), std::string::npos) << configuration << '\n' << report;
    }
}

/// A sound library that prints when it starts; it is not started if no memory can be shared.
TEST(Doctor, keepsALibraryOfSoundFromTheTerminal) {
    const TemporaryDirectory folder;
    const std::string configuration = folder.write("sound.conf", "pcm.default { type null }\n");
    const std::string started = folder.path("started"), errors = folder.path("errors");
    for (const bool isLimited : {false, true}) {
        const std::string command = std::string(isLimited ? "ulimit -f 1; " : "") + "ALSA_CONFIG_PATH='" +
                                    configuration + "' XDG_CONFIG_HOME='" + folder.path("home") +
                                    "' LD_PRELOAD='" ORVANE_PRINTING_SOUND "' STARTED='" + started +
                                    "' '" ORVANESYNC_PROGRAM "' doctor 2>'" + errors + "' >/dev/null";
        std::system(command.c_str());
        EXPECT_EQ(fs::remove(started), !isLimited);
        const std::string text = platform::files::readText(errors);
        EXPECT_EQ(text.find("a library prints"), std::string::npos) << text;
        EXPECT_EQ(text.starts_with("warning: "), isLimited) << "our own text: " << text;
    }
}

/// The modules of this build, with another interface number.
TEST(Modules, ofAnotherBuildAreRefused) {
    const TemporaryDirectory folder;
    fs::create_directories(folder.path("bin"));
    fs::copy_file(ORVANESYNC_PROGRAM, folder.path("bin/orvanesync"));
    for (const char* name : {"liborvane_sound.so", "liborvane_recognition.so"}) {
        SCOPED_TRACE(name);
        std::string module = platform::files::readText(fs::path(ORVANE_MEDIA_HELPER).parent_path() / name);
        std::array<char, sizeof(platform::interfaceVersion)> number{};
        std::memcpy(number.data(), &platform::interfaceVersion, number.size());
        const auto at = module.find(std::string_view(number.data(), number.size()));
        ASSERT_NE(at, std::string::npos);
        module[at] = static_cast<char>(~module[at]);
        folder.write("lib/" + std::string(name), module);
        const std::string out = folder.path("out");
        std::system(("'" + folder.path("bin/orvanesync") + "' doctor >'" + out + "'").c_str());
        EXPECT_NE(platform::files::readText(out).find(std::string(name) + " is of another build"),
                  std::string::npos);
    }
}

/// Uses the log of the system's loader. `doctor`, which loads several modules, shows that the log lists them.
TEST(Modules, areLoadedByWhatNeedsThemAlone) {
    const TemporaryDirectory folder;
    folder.write("media/take.wav", WaveMaker().format({}).bext({}).silence(48000).bytes());
    auto modules = platform::files::childNames(fs::path(ORVANE_MEDIA_HELPER).parent_path());
    ASSERT_TRUE(modules);
    std::ranges::sort(*modules);
    const auto loadedBy = [&](const std::string& command) {
        const std::string home = "='" + folder.path("home") + "' ", log = folder.path("loaded");
        const std::string words = "XDG_CONFIG_HOME" + home + "XDG_DATA_HOME" + home + "XDG_CACHE_HOME" +
                                  home + "LD_DEBUG=files '" ORVANESYNC_PROGRAM "' " + command + " >'" +
                                  folder.path("out") + "' 2>'" + log + "'";
        const int status = std::system(words.c_str());
        EXPECT_TRUE(status == 0 || command == "doctor") << command;
        std::string names;
        const std::string text = platform::files::readText(log);
        for (const std::string& name : *modules)
            if (name.starts_with("liborvane_") && text.find("/" + name) != std::string::npos)
                names += (names.empty() ? "" : " ") + name;
        return names;
    };
    EXPECT_EQ(loadedBy("doctor"), "liborvane_recognition.so liborvane_secret_service.so liborvane_sound.so");
    const std::string media = "'" + folder.path("media") + "'";
    for (const std::string& command : {"scan " + media, "diagnose " + media, std::string("settings")})
        EXPECT_EQ(loadedBy(command), "") << command;
}

} // namespace
} // namespace orvane::test
