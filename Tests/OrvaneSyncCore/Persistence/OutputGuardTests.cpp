#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>

namespace orvane {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class OutputGuardTest : public testing::Test {
  protected:
    /// Why a write is refused; empty if it is done. A refused write must change nothing.
    std::string refused(OutputKind kind, const std::string& name, bool force = false) {
        RunInputs inputs;
        inputs.addFolder(folder_.path("card"));
        inputs.addFile(folder_.path("day.csv"), "the report");
        const std::string path = folder_.path(name);
        const auto isFileThere = [&] {
            std::error_code loop;
            return fs::is_regular_file(path, loop);
        };
        const bool isFile = isFileThere();
        const std::string before = isFile ? folder_.read(name) : "";
        try {
            OutputGuard(kind, inputs, {.replacesOthers = force}).write(path, "written");
            EXPECT_EQ(folder_.read(name), "written");
            return "";
        } catch (const OutputRefused& error) {
            EXPECT_EQ(isFileThere(), isFile) << name;
            EXPECT_EQ(isFile ? folder_.read(name) : "", before) << name;
            return error.what();
        }
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment data_{"XDG_DATA_HOME", folder_.path("data").c_str()};
};

TEST_F(OutputGuardTest, noPermissionOpensThesePlaces) {
    const std::string wave = test::WaveMaker().format({}).silence(10).bytes();
    folder_.write("day.csv", "Name");
    folder_.write("card/T01.WAV", wave);
    folder_.write("disguised.txt", wave);
    folder_.write("card/C0001M01.XML", "<side/>");
    folder_.write("data/Orvane Tandrel/Sessions/x/groups.json", "[]");
    folder_.write("data/Orvane Tandrel Copy/groups.json", "[]");
    ASSERT_EQ(::chmod(folder_.write("locked", "x").c_str(), 0444), 0); // root could write it
    fs::create_hard_link(folder_.path("day.csv"), folder_.path("same"));
    for (const auto& [to, link] : {std::pair("card/T01.WAV", "sound"),
                                   {"gone.mov", "dangling"},
                                   {"b", "a"},
                                   {"a", "b"},
                                   {"day.csv", "report"}})
        fs::create_symlink(to, folder_.path(link));
    ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    const std::pair<const char*, const char*> places[] = {
        {"day.csv", "it is the report '"},
        {"same", "it is the report '"},
        {"report", "it is the report '"},
        {"card/../day.csv", "it is the report '"},
        {"card/T01.WAV", "it names a media file"},
        {"new.R3D", "it names a media file"},
        {"sound", "it leads to the media file '"},
        {"dangling", "it leads to the media file '"},
        {"disguised.txt", "media is never replaced"},
        {"card/C0001M01.XML", "the camera's own files"},
        {"data/Orvane Tandrel/Sessions/x/groups.json", "OrvaneSync keeps for itself"},
        {"locked", "read-only"},
        {"pipe", "a device or a pipe"},
        {"card", "it is a folder"},
        {"card/", "it names a folder"},
        {"a", "Too many levels"},
        {"absent/x", "absent: No such file"}};
    for (const auto& [name, why] : places) {
        const std::string said = refused(OutputKind::document, name, true);
        EXPECT_NE(said.find(why), std::string::npos) << name << ": " << said;
    }
    for (const char* name : {"card/new.fcpxml", "new", "data/Orvane Tandrel Copy/groups.json"})
        EXPECT_EQ(refused(OutputKind::document, name, true), "") << name;
    EXPECT_NO_THROW(OutputGuard(OutputKind::document).write("/dev/null", "gone"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_THROW(OutputGuard(OutputKind::document).write("/dev/zero", "gone"), OutputRefused);
}

TEST_F(OutputGuardTest, ownOutputsOfTheKindAreWrittenAgainAndOthersWithPermission) {
    const std::string ours =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<!DOCTYPE fcpxml>\n"
        "<fcpxml version=\"1.14\">\n    <resources>\n        <format id=\"r1\" "
        "frameDuration=\"1/25s\"/>\n        <format id=\"r2\" "
        "name=\"FFVideoFormatRateUndefined\"/>\n";
    const std::string foreign = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n\n"
                                "<fcpxml version=\"1.14\">\n    <resources>\n";
    const std::string saved = ProjectService::encoded({});
    std::string later = saved;
    later.replace(later.find("\"version\": 1"), 12, "\"version\": 2");
    const auto wave = [](const char* by) {
        return test::WaveMaker().format({}).bext({.originator = by}).silence(10).bytes();
    };
    const auto movie = [](const char* by) {
        return test::MovieMaker()
            .video({})
            .listItem("\xA9"
                      "too",
                      by)
            .bytes();
    };
    const auto png = [](const std::string& text) {
        return "\x89PNG\r\n\x1A\n"s + test::be32(text.size()) + "tEXt" + text + "crc.";
    };
    enum Outcome { always, withPermission, never };
    using enum OutputKind;
    const struct {
        const char* name;
        OutputKind kind;
        std::string there;
        Outcome outcome;
    } cases[] = {{"x.fcpxml", document, ours, always},
                 {"of another program.fcpxml", document, foreign, withPermission},
                 {"of other resources.fcpxml", document,
                  std::string(ours).replace(ours.find("<format"), 7, "<effect"), withPermission},
                 {"empty.fcpxml", document, "", withPermission},
                 {"a project.fcpxml", document, saved, withPermission},
                 {"x.orvanesync", project, saved, always},
                 {"later.orvanesync", project, later, withPermission},
                 {"damaged.orvanesync", project, saved.substr(0, 20), withPermission},
                 {"a document.orvanesync", project, ours, withPermission},
                 {"x.tsv", table, std::string(reviewTableHeader) + "\r\n", always},
                 {"a report.tsv", table, "clip\tcamera_file\n", withPermission},
                 {"x.wav", rendering, wave("OrvaneSync"), always},
                 {"recorded.wav", rendering, wave("OrvaneSyncopated"), never},
                 {"x.mov", rendering, movie("OrvaneSync 1.0"), always},
                 {"shot.mov", rendering, movie("Lavf59"), never},
                 {"x.png", picture, png("Software\0OrvaneSync"s), always},
                 {"still.png", picture, png("Software\0Camera"s), never},
                 {"keys.json", shortcuts, R"(["zoomFit",{"key":"0","modifiers":0}])", always},
                 {"a setting.json", shortcuts, R"(["zoomFit","0"])", withPermission},
                 {"x.eml", mail, std::string(mailHead) + "Content-Type: x", always},
                 {"a mail.eml", mail, "MIME-Version: 1.0\r\nSubject: Call sheet\r\n", withPermission},
                 {"as media.mp4", rendering, "text", never},
                 {"a rendering", document, wave("OrvaneSync"), never}};
    for (const auto& [name, kind, there, outcome] : cases)
        for (const bool force : {false, true}) {
            folder_.write(name, there);
            const bool isWritten = outcome == always || (outcome == withPermission && force);
            const std::string said = refused(kind, name, force);
            EXPECT_EQ(said.empty(), isWritten) << name << ": " << said;
            EXPECT_EQ(said.find("--force") != std::string::npos, outcome == withPermission && !force) << said;
        }
}

} // namespace
} // namespace orvane
