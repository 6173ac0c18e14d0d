#include "conversion/comparison/Comparison.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>

#include "conversion/export/ExportError.h"
#include "format/ZEBErrors.h"
#include "format/ZEBWriter.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int fps = 4, seconds = 5, frames = fps * seconds, width = 16, height = 12;

/// A picture of frame `frame`: a fixed pattern, and one pixel that differs in each frame.
Bytes rgbaOf(int frame) {
    Bytes pixels;
    for (int i = 0; i < width * height; ++i) {
        const auto value = static_cast<std::uint8_t>(i * 37 % 200 + 20);
        pixels.insert(pixels.end(), {value, static_cast<std::uint8_t>(value / 2), 90, 255});
    }
    pixels[4 * 50] = static_cast<std::uint8_t>(10 * frame);
    return pixels;
}

class StoredPicture final : public Picture {
public:
    explicit StoredPicture(Bytes pixels) : m_pixels(std::move(pixels)) {}
    int width() const override { return zeb::width; }
    int height() const override { return zeb::height; }
    void draw(const BitmapContext& bitmap) const override {
        ASSERT_EQ(bitmap.pixels.size(), m_pixels.size());
        EXPECT_EQ(bitmap.colourSpace, DrawingColourSpace::sRGB);
        std::ranges::copy(m_pixels, bitmap.pixels.begin());
    }

private:
    Bytes m_pixels;
};

class ComparisonTest : public ::testing::Test {
protected:
    /// Writes a movie of the film's pictures, but `changed` changes the pixels of some frames, and the
    /// records of the frames in `broken` cannot be decoded.
    void writeMovie(const std::function<void(int frame, Bytes& rgba)>& changed = {},
                    const std::vector<int>& broken = {}) {
        std::filesystem::remove(m_movie);
        ZEBWriter writer(m_movie, {"", width, height, fps, 32, frames, seconds, 0, false});
        for (int second = 0; second < seconds; ++second) {
            std::vector<Bytes> records;
            for (int frame = second * fps; frame < (second + 1) * fps; ++frame) {
                Bytes pixels = rgbaOf(frame);
                if (changed) changed(frame, pixels);
                for (std::size_t i = 0; i < pixels.size(); i += 4)
                    std::swap(pixels[i], pixels[i + 2]);
                if (std::ranges::count(broken, frame) > 0) pixels.resize(7);
                records.push_back(std::move(pixels));
            }
            writer.writeSecond({},
                               std::vector<std::span<const std::uint8_t>>(records.begin(), records.end()));
        }
        writer.finish();
        writer.close();
    }

    /// The film that shows `rgbaOf(i)` from i / fps on.
    fake::FakeFilm film() const {
        fake::FakeFilm film;
        film.duration = seconds;
        film.grab = [](double time, const IsCancelled&) {
            return std::make_shared<StoredPicture>(rgbaOf(static_cast<int>(std::floor(time * fps + 1e-6))));
        };
        return film;
    }

    Comparison compare(const fake::FakeFilm& film, std::int64_t moments = 0, int threads = 2) {
        m_warnings.clear();
        ComparisonCallbacks callbacks;
        callbacks.warned = [this](const std::string& line) { m_warnings.push_back(line); };
        return compareMovie(fake::FakeAsset(film), m_movie, {moments, threads}, callbacks);
    }

    test::TemporaryFolder m_folder;
    std::string m_movie = m_folder.file("a.zeb");
    std::vector<std::string> m_warnings;
};

TEST_F(ComparisonTest, MovieOfFilmsPicturesHasNoError) {
    writeMovie();
    const Comparison result = compare(film());
    EXPECT_EQ(result.size, (FrameSize{width, height}));
    EXPECT_EQ(result.fps, fps);
    EXPECT_EQ(result.frames, frames);
    EXPECT_EQ(result.moments, frames);
    EXPECT_EQ(result.flickerPairs, frames - 1);
    EXPECT_TRUE(m_warnings.empty());
    const struct {
        Measure measure;
        double best;
    } cases[] = {{Measure::deltaE40, 0},          {Measure::deltaE20, 0},
                 {Measure::flicker, 0},           {Measure::similarity, 1},
                 {Measure::peakSignal, INFINITY}, {Measure::blurredPeakSignal, INFINITY}};
    for (const auto& [measure, best] : cases) {
        EXPECT_EQ(result.figure(measure).mean, best);
        EXPECT_EQ(result.figure(measure).worst, best);
    }
    EXPECT_NEAR(result.figure(Measure::detail).worst.value(), 1, 1e-9);
}

TEST_F(ComparisonTest, FewMomentsSkipSeconds) {
    writeMovie([](int frame, Bytes& rgba) { rgba[0] = static_cast<std::uint8_t>(rgba[0] + frame); });
    const Comparison result = compare(film(), 2);
    EXPECT_EQ(result.frames, frames);
    EXPECT_EQ(result.moments, 2);
    EXPECT_EQ(result.flickerPairs, 2);
    // Frames 5 and 15 in seconds 1 and 3: the red of one pixel is wrong by as much.
    const double error = 3.0 * 255 * 255 * width * height;
    EXPECT_EQ(result.figure(Measure::peakSignal).worstFrame, 15);
    EXPECT_NEAR(result.figure(Measure::peakSignal).worst.value(), 10 * std::log10(error / (15 * 15)), 1e-9);
    EXPECT_NEAR(result.figure(Measure::peakSignal).mean.value(),
                10 * std::log10(error * 2 / (5 * 5 + 15 * 15)), 1e-9);
}

TEST_F(ComparisonTest, WorstMomentIsThatOfChangedFrame) {
    for (const int bad : {0, 5, frames - 1}) {
        writeMovie([bad](int frame, Bytes& rgba) {
            for (std::size_t i = 0; frame == bad && i < rgba.size(); i += 8)
                rgba[i] = static_cast<std::uint8_t>(255 - rgba[i]);
        });
        const Comparison result = compare(film());
        for (const Measure measure : {Measure::deltaE40, Measure::deltaE20, Measure::detail,
                                      Measure::similarity, Measure::peakSignal, Measure::blurredPeakSignal})
            EXPECT_EQ(result.figure(measure).worstFrame, bad);
        const Figure& difference = result.figure(Measure::deltaE40);
        EXPECT_GT(difference.worst.value(), 1);
        EXPECT_NEAR(difference.mean.value(), difference.worst.value() / frames, 1e-9);
        // The signal-to-noise ratio of the mean error: an error in one of twenty frames is 13 dB better.
        const Figure& signal = result.figure(Measure::peakSignal);
        EXPECT_NEAR(signal.mean.value(), signal.worst.value() + 10 * std::log10(frames), 1e-9);
        // The frame differs from both of its neighbours.
        EXPECT_EQ(result.figure(Measure::flicker).worstFrame, std::max(bad - 1, 0));
        EXPECT_LT(result.figure(Measure::similarity).worst, result.figure(Measure::similarity).mean);
    }
}

TEST_F(ComparisonTest, FlickerNeedsPicturesThatDiffer) {
    // Each frame of the movie inverts a quarter of the pixels.
    writeMovie([](int frame, Bytes& rgba) {
        for (std::size_t i = 0; frame % 2 == 0 && i < rgba.size(); i += 16)
            rgba[i + 1] ^= 0xFF;
    });
    const Comparison moving = compare(film());
    EXPECT_EQ(moving.flickerPairs, frames - 1);
    EXPECT_NEAR(moving.figure(Measure::flicker).mean.value(), .25, .01);

    fake::FakeFilm still = film();
    still.grab = [](double, const IsCancelled&) { return std::make_shared<StoredPicture>(rgbaOf(3)); };
    const Comparison standing = compare(still);
    EXPECT_EQ(standing.flickerPairs, 0);
    EXPECT_EQ(standing.figure(Measure::flicker).mean, std::nullopt);
    EXPECT_EQ(standing.figure(Measure::flicker).worst, std::nullopt);
}

TEST_F(ComparisonTest, FiguresDoNotDependOnThreads) {
    writeMovie([](int frame, Bytes& rgba) {
        for (std::size_t i = 0; i < rgba.size(); ++i)
            rgba[i] =
                static_cast<std::uint8_t>(rgba[i] ^ (i * 7 + static_cast<std::size_t>(frame) * 13) % 64);
    });
    const Comparison one = compare(film(), 0, 1);
    for (const int threads : {2, 5}) {
        const Comparison other = compare(film(), 0, threads);
        for (std::size_t i = 0; i < measureCount; ++i) {
            EXPECT_EQ(other.figures[i].mean, one.figures[i].mean);
            EXPECT_EQ(other.figures[i].worst, one.figures[i].worst);
            EXPECT_EQ(other.figures[i].worstFrame, one.figures[i].worstFrame);
        }
    }
}

TEST_F(ComparisonTest, DamagedPicturesAreLeftOut) {
    writeMovie({}, {2, 7});
    fake::FakeFilm damaged = film();
    damaged.grab = [good = damaged.grab](double time, const IsCancelled& isCancelled) {
        if (time == 1) throw MediaError(MediaError::cannotDecode, {"error_media_no_picture"});
        return good(time, isCancelled);
    };
    const Comparison result = compare(damaged);
    EXPECT_EQ(result.moments, frames - 3);
    EXPECT_EQ(result.momentsLeftOut, 3);
    EXPECT_EQ(result.flickerPairs, frames - 1 - 6);  // without the neighbours of frames 2, 4 and 7
    EXPECT_EQ(result.figure(Measure::deltaE40).worst, 0);
    EXPECT_THAT(m_warnings, ElementsAre(HasSubstr("3 of 20 moments")));
}

TEST_F(ComparisonTest, UnusableMoviesAreErrors) {
    std::vector<int> all(frames);
    for (int i = 0; i < frames; ++i)
        all[static_cast<std::size_t>(i)] = i;
    writeMovie({}, all);
    EXPECT_THROW(compare(film()), ExportError);
    test::store(m_movie, "no movie");
    EXPECT_THROW(compare(film()), ZEBFormatError);
    std::filesystem::remove(m_movie);
    EXPECT_THROW(compare(film()), ExportError);
}

TEST_F(ComparisonTest, SizeThatNoConversionMakesIsStretched) {
    writeMovie();  // both sides are smaller than those of conversions
    for (const Shape::Fit fit : {Shape::Fit::scale, Shape::Fit::pad, Shape::Fit::fill}) {
        ComparisonSettings settings;
        settings.film.shape.fit = fit;
        const Comparison result = compareMovie(fake::FakeAsset(film()), m_movie, settings, {});
        EXPECT_EQ(result.figure(Measure::deltaE40).worst, 0);
    }
}

TEST_F(ComparisonTest, WarnsOfFilmOfOtherLength) {
    writeMovie();
    const struct {
        double duration;
        bool isExpected;
    } cases[] = {{3, true}, {3.1, false}, {5, false}, {6, false}, {6.1, true}};
    for (const auto& [duration, isExpected] : cases) {
        fake::FakeFilm other = film();
        other.duration = duration;
        compare(other);
        EXPECT_EQ(m_warnings.size(), isExpected ? 1 : 0) << duration;
    }
}

TEST_F(ComparisonTest, StopsOnCancellation) {
    writeMovie();
    for (const int polls : {0, 5, 30}) {
        std::atomic<int> count = 0;
        ComparisonCallbacks callbacks;
        callbacks.isCancelled = [&] { return count++ >= polls; };
        try {
            compareMovie(fake::FakeAsset(film()), m_movie, {0, 2}, callbacks);
            ADD_FAILURE() << "not cancelled after " << polls << " polls";
        } catch (const ZEBConverterError& error) {
            EXPECT_EQ(error.errorCase(), ZEBConverterError::Case::cancelled);
        } catch (const MediaError& error) {
            EXPECT_EQ(error.code(), MediaError::interrupted);
        }
    }
}

TEST_F(ComparisonTest, EndsWithErrorOfFilm) {
    writeMovie();
    fake::FakeFilm lost = film();
    lost.grab = [](double, const IsCancelled&) -> std::shared_ptr<const Picture> {
        throw MediaError(MediaError::cannotRead, {"error_media_no_picture"});
    };
    EXPECT_THROW(compare(lost), MediaError);
}

TEST(Moments, AreInTheMiddleOfEqualParts) {
    const auto all = [](std::int64_t moments, std::int64_t count) {
        std::vector<std::int64_t> result;
        for (std::int64_t i = 0; i < moments; ++i)
            result.push_back(frameOfMoment(i, moments, count));
        return result;
    };
    EXPECT_THAT(all(1, 1), ElementsAre(0));
    EXPECT_THAT(all(1, 100), ElementsAre(50));
    EXPECT_THAT(all(4, 100), ElementsAre(12, 37, 62, 87));
    EXPECT_THAT(all(5, 5), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(frameOfMoment(999'999'999, 1'000'000'000, 0xFFFFFFFF), 0xFFFFFFFC);
}

}  // namespace
}  // namespace zeb
