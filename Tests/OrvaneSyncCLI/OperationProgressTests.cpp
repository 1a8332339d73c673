#include "OrvaneSyncCLI/OperationProgress.h"

#include "OrvaneSyncCLI/ServeTest.h"

#include <set>

namespace orvane::cli::rpc {
namespace {

TEST_F(ServeTest, eachLongOperationHasItsProgress) {
    std::set<std::string> phases;
    const auto watching = context_.controller->onChange([&](ImportField field) {
        EXPECT_FALSE(operationProgress(*context_.controller, ImportField::syncGroups)) << "another field";
        const auto progress = operationProgress(*context_.controller, field);
        if (!progress) return;
        EXPECT_TRUE(progress->current <= progress->total && progress->fraction <= 1) << progress->phase;
        phases.insert(progress->phase.substr(0, progress->phase.find(' ')));
    });
    scan();
    call("scanAtmoCandidates");
    call("detectSlate", onFirst());
    call("runSmartAudioForGroup", onFirst(R"(,"forceOverwriteManualTracks":false)"));
    EXPECT_EQ(phases, (std::set<std::string>{"Probing", "Listening", "Looking"}));
}

} // namespace
} // namespace orvane::cli::rpc
