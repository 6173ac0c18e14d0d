#include "conversion/FramePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include "platform/fake/FakeMedia.h"

namespace zeb {
namespace {

using fake::FakeAsset;
using fake::FakeFilm;
using Bytes = std::vector<std::uint8_t>;

constexpr int perSecond = 10;

std::int64_t frameAt(double seconds) {
    return std::llround(seconds * perSecond);
}

GrabSchedule scheduleOf(std::int64_t count) {
    return {count, perSecond, 1e6};
}

/// Four bytes of a tiny drawing: enough to tell pictures apart.
Bytes drawPixel(SpriteEncoder&, const Picture& picture) {
    Bytes pixel(4);
    picture.draw({pixel, 1, 1, DrawingColourSpace::sRGB});
    return pixel;
}

std::shared_ptr<const EncodedFrame> take(FramePipeline& pipeline) {
    for (;;) {
        if (auto frame = pipeline.next(std::chrono::milliseconds(20))) return frame;
    }
}

TEST(FramePipeline, holdsNoMoreThanItsLimits) {
    constexpr int threads = 2;
    constexpr std::int64_t count = 300;
    std::atomic<int> pictures = 0;
    std::atomic<std::int64_t> taken = 0;
    std::atomic<int> mostPictures = 0;
    std::atomic<std::int64_t> mostAhead = 0;
    FakeFilm film;
    film.grab = [&](double seconds, const IsCancelled&) {
        mostPictures = std::max<int>(mostPictures, ++pictures);
        mostAhead = std::max<std::int64_t>(mostAhead, frameAt(seconds) + 1 - taken);
        return std::shared_ptr<const Picture>(new fake::FakePicture(0), [&](const Picture* picture) {
            delete picture;
            --pictures;
        });
    };
    const auto encode = [](SpriteEncoder&, const Picture&) { return Bytes(1000); };
    const auto runWith = [&](const FramePipeline::Limits& limits) {
        taken = mostAhead = 0;
        mostPictures = 0;
        FramePipeline pipeline(FakeAsset(film), scheduleOf(count), encode, limits, {});
        for (std::int64_t index = 0; index < count; ++index) {
            ++taken;  // before: what is being handed over counts as taken
            EXPECT_EQ(take(pipeline)->record.size(), 1000u);
        }
        // Waiting, being encoded, and grabbed last.
        EXPECT_LE(mostPictures, (threads + 1) + threads + 1);
        EXPECT_LE(mostAhead, limits.framesAhead);
    };
    runWith({threads, 30, 1 << 20});
    runWith({threads, 3, 1 << 20});
    // With room for two records: those, one more that was let in, and what is on its way to become one.
    runWith({threads, 30, 2000});
    EXPECT_LE(mostAhead, 3 + 1 + (threads + 1) + threads);
}

TEST(FramePipeline, deliversInOrderAndEndsAtAnyMoment) {
    FakeFilm film;
    film.grab = [](double seconds, const IsCancelled&) -> std::shared_ptr<const Picture> {
        const std::int64_t index = frameAt(seconds);
        if (index % 7 == 0) throw MediaError(MediaError::cannotDecode, "damaged");
        if (index % 11 == 0) return nullptr;
        return std::make_shared<fake::FakePicture>(static_cast<std::uint32_t>(index), index % 5 != 0);
    };
    SpriteEncoder encoder;
    const FramePipeline::Limits limitSets[] = {{1, 1, 0}, {2, 3, 0}, {3, 1000, 1000}, {8, 20, 5}};
    for (const auto& limits : limitSets) {
        for (std::int64_t taken = 0; taken <= 50; ++taken) {
            FramePipeline pipeline(FakeAsset(film), scheduleOf(50), drawPixel, limits, {});
            for (std::int64_t index = 0; index < taken; ++index) {
                const auto frame = take(pipeline);
                const bool fails = index % 7 == 0 || index % 11 == 0 || index % 5 == 0;
                EXPECT_EQ(frame->error != nullptr, fails) << index;
                const fake::FakePicture picture(static_cast<std::uint32_t>(index));
                EXPECT_EQ(frame->record, fails ? Bytes() : drawPixel(encoder, picture));
            }
            if (taken % 2 == 0) pipeline.stop();
        }
    }
}

}  // namespace
}  // namespace zeb
