#include "conversion/forecast/SizeForecaster.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

#include "platform/tasks/ThreadTasks.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/doubles/HandDrivenMainActor.h"
#include "tests/doubles/HandDrivenTasks.h"

namespace zeb {
namespace {

using fake::FakeFilm;
using fake::FakePicture;
using testing::ElementsAre;
using testing::HasSubstr;

class SizeForecasterTest : public testing::Test {
protected:
    SizeForecasterTest() {
        FakeFilm film;
        film.duration = 60;
        film.soundTracks = {fake::soundOf({{20000, 1, std::vector<float>(20000)}})};
        film.grab = [this](double time, const IsCancelled& isCancelled) {
            if (onGrab) onGrab();
            if (isCancelled()) throw MediaError::wasInterrupted();
            return std::make_shared<FakePicture>(static_cast<std::uint32_t>(time));
        };
        library.add("film", film);
        settings.width = settings.height = 128;
    }

    std::unique_ptr<SizeForecaster> makeForecaster(Tasks& onTasks) {
        return std::make_unique<SizeForecaster>(library, onTasks, main, [this](const auto& outcome) {
            outcomes.push_back(outcome);
            onOutcome();
        });
    }
    void update(const std::string& input = "film") { forecaster->update(input, "a.zeb", settings); }
    /// Lets time pass and runs all work until nothing waits.
    void settle() {
        for (int round = 0; round < 3; ++round) {
            main.pass(SizeForecaster::patience);
            tasks.runAll();
            main.run();
        }
    }
    /// Frame rates of the forecasts published so far.
    std::vector<int> rates() const {
        std::vector<int> rates;
        for (const ForecastOutcome& outcome : outcomes)
            rates.push_back(outcome.forecast->plan.fps);
        return rates;
    }
    void updateRate(int fps) {
        settings.fps = fps;
        update();
    }
    std::size_t picturesRead() { return library.record().nearbyTimes.size(); }

    std::function<void()> onGrab;
    Settings settings;
    fake::FakeLibrary library;
    fake::HandDrivenTasks tasks;
    fake::HandDrivenMainActor main;
    std::vector<ForecastOutcome> outcomes;
    std::function<void()> onOutcome = [] {};
    std::unique_ptr<SizeForecaster> forecaster = makeForecaster(tasks);
};

TEST_F(SizeForecasterTest, CombinesRapidChangesIntoOneForecast) {
    for (int fps = 1; fps <= 10; ++fps) {
        updateRate(fps);
        main.pass(SizeForecaster::patience / 2);
        EXPECT_EQ(tasks.waiting(), 0u);
    }
    settle();
    EXPECT_THAT(rates(), ElementsAre(10));
}

TEST_F(SizeForecasterTest, ReadsEachSourceOnce) {
    update();
    settle();
    const std::size_t read = picturesRead();
    EXPECT_EQ(read, 12u);
    updateRate(5);
    settle();
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_LT(outcomes[1].forecast->bytes, outcomes[0].forecast->bytes);
    EXPECT_EQ(picturesRead(), read);
    // The check whether a track has sound runs once, too.
    settings.includeAudio = true;
    std::vector<std::uint64_t> bytes;
    for (int round = 0; round < 2; ++round) {
        for (const int channels : {0, 1, 2}) {
            settings.audioChannels = channels;
            update();
            settle();
            bytes.push_back(outcomes.back().forecast->bytes);
        }
    }
    EXPECT_EQ(bytes[1] - bytes[0], 60U * 20000);
    EXPECT_EQ(bytes[2] - bytes[0], 60U * 40000);
    EXPECT_EQ(bytes[4], bytes[1]);
    EXPECT_EQ(bytes[5], bytes[2]);
    EXPECT_THAT(library.record().soundReaders, ElementsAre(0u));
    forecaster->clear();
    update();
    settle();
    EXPECT_EQ(picturesRead(), 2 * read);
    update("missing");
    settle();
    EXPECT_FALSE(outcomes.back().forecast);
    EXPECT_THAT(outcomes.back().error, HasSubstr("No such film"));
}

TEST_F(SizeForecasterTest, NeverPublishesOutdatedForecasts) {
    // A new request while pictures are read: the work stops at the next picture.
    int grabs = 0;
    onGrab = [&] {
        if (++grabs == 3) updateRate(3);
    };
    update();
    main.pass(SizeForecaster::patience);
    ASSERT_TRUE(tasks.runNext());
    EXPECT_EQ(grabs, 3);
    settle();
    EXPECT_THAT(rates(), ElementsAre(3));

    // A new request before the work has begun: the next work waits for its end.
    updateRate(4);
    main.pass(SizeForecaster::patience);
    updateRate(5);
    main.pass(2 * SizeForecaster::patience);
    EXPECT_EQ(tasks.waiting(), 1u) << "the cancelled one";
    settle();
    EXPECT_THAT(rates(), ElementsAre(3, 5));

    // A new request after the result has been posted.
    updateRate(6);
    main.pass(SizeForecaster::patience);
    ASSERT_TRUE(tasks.runNext());
    updateRate(7);
    settle();
    EXPECT_THAT(rates(), ElementsAre(3, 5, 7));
    update();
    main.pass(SizeForecaster::patience);
    ASSERT_TRUE(tasks.runNext());
    forecaster->clear();
    settle();
    EXPECT_THAT(rates(), ElementsAre(3, 5, 7));
}

TEST_F(SizeForecasterTest, ReportsNothingAfterDestruction) {
    update();
    forecaster.reset();
    settle();
    EXPECT_EQ(picturesRead(), 0u);
    // Destroyed in its own notification.
    forecaster = makeForecaster(tasks);
    onOutcome = [this] { forecaster.reset(); };
    update();
    settle();
    EXPECT_EQ(outcomes.size(), 1u);

    // Destroyed while it works on system threads.
    const std::size_t read = picturesRead();
    ThreadTasks threads;
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> mayGoOn = false;
    onGrab = [&] {
        hasBegun = true;
        hasBegun.notify_one();
        mayGoOn.wait(false);
    };
    forecaster = makeForecaster(threads);
    update();
    main.pass(SizeForecaster::patience);
    hasBegun.wait(false);
    forecaster.reset();
    mayGoOn = true;
    mayGoOn.notify_one();
    while (main.waiting() == 0)
        std::this_thread::yield();
    main.run();
    EXPECT_EQ(picturesRead(), read + 1);
    EXPECT_EQ(outcomes.size(), 1u);
}

}  // namespace
}  // namespace zeb
