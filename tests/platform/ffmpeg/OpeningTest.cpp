#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>

#include "Clips.h"
#include "platform/PlatformError.h"

namespace zeb {
namespace {

using test::clip;
using test::clipFolder;
using test::numberedFrames;

constexpr const char* film = " -c:v mpeg4 -g 10 -b:v 1M ";

/// Why a file cannot be opened; empty when it can.
std::string refusal(const std::string& path) {
    try {
        test::open(path);
        return "";
    } catch (const MediaError& error) {
        EXPECT_EQ(error.code(), MediaError::cannotOpen);
        EXPECT_EQ(error.domain(), "Media");
        const std::string text = error.what();
        EXPECT_EQ(text.find(clipFolder()), std::string::npos) << "the caller knows the path: " << text;
        return text.empty() ? "refused without a text" : text;
    }
}

TEST(Opening, RefusesWhatIsNoFilm) {
    const std::string folder = clipFolder() + "/folder.mp4", pipe = clipFolder() + "/pipe.mp4",
                      empty = clipFolder() + "/empty.mp4", text = clipFolder() + "/text";
    std::filesystem::create_directory(folder);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    test::store(empty, "");
    EXPECT_THAT(refusal(clipFolder() + "/missing.mp4"), testing::HasSubstr("No such file"));
    EXPECT_THAT(refusal(folder), testing::HasSubstr("directory"));
    EXPECT_THAT(refusal(pipe), testing::Not(testing::IsEmpty()));
    EXPECT_THAT(refusal("/dev/zero"), testing::Not(testing::IsEmpty()));
    EXPECT_THAT(refusal(empty), testing::HasSubstr("empty"));
    for (const char* extension : {".mp4", ".ts", ".mkv", ".txt", ""}) {
        for (const char* content :
             {"x", "This is a shopping list.\nMilk\n", "<html><body>moved</body></html>"}) {
            test::store(text + extension, content);
            EXPECT_THAT(refusal(text + extension), testing::Not(testing::IsEmpty())) << extension << content;
        }
    }
}

TEST(Opening, RefusesFilesThatPullInOthers) {
    const std::string inner = clip("inner.mp4", numberedFrames(25) + film);
    const std::string ts = clip("inner.ts", numberedFrames(25) + film);
    const std::string still = clip("still001.png", "-f lavfi -i color=red:s=48x48 -frames:v 1");
    for (const std::string text : {
             "ffconcat version 1.0\nfile inner.mp4\n",
             "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\ninner.ts\n#EXT-X-ENDLIST\n",
             "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
             "mediaPresentationDuration=\"PT1S\" "
             "profiles=\"urn:mpeg:dash:profile:isoff-main:2011\"><Period><AdaptationSet>"
             "<Representation id=\"1\" mimeType=\"video/mp4\" bandwidth=\"1\"><BaseURL>inner.mp4</BaseURL>"
             "</Representation></AdaptationSet></Period></MPD>\n",
             "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP "
             "96\na=rtpmap:96 H264/90000\n",
             "# VobSub index file, v7 (do not modify this line!)\nid: en, index: 0\ntimestamp: 00:00:01:000, "
             "filepos: 0\n",
             ";FFMETADATA1\ntitle=x\n",
         }) {
        for (const char* extension : {".mp4", ".ts", ".m3u8", ".mpd", ".idx", ""}) {
            const std::string path = clipFolder() + "/list" + extension;
            test::store(path, text);
            EXPECT_THAT(refusal(path), testing::Not(testing::IsEmpty())) << extension << "\n" << text;
        }
    }
    EXPECT_THAT(refusal(still), testing::Not(testing::IsEmpty()));
}

TEST(Opening, NamesAreOnlyNames) {
    const std::string path = clip("plain.mp4", numberedFrames(25) + film);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(clipFolder());
    for (const std::string name :
         {"a:b.mp4", "img%03d.mp4", "http:x.mp4", "-x.mp4", "file:x.mp4", "concat:plain.mp4|plain.mp4",
          "pipe:0.mp4", "x y'\".mp4", "*.mp4", "without-extension", "img001.png", "x.m3u8", "film.txt",
          "\xC3\xBC\xFF.mp4", "a.b/c"}) {
        if (name == "a.b/c") std::filesystem::create_directory("a.b");
        std::filesystem::copy_file(path, name);
        EXPECT_EQ(refusal(name), "") << name;
        EXPECT_EQ(refusal(clipFolder() + "/" + name), "") << name;
    }
    EXPECT_NE(refusal("data:video/mp4;base64,AAAA"), "");
    EXPECT_NE(refusal("lavfi"), "");
    std::filesystem::current_path(before);
}

/// Reads what can be read of a file that may be anything. Whatever is wrong comes as a `PlatformError`.
void exercise(const std::string& path) {
    try {
        const auto asset = test::open(path);
        EXPECT_TRUE(asset->duration() >= 0 && asset->duration() < 1e7) << asset->duration();
        for (std::size_t track = 0; track < asset->soundTracks().size(); ++track) {
            const auto reader = asset->makeSoundReader(track, {});
            if (!reader->startReading()) continue;
            for (int i = 0; i < 200 && reader->copyNextSampleBuffer(); ++i) {
            }
        }
        if (asset->videoTracks().empty()) return;
        const auto generator = asset->makeImageGenerator(2, {});
        generator->expect({20, 10, 1.9});
        for (const double time : {0.0, 0.5, 1.0, 1.9, 0.3, 100.0}) {
            try {
                test::draw(*generator->copyImage(test::at(time)), 32, 32);
            } catch (const PlatformError&) {
            }
        }
    } catch (const PlatformError&) {
    }
}

/// Small films with sound, one for each container.
std::string smallFilm(const std::string& extension) {
    return clip("small." + extension,
                numberedFrames(50) + "-f lavfi -i sine=d=2 -map 0 -map 1 " +
                    (extension == "mpg" ? "-c:v mpeg2video" : "-c:v libx264 -g 20 -bf 2") +
                    " -b:v 300k -c:a mp2" + (extension == "mp4" ? " -movflags faststart" : ""));
}

TEST(Opening, FilmsThatAreCutOffGiveWhatTheyHold) {
    for (const char* extension : {"mp4", "mkv", "ts", "avi", "mpg"}) {
        SCOPED_TRACE(extension);
        const std::string whole = test::contents(smallFilm(extension));
        const std::string path = clipFolder() + "/cut." + extension;
        std::mt19937 random(7);
        for (int i = 0; i < 14; ++i) {
            // Half of the cuts in the headers, where most fields are.
            const std::size_t size = random() % (i % 2 == 0 ? 2000 : whole.size());
            test::store(path, whole.substr(0, size));
            exercise(path);
        }
        test::store(path, whole.substr(0, whole.size() * 3 / 4));
        const auto generator = test::open(path)->makeImageGenerator(2, {});
        EXPECT_EQ(test::numberIn(*generator->copyImage(test::at(0.42))), 10);
    }
}

TEST(Opening, GarbageDoesNoHarm) {
    std::mt19937 random(11);
    for (const char* extension : {"mp4", "mkv", "ts", "avi", "flv", "mpg"}) {
        const std::string whole =
            test::contents(smallFilm(std::string(extension) == "flv" ? "mkv" : extension));
        const std::string path = clipFolder() + "/garbage." + extension;
        for (int i = 0; i < 8; ++i) {
            SCOPED_TRACE(std::string(extension) + " " + std::to_string(i));
            std::string bytes = whole;
            const std::size_t from = i % 2 == 0 ? 0 : bytes.size() / 10;
            if (i < 2) bytes.resize(from);  // a head, or nothing, and then noise
            while (bytes.size() < 30000)
                bytes += static_cast<char>(random());
            for (int flips = 0; i >= 2 && flips < 4 << i; ++flips) {
                bytes[random() % (i % 2 == 0 ? bytes.size() : 1500)] = static_cast<char>(random());
            }
            test::store(path, bytes);
            exercise(path);
        }
    }
}

TEST(Cancellation, IsAnsweredWhereverItComes) {
    const std::string raw = clip("long.h264", numberedFrames(200) + " -c:v libx264 -g 50");
    const std::string damaged = clipFolder() + "/long-damaged.ts";
    std::string bytes =
        test::contents(clip("long.ts", numberedFrames(200) + "-f lavfi -i sine=d=8 -map 0 -map 1 "
                                                             "-c:v libx264 -c:a mp2"));
    for (std::size_t i = bytes.size() / 3; i < bytes.size() / 2; i += 601)
        bytes[i] = 'x';
    test::store(damaged, bytes);
    for (const std::string& path : {raw, damaged}) {
        int questions = 0, allowed = 0;
        const IsCancelled isCancelled = [&] { return ++questions > allowed; };
        bool isDone = false;
        for (allowed = 0; !isDone && allowed < 1'000'000; allowed = allowed * 2 + 1) {
            questions = 0;
            try {
                const auto asset = test::library().open(path, isCancelled);
                for (std::size_t i = 0; i < asset->soundTracks().size(); ++i) {
                    const auto reader = asset->makeSoundReader(i, isCancelled);
                    ASSERT_TRUE(reader->startReading());
                    while (reader->copyNextSampleBuffer()) {
                    }
                }
                const auto generator = asset->makeImageGenerator(2, isCancelled);
                for (const double time : {0.0, 1.0, 7.0, 2.0}) {
                    try {
                        generator->copyImage(test::at(time));
                    } catch (const MediaError& error) {
                        if (error.code() == MediaError::interrupted) throw;
                    }
                }
                isDone = true;
            } catch (const MediaError& error) {
                ASSERT_EQ(error.code(), MediaError::interrupted) << error.what() << " after " << allowed;
                ASSERT_LE(questions, allowed + 10) << "answered late";
            }
        }
        EXPECT_TRUE(isDone);
        EXPECT_GT(questions, 50) << "asked too seldom";
    }
}

}  // namespace
}  // namespace zeb
