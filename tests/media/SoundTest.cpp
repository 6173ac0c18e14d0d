#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;

struct Sound {
    double rate = 0;
    int channels = 0;
    std::vector<float> samples{};

    double seconds() const { return static_cast<double>(samples.size()) / channels / rate; }
};

Sound soundOf(const std::string& path, std::size_t track = 0) {
    Sound sound;
    const auto reader = test::open(path)->makeSoundReader(track, {});
    if (!reader->startReading()) return sound;
    while (const auto buffer = reader->copyNextSampleBuffer()) {
        if (sound.samples.empty()) sound = {buffer->sampleRate, buffer->channelsPerFrame};
        EXPECT_EQ(buffer->sampleRate, sound.rate);
        EXPECT_EQ(buffer->channelsPerFrame, sound.channels);
        EXPECT_FALSE(buffer->samples.empty());
        sound.samples.insert(sound.samples.end(), buffer->samples.begin(), buffer->samples.end());
        if (sound.seconds() > 600) break;  // longer than any clip in this file
    }
    return sound;
}

/// A sound whose samples encode their time: seconds = value * 8, on both channels.
const std::string ramp = "-f lavfi -i aevalsrc=t/8|t/8:s=8000:d=4:n=160 ";
constexpr double rampRate = 8000;

TEST(Sound, MatchesIndependentDecoderSampleBySample) {
    struct Case {
        const char* name;
        const char* source;
        const char* coding;
        int rate, channels;
        std::size_t track = 0;
    };
    const char* stereo = "aevalsrc=0.3*sin(2000*t)|0.4*sin(3000*t+t*t*99):s=44100:d=1.5";
    const char* fast = "aevalsrc=0.3*sin(2000*t)|0.4*sin(3000*t):s=192000:d=0.5";
    const char* surround =
        "aevalsrc=sin(300*t)|sin(400*t)|sin(500*t)|sin(60*t)|sin(700*t)|sin(800*t):c=5.1:s=48000:d=1";
    for (const Case& c : {
             Case{"u8.wav", stereo, "pcm_u8", 44100, 2},
             {"s24.wav", stereo, "pcm_s24le", 44100, 2},
             {"f32.wav", stereo, "pcm_f32le", 44100, 2},
             {"s16.mov", stereo, "pcm_s16be", 44100, 2},
             {"flac.mkv", stereo, "flac", 44100, 2},
             {"fast.flac", fast, "flac", 192000, 2},
             {"slow.wav", "sine=r=8000:d=1", "pcm_alaw", 8000, 1},
             {"adpcm.avi", stereo, "adpcm_ms", 44100, 2},
             {"aac.mp4", stereo, "aac", 44100, 2},
             {"aac.ts", stereo, "aac", 44100, 2},
             {"mp3.mp3", stereo, "libmp3lame", 44100, 2},
             {"mp2.mpg", stereo, "mp2", 44100, 2},
             {"opus.webm", stereo, "libopus -ar 48000", 48000, 2},
             {"vorbis.ogg", stereo, "libvorbis", 44100, 2},
             {"surround.mp4", surround, "aac", 48000, 6},
             {"ac3.ts", surround, "ac3", 48000, 6},
             {"alac.m4a", stereo, "alac", 44100, 2},
             {"second.mkv", "sine=d=1 -f lavfi -i sine=r=8000:d=1", "flac -map 0 -map 1", 8000, 1, 1},
         }) {
        SCOPED_TRACE(c.name);
        const std::string path = clip(c.name, std::string("-f lavfi -i ") + c.source + " -c:a " + c.coding);
        const Sound sound = soundOf(path, c.track);
        EXPECT_EQ(sound.rate, c.rate);
        EXPECT_EQ(sound.channels, c.channels);
        const std::string map = " -map 0:a:" + std::to_string(c.track);
        const std::string bytes = test::run("ffmpeg -v error -i " + path + map + " -f f32le -");
        std::vector<float> expected(bytes.size() / 4);
        std::memcpy(expected.data(), bytes.data(), bytes.size());
        ASSERT_EQ(sound.samples.size(), expected.size());
        EXPECT_EQ(sound.samples, expected);
    }
}

TEST(Sound, LateStartBecomesSilence) {
    for (const char* container : {"mkv", "mov"}) {
        for (const double late : {0.015, 1.25}) {
            SCOPED_TRACE(std::string(container) + " " + std::to_string(late));
            const Sound sound =
                soundOf(clip("late-" + std::to_string(late) + "." + container,
                             test::numberedFrames(50) + "-itsoffset " + std::to_string(late) + " " + ramp +
                                 "-map 0 -map 1 -c:v mpeg4 -b:v 1M -c:a pcm_f32le"));
            const int silent = late > 0.02 ? static_cast<int>(std::lround(late * rampRate)) : 0;
            ASSERT_EQ(sound.samples.size() / 2, 32000U + static_cast<unsigned>(silent));
            for (int i = 0; i < 32000 + silent; ++i) {
                ASSERT_NEAR(sound.samples[static_cast<std::size_t>(i) * 2 + 1],
                            std::max(i - silent, 0) / rampRate / 8, i < silent ? 0 : 1e-6)
                    << i;
            }
        }
    }
}

TEST(Sound, FillsGapsToKeepTime) {
    for (const std::string container : {"mkv", "nut"}) {
        const Sound sound = soundOf(
            clip("gaps." + container,
                 ramp + "-af aselect=not(between(t\\,1\\,1.49)+between(t\\,2\\,2.2)) -c:a pcm_f32le"));
        ASSERT_NEAR(sound.seconds(), 4, 0.001);
        int silent = 0;
        for (std::size_t i = 0; i < sound.samples.size(); i += 2) {
            const double time = static_cast<double>(i) / 2 / rampRate;
            silent += sound.samples[i] == 0;
            if (sound.samples[i] == 0) continue;
            ASSERT_NEAR(sound.samples[i], time / 8, 0.0012 / 8) << time;  // Matroska counts milliseconds
        }
        EXPECT_NEAR(silent / rampRate, 0.5 + 0.22, 0.045) << container;
    }
}

TEST(Sound, DropsSamplesBeforeTimeZero) {
    clip("whole.mov",
         test::numberedFrames(100) + ramp + "-map 0 -map 1 -c:v libx264 -g 20 -bf 2 -c:a pcm_f32le");
    const std::string cut = clip("cut.mov", "-ss 1.32 -i @whole.mov -c copy -avoid_negative_ts disabled");
    const Sound sound = soundOf(cut);
    ASSERT_GT(sound.samples.size(), 20000U);
    for (std::size_t i = 0; i < 20000; i += 2)
        ASSERT_NEAR(sound.samples[i], (1.32 + static_cast<double>(i / 2) / rampRate) / 8, 0.0012 / 8) << i;
}

TEST(Sound, ConvertsLaterFormatsToFirst) {
    for (const auto& [extension, coding] : {std::pair{".mp3", "libmp3lame -id3v2_version 0 -write_xing 0"},
                                            {".aac", "aac -f adts"},
                                            {".ac3", "ac3"}}) {
        SCOPED_TRACE(extension);
        const auto tone = [&, coding = coding, extension = extension](const std::string& name,
                                                                      const std::string& format) {
            return test::contents(
                clip(name + extension, "-f lavfi -i sine=d=1 -c:a " + std::string(coding) + format));
        };
        const std::string first = tone("format-1", " -ar 44100 -ac 2"),
                          second = tone("format-2", " -ar 32000 -ac 1");
        const Sound sound = soundOf(test::stored(std::string("formats") + extension, first + second + first));
        EXPECT_EQ(sound.rate, 44100);
        EXPECT_EQ(sound.channels, 2);
        EXPECT_NEAR(sound.seconds(), 3, 0.15);
        // The middle third must not be silent: its tone is converted to the first format.
        double energy = 0;
        for (std::size_t i = 0; i < 2000; ++i)
            energy += std::pow(sound.samples[sound.samples.size() / 2 + i], 2);
        EXPECT_GT(energy / 2000, 0.001);
    }
}

TEST(Sound, DamagedTimestampAddsNoSilence) {
    std::string file =
        test::contents(clip("times.flv", test::numberedFrames(100) + "-f lavfi -i sine=r=44100:d=4 "
                                                                     "-map 0 -map 1 -c:v libx264 -c:a aac"));
    // A tag has a header of 11 bytes (type, size, milliseconds with the highest byte last, stream), a body,
    // and 4 more bytes.
    const auto byte = [&](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(file[i]));
    };
    int sounds = 0;
    for (std::size_t tag = 13; tag + 11 < file.size();) {
        if (file[tag] == 8 && ++sounds == 60) file[tag + 7] = 1;
        tag += 11 + (byte(tag + 1) << 16 | byte(tag + 2) << 8 | byte(tag + 3)) + 4;
    }
    ASSERT_GT(sounds, 60);
    const std::string path = test::stored("damaged-times.flv", file);
    EXPECT_NEAR(test::open(path)->duration(), 4, 0.1);
    EXPECT_NEAR(soundOf(path).seconds(), 4, 0.1);
}

}  // namespace
}  // namespace zeb
