#include "LockitServer/LockitServer.h"
#include "Platform/Files.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <sys/stat.h>

// A small LockitNetwork on this machine, with a production whose clips are those of the demo's shoot.
namespace {

using orvane::platform::JSON;
using orvane::test::LockitServer;
namespace files = orvane::platform::files;

constexpr int port = 8425;

JSON clip(const char* scene, const char* shot, int take, const char* description, const char* comment,
          const char* tags) {
    JSON::Array tagList;
    if (*tags != '\0') tagList.emplace_back(tags);
    return JSON::Object{{"scene", JSON::Object{{"content", "Anna meets Ben"},
                                               {"insideOutside", "INT"},
                                               {"dayNight", "DAY"},
                                               {"sets", JSON::Array{JSON::Object{{"name", "Kitchen"}}}}}},
                        {"slate", JSON::Object{{"comment", description}}},
                        {"take", JSON::Object{{"number", take}, {"comment", comment}}},
                        {"preformatted", JSON::Object{{"scene", scene}, {"shot", shot}, {"tags", tagList}}}};
}

void addProduction(LockitServer& server) {
    server.addProject("demo-production",
                      JSON::Object{{"name", "Demo"}, {"productionCompany", "Orvane Labs"}});
    const auto day = [](int number) {
        return JSON::Object{{"uuid", "demo-day-" + std::to_string(number)},
                            {"day", number},
                            {"date", JSON::Object{{"year", 2026}, {"month", 11}, {"day", 19 + number}}}};
    };
    server.addDay(
        "demo-production", day(1),
        {{"A001C001_261120_R1AB.mov",
          clip("12A", "1", 1, "Wide, from the door", "good, but for the light", "print")},
         {"B001C001_261120_R1CD.mov", clip("12A", "1", 1, "Close on Anna", "good", "print")},
         {"A001C002_261120_R1AB.mov", clip("12A", "1", 2, "Wide, from the door", "the best one", "print")},
         {"B001C002_261120_R1CD.mov", clip("12A", "1", 2, "Close on Anna", "out of focus at the end", "")}});
    server.addDay(
        "demo-production", day(2),
        {{"A001C003_261120_R1AB.mov", clip("12B", "1", 1, "Ben alone", "good", "print")},
         {"B001C003_261120_R1CD.mov", clip("12B", "1", 1, "Ben's hands", "good", "")},
         {"A001C004_261120_MOS.mov", clip("12C", "1", 1, "The clock", "no sound", "MOS")},
         {"A001C005_261120_R1AB.mov", clip("13", "1", 1, "Anna runs", "100 frames a second", "print")}});
}

void serve(const std::string& folder) {
    LockitServer server({.clientID = "orvane-demo",
                         .clientSecret = "only-for-the-demo",
                         .port = port,
                         .email = "newcomer@example.com"});
    addProduction(server);
    const std::string path = folder + "/Orvane Tandrel/service.json";
    files::createDirectories(files::folderOf(path));
    ::umask(0077); // it holds a secret
    files::writeAtomically(path, server.serviceFile().dump(JSON::Layout::pretty) + "\n");
    std::cout
        << "LockitNetwork demo on " << server.baseURL() << ", until Ctrl-C. In another terminal:\n\n"
        << "  export XDG_CONFIG_HOME=" << files::standardized(folder) << "\n"
        << "  build/release/bin/orvanesync lockit sign-in\n"
        << "  build/release/bin/orvanesync lockit projects\n"
        << "  build/release/bin/orvanesync sync demo/shoot/camera demo/shoot/sound --lockit demo-production "
           "-o demo/Lockit.fcpxml\n\n"
        << "Without a browser, paste what this prints into the sign-in, with the address that it shows:\n\n"
        << "  curl -so /dev/null -w '%{redirect_url}\\n' 'ADDRESS'\n"
        << std::flush;
    sigset_t ends{};
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    int signal = 0;
    sigwait(&ends, &signal);
}

} // namespace

int main(int argc, char** argv) {
    // Before the server's threads begin, which inherit it.
    sigset_t ends{};
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    try {
        serve(argc > 1 ? argv[1] : "demo/service");
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
