#include "conversion/export/ExportRun.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "conversion/export/ExportError.h"
#include "conversion/plan/OutputName.h"
#include "format/ZEBErrors.h"
#include "format/ZEBWriter.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Kind = ExportSettings::Kind;
using ::testing::ElementsAre;

constexpr int fps = 4, seconds = 3, channels = 2, soundBytes = 20000 * channels;

/// A frame record of one pixel without a header. Its red value is the frame number.
Bytes recordOf(int frame) {
    return {0, 0, static_cast<std::uint8_t>(frame), 255};
}

/// Stores pictures and sound instead of encoding them.
class FakeFilms final : public FilmLibrary {
public:
    struct Taken {
        std::vector<int> reds;  ///< red value of the first pixel of each picture
        std::vector<int> widths;
        std::vector<Bytes> pictures;
        Bytes sound;
        FilmParameters parameters;
    };

    std::unique_ptr<FilmWriter> beginFilm(WritableFile& file,
                                          const FilmParameters& parameters) const override {
        taken.parameters = parameters;
        return std::make_unique<Film>(file, taken);
    }
    Bytes encodePNG(std::span<const std::uint8_t> pixels, int width, int) const override {
        taken.reds.push_back(pixels[2]);
        taken.widths.push_back(width);
        taken.pictures.emplace_back(pixels.begin(), pixels.end());
        return Bytes(10, 'p');
    }
    mutable Taken taken;

private:
    struct Film final : FilmWriter {
        Film(WritableFile& f, Taken& t) : file(f), taken(t) {}
        void addPicture(std::span<const std::uint8_t> pixels) override {
            taken.reds.push_back(pixels[2]);
            taken.pictures.emplace_back(pixels.begin(), pixels.end());
        }
        void addSound(std::span<const std::uint8_t> samples) override {
            taken.sound.insert(taken.sound.end(), samples.begin(), samples.end());
        }
        void finish(const std::function<bool()>&) override { file.write(Bytes(100, 'f')); }
        std::uint64_t bytesWritten() const override { return 100; }
        KeyedText description() const override { return {"a fake"}; }
        WritableFile& file;
        Taken& taken;
    };
};

class Export : public ::testing::Test {
protected:
    /// Writes a movie whose frame k shows k, unless `records` has another record for it. Sound bytes count
    /// up.
    void writeMovie(const std::map<int, Bytes>& records = {}, bool isFinished = true, int shorterSound = 0) {
        fs::remove(m_movie);
        ZEBWriter writer(m_movie, {"", 1, 1, fps, 32, fps * seconds, seconds, channels, true});
        m_sound.clear();
        for (int second = 0; second < seconds; ++second) {
            Bytes sound;
            for (int i = 0; i < soundBytes - (second == 1 ? shorterSound : 0); ++i)
                sound.push_back(static_cast<std::uint8_t>((second * soundBytes + i) % 251));
            std::vector<Bytes> frames;
            for (int frame = second * fps; frame < (second + 1) * fps; ++frame)
                frames.push_back(records.contains(frame) ? records.at(frame) : recordOf(frame));
            writer.writeSecond(sound,
                               std::vector<std::span<const std::uint8_t>>(frames.begin(), frames.end()));
            m_sound.insert(m_sound.end(), sound.begin(), sound.end());
        }
        if (isFinished) writer.finish();
        writer.close();
    }

    void overwrite(std::uint64_t offset, const Bytes& bytes) const {
        std::fstream file(m_movie, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(offset));
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::uint64_t blockOffset(int second) const {
        constexpr std::uint64_t header = 8 + 2 + 24 + 4 * seconds, block = 4 + 4 + soundBytes + fps * 8;
        return header + static_cast<std::uint64_t>(second) * block;
    }

    ExportResult run(const ExportSettings& settings, const std::string& output = "out") {
        m_films.taken = {};
        m_warnings.clear();
        m_log.clear();
        m_plans.clear();
        m_advances.clear();
        return ExportRun(m_films).run(
            m_movie, m_folder.file(output), settings,
            {.logged = [this](const std::string& line) { m_log.push_back(line); },
             .warned = [this](const std::string& line) { m_warnings.push_back(line); },
             .isCancelled = [this] { return m_polls-- <= 0; },
             .planned = [this](const ExportPlan& plan) { m_plans.push_back(plan); },
             .advanced = [this](std::int64_t frames,
                                std::uint64_t bytes) { m_advances.emplace_back(frames, bytes); }});
    }
    std::vector<int> redsOf(const ExportSettings& settings) {
        run(settings);
        fs::remove(m_folder.file("out"));
        return m_films.taken.reds;
    }
    test::TemporaryFolder m_folder;
    std::string m_movie = m_folder.file("a.zeb");
    Bytes m_sound;
    FakeFilms m_films;
    std::vector<std::string> m_warnings, m_log;
    std::vector<ExportPlan> m_plans;
    std::vector<std::pair<std::int64_t, std::uint64_t>> m_advances;
    int m_polls = 1'000'000;  ///< number of checks before the run is cancelled
};

TEST_F(Export, CutsPicturesAndSoundAtSameTime) {
    const struct {
        std::int64_t from;
        std::optional<std::int64_t> to;
        int first, end;
    } cases[] = {{0, 1, 0, 1},
                 {250'000, 1'250'000, 1, 5},
                 {1'499'999, {}, 5, 12},
                 {2'000'000, 1'000'000'000'000, 8, 12}};
    for (const bool isFinished : {true, false}) {
        writeMovie({}, isFinished);
        for (const auto& test : cases) {
            const std::vector<int> reds = redsOf({.from = test.from, .to = test.to});
            ASSERT_EQ(reds.size(), static_cast<std::size_t>(test.end - test.first));
            EXPECT_EQ(reds.front(), test.first);
            EXPECT_EQ(m_films.taken.sound, Bytes(m_sound.begin() + test.first * soundBytes / fps,
                                                 m_sound.begin() + test.end * soundBytes / fps));
        }
    }
}

TEST_F(Export, RepeatsPictureBeforeDamage) {
    const Bytes damaged = {1, 2, 3};
    writeMovie({{0, damaged}, {5, {}}, {6, damaged}});
    EXPECT_THAT(redsOf({}), ElementsAre(0, 1, 2, 3, 4, 4, 4, 7, 8, 9, 10, 11));
    EXPECT_THAT(m_warnings, ElementsAre("frame 0 cannot be decoded; black is shown instead",
                                        "frames 5 to 6 cannot be decoded; the previous picture is repeated"));
    EXPECT_THROW(run({.kind = Kind::picture, .frame = 5}), ExportError) << "alone it has no picture before";
    EXPECT_THAT(m_folder.names(), ElementsAre("a.zeb"));
    // The size field of a record exceeds its block.
    writeMovie();
    overwrite(blockOffset(1) + 8 + soundBytes + 8, {0xFF, 0xFF, 0xFF, 0xFF});
    EXPECT_THAT(redsOf({}), ElementsAre(0, 1, 2, 3, 4, 4, 4, 4, 8, 9, 10, 11));
    EXPECT_EQ(m_films.taken.sound, m_sound);
    // The length of a block is wrong: the index gives the next block.
    writeMovie();
    overwrite(blockOffset(1), {0x7F, 0xFF, 0xFF, 0xFF});
    EXPECT_THAT(redsOf({}), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11));
    EXPECT_EQ(m_films.taken.sound, m_sound);
}

Bytes word(std::uint64_t value) {
    Bytes bytes(4);
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    return bytes;
}

TEST_F(Export, KeepsSoundInTimeDespiteDamage) {
    const auto exported = [this](const ExportSettings& settings) {
        const double length = run(settings).seconds;
        const auto file = test::contents<Bytes>(m_folder.file("out"));
        fs::remove(m_folder.file("out"));
        EXPECT_EQ(static_cast<double>(file.size() - 44), length * soundBytes);
        return Bytes(file.begin() + 44, file.end());
    };
    const auto part = [this](int from, int to) {
        return Bytes(m_sound.begin() + from, m_sound.begin() + to);
    };
    writeMovie();
    // A finished movie ends with its last second. Bytes after it are ignored.
    std::ofstream(m_movie, std::ios::app | std::ios::binary) << std::string(100, '\xFE');
    EXPECT_EQ(exported({.kind = Kind::sound}), m_sound);
    EXPECT_EQ(exported({.kind = Kind::sound, .from = 1'500'000}), part(3 * soundBytes / 2, 3 * soundBytes));

    // A sound size that exceeds its block: one second of sound is read.
    overwrite(blockOffset(1) + 4, word(0x00FFFFFF));
    EXPECT_EQ(exported({.kind = Kind::sound}), m_sound);
    EXPECT_THAT(m_warnings, ElementsAre("the sound of 1 second has the wrong length; it is cut or "
                                        "padded with silence"));
    EXPECT_EQ(redsOf({}).size(), 12U);

    // A second is overwritten, then also its index entry.
    writeMovie();
    overwrite(blockOffset(1), Bytes(4 + 4 + soundBytes, 0xFE));
    Bytes silent = m_sound;
    std::fill(silent.begin() + soundBytes, silent.begin() + 2 * soundBytes, std::uint8_t{128});
    Bytes heard = exported({.kind = Kind::sound});
    ASSERT_EQ(heard.size(), silent.size());
    EXPECT_EQ(Bytes(heard.begin() + 2 * soundBytes, heard.end()), part(2 * soundBytes, 3 * soundBytes));
    overwrite(blockOffset(0), Bytes(4 + 4 + soundBytes, 0xFE));
    overwrite(8 + 2 + 24 + 4, word(0));
    heard = exported({.kind = Kind::sound, .from = 1'000'000, .to = 2'500'000});
    EXPECT_EQ(heard, Bytes(silent.begin() + soundBytes, silent.begin() + 5 * soundBytes / 2));
}

TEST_F(Export, ExportsAllFramesOfTornMovie) {
    writeMovie({}, false);
    for (const int frames : {3, 2, 0}) {  // of the last second, and a part of the next one
        fs::resize_file(m_movie, blockOffset(2) + 8 + soundBytes + 8U * static_cast<unsigned>(frames) + 7);
        const std::vector<int> reds = redsOf({});
        EXPECT_EQ(reds.size(), 8U + static_cast<unsigned>(frames));
        EXPECT_EQ(m_films.taken.sound.size(), reds.size() * soundBytes / fps);
    }
    fs::resize_file(m_movie, blockOffset(2) + 8 + 5);
    EXPECT_EQ(run({.kind = Kind::sound}).bytes, 44U + 2 * soundBytes + 5);
    fs::remove(m_folder.file("out"));
    fs::resize_file(m_movie, blockOffset(0) + 8 + 5);
    EXPECT_EQ(run({.kind = Kind::sound}).bytes, 44U + 5) << "sound without a frame";
    fs::remove(m_folder.file("out"));
    EXPECT_THROW(run({.kind = Kind::sound, .from = 1}), ExportError);
    EXPECT_THROW(run({}), ExportError);
    fs::resize_file(m_movie, blockOffset(0));
    EXPECT_THROW(run({}), ExportError);
    fs::resize_file(m_movie, 20);
    EXPECT_THROW(run({}), ZEBFormatError);
    EXPECT_THAT(m_folder.names(), ElementsAre("a.zeb"));
}

TEST_F(Export, FillsShortSoundWithSilence) {
    writeMovie({}, true, 1000);
    run({});
    Bytes expected = m_sound;
    expected.insert(expected.begin() + 2 * soundBytes - 1000, 1000, 128);
    EXPECT_EQ(m_films.taken.sound, expected);
    EXPECT_EQ(m_warnings.size(), 1U);
    EXPECT_TRUE(m_films.taken.parameters.loops);
    EXPECT_EQ(m_films.taken.parameters.picturesPerSecond, fps);
    EXPECT_EQ(test::contents<Bytes>(m_folder.file("out")), Bytes(100, 'f'));
}

TEST_F(Export, WritesExactBytesOfSoundPart) {
    writeMovie();
    run({.kind = Kind::sound, .from = 999'950, .to = 1'000'100});
    Bytes expected = {'R', 'I', 'F', 'F', 42, 0, 0,   0,   'W', 'A',  'V',  'E', 'f', 'm',  't',
                      ' ', 16,  0,   0,   0,  1, 0,   2,   0,   0x20, 0x4E, 0,   0,   0x40, 0x9C,
                      0,   0,   2,   0,   8,  0, 'd', 'a', 't', 'a',  6,    0,   0,   0};
    expected.insert(expected.end(), m_sound.begin() + 19999 * 2, m_sound.begin() + 20002 * 2);
    EXPECT_EQ(test::contents<Bytes>(m_folder.file("out")), expected);
}

TEST_F(Export, NumbersPicturesByMovieFrame) {
    writeMovie({{6, {0, 2, 0, 1, 0, 0, 0, 0, 0, 0, 99, 255, 0, 0, 98, 255}}});  // 2 x 1 pixels
    const ExportSettings settings{.kind = Kind::pictures,
                                  .scale = 3,
                                  .from = 1'250'000,
                                  .to = 2'000'000,
                                  .terms = {{}, OutputTerms::MissingFolder::make}};
    EXPECT_EQ(run(settings, "new/f%03d.png").files, 3);
    EXPECT_THAT(m_films.taken.reds, ElementsAre(5, 99, 7));
    EXPECT_THAT(m_films.taken.widths, ElementsAre(3, 6, 3));
    for (const char* name : {"new/f005.png", "new/f006.png", "new/f007.png"})
        EXPECT_TRUE(fs::exists(m_folder.file(name))) << name;
    EXPECT_THAT(redsOf({.kind = Kind::picture, .at = 2'999'999}), ElementsAre(11));
    EXPECT_THROW(run({.kind = Kind::picture, .at = 3'000'000}), ExportError);
}

TEST_F(Export, CancellingAnywhereLeavesNoFile) {
    writeMovie();
    test::store(m_folder.file("out"), "precious");
    for (const Kind kind : {Kind::film, Kind::sound, Kind::pictures}) {
        const std::string output = kind == Kind::pictures ? "new/%d" : "out";
        for (int polls = 0;; ++polls) {
            m_polls = polls;
            try {
                run({.kind = kind,
                     .terms = {OutputTerms::Existing::replace, OutputTerms::MissingFolder::make}},
                    output);
                break;
            } catch (const ZEBConverterError& error) {
                ASSERT_EQ(error.errorCase(), ZEBConverterError::Case::cancelled);
            }
            ASSERT_THAT(m_folder.names(), ElementsAre("a.zeb", "out")) << polls;
            ASSERT_EQ(fs::file_size(m_folder.file("out")), 8U) << polls;
            ASSERT_LT(polls, 200);
        }
        m_polls = 1'000'000;
        test::store(m_folder.file("out"), "precious");
        fs::remove_all(m_folder.file("new"));
    }
}

/// A sprite record with 32 bits per pixel whose components count from 1, and the pixels it decodes to.
std::pair<Bytes, Bytes> countedPicture(int width, int height) {
    Bytes record(24), shown;
    record[0] = 2;
    record[1] = 64;
    record[5] = static_cast<std::uint8_t>(width);
    record[7] = static_cast<std::uint8_t>(height);
    record[15] = 12;
    for (int i = 0; i < width * height; ++i) {
        const auto first = static_cast<std::uint8_t>(3 * i + 1),
                   second = static_cast<std::uint8_t>(3 * i + 2),
                   third = static_cast<std::uint8_t>(3 * i + 3);
        record.insert(record.end(), {first, second, third, 0});
        shown.insert(shown.end(), {third, second, first, 255});
    }
    return {record, shown};
}

TEST_F(Export, EnlargesAndFillsPicturesExactly) {
    const auto [wide, wideShown] = countedPicture(3, 2);
    const auto [high, highShown] = countedPicture(2, 3);
    writeMovie({{0, wide}, {1, high}, {2, {7}}});
    // A picture of `columns` x `rows` pixels, enlarged three times and filled with black to `width` x
    // `height`.
    const auto enlarged = [](const Bytes& pixels, int columns, int rows, int width, int height) {
        Bytes result;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 4; ++c) {
                    const bool isInside = x < 3 * columns && y < 3 * rows;
                    const auto place = static_cast<std::size_t>(4 * (y / 3 * columns + x / 3) + c);
                    result.push_back(isInside ? pixels[place] : c == 3 ? 255 : 0);
                }
        return result;
    };
    run({.kind = Kind::pictures, .scale = 3, .to = 500'000}, "f%d.png");
    EXPECT_THAT(m_films.taken.pictures,
                ElementsAre(enlarged(wideShown, 3, 2, 9, 6), enlarged(highShown, 2, 3, 6, 9)));
    run({.scale = 3, .to = 750'000});
    const Bytes filled = enlarged(highShown, 2, 3, 9, 6);
    EXPECT_THAT(m_films.taken.pictures, ElementsAre(enlarged(wideShown, 3, 2, 9, 6), filled, filled));
    EXPECT_EQ(m_warnings.size(), 2U) << "about the size and about the third frame";
    EXPECT_EQ(m_films.taken.parameters.width, 9);
    EXPECT_EQ(m_films.taken.parameters.height, 6);
    fs::remove(m_folder.file("out"));
    run({.from = 250'000, .to = 500'000});
    EXPECT_EQ(m_warnings.size(), 0U);
    // Without a scale, only films of Mode 4 are enlarged.
    for (const auto& [mode, format, scale] : {std::tuple{4, FilmFormat::mp4, 2},
                                              {4, FilmFormat::webm, 2},
                                              {4, FilmFormat::gif, 1},
                                              {32, FilmFormat::mp4, 1}}) {
        overwrite(8 + 2 + 6, {0, static_cast<std::uint8_t>(mode)});
        fs::remove(m_folder.file("out"));
        run({.format = format});
        EXPECT_EQ(m_films.taken.parameters.width, 3 * scale);
        EXPECT_EQ(m_films.taken.parameters.soundChannels, format == FilmFormat::gif ? 0 : 2);
    }
    EXPECT_THROW(run({.kind = Kind::picture, .scale = 100'000, .frame = 0}, "large"), ExportError);
}

TEST_F(Export, ReportsPlanProgressAndWarnings) {
    for (const bool isFinished : {true, false}) {
        writeMovie({{10, {1}}, {11, {1}}}, isFinished);
        run({.kind = Kind::sound, .from = 250'000, .to = 2'000'000});
        fs::remove(m_folder.file("out"));
        ASSERT_EQ(m_plans.size(), 1U);
        EXPECT_EQ(m_plans[0].allFrames, 12);
        EXPECT_EQ(m_plans[0].first, 1);
        EXPECT_EQ(m_plans[0].frames, 7);
        EXPECT_EQ(std::pair(m_plans[0].width, m_plans[0].height), std::pair(1, 1));
        EXPECT_THAT(m_advances, ElementsAre(std::pair(3, 44U + 30000U), std::pair(7, 44U + 70000U)));
        EXPECT_EQ(m_log.size(), isFinished ? 0U : 1U);
        EXPECT_TRUE(isFinished || m_log[0].find("12") != std::string::npos);
    }
    run({.from = 2'250'000});
    EXPECT_THAT(m_advances, ElementsAre(std::pair(1, 100U), std::pair(2, 100U), std::pair(3, 100U)));
    ASSERT_EQ(m_warnings.size(), 1U) << "about both frames at the end";
    EXPECT_NE(m_warnings[0].find("10 to 11"), std::string::npos) << m_warnings[0];
    run({.kind = Kind::pictures, .from = 2'000'000, .to = 2'500'000}, "f%d.png");
    EXPECT_EQ(m_plans.at(0).frames, 2);
    EXPECT_THAT(m_advances, ElementsAre(std::pair(1, 10U), std::pair(2, 20U)));
}

TEST_F(Export, ReportsMissingFrameTimeOrSound) {
    writeMovie();
    const auto text = [this](const ExportSettings& settings) -> std::string {
        try {
            run(settings);
        } catch (const ExportError& error) {
            return error.what();
        }
        return {};
    };
    const std::string end = ": the movie has 12 frames (3 s)";
    EXPECT_EQ(text({.kind = Kind::picture, .frame = 12}), "frame 12 is past the end" + end);
    EXPECT_EQ(text({.kind = Kind::picture, .at = 3'000'000}), "3 s is past the end" + end);
    EXPECT_EQ(text({.from = 3'500'000}), "3.5 s is past the end" + end);
    EXPECT_EQ(text({.from = 10'000'001}), "10.000001 s is past the end" + end);
    EXPECT_EQ(text({.from = std::numeric_limits<std::int64_t>::max()}),
              "9223372036854.775807 s is past the end" + end);
    EXPECT_EQ(text({.kind = Kind::picture, .frame = 11}), "");
    overwrite(8 + 2 + 18, {0, 0});
    EXPECT_EQ(text({.kind = Kind::sound}), "The movie has no sound");
    overwrite(8 + 2 + 18, {0, 3});
    run({}, "three");
    EXPECT_EQ(m_films.taken.parameters.soundChannels, 0);
    EXPECT_EQ(m_warnings.size(), 1U);
}

TEST(NumberedName, AcceptsExactlyOnePlaceholder) {
    const std::pair<const char*, const char*> cases[] = {
        {"%d", "42"}, {"a%1db", "a42b"}, {"100%-%3d.png", "100%-042.png"},
        {"%x", ""},   {"%123d", ""},     {"%d-%d.png", ""},
        {"%", ""},    {"%05", ""},       {"none.png", ""},
    };
    for (const auto& [pattern, expected] : cases) {
        const auto name = NumberedName::parse(pattern);
        EXPECT_EQ(name ? name->with(42) : "", expected) << pattern;
    }
}

}  // namespace
}  // namespace zeb
