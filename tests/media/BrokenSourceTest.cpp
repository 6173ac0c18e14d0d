#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>

#include "Clips.h"
#include "media/demuxing/Demuxer.h"
#include "media/ffmpeg/Handles.h"
#include "media/ffmpeg/Libraries.h"
#include "platform/files/FileHandle.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using test::clip;
using test::numberedFrames;
using test::stored;
using testing::HasSubstr;

/// A video of 8 s with a tone, in the container that the extension states.
std::string soundFilm(const std::string& name, const std::string& options = "") {
    clip("eight-seconds.mkv",
         numberedFrames(200) + "-f lavfi -i sine=d=8:r=48000 -map 0 -map 1 -c:v ffv1 -c:a pcm_s16le");
    const bool isWebm = name.ends_with("webm");
    const std::string coding = isWebm ? "-c:v libvpx -cpu-used 8 -c:a libopus " : test::h264 + "-c:a aac ";
    return clip(name, "-i @eight-seconds.mkv " + coding + options);
}

/// Stores the first half of the file. Returns its path.
std::string halved(const std::string& path) {
    const std::string bytes = test::contents(path);
    return stored("half-" + fs::path(path).filename().string(), bytes.substr(0, bytes.size() / 2));
}

TEST(BrokenOffFilm, EndsWithPicturesAndReportsStatedEnd) {
    const struct {
        const char* name;
        bool statesItsEnd;
        const char* options = "";
    } cases[] = {
        {"complete.mp4", true, "-movflags faststart"},
        {"complete.mov", true, "-movflags faststart"},
        {"complete.mkv", true},
        {"untagged.mkv", true, "-metadata:s:v DURATION= -f matroska -write_crc32 0"},
        {"cues-first.mkv", true, "-reserve_index_space 5000"},
        {"complete.webm", true},
        {"complete.avi", true},
        {"complete.flv", true},
        {"complete.ts", false},
        {"complete.mpg", false, "-c:v mpeg2video -c:a mp2 -b:v 1M"},
        {"complete.h264", false, "-an"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = soundFilm(c.name, c.options);
        const TrackEnd whole = test::open(path)->videoTracks().at(0).end;
        EXPECT_NEAR(whole.time, 8, 0.15);
        EXPECT_EQ(whole.stated, std::nullopt);

        const auto cut = test::open(halved(path));
        const TrackEnd& end = cut->videoTracks().at(0).end;
        EXPECT_TRUE(end.time > 2.5 && end.time < 5.5) << end.time;
        EXPECT_EQ(end.stated.has_value(), c.statesItsEnd);
        EXPECT_NEAR(end.stated.value_or(8), 8, 0.15);
        EXPECT_LT(cut->duration(), 6);
        // If the container states packet sizes, an incomplete packet is not counted.
        const auto generator = cut->makeImageGenerator(2, {});
        EXPECT_GT(test::numberAt(*generator, end.time - (c.statesItsEnd ? 0.05 : 0.4)), 50);
    }
}

TEST(BrokenOffFilm, LongerSoundAloneIsNoBreak) {
    for (const std::string name : {"mp4", "mkv", "avi", "flv"}) {
        const auto asset = test::open(
            clip("sound-goes-on." + name,
                 numberedFrames(50) + "-f lavfi -i sine=d=6 -map 0 -map 1 " + test::h264 + "-c:a aac"));
        EXPECT_NEAR(asset->videoTracks().at(0).end.time, 2, 0.15) << name;
        EXPECT_EQ(asset->videoTracks().at(0).end.stated, std::nullopt) << name;
        EXPECT_NEAR(asset->soundTracks().at(0).end.time, 6, 0.15) << name;
        EXPECT_EQ(asset->soundTracks().at(0).end.stated, std::nullopt) << name;
    }
}

TEST(BrokenOffFilm, ReportsStatedEndOfCutSound) {
    const std::string path =
        clip("sound-later.mp4", numberedFrames(50) + "-f lavfi -i sine=d=6 -map 0 -map 1 " + test::h264 +
                                    "-c:a pcm_s16le -f mov -movflags faststart");
    const std::string bytes = test::contents(path);
    constexpr std::size_t twoSeconds = 2 * 44100 * 2;
    const auto cut = test::open(stored("sound-cut.mp4", bytes.substr(0, bytes.size() - twoSeconds)));
    EXPECT_NEAR(cut->videoTracks().at(0).end.time, 2, 0.01);
    EXPECT_EQ(cut->videoTracks().at(0).end.stated, std::nullopt);
    EXPECT_NEAR(cut->soundTracks().at(0).end.time, 4, 0.1);
    EXPECT_NEAR(cut->soundTracks().at(0).end.stated.value_or(0), 6, 0.01);
}

TEST(BrokenOffFilm, SparsePicturesAreNoBreak) {
    for (const std::string name : {"slides.mkv", "slides.mp4", "slides.ts"}) {
        for (const int count : {2, 3}) {
            const auto asset = test::open(clip(
                std::to_string(count) + name,
                numberedFrames(count, "1/15") + "-f lavfi -i sine=d=40 -map 0 -map 1 -c:v mpeg4 -c:a aac"));
            const TrackEnd& end = asset->videoTracks().at(0).end;
            EXPECT_TRUE(end.time > (count - 1) * 15 && end.time < count * 15 + 0.2)
                << name << " " << end.time;
            EXPECT_EQ(end.stated, std::nullopt) << name;
        }
    }
}

/// A file in which the n-th read and all later ones fail.
class FailingFile final : public ReadableFile {
public:
    FailingFile(const std::string& path, int allowed) : m_file(openForReading(path)), m_allowed(allowed) {}

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        if (m_allowed-- <= 0) throw FileError("film", EIO);
        return m_file->readAt(offset, buffer);
    }
    std::uint64_t size() override { return m_file->size(); }
    int allowed() const { return m_allowed; }

private:
    std::unique_ptr<ReadableFile> m_file;
    int m_allowed;
};

/// Number of packets read, and the error that ended reading.
struct ReadResult {
    int packets = 0;
    std::optional<MediaError> error;
};

ReadResult readAll(const std::string& path, int allowedReads) {
    ReadResult result;
    try {
        ffmpeg::Demuxer demuxer(std::make_unique<FailingFile>(path, allowedReads), path, {});
        const ffmpeg::Packet packet = ffmpeg::makePacket();
        for (; demuxer.read(*packet); ++result.packets)
            av_packet_unref(packet.get());
    } catch (const MediaError& error) {
        result.error = error;
    }
    return result;
}

TEST(ReadError, IsNeverTakenForEndOfFile) {
    for (const std::string name : {"complete.mp4", "complete.mkv", "complete.avi", "complete.ts",
                                   "complete.webm", "complete.flv", "complete.h264"}) {
        const std::string path = soundFilm(name, name == "complete.h264" ? "-an" : "");
        const int all = readAll(path, 1'000'000).packets;
        ASSERT_GT(all, 150) << name;
        int allowed = 0;
        for (;; ++allowed) {
            const ReadResult result = readAll(path, allowed);
            if (!result.error) {
                EXPECT_EQ(result.packets, all) << name;
                break;
            }
            ASSERT_EQ(result.error->code(), MediaError::cannotRead) << name << " " << allowed;
            ASSERT_THAT(result.error->what(), HasSubstr("Input/output error"));
        }
        EXPECT_GT(allowed, 3) << name;
    }
}

TEST(ShrinkingFile, FailsAllLaterReads) {
    const auto errorOf = [](const auto& action) -> std::optional<int> {
        try {
            action();
        } catch (const MediaError& error) {
            EXPECT_THAT(error.what(), HasSubstr("shorter"));
            return error.code();
        }
        return {};
    };
    const std::string film = clip("large.mp4",
                                  "-f lavfi -i testsrc2=s=640x360:r=25:d=8 -f lavfi -i sine=d=8 "
                                  "-c:v mpeg4 -q:v 2 -c:a aac -movflags faststart");
    const std::string path = test::inClipFolder("shrinking.mp4");
    const auto again = [&] {
        fs::copy_file(film, path, fs::copy_options::overwrite_existing);
        return test::open(path);
    };
    for (const std::uintmax_t size : {std::uintmax_t{0}, fs::file_size(film) / 2}) {
        auto asset = again();
        auto generator = asset->makeImageGenerator(1, {});
        auto sound = asset->makeSoundReader(0, {});
        ASSERT_TRUE(sound->startReading());
        generator->copyImage(test::at(0));
        fs::resize_file(path, size);
        EXPECT_EQ(errorOf([&] {
                      for (int i = 0; i < 200; ++i)
                          generator->copyImage(test::at(i * 0.04));
                  }),
                  MediaError::cannotRead);
        EXPECT_EQ(errorOf([&] {
                      while (sound->copyNextSampleBuffer()) {
                      }
                  }),
                  MediaError::cannotRead);
        // Readers opened after the truncation fail, too.
        EXPECT_EQ(errorOf([&] { asset->makeImageGenerator(1, {}); }), MediaError::cannotRead);
        EXPECT_EQ(errorOf([&] { asset->makeSoundReader(0, {}); }), MediaError::cannotRead);
    }
}

}  // namespace
}  // namespace zeb
