#include "Platform/Throttle.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <thread>

namespace orvane::platform {
namespace {

using namespace std::chrono_literals;

TEST(Throttle, givesTheFirstAtOnceTheLastAlwaysAndFewBetween) {
    const auto main = std::make_shared<test::VirtualMainThread>();
    std::vector<int> given;
    const auto throttle =
        Throttle<int>::create(main, main->clock(), 10ms, [&](int value) { given.push_back(value); });
    for (int i = 0; i < 100; ++i) throttle->post(i);
    EXPECT_EQ(given, std::vector{0});
    main->advance(9ms);
    EXPECT_EQ(given, std::vector{0});
    main->advance(1ms);
    EXPECT_EQ(given, (std::vector{0, 99}));
    main->advance(1s);
    EXPECT_EQ(given.size(), 2U) << "nothing new is given twice";

    std::thread([&] { throttle->post(100); }).join();
    EXPECT_EQ(given.size(), 2U) << "only on the interface thread";
    main->runPosted();
    EXPECT_EQ(given.back(), 100);
    throttle->post(101);
    throttle->flush();
    EXPECT_EQ(given.back(), 101) << "before what must come behind it";
    throttle->post(102);
    throttle->drop();
    throttle->close();
    throttle->post(103);
    main->advance(1s);
    EXPECT_EQ(given.back(), 101);
}

} // namespace
} // namespace orvane::platform
