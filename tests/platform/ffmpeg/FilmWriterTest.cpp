#include "platform/FilmWriter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Clips.h"
#include "platform/ffmpeg/FFmpegFilmLibrary.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int width = 65, height = 47;  // odd, for formats that halve the colour
constexpr int fps = 10, pictureCount = 25;
constexpr int soundRate = 20000;

const FilmLibrary& films() {
    static const auto library = makeFFmpegFilmLibrary(MediaLogging::silent);
    return *library;
}

/// Blue, green, red, alpha: smooth colours that move, so that formats with loss can be measured.
Bytes pixelsOf(int picture) {
    Bytes pixels;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto wave = [&](double phase) {
                return static_cast<std::uint8_t>(127.5 +
                                                 127 * std::sin(phase + 0.07 * x + 0.05 * y + 0.3 * picture));
            };
            pixels.insert(pixels.end(), {wave(0), wave(2), wave(4), static_cast<std::uint8_t>(x)});
        }
    }
    return pixels;
}

/// A tone of 440 Hz on the left and its half on the right.
Bytes soundOf(double seconds) {
    Bytes samples;
    for (int i = 0; i < static_cast<int>(seconds * soundRate); ++i) {
        const double value = 100 * std::sin(2 * 3.14159265358979 * 440 * i / soundRate);
        samples.push_back(static_cast<std::uint8_t>(128 + std::lround(value)));
        samples.push_back(static_cast<std::uint8_t>(128 + std::lround(value / 2)));
    }
    return samples;
}

std::string writeFilm(const std::string& name, FilmParameters parameters, const Bytes& sound) {
    const std::string path = test::clipFolder() + "/written-" + name;
    const auto file = createForWriting(path);
    const auto film = films().beginFilm(*file, parameters);
    const std::size_t perPicture = static_cast<std::size_t>(soundRate / fps * 2);
    for (int i = 0; i < pictureCount; ++i) {
        film->addSound(std::span(sound).subspan(static_cast<std::size_t>(i) * perPicture, perPicture));
        film->addPicture(pixelsOf(i));
    }
    film->finish({});
    EXPECT_EQ(film->bytesWritten(), test::contents(path).size());
    return path;
}

/// The signal's distance from its noise in dB over the area that both have.
double psnr(const Bytes& bgra, const Bytes& rgba, int rgbaWidth) {
    double error = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                const double one = bgra[static_cast<std::size_t>((y * width + x) * 4 + 2 - c)];
                const double other = rgba[static_cast<std::size_t>((y * rgbaWidth + x) * 4 + c)];
                error += (one - other) * (one - other);
            }
        }
    }
    return error == 0 ? 1000 : 10 * std::log10(255 * 255 / (error / (width * height * 3)));
}

struct FormatCase {
    FilmFormat format;
    const char* name;
    int filmWidth, filmHeight;
    double leastPSNR;
    bool hasSound;
    double soundTolerance;
};

TEST(FilmWriter, WritesFilmsThatReadBackAsTheyWere) {
    const Bytes sound = soundOf(2.5);
    for (const FormatCase& test : {
             FormatCase{FilmFormat::matroska, "film.mkv", width, height, 1000, true, 0},
             {FilmFormat::mp4, "film.mp4", width + 1, height + 1, 38, true, 0.02},
             {FilmFormat::webm, "film.webm", width, height, 38, true, 0.02},
             {FilmFormat::gif, "film.gif", width, height, 30, false, 0},
         }) {
        SCOPED_TRACE(test.name);
        const std::string path =
            writeFilm(test.name, {test.format, width, height, fps, 2, soundRate, false}, sound);
        const auto asset = test::open(path);
        ASSERT_EQ(asset->videoTracks().size(), 1U);
        EXPECT_EQ(asset->videoTracks()[0].naturalSize.width, test.filmWidth);
        EXPECT_EQ(asset->videoTracks()[0].naturalSize.height, test.filmHeight);
        EXPECT_NEAR(asset->videoTracks()[0].nominalFrameRate, fps, 0.01);
        EXPECT_NEAR(asset->duration(), 2.5, 0.03);
        const auto generator = asset->makeImageGenerator(1, {});
        for (int i = 0; i < pictureCount; ++i) {
            const auto picture = generator->copyImage(test::at((i + 0.5) / fps));
            const Bytes shown = test::draw(*picture, test.filmWidth, test.filmHeight);
            ASSERT_GE(psnr(pixelsOf(i), shown, test.filmWidth), test.leastPSNR) << i;
        }
        ASSERT_EQ(asset->soundTracks().size(), test.hasSound ? 1U : 0U);
        if (!test.hasSound) continue;
        const auto reader = asset->makeSoundReader(0, {});
        ASSERT_TRUE(reader->startReading());
        std::size_t frames = 0;
        double error = 0;
        while (const auto buffer = reader->copyNextSampleBuffer()) {
            ASSERT_EQ(buffer->channelsPerFrame, 2);
            const double step = soundRate / buffer->sampleRate;
            for (std::size_t i = 0; i + 1 < buffer->samples.size(); i += 2, ++frames) {
                const double place = static_cast<double>(frames) * step;
                const auto at = static_cast<std::size_t>(place);
                if (at + 1 >= sound.size() / 2) continue;
                const double part = place - static_cast<double>(at);
                const double expected = (sound[2 * at] * (1 - part) + sound[2 * at + 2] * part - 128) / 128;
                error += std::pow(buffer->samples[i] - expected, 2);
            }
        }
        EXPECT_LE(std::sqrt(error / static_cast<double>(frames)), test.soundTolerance);
        EXPECT_NEAR(static_cast<double>(frames), test.soundTolerance == 0 ? 50000 : 120000, 2100);
    }
}

TEST(FilmWriter, TellsPlayersHowToReadItsColours) {
    const Bytes sound = soundOf(2.5);
    for (const char* name : {"colours.mp4", "colours.webm"}) {
        const bool isMP4 = std::string(name).ends_with("mp4");
        const std::string path = writeFilm(
            name, {isMP4 ? FilmFormat::mp4 : FilmFormat::webm, width, height, fps, 0, soundRate, false},
            sound);
        EXPECT_EQ(
            test::run({"ffprobe", "-v", "error", "-select_streams", "v", "-of", "default=nk=1:nw=1",
                       "-show_entries",
                       "stream=color_range,color_space,color_transfer,color_primaries,avg_frame_rate", path}),
            "tv\nbt709\niec61966-2-1\nbt709\n10/1\n")
            << name;
    }
}

TEST(FilmWriter, KeepsTheClockOfGIFsWithinWhatPlayersShow) {
    struct Case {
        int rate;
        const char* delays;
    };
    // In hundredths of a second, rounded so that no error adds up; never below two of them.
    for (const Case& test : {Case{30, "3\n4\n3\n3\n4\n"}, {25, "4\n4\n4\n4\n4\n"}, {60, "2\n3\n2\n3\n2\n"}}) {
        const std::string path = test::clipFolder() + "/" + std::to_string(test.rate) + ".gif";
        const auto file = createForWriting(path);
        const auto film = films().beginFilm(*file, {FilmFormat::gif, width, height, test.rate, 0, 0, true});
        for (int i = 0; i < test.rate; ++i)
            film->addPicture(pixelsOf(i));
        film->finish({});
        const std::string bytes = test::contents(path);
        EXPECT_NE(bytes.find("NETSCAPE2.0"), std::string::npos);
        std::string delays;
        int total = 0, count = 0;
        // Graphic control extensions: 21 F9 04, flags, delay (low byte first).
        for (std::size_t at = bytes.find("\x21\xF9\x04"); at != std::string::npos;
             at = bytes.find("\x21\xF9\x04", at + 1)) {
            const int delay = static_cast<unsigned char>(bytes[at + 4]);
            total += delay;
            if (count++ < 5) delays += std::to_string(delay) + "\n";
        }
        EXPECT_EQ(delays, test.delays);
        EXPECT_NEAR(total, 100, 2);
    }
}

TEST(FilmWriter, KeepsFewColoursExactInGIFs) {
    // A palette of 256: red and green in steps.
    Bytes pixels;
    for (int i = 0; i < width * height; ++i) {
        pixels.insert(pixels.end(), {0, static_cast<std::uint8_t>(i % 16 * 17),
                                     static_cast<std::uint8_t>(i / 16 % 16 * 17), 0});
    }
    const std::string path = test::clipFolder() + "/few.gif";
    const auto file = createForWriting(path);
    const auto film = films().beginFilm(*file, {FilmFormat::gif, width, height, fps, 0, 0, false});
    for (int i = 0; i < 3; ++i)
        film->addPicture(pixels);
    film->finish({});
    const auto picture = test::open(path)->makeImageGenerator(1, {})->copyImage(test::at(0));
    EXPECT_EQ(psnr(pixels, test::draw(*picture, width, height), width), 1000);
}

TEST(FilmWriter, GivesUpWithOneLine) {
    const std::string path = test::clipFolder() + "/huge.mp4";
    const auto file = createForWriting(path);
    try {
        films().beginFilm(*file, {FilmFormat::mp4, 60000, 60000, fps, 0, 0, false});
        FAIL() << "a film of 60000 x 60000";
    } catch (const FilmError& error) {
        EXPECT_EQ(error.code(), FilmError::cannotEncode);
        EXPECT_STREQ(error.what(), "No encoder here takes MP4 films of 60000x60000");
    }
}

/// A disk that is full after so many bytes.
class FullDisk final : public WritableFile {
public:
    explicit FullDisk(std::uint64_t room) : m_room(room) {}
    void seek(std::uint64_t offset) override { m_position = offset; }
    std::uint64_t seekToEnd() override { return m_position; }
    void write(std::span<const std::span<const std::uint8_t>> pieces) override {
        for (const auto piece : pieces)
            m_position += piece.size();
        if (m_position > m_room) throw FileError("disk", ENOSPC);
    }
    void truncate(std::uint64_t) override {}
    void synchronise() override {}
    void close() override {}

private:
    std::uint64_t m_room;
    std::uint64_t m_position = 0;
};

TEST(FilmWriter, PassesTheDisksErrorsOn) {
    for (const FilmFormat format :
         {FilmFormat::mp4, FilmFormat::matroska, FilmFormat::webm, FilmFormat::gif}) {
        for (const std::uint64_t room : {0, 10, 2000}) {
            FullDisk disk(room);
            EXPECT_THROW(
                {
                    const auto film = films().beginFilm(disk, {format, width, height, fps, 0, 0, false});
                    for (int i = 0; i < pictureCount; ++i)
                        film->addPicture(pixelsOf(i));
                    film->finish({});
                },
                FileError)
                << static_cast<int>(format) << " " << room;
        }
    }
}

TEST(PNG, KeepsPixelsAndTransparencyExactly) {
    // Opaque, half transparent (multiplied by alpha), transparent, a colour above its alpha.
    const Bytes pixels = {10, 20, 255, 255, 0, 64, 128, 128, 0, 0, 0, 0, 0, 0, 200, 100};
    for (const int count : {1, 4}) {
        const Bytes png =
            films().encodePNG(std::span(pixels).first(static_cast<std::size_t>(count) * 4), count, 1);
        const std::string path = test::clipFolder() + "/" + std::to_string(count) + ".png";
        test::store(path, std::string(png.begin(), png.end()));
        const std::string raw =
            test::run({"ffmpeg", "-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgba", "pipe:1"});
        const Bytes expected = {255, 20, 10, 255, 255, 128, 0, 128, 0, 0, 0, 0, 255, 0, 0, 100};
        EXPECT_EQ(Bytes(raw.begin(), raw.end()), Bytes(expected.begin(), expected.begin() + count * 4));
        EXPECT_EQ(png[25], count == 1 ? 2 : 6);  // colour type: RGB, RGBA
        EXPECT_NE(std::string(png.begin(), png.end()).find("sRGB"), std::string::npos);
    }
}

}  // namespace
}  // namespace zeb
