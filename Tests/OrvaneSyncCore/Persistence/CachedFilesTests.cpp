#include "OrvaneSyncCore/Services/Persistence/CachedFiles.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

TEST(CachedFiles, theOldestAreRemovedAndWhatCannotBeRemovedStays) {
    const test::TemporaryDirectory folder;
    const std::string older = folder.write("older", "12345"), newer = folder.write("newer", "12345");
    const std::string noName = folder.path(std::string(300, 'x')); // longer than any name of a file
    EXPECT_EQ(removeOldest({{2, 5, newer}, {1, 5, older}, {0, 5, noName}}, 15, 10), 10U);
    EXPECT_EQ(removeOldest({{2, 5, newer}}, 10, 10), 10U);
    EXPECT_FALSE(platform::files::exists(older));
    EXPECT_TRUE(platform::files::exists(newer));
}

} // namespace
} // namespace orvane
