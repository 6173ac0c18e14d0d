#include "conversion/forecast/SizeForecast.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "codec/RLE2.h"
#include "codec/SpriteEncoder.h"
#include "codec/SpriteLayout.h"
#include "conversion/forecast/MovieSize.h"
#include "conversion/forecast/RecordSamples.h"
#include "conversion/run/ConversionRun.h"
#include "format/ZEBErrors.h"
#include "format/ZEBWriter.h"
#include "platform/files/FileManager.h"
#include "tests/doubles/CountingFile.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using fake::FakeAsset;
using fake::FakeFilm;
using fake::FakeLibrary;
using fake::FakePicture;
using fake::FakeRecord;

FakeFilm filmOf(double duration) {
    FakeFilm film;
    film.videoTracks = {{{640, 480}, {}, 10}};
    film.duration = duration;
    film.grab = [](double time, const IsCancelled&) {
        return std::make_shared<FakePicture>(static_cast<std::uint32_t>(time * 10 + 1e-6));
    };
    return film;
}

ForecastCase caseOf(const MediaAsset& asset, const Settings& settings) {
    return {settings, planConversion(asset, settings), certainSoundOutlook(asset, settings, {}),
            std::nullopt};
}

RecordSamples samplesOf(const MediaAsset& asset) {
    return RecordSamples(samplePictures(asset, {}, {}), 2);
}

SizeForecast forecastOf(const MediaAsset& asset, const Settings& settings) {
    RecordSamples samples = samplesOf(asset);
    return forecastSize(caseOf(asset, settings), samples, {});
}

/// The file size of a real run.
std::uint64_t bytesWritten(const FakeFilm& film, const Settings& settings) {
    const test::TemporaryFolder folder;
    FakeLibrary library;
    library.add("film", film);
    OutputPlace output(folder.file("a.zeb"));
    ConversionRun(library, 2).convert("film", output, settings, {});
    return fs::file_size(folder.file("a.zeb"));
}

TEST(SizeForecast, IsExactInMode4) {
    const fake::FakeSamples tone{48000, 2, std::vector<float>(9600, 0.5F)};
    const std::vector<FakeFilm::Sound> noTracks, tracks{fake::soundOf({tone})}, empty{fake::soundOf({})};
    const Settings plain{.qlModeNumber = 4};
    const Settings small{
        .title = "\xe2\x82\xac", .width = 72, .height = 72, .fps = 3, .audioChannels = 1, .qlModeNumber = 4};
    const Settings other{
        .title = std::string(70000, 'x'), .preserveAspect = false, .dither = true, .qlModeNumber = 4};
    const struct {
        const char* name;
        double duration;
        Settings settings;
        std::vector<FakeFilm::Sound> sound;
    } cases[] = {{"no track", 2.5, plain, noTracks}, {"stereo", 2.5, plain, tracks},
                 {"mono", 0.3, small, tracks},       {"empty track", 1, plain, empty},
                 {"long title", 4, other, tracks},   {"nothing", 0, small, noTracks}};
    for (const auto& c : cases) {
        FakeFilm film = filmOf(c.duration);
        film.soundTracks = c.sound;
        const SizeForecast forecast = forecastOf(FakeAsset(film), c.settings);
        EXPECT_TRUE(forecast.isExact) << c.name;
        EXPECT_EQ(forecast.bytes, bytesWritten(film, c.settings)) << c.name;
    }
    // If the sound has not been checked, the forecast assumes that there is sound.
    FakeFilm film = filmOf(2);
    film.soundTracks = empty;
    const FakeAsset asset(film);
    ForecastCase about = caseOf(asset, plain);
    about.sound = soundOutlook(asset, plain);
    EXPECT_FALSE(forecastUpperBound(about).isExact);
    EXPECT_EQ(forecastUpperBound(about).bytes, bytesWritten(film, plain) + 2 * 2 * 20000);
}

TEST(MovieSize, Mode32UpperBoundIsReached) {
    // A picture without two equal neighbours.
    for (const int items : {1, 127, 128, 129, 256, 1000}) {
        std::vector<std::uint8_t> pixels, packets;
        for (int i = 0; i < items; ++i)
            pixels.insert(pixels.end(), {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8)});
        compressRLE2(pixels, packets);
        EXPECT_EQ(32 + packets.size(), sprite::mostMode32RecordBytes(items, 1)) << items << " pixels";
    }
}

TEST(MovieSize, PredictsSecondThatWriterRejects) {
    const struct {
        std::vector<std::uint64_t> records;
        int fps;
        int channels;
        std::int64_t seconds;
    } cases[] = {{{10'000'000}, 10, 2, 50},
                 {{4'000'000}, 25, 0, 42},
                 {{4'000'000}, 25, 0, 43},
                 {{9'000'000, 1'000'000, 5'000'000}, 10, 1, 91},
                 {{30'000'000}, 160, 0, 2},
                 // The last block begins at 2^32 - 1 and at 2^32.
                 {{40'904'065}, 105, 2, 2},
                 {{8'747'302}, 491, 2, 2}};
    for (const auto& c : cases) {
        ConversionPlan plan;
        plan.fps = c.fps;
        plan.seconds = c.seconds;
        plan.totalFrames = c.seconds * c.fps;
        const MovieSize size(plan, "", c.channels, c.records);

        ZEBWriter writer(std::make_unique<fake::CountingFile>(),
                         {"", 64, 64, c.fps, 32, plan.totalFrames, c.seconds, c.channels, false});
        const std::vector<std::uint8_t> bytes(*std::ranges::max_element(c.records));
        const std::vector<std::uint8_t> sound(static_cast<std::size_t>(c.channels) * 20000);
        std::optional<std::int64_t> refused;
        for (std::int64_t second = 0; second < c.seconds && !refused; ++second) {
            EXPECT_EQ(writer.bytesWritten(), size.startOfSecond(second));
            std::vector<std::span<const std::uint8_t>> frames;
            for (std::int64_t frame = second * c.fps; frame < (second + 1) * c.fps; ++frame) {
                const auto parts = static_cast<std::int64_t>(c.records.size());
                const std::int64_t part = ((frame + 1) * parts - 1) / plan.totalFrames;
                frames.push_back(std::span(bytes).first(c.records[static_cast<std::size_t>(part)]));
            }
            try {
                writer.writeSecond(sound, frames);
            } catch (const ZEBWriterError&) {
                refused = second;
            }
        }
        EXPECT_EQ(size.firstRefusedSecond(), refused) << c.records.front() << " x " << c.fps;
    }
    // More frames than the header field can hold.
    ConversionPlan endless;
    endless.fps = 60;
    endless.seconds = std::int64_t{1} << 55;
    endless.totalFrames = endless.seconds * 60;
    const MovieSize size(endless, "", 2, {1000});
    EXPECT_EQ(size.firstRefusedSecond(), 0);
    EXPECT_EQ(size.fileBytes(), std::numeric_limits<std::uint64_t>::max());
}

TEST(SizeForecast, SuggestsLargestSettingsThatFit) {
    constexpr std::uint64_t million = 1'000'000;
    const struct {
        const char* name;
        MediaSize source;
        double duration;
        std::optional<std::uint64_t> freeSpace;
        int mode;
        bool keepsAspect;
        bool isBound;
    } cases[] = {{"4 GiB, upright", {1080, 1920}, 3000, {}, 4, true, true},
                 {"4 GiB, stretched", {1920, 1080}, 3000, {}, 4, false, true},
                 {"4 GiB, bound", {1920, 1080}, 120, {}, 32, true, true},
                 {"space, sampled", {640, 480}, 100, 20 * million, 32, true, false},
                 {"both", {4000, 2250}, 300, 3000 * million, 4, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeFilm film = filmOf(c.duration);
        film.videoTracks = {{c.source, {}, 25}};
        const FakeAsset asset(film);
        RecordSamples samples = samplesOf(asset);
        const auto forecast = [&](const Settings& settings) {
            ForecastCase about = caseOf(asset, settings);
            about.freeSpace = c.freeSpace;
            return c.isBound ? forecastUpperBound(about) : forecastSize(about, samples, {});
        };
        const Settings settings{.width = c.keepsAspect ? static_cast<int>(c.source.width) : 1000,
                                .height = c.keepsAspect ? static_cast<int>(c.source.height) : 1000,
                                .preserveAspect = c.keepsAspect,
                                .fps = 25,
                                .qlModeNumber = c.mode};
        const SizeForecast first = forecast(settings);
        ASSERT_FALSE(first.fits());
        EXPECT_EQ(first.fitsSpace(), !c.freeSpace);

        ASSERT_TRUE(first.suggestion.fps && first.suggestion.size);
        Settings slower = settings;
        slower.fps = *first.suggestion.fps;
        EXPECT_TRUE(forecast(slower).fits());
        const FrameSize size = *first.suggestion.size;
        Settings smaller = settings;
        smaller.width = size.width;
        smaller.height = size.height;
        EXPECT_TRUE(forecast(smaller).fits());

        if (!c.isBound) continue;  // sampled forecasts keep a safety margin
        ++slower.fps;
        EXPECT_FALSE(forecast(slower).fits());
        smaller.width += size.width >= size.height ? 8 : 8 * size.width / size.height + 1;
        smaller.height += size.height >= size.width ? 8 : 8 * size.height / size.width + 1;
        EXPECT_FALSE(forecast(smaller).fits());
    }
    FakeFilm film = filmOf(10);
    const FakeAsset asset(film);
    ForecastCase about = caseOf(asset, {});
    about.freeSpace = 1000;
    EXPECT_EQ(forecastUpperBound(about).suggestion, ForecastSuggestion{});
    EXPECT_EQ(forecastUpperBound(about).spaceEndsAt, 0);
}

TEST(SizeForecast, ReportsFirstSecondWithoutSpace) {
    const FakeFilm film = filmOf(9);
    const FakeAsset asset(film);
    ForecastCase about = caseOf(asset, {.qlModeNumber = 4});
    const MovieSize size(about.plan, about.settings.title, 0,
                         {sprite::mode4RecordBytes(about.plan.size.width, about.plan.size.height)});
    for (std::int64_t second = 0; second < 9; ++second) {
        about.freeSpace = size.startOfSecond(second);
        EXPECT_EQ(forecastUpperBound(about).spaceEndsAt, second);
        about.freeSpace = size.startOfSecond(second + 1) - 1;
        EXPECT_EQ(forecastUpperBound(about).spaceEndsAt, second);
    }
    about.freeSpace = size.fileBytes();
    EXPECT_EQ(forecastUpperBound(about).spaceEndsAt, std::nullopt);
    EXPECT_EQ(forecastUpperBound(about).bytesPerSecond, static_cast<double>(size.fileBytes()) / 9);
}

/// A black picture whose first `bytes` bytes contain no two equal pixels in a row.
class BusyPicture final : public Picture {
public:
    explicit BusyPicture(std::size_t bytes) : m_bytes(bytes) {}
    int width() const override { return 640; }
    int height() const override { return 480; }
    void draw(const BitmapContext& bitmap) const override {
        std::ranges::fill(bitmap.pixels, std::uint8_t{0});
        for (std::size_t i = 0; i < std::min(m_bytes, bitmap.pixels.size()); ++i)
            bitmap.pixels[i] = static_cast<std::uint8_t>(i * 37);
    }

private:
    std::size_t m_bytes;
};

TEST(SizeForecast, DerivesUncertaintyFromNeighbouringSamples) {
    const FakeFilm film = filmOf(10);
    const FakeAsset asset(film);
    std::vector<std::shared_ptr<const Picture>> pictures;
    for (const std::size_t bytes : {100U, 40000U, 5000U, 90000U})
        pictures.push_back(std::make_shared<BusyPicture>(bytes));
    const auto forecast = [&](std::size_t count, std::vector<std::uint64_t>& sizes) {
        RecordSamples samples({pictures.begin(), pictures.begin() + static_cast<std::ptrdiff_t>(count)});
        const ForecastCase about = caseOf(asset, {});
        sizes = samples.at(frameRecipe(640, 480, about.settings), {});
        return forecastSize(about, samples, {});
    };
    std::vector<std::uint64_t> sizes;
    EXPECT_EQ(forecast(1, sizes).uncertainty, std::nullopt);
    for (const std::size_t count : {std::size_t{2}, pictures.size()}) {
        const SizeForecast sampled = forecast(count, sizes);
        double squares = 0, sum = static_cast<double>(sizes[0]);
        for (std::size_t i = 1; i < count; ++i) {
            sum += static_cast<double>(sizes[i]);
            squares += std::pow(static_cast<double>(sizes[i]) - static_cast<double>(sizes[i - 1]), 2);
        }
        // Neighbours differ by the deviation of two samples. The mean of all deviates by its square root
        // less.
        const auto n = static_cast<double>(count);
        EXPECT_EQ(sampled.samples, static_cast<int>(count));
        EXPECT_NEAR(sampled.uncertainty.value(), std::sqrt(squares / (n - 1) / 2 / n) / (sum / n), 1e-9);
    }
}

TEST(SpaceFor, IsFreeSpaceOfNearestFolder) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("a.zeb");
    test::store(path, std::string(50'000'000, 'x'));
    const auto near = [](std::optional<std::uint64_t> space, const std::string& of) {
        const auto really = files::freeSpace(of).value();
        return space && *space < really + 40'000'000 && *space + 40'000'000 > really;
    };
    // Tolerates other processes that write to the same disk.
    EXPECT_TRUE(near(spaceFor(path), folder.path())) << "the old movie counts as used";
    EXPECT_TRUE(near(spaceFor(folder.file("missing/too/a.zeb")), folder.path()));
    EXPECT_TRUE(near(spaceFor("a.zeb"), "."));
}

TEST(SamplePictures, SkipUndecodableAndUndrawablePictures) {
    FakeFilm film = filmOf(60);
    film.grab = [](double time, const IsCancelled&) {
        if (time > 20 && time < 40) throw MediaError(MediaError::cannotDecode, {"damaged"});
        return std::make_shared<FakePicture>(static_cast<std::uint32_t>(time));
    };
    EXPECT_EQ(samplePictures(FakeAsset(film), {}, {}).size(), 8u);
    film.grab = [](double, const IsCancelled&) -> std::shared_ptr<const Picture> {
        throw MediaError(MediaError::cannotDecode, {"damaged"});
    };
    EXPECT_THROW(samplePictures(FakeAsset(film), {}, {}), MediaError);
    FrameRecipe smallFrames;
    smallFrames.geometry.size = {64, 64};
    smallFrames.geometry.area = {0, 0, 64, 64};
    RecordSamples samples({std::make_shared<FakePicture>(1), std::make_shared<FakePicture>(2, false)});
    EXPECT_EQ(samples.at(smallFrames, {}).size(), 1u);
    const auto blank = std::make_shared<BusyPicture>(0), busy = std::make_shared<BusyPicture>(9000);
    RecordSamples repeated({blank, blank, busy, busy, busy});
    const std::vector<std::uint64_t>& sizes = repeated.at(smallFrames, {});
    EXPECT_LT(sizes[0], sizes[2]);
    EXPECT_EQ(sizes, (std::vector<std::uint64_t>{sizes[0], sizes[0], sizes[2], sizes[2], sizes[2]}));
    EXPECT_EQ(repeated.distinctPictures(), 2);
    RecordSamples undrawable({std::make_shared<FakePicture>(1, false)});
    EXPECT_THROW(undrawable.at(smallFrames, {}), PlatformError);
}

TEST(SamplePictures, StayWithinDecodingLimit) {
    FakeFilm film = filmOf(60);
    film.keyDistance = 60;  // one key picture only
    const auto record = std::make_shared<FakeRecord>();
    const FakeAsset asset(film, record);
    SamplingEffort effort;
    effort.decodedSeconds = 0;
    EXPECT_EQ(RecordSamples(samplePictures(asset, effort, {})).distinctPictures(), 1);
    EXPECT_TRUE(record->grabTimes.empty());
    effort.decodedSeconds = 20;
    EXPECT_GT(RecordSamples(samplePictures(asset, effort, {})).distinctPictures(), 3);
    EXPECT_LE(record->grabTimes.back(), 2.5 + 20);
}

}  // namespace
}  // namespace zeb
