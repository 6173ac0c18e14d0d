#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>

#include "Clips.h"
#include "platform/base/Error.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using test::clip;
using test::inClipFolder;
using test::numberedFrames;
using test::stored;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The reason why a file cannot be opened. Empty if it can be opened.
std::string refusal(const std::string& path) {
    try {
        test::open(path);
        return "";
    } catch (const MediaError& error) {
        EXPECT_EQ(error.code(), MediaError::cannotOpen);
        EXPECT_THAT(error.what(), Not(HasSubstr(inClipFolder("")))) << "the caller knows the path";
        return *error.what() == '\0' ? "refused without a text" : error.what();
    }
}

TEST(Opening, RejectsNonVideosAndPlaylists) {
    fs::create_directory(inClipFolder("folder.mp4"));
    ASSERT_EQ(::mkfifo(inClipFolder("pipe.mp4").c_str(), 0600), 0);
    EXPECT_THAT(refusal(inClipFolder("missing.mp4")), HasSubstr("No such file"));
    EXPECT_THAT(refusal(inClipFolder("folder.mp4")), HasSubstr("directory"));
    EXPECT_THAT(refusal(inClipFolder("pipe.mp4")), Not(IsEmpty()));
    EXPECT_THAT(refusal("/dev/zero"), Not(IsEmpty()));
    EXPECT_THAT(refusal(stored("empty.mp4", "")), HasSubstr("empty"));
    EXPECT_THAT(refusal(clip("still001.png", "-f lavfi -i color=red:s=48x48 -frames:v 1")), Not(IsEmpty()));

    fs::copy_file(test::numberedFilm("mpeg4.mp4"), inClipFolder("inner.mp4"));
    fs::copy_file(test::numberedFilm("mpeg2.ts"), inClipFolder("inner.ts"));
    for (const std::string text : {
             "x",
             "This is a shopping list.\nMilk\n",
             "<html><body>moved</body></html>",
             "ffconcat version 1.0\nfile inner.mp4\n",
             "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\ninner.ts\n#EXT-X-ENDLIST\n",
             "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
             "mediaPresentationDuration=\"PT1S\" "
             "profiles=\"urn:mpeg:dash:profile:isoff-main:2011\"><Period><AdaptationSet>"
             "<Representation id=\"1\" mimeType=\"video/mp4\" bandwidth=\"1\"><BaseURL>inner.mp4</BaseURL>"
             "</Representation></AdaptationSet></Period></MPD>\n",
             "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP "
             "96\na=rtpmap:96 H264/90000\n",
             ";FFMETADATA1\ntitle=x\n",
         }) {
        for (const char* extension : {".mp4", ".ts", ".mkv", ".m3u8", ".mpd", ""})
            EXPECT_THAT(refusal(stored(std::string("list") + extension, text)), Not(IsEmpty()))
                << extension << text;
    }
}

TEST(Opening, TakesFileNamesLiterally) {
    const std::string path = test::numberedFilm("mpeg4.mp4");
    const auto before = fs::current_path();
    fs::current_path(inClipFolder(""));
    fs::create_directory("a.b");
    for (const std::string name :
         {"a:b.mp4", "img%03d.mp4", "http:x.mp4", "-x.mp4", "file:x.mp4", "concat:plain.mp4|plain.mp4",
          "pipe:0.mp4", "x y'\".mp4", "*.mp4", "img001.png", "x.m3u8", "\xC3\xBC\xFF.mp4", "a.b/c"}) {
        fs::copy_file(path, name);
        EXPECT_EQ(refusal(name), "") << name;
        EXPECT_EQ(refusal(inClipFolder(name)), "") << name;
    }
    EXPECT_NE(refusal("data:video/mp4;base64,AAAA"), "");
    EXPECT_NE(refusal("lavfi"), "");
    fs::current_path(before);
}

/// Reads as much as possible of an arbitrary file. All errors must be `PlatformError`s. Returns true if
/// reading was interrupted by `isCancelled`.
bool isInterrupted(const std::string& path, const IsCancelled& isCancelled) {
    bool isInterrupted = false;
    const auto attempt = [&](const auto& action) {
        try {
            action();
        } catch (const MediaError& error) {
            isInterrupted = isInterrupted || error.code() == MediaError::interrupted;
        } catch (const PlatformError&) {
        }
    };
    attempt([&] {
        const auto asset = test::library().open(path, isCancelled);
        EXPECT_TRUE(asset->duration() >= 0 && asset->duration() < 1e7) << asset->duration();
        for (std::size_t track = 0; track < asset->soundTracks().size() && !isInterrupted; ++track) {
            const auto reader = asset->makeSoundReader(track, isCancelled);
            if (!reader->startReading()) continue;
            for (int i = 0; i < 400 && reader->copyNextSampleBuffer(); ++i) {
            }
        }
        if (asset->videoTracks().empty()) return;
        const auto generator = asset->makeImageGenerator(2, isCancelled);
        generator->expect({20, 10, 1.9});
        for (const double time : {0.0, 1.0, 7.0, 2.0, 0.3}) {
            if (!isInterrupted) attempt([&] { test::draw(*generator->copyImage(test::at(time)), 32, 32); });
            if (!isInterrupted) attempt([&] { generator->copyNearbyImage(test::at(time), 5); });
        }
    });
    return isInterrupted;
}

/// A small video with sound in the container `extension`.
std::string smallFilm(const std::string& extension) {
    return clip("small." + extension,
                numberedFrames(50) + "-f lavfi -i sine=d=2 -map 0 -map 1 " +
                    (extension == "mpg" ? "-c:v mpeg2video" : "-c:v libx264 -g 20 -bf 2") +
                    " -b:v 300k -ar 44100 -c:a " + (extension == "flv" ? "mp3" : "mp2") +
                    (extension == "mp4" ? " -movflags faststart" : ""));
}

TEST(Opening, SurvivesCutAndDamagedFiles) {
    for (const std::string extension : {"mp4", "mkv", "ts", "avi", "flv", "mpg"}) {
        const std::string whole = test::contents(smallFilm(extension));
        std::mt19937 random(7);
        for (int i = 0; i < 22; ++i) {
            SCOPED_TRACE(extension + " " + std::to_string(i));
            std::string bytes = whole;
            // Half of the damage is in the headers, which have most of the fields.
            const std::size_t reach = i % 2 == 0 ? whole.size() : 2000;
            if (i < 16) bytes.resize(i == 0 ? 0 : random() % reach);
            while (i < 3 && bytes.size() < 30000)  // only noise, or a start and then noise
                bytes += static_cast<char>(random());
            for (int flips = 0; i >= 16 && flips < 16 << (i - 16); ++flips)
                bytes[random() % reach] = static_cast<char>(random());
            EXPECT_FALSE(isInterrupted(stored("damaged." + extension, bytes), {}));
        }
        // The remaining pictures of a cut file are shown.
        const auto generator =
            test::images(stored("cut." + extension, whole.substr(0, whole.size() * 3 / 4)));
        EXPECT_EQ(test::numberAt(*generator, 0.43), 10) << extension;
    }
}

TEST(Cancellation, StopsSoonAtAnyCheck) {
    std::string bytes =
        test::contents(clip("long.ts", numberedFrames(200) + "-f lavfi -i sine=d=8 -map 0 -map 1 "
                                                             "-c:v libx264 -c:a mp2"));
    for (std::size_t i = bytes.size() / 3; i < bytes.size() / 2; i += 601)
        bytes[i] = 'x';
    const std::string raw = clip("long.h264", numberedFrames(200) + " -c:v libx264 -g 50");
    for (const std::string& path : {raw, stored("long-damaged.ts", bytes)}) {
        int questions = 0, allowed = 0;
        for (; allowed < 1'000'000; allowed = allowed * 2 + 1) {
            questions = 0;
            if (!isInterrupted(path, [&] { return ++questions > allowed; })) break;
            ASSERT_LE(questions, allowed + 10) << "answered late";
        }
        EXPECT_LE(questions, allowed) << "gone on all the same";
        EXPECT_GT(questions, 50) << "asked too seldom";
    }
}

}  // namespace
}  // namespace zeb
