#include "conversion/run/ConversionRun.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>

#include "codec/SpriteEncoder.h"
#include "format/ZEBErrors.h"
#include "format/ZEBWriter.h"
#include "format/check/PartialFile.h"
#include "platform/files/FileHandle.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/format/MemoryFile.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using fake::FakeFilm;
using fake::FakeLibrary;
using fake::FakePicture;
using Bytes = std::vector<std::uint8_t>;
using testing::HasSubstr;

constexpr double sourceRate = 10;
constexpr int fps = 10;
constexpr double duration = 2.5;
constexpr std::int64_t seconds = 3;
constexpr std::int64_t frameCount = seconds * fps;
constexpr int width = 128;  // 640 x 480 into 128 x 96
constexpr int height = 96;

std::uint32_t pictureAt(double time) {
    return static_cast<std::uint32_t>(std::floor(time * sourceRate + 1e-6));
}

/// Grab time of frame `index`, in ticks of 1/600 s.
double grabTime(std::int64_t index) {
    return std::round(std::min(static_cast<double>(index) / fps, duration - 1.0 / 600) * 600) / 600;
}

FakeFilm filmOf() {
    FakeFilm film;
    film.videoTracks = {{{640, 480}, {}, static_cast<float>(sourceRate)}};
    film.duration = duration;
    film.grab = [last = std::shared_ptr<const Picture>(), lastIndex = std::uint32_t{0}](
                    double time, const IsCancelled&) mutable {
        const std::uint32_t index = pictureAt(time);
        if (!last || index != lastIndex) last = std::make_shared<FakePicture>(index);
        lastIndex = index;
        return last;
    };
    // A ramp of 1.6 s at the target rate: output byte i comes from source value i.
    std::vector<float> ramp(32000);
    for (std::size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<float>(i % 128) / 128;
    film.soundTracks = {fake::soundOf({{20000, 1, ramp}})};
    return film;
}

Bytes soundOfSecond(std::int64_t second, int channels) {
    Bytes sound;
    for (std::int64_t i = second * 20000; i < (second + 1) * 20000; ++i) {
        const double value = i < 32000 ? static_cast<double>(i % 128) / 128 : 0;
        sound.insert(sound.end(), static_cast<std::size_t>(channels),
                     static_cast<std::uint8_t>(128 + value * 127));
    }
    return sound;
}

/// Content of the file after each number of seconds, and when it is finished.
struct ExpectedMovie {
    std::vector<Bytes> begun;
    Bytes finished;
};

Settings settingsOf(int mode = 32, bool dither = false, int channels = 2) {
    return {.title = "Film",
            .width = width,
            .height = height,
            .loop = true,
            .audioChannels = channels,
            .dither = dither,
            .qlModeNumber = mode};
}

/// `pictures` holds the picture number of each frame if it differs from the schedule.
ExpectedMovie expectedMovie(const Settings& settings, int channels,
                            std::vector<std::uint32_t> pictures = {}) {
    test::MemoryDisk disk;
    const MovieParameters parameters{"Film",     width,   height,   fps, settings.qlModeNumber,
                                     frameCount, seconds, channels, true};
    ZEBWriter writer(std::make_unique<test::MemoryWritableFile>(disk), parameters);
    ExpectedMovie movie{{disk.bytes}, {}};

    SpriteEncoder encoder;
    if (pictures.empty()) {
        for (std::int64_t index = 0; index < frameCount; ++index)
            pictures.push_back(pictureAt(grabTime(index)));
    }
    for (std::int64_t second = 0; second < seconds; ++second) {
        std::vector<Bytes> records;
        for (std::int64_t index = second * fps; index < (second + 1) * fps; ++index) {
            const FakePicture picture(pictures[static_cast<std::size_t>(index)]);
            records.push_back(settings.qlModeNumber == 32
                                  ? encoder.encodeMode32Sprite(picture, width, height)
                                  : encoder.encodeMode4Sprite(picture, width, height, settings.dither));
        }
        const std::vector<std::span<const std::uint8_t>> frames(records.begin(), records.end());
        writer.writeSecond(soundOfSecond(second, channels), frames);
        movie.begun.push_back(disk.bytes);
    }
    writer.finish();
    movie.finished = disk.bytes;
    return movie;
}

class ConversionRunTest : public testing::Test {
protected:
    ConversionRunTest() { library.add(input, filmOf()); }

    void convert(const Settings& settings = settingsOf(), int threads = 2) {
        OutputPlace place(output, {OutputTerms::Existing::replace, {}});
        ConversionRun(library, threads).convert(input, place, settings, callbacks);
    }

    /// The case of the `ZEBConverterError` that the conversion throws. Empty if it succeeds.
    std::optional<ZEBConverterError::Case> converterError() {
        try {
            convert();
        } catch (const ZEBConverterError& error) {
            return error.errorCase();
        }
        return {};
    }

    Bytes written() const { return test::contents<Bytes>(output); }

    void takeFilm(FakeFilm::Grab grab) {
        FakeFilm film = filmOf();
        film.grab = std::move(grab);
        library.add(input, film);
    }
    /// A video whose decoder blocks from `moment` on until it is cancelled.
    FakeFilm busyFrom(double moment) {
        FakeFilm film = filmOf();
        film.grab = [this, moment](double time,
                                   const IsCancelled& isCancelled) -> std::shared_ptr<const Picture> {
            if (time < moment) return std::make_shared<FakePicture>(pictureAt(time));
            isGrabbing = true;
            isGrabbing.notify_one();
            while (!isCancelled())
                std::this_thread::yield();
            throw MediaError::wasInterrupted();
        };
        return film;
    }

    std::atomic<bool> isGrabbing = false;
    test::TemporaryFolder folder;
    std::string input = folder.file("film.mp4");
    std::string output = folder.file("film.zeb");
    FakeLibrary library;
    std::vector<std::string> reports;
    ConversionCallbacks callbacks{[this](const std::string& text, double) { reports.push_back(text); },
                                  {},
                                  {},
                                  {},
                                  [this](const std::string& text) { reports.push_back("! " + text); }};
};

TEST_F(ConversionRunTest, BytesDependOnSourceAndSettingsOnly) {
    const std::tuple<int, bool, int> variants[] = {{32, false, 2}, {4, false, 1}, {4, true, 0}};
    for (const auto& [mode, dither, channels] : variants) {
        const Settings settings = settingsOf(mode, dither, channels);
        const Bytes expected = expectedMovie(settings, channels).finished;
        for (const int threads : {1, 2, 8, 0}) {
            convert(settings, threads);  // replaces the file of the previous pass
            EXPECT_TRUE(written() == expected) << "mode " << mode << ", threads " << threads;
        }
    }
}

TEST_F(ConversionRunTest, RepeatsLastFrameWhenGrabFails) {
    takeFilm([](double time, const IsCancelled&) -> std::shared_ptr<const Picture> {
        const std::uint32_t index = pictureAt(time);
        if (index == 10 || index == 11) throw MediaError(MediaError::cannotDecode, {"damaged"});
        return std::make_shared<FakePicture>(index, index != 24);
    });
    std::vector<std::uint32_t> shown;
    for (std::uint32_t index = 0; index < frameCount; ++index) {
        shown.push_back(index == 10 || index == 11 ? 9 : index >= 24 ? 23 : index);
    }
    convert(settingsOf(), 3);
    EXPECT_TRUE(written() == expectedMovie(settingsOf(), 2, shown).finished);
    // The first warning of a second follows the log line of that second.
    ASSERT_EQ(reports.size(), 6u + 2 + 6);
    for (const auto& [report, time] : {std::pair(5, "1.000"), {6, "1.100"}, {9, "2.498"}}) {
        EXPECT_EQ(reports[static_cast<std::size_t>(report)],
                  std::string("! No picture at ") + time + " s: the previous frame is repeated.");
    }
    // Before the first frame there is nothing to repeat.
    takeFilm([](double, const IsCancelled&) { return std::make_shared<FakePicture>(0, false); });
    EXPECT_THROW(convert(), PlatformError);
    EXPECT_TRUE(written() == expectedMovie(settingsOf(), 2).begun[0]);
}

TEST_F(ConversionRunTest, EndsWhenSourceBecomesUnreadable) {
    int grabs = 0;
    takeFilm([&](double time, const IsCancelled&) -> std::shared_ptr<const Picture> {
        if (time > 1.35) {
            ++grabs;
            throw MediaError(MediaError::cannotRead, {"shorter"});
        }
        return std::make_shared<FakePicture>(pictureAt(time));
    });
    try {
        convert();
        ADD_FAILURE() << "converted";
    } catch (const MediaError& error) {
        EXPECT_STREQ(error.what(), "shorter");
    }
    EXPECT_EQ(grabs, 1) << "no later picture is asked for";
    EXPECT_TRUE(written() == expectedMovie(settingsOf(), 2).begun[1]);
    for (const std::string& report : reports)
        EXPECT_THAT(report, testing::Not(testing::StartsWith("!")));

    FakeFilm film = filmOf();
    film.soundTracks = {[](std::size_t index, fake::FakeSamples&) -> bool {
        if (index > 0) throw MediaError(MediaError::cannotRead, {"disk"});
        return true;
    }};
    library.add(input, film);
    fs::remove(output);
    EXPECT_THROW(convert(), MediaError);
    EXPECT_FALSE(fs::exists(output)) << "the sound comes before the file";
}

TEST_F(ConversionRunTest, WarnsOnceOfIncompleteVideo) {
    FakeFilm film = filmOf();
    film.videoTracks.front().end = {duration, 9.9};
    library.add(input, film);
    convert();
    EXPECT_TRUE(written() == expectedMovie(settingsOf(), 2).finished);
    const auto isWarning = [](const std::string& report) { return report.starts_with("!"); };
    EXPECT_EQ(std::count_if(reports.begin(), reports.end(), isWarning), 1);
    EXPECT_EQ(reports[1], "! The film breaks off at 0:03 of 0:10.");
}

TEST_F(ConversionRunTest, WritesChosenSoundTrackUnlessEmpty) {
    const Bytes silent = expectedMovie(settingsOf(), 0).finished;
    FakeFilm film = filmOf();
    film.soundTracks.insert(film.soundTracks.begin(), fake::soundOf({}));
    library.add(input, film);
    convert();
    EXPECT_TRUE(written() == silent) << "the first track is empty";
    Settings settings = settingsOf();
    settings.audioTrackIndex = 1;
    convert(settings);
    EXPECT_TRUE(written() == expectedMovie(settings, 2).finished);
    settings.includeAudio = false;
    convert(settings);
    EXPECT_TRUE(written() == silent);
}

TEST_F(ConversionRunTest, StopsAtAnyCancellationCheck) {
    std::vector<Bytes> stages = expectedMovie(settingsOf(), 2).begun;
    stages.insert(stages.begin(), {'o', 'l', 'd'});
    const std::string previous = folder.file("film.previous.zeb");
    std::vector<bool> seen(stages.size());
    for (int patience = 0;; ++patience) {
        fs::remove(output);
        test::store(output, "old");
        std::atomic<int> asked = 0;
        callbacks.isCancelled = [&] { return asked++ >= patience; };
        const auto error = converterError();
        if (!error) break;
        EXPECT_EQ(error, ZEBConverterError::Case::cancelled);
        // At most one more check per thread: the decoder and the run itself, or the sound reader before them.
        EXPECT_LE(asked - patience, 3);
        const auto stage = std::find(stages.begin(), stages.end(), written());
        ASSERT_NE(stage, stages.end()) << "a torn file after " << patience;
        EXPECT_EQ(stage != stages.begin(), fs::remove(previous)) << "back in its place, or beside it";
        seen[static_cast<std::size_t>(stage - stages.begin())] = true;
    }
    EXPECT_TRUE(seen[0]);  // cancelled before the file was created
    EXPECT_TRUE(seen[1] || seen[2] || seen[3]);
}

TEST_F(ConversionRunTest, CancelsWhileDecoderIsBusy) {
    library.add(input, busyFrom(1.35));
    std::atomic<bool> isInSecondSecond = false;
    callbacks.advanced = [&](std::int64_t framesDone, std::uint64_t) { isInSecondSecond = framesDone > fps; };
    callbacks.isCancelled = [&] { return isGrabbing && isInSecondSecond; };
    EXPECT_EQ(converterError(), ZEBConverterError::Case::cancelled);
    EXPECT_TRUE(written() == expectedMovie(settingsOf(), 2).begun[1]);
}

TEST_F(ConversionRunTest, SoundFailureStopsBusyDecoder) {
    FakeFilm film = busyFrom(0);
    film.soundTracks = {[&](std::size_t, fake::FakeSamples&) -> bool {
        isGrabbing.wait(false);
        throw MediaError(MediaError::cannotOpen, {"no sound"});
    }};
    library.add(input, film);
    EXPECT_THROW(convert(), MediaError);
    EXPECT_FALSE(fs::exists(output));
}

/// The n-th operation on the output fails, once or permanently. The file must contain its complete seconds,
/// and the caller gets the error.
TEST_F(ConversionRunTest, EveryDiskFailureLeavesWholeSeconds) {
    const ExpectedMovie expected = expectedMovie(settingsOf(), 2);
    for (const bool forGood : {false, true}) {
        for (int call = 1;; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + (forGood ? " and all after it" : ""));
            test::MemoryDisk disk;
            disk.failFrom = call;
            disk.failTo = forGood ? std::numeric_limits<int>::max() : call;
            fs::remove(output);
            OutputPlace place(output);
            const auto create = [&](OutputPlace& there) -> std::unique_ptr<WritableFile> {
                if (disk.countCall()) throw ZEBConverterError::cannotCreateOutput(there.path());
                there.create();
                return std::make_unique<test::MemoryWritableFile>(disk);
            };
            std::string error;
            try {
                ConversionRun(library, 2, create).convert(input, place, settingsOf(), callbacks);
            } catch (const std::exception& failure) {
                error = failure.what();
            }
            if (disk.calls < call) break;  // no operation failed

            disk.failFrom = disk.failTo = 0;
            test::MemoryReadableFile source(disk.bytes);
            test::MemoryWritableFile target(disk);
            std::int64_t kept = 0;
            try {
                kept = finishPartialFile(source, target);
            } catch (const PlatformError&) {
                EXPECT_LT(disk.bytes.size(), expected.begun[0].size()) << "has a header";
            }
            // Closing is the last operation. Its failure changes nothing in the file.
            if (!error.empty()) {
                EXPECT_THAT(error, testing::AnyOf(HasSubstr("No space left"), HasSubstr(output)));
            } else {
                EXPECT_EQ(kept, seconds);
            }
            if (kept == seconds) {
                EXPECT_TRUE(disk.bytes == expected.finished);
            } else if (kept > 0) {
                const std::size_t end = expected.begun[static_cast<std::size_t>(kept)].size();
                EXPECT_EQ(disk.bytes.size(), end);
                const auto data = static_cast<std::ptrdiff_t>(expected.begun[0].size());
                EXPECT_TRUE(std::equal(disk.bytes.begin() + data, disk.bytes.end(),
                                       expected.finished.begin() + data));
            }
        }
    }
}

TEST_F(ConversionRunTest, ReportsEachFrameOnceWithBytesWritten) {
    const ExpectedMovie expected = expectedMovie(settingsOf(), 2);
    std::int64_t last = 0;
    callbacks.advanced = [&](std::int64_t framesDone, std::uint64_t bytes) {
        EXPECT_EQ(framesDone, ++last);
        EXPECT_EQ(bytes, expected.begun[static_cast<std::size_t>(framesDone / fps)].size());
    };
    convert();
    EXPECT_EQ(last, frameCount);
}

TEST_F(ConversionRunTest, ReportsWhatFormatCannotHold) {
    EXPECT_THROW(convert(settingsOf(65536)), ZEBWriterError);
    FakeFilm film = filmOf();
    film.duration = 9e15;  // nothing of that size may be allocated
    library.add(input, film);
    EXPECT_THROW(convert(), ZEBWriterError);
    film.videoTracks.clear();
    library.add(input, film);
    EXPECT_THROW(convert(), ZEBConverterError);
}

}  // namespace
}  // namespace zeb
