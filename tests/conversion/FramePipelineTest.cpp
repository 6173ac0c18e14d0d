#include "conversion/FramePipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <stdexcept>
#include <string>

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
Bytes drawn(SpriteEncoder&, const Picture& picture) {
    Bytes pixel(4);
    picture.draw({pixel, 1, 1, DrawingColourSpace::sRGB});
    return pixel;
}

Bytes drawn(std::uint32_t seed) {
    SpriteEncoder encoder;
    return drawn(encoder, fake::FakePicture(seed));
}

std::shared_ptr<const EncodedFrame> take(FramePipeline& pipeline) {
    for (;;) {
        if (auto frame = pipeline.next(std::chrono::milliseconds(20))) return frame;
    }
}

std::string textOf(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

TEST(FramePipeline, deliversRecordsAndErrorsInOrder) {
    constexpr std::int64_t count = 100;
    FakeFilm film;
    film.grab = [](double seconds, const IsCancelled&) -> std::shared_ptr<const Picture> {
        const std::int64_t index = frameAt(seconds);
        if (index % 7 == 0) throw MediaError(MediaError::cannotDecode, "grab " + std::to_string(index));
        if (index % 11 == 0) return nullptr;
        return std::make_shared<fake::FakePicture>(static_cast<std::uint32_t>(index), index % 5 != 0);
    };
    const FramePipeline::Limits limitSets[] = {
        {1, 1, 0}, {1, 20, 1000}, {2, 3, 0}, {3, 1000, 1000}, {8, 20, 5}};
    for (const auto& limits : limitSets) {
        const auto record = std::make_shared<fake::FakeRecord>();
        const auto encode = [](SpriteEncoder& encoder, const Picture& picture) {
            return drawn(encoder, picture);
        };
        FramePipeline pipeline(FakeAsset(film, record), scheduleOf(count), encode, limits, {});
        for (std::int64_t index = 0; index < count; ++index) {
            const auto frame = take(pipeline);
            if (index % 7 == 0) {
                EXPECT_EQ(textOf(frame->error), "grab " + std::to_string(index));
            } else if (index % 11 == 0) {
                EXPECT_EQ(textOf(frame->error), "No picture could be decoded.");
            } else if (index % 5 == 0) {
                EXPECT_EQ(textOf(frame->error), "The picture cannot be drawn.");
            } else {
                EXPECT_EQ(frame->record, drawn(static_cast<std::uint32_t>(index)));
            }
        }
        ASSERT_TRUE(record->schedule);
        EXPECT_EQ(record->schedule->count, count);
    }
}

TEST(FramePipeline, encodesAPictureOnce) {
    std::vector<std::shared_ptr<const Picture>> pictures;
    for (std::uint32_t seed = 0; seed < 10; ++seed)
        pictures.push_back(std::make_shared<fake::FakePicture>(seed));
    FakeFilm film;
    film.grab = [&](double seconds, const IsCancelled&) {
        const std::int64_t index = frameAt(seconds);
        if (index == 43) throw MediaError(MediaError::cannotDecode, "in between");
        return pictures[static_cast<std::size_t>(index / 10)];
    };
    std::atomic<int> encoded = 0;
    const auto encode = [&](SpriteEncoder& encoder, const Picture& picture) {
        ++encoded;
        return drawn(encoder, picture);
    };
    FramePipeline pipeline(FakeAsset(film), scheduleOf(100), encode, {3, 4, 100}, {});
    std::shared_ptr<const EncodedFrame> first;
    for (int index = 0; index < 100; ++index) {
        const auto frame = take(pipeline);
        if (index == 43) continue;
        if (index % 10 == 0) first = frame;
        EXPECT_EQ(frame, first);
    }
    EXPECT_EQ(encoded, 10);
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

TEST(FramePipeline, endsAtAnyMoment) {
    FakeFilm film;
    film.grab = [](double, const IsCancelled&) { return std::make_shared<fake::FakePicture>(1); };
    const auto encode = [](SpriteEncoder& encoder, const Picture& picture) {
        return drawn(encoder, picture);
    };
    for (int taken = 0; taken < 60; ++taken) {
        FramePipeline pipeline(FakeAsset(film), scheduleOf(50), encode, {3, 5, 1000}, {});
        for (int index = 0; index < std::min(taken, 50); ++index)
            take(pipeline);
        if (taken % 2 == 0) pipeline.stop();
    }
}

TEST(FramePipeline, freesADecoderThatIsBusyWhenItEnds) {
    std::atomic<bool> isGrabbing = false;
    FakeFilm film;
    film.grab = [&](double, const IsCancelled& isCancelled) -> std::shared_ptr<const Picture> {
        isGrabbing = true;
        isGrabbing.notify_one();
        while (!isCancelled())
            std::this_thread::yield();
        throw MediaError(MediaError::interrupted, "interrupted");
    };
    const auto encode = [](SpriteEncoder& encoder, const Picture& picture) {
        return drawn(encoder, picture);
    };
    {
        const FramePipeline pipeline(FakeAsset(film), scheduleOf(50), encode, {2, 5, 1000}, {});
        isGrabbing.wait(false);
    }
    // The caller's own wish reaches it too, and shows as an error in its place.
    std::atomic<bool> isCancelled = false;
    FramePipeline pipeline(FakeAsset(film), scheduleOf(50), encode, {2, 5, 1000},
                           [&] { return isCancelled.load(); });
    EXPECT_FALSE(pipeline.next(std::chrono::milliseconds(1)));
    isCancelled = true;
    EXPECT_EQ(textOf(take(pipeline)->error), "interrupted");
}

}  // namespace
}  // namespace zeb
