#include "media/FilmWriter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Clips.h"
#include "tests/doubles/CountingFile.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using enum FilmFormat;
using namespace std::string_literals;

constexpr int width = 65, height = 47;  // odd, because some formats halve the colour resolution
constexpr int fps = 10, pictureCount = 25, soundRate = 20000;

const FilmLibrary& films() {
    static const auto library = makeFFmpegFilmLibrary(MediaLogging::silent);
    return *library;
}

/// Smooth moving colours as blue, green, red, alpha. Suitable for measuring lossy formats.
Bytes pixelsOf(int picture) {
    Bytes pixels;
    for (int i = 0; i < width * height; ++i) {
        const double angle = 0.07 * (i % width) + 0.05 * (i / width) + 0.3 * picture;
        for (const double phase : {0, 2, 4})
            pixels.push_back(static_cast<std::uint8_t>(127.5 + 127 * std::sin(phase + angle)));
        pixels.push_back(static_cast<std::uint8_t>(i % width));
    }
    return pixels;
}

test::Drawing drawingOf(Bytes pixels) {
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        std::swap(pixels[i], pixels[i + 2]);
    return {width, std::move(pixels)};
}

/// A tone of 440 Hz on the left, with half its amplitude on the right.
Bytes soundOf(double seconds) {
    Bytes samples;
    for (int i = 0; i < static_cast<int>(seconds * soundRate); ++i) {
        for (const int amplitude : {100, 50}) {
            const double value = amplitude * std::sin(2 * 3.14159265358979 * 440 * i / soundRate);
            samples.push_back(static_cast<std::uint8_t>(128 + std::lround(value)));
        }
    }
    return samples;
}

/// Writes a film of `count` pictures, with sound unless it is empty.
void write(WritableFile& file, const FilmParameters& parameters, int count,
           std::span<const std::uint8_t> sound = {}, const std::function<Bytes(int)>& picture = pixelsOf) {
    const auto film = films().beginFilm(file, parameters);
    for (int i = 0; i < count; ++i) {
        film->addSound(
            sound.subspan(sound.size() / static_cast<std::size_t>(count) * static_cast<std::size_t>(i),
                          sound.size() / static_cast<std::size_t>(count)));
        film->addPicture(picture(i));
    }
    film->finish({});
}

TEST(FilmWriter, FilmsReadBackAsWritten) {
    const Bytes sound = soundOf(2.5);
    const struct {
        FilmFormat format;
        const char* name;
        int filmWidth, filmHeight;
        double leastPSNR, soundFrames, soundTolerance;
    } cases[] = {
        {matroska, "written.mkv", width, height, 1000, 50000, 0},
        {mp4, "written.mp4", width + 1, height + 1, 38, 120000, 0.02},
        {webm, "written.webm", width, height, 38, 120000, 0.02},
        {gif, "written.gif", width, height, 30, 0, 0},
    };
    for (const auto& [format, name, filmWidth, filmHeight, leastPSNR, soundFrames, soundTolerance] : cases) {
        SCOPED_TRACE(name);
        const std::string path = test::inClipFolder(name);
        write(*createForWriting(path), {format, width, height, fps, 2, soundRate, false}, pictureCount,
              sound);
        const auto asset = test::open(path);
        const VideoTrack& track = asset->videoTracks().at(0);
        EXPECT_EQ(track.naturalSize.width, filmWidth);
        EXPECT_EQ(track.naturalSize.height, filmHeight);
        EXPECT_NEAR(track.nominalFrameRate, fps, 0.01);
        EXPECT_NEAR(asset->duration(), 2.5, 0.03);
        const auto generator = asset->makeImageGenerator(1, {});
        for (int i = 0; i < pictureCount; ++i) {
            const auto picture = generator->copyImage(test::at((i + 0.5) / fps));
            ASSERT_GE(psnr(drawingOf(pixelsOf(i)), test::draw(*picture, filmWidth, filmHeight)), leastPSNR)
                << i;
        }
        if (format == mp4 || format == webm) {  // the file must state its colour properties
            EXPECT_EQ(
                test::run("ffprobe -v error -select_streams v -of default=nk=1:nw=1 -show_entries "
                          "stream=color_range,color_space,color_transfer,color_primaries,avg_frame_rate " +
                          path),
                "tv\nbt709\niec61966-2-1\nbt709\n10/1\n");
        }
        ASSERT_EQ(asset->soundTracks().size(), soundFrames > 0 ? 1U : 0U);
        if (soundFrames == 0) continue;
        const auto reader = asset->makeSoundReader(0, {});
        ASSERT_TRUE(reader->startReading());
        double frames = 0, error = 0;
        while (const auto buffer = reader->copyNextSampleBuffer()) {
            ASSERT_EQ(buffer->channelsPerFrame, 2);
            for (std::size_t i = 0; i + 1 < buffer->samples.size(); i += 2, ++frames) {
                const double place = frames * soundRate / buffer->sampleRate;
                const auto at = static_cast<std::size_t>(place);
                if (at + 1 >= sound.size() / 2) continue;
                const double part = place - static_cast<double>(at);
                const double expected = (sound[2 * at] * (1 - part) + sound[2 * at + 2] * part - 128) / 128;
                error += std::pow(buffer->samples[i] - expected, 2);
            }
        }
        EXPECT_LE(std::sqrt(error / frames), soundTolerance);
        EXPECT_NEAR(frames, soundFrames, 2100);
    }
}

TEST(FilmWriter, RoundsGIFDelaysWithoutDrift) {
    // Delays are in hundredths of a second, at least two, and rounded without accumulating errors.
    for (const auto& [rate, firstDelays] : {std::pair{30, "34334"}, {25, "44444"}, {60, "23232"}}) {
        const std::string path = test::inClipFolder(std::to_string(rate) + ".gif");
        write(*createForWriting(path), {gif, width, height, rate, 0, 0, true}, rate);
        const std::string bytes = test::contents(path);
        EXPECT_NE(bytes.find("NETSCAPE2.0"), std::string::npos);
        std::string delays;
        int total = 0;
        // Graphic control extensions: 21 F9 04, flags, delay (low byte first).
        for (std::size_t at = 0; (at = bytes.find("\x21\xF9\x04", at + 1)) != std::string::npos;) {
            delays += std::to_string(bytes[at + 4]);
            total += bytes[at + 4];
        }
        EXPECT_EQ(delays.substr(0, 5), firstDelays);
        EXPECT_NEAR(total, 100, 2);
    }
}

TEST(FilmWriter, KeepsFewColoursExactInGIFs) {
    // A palette of 256: red and green in steps.
    Bytes pixels;
    for (int i = 0; i < width * height; ++i) {
        pixels.insert(pixels.end(), {0, static_cast<std::uint8_t>(i % 16 * 17),
                                     static_cast<std::uint8_t>(i / 16 % 16 * 17), 255});
    }
    const std::string path = test::inClipFolder("few.gif");
    write(*createForWriting(path), {gif, width, height, fps, 0, 0, false}, 3, {},
          [&](int) { return pixels; });
    EXPECT_EQ(test::draw(*test::images(path)->copyImage(test::at(0)), width, height), drawingOf(pixels));
}

TEST(FilmWriter, ReportsUnsupportedSizeInOneLine) {
    try {
        write(*createForWriting(test::inClipFolder("huge.mp4")), {mp4, 60000, 60000, fps, 0, 0, false}, 0);
        FAIL() << "a film of 60000 x 60000";
    } catch (const FilmError& error) {
        EXPECT_EQ(error.code(), FilmError::cannotEncode);
        EXPECT_STREQ(error.what(), "No available encoder accepts MP4 films of 60000x60000");
    }
}

TEST(FilmWriter, ReportsFullDiskAsFileError) {
    for (const FilmFormat format : {mp4, matroska, webm, gif}) {
        for (const std::uint64_t room : {0, 10, 2000}) {
            fake::CountingFile disk(room);
            EXPECT_THROW(write(disk, {format, width, height, fps, 0, 0, false}, pictureCount), FileError)
                << static_cast<int>(format) << " " << room;
        }
    }
}

TEST(PNG, KeepsPixelsAndTransparencyExactly) {
    // Opaque, half transparent (premultiplied), transparent, and a colour that exceeds its alpha.
    const Bytes pixels = {10, 20, 255, 255, 0, 64, 128, 128, 0, 0, 0, 0, 0, 0, 200, 100};
    const std::string expected = "\xFF\x14\x0A\xFF\xFF\x80\0\x80\0\0\0\0\xFF\0\0\x64"s;
    for (const int count : {1, 4}) {
        const auto size = static_cast<std::size_t>(count) * 4;
        const Bytes bytes = films().encodePNG(std::span(pixels).first(size), count, 1);
        const std::string png(bytes.begin(), bytes.end());
        const std::string path = test::stored(std::to_string(count) + ".png", png);
        EXPECT_EQ(test::run("ffmpeg -v error -i " + path + " -f rawvideo -pix_fmt rgba -"),
                  expected.substr(0, size));
        EXPECT_EQ(png[25], count == 1 ? 2 : 6);  // colour type: RGB, RGBA
        EXPECT_NE(png.find("sRGB"), std::string::npos);
    }
}

}  // namespace
}  // namespace zeb
