#include "conversion/run/FramePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include "tests/doubles/FakeMedia.h"

namespace zeb {
namespace {

TEST(FramePipeline, HoldsNoMoreThanItsLimits) {
    constexpr int threads = 2;
    constexpr int perSecond = 10;
    constexpr std::int64_t count = 300;
    std::atomic<int> pictures = 0;
    std::atomic<std::int64_t> taken = 0;
    std::atomic<int> mostPictures = 0;
    std::atomic<std::int64_t> mostAhead = 0;
    fake::FakeFilm film;
    film.grab = [&](double seconds, const IsCancelled&) {
        mostPictures = std::max<int>(mostPictures, ++pictures);
        mostAhead = std::max<std::int64_t>(mostAhead, std::llround(seconds * perSecond) + 1 - taken);
        return std::shared_ptr<const Picture>(new fake::FakePicture(0), [&](const Picture* picture) {
            delete picture;
            --pictures;
        });
    };
    const auto encode = [] { return [](const Picture&) { return std::vector<std::uint8_t>(1000); }; };
    const auto runWith = [&](const FramePipeline::Limits& limits) {
        taken = mostAhead = 0;
        mostPictures = 0;
        FramePipeline pipeline(fake::FakeAsset(film), GrabSchedule{count, perSecond, 1e6}, encode, limits,
                               {});
        for (std::int64_t index = 0; index < count; ++index) {
            ++taken;  // counted before the call: the frame being handed over counts as taken
            const auto frame = pipeline.next(std::chrono::minutes(5));  // returns when the frame is ready
            ASSERT_TRUE(frame);
            EXPECT_EQ(frame->record.size(), 1000u);
        }
        // Pictures that wait, that are being encoded, and the one grabbed last.
        EXPECT_LE(mostPictures, (threads + 1) + threads + 1);
        EXPECT_LE(mostAhead, limits.framesAhead);
    };
    runWith({threads, 30, 1 << 20});
    runWith({threads, 3, 1 << 20});
    // With room for two records: these two, one more that was admitted, and the pictures being encoded.
    runWith({threads, 30, 2000});
    EXPECT_LE(mostAhead, 3 + 1 + (threads + 1) + threads);
}

}  // namespace
}  // namespace zeb
