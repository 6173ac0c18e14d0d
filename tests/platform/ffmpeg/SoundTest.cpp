#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "Clips.h"

namespace zeb {
namespace {

using test::clip;

struct Sound {
    double rate = 0;
    int channels = 0;
    std::vector<float> samples;
    bool keepsFormat = true;

    double seconds() const { return static_cast<double>(samples.size()) / channels / rate; }
};

Sound soundOf(const std::string& path, std::size_t track = 0) {
    Sound sound;
    const auto reader = test::open(path)->makeSoundReader(track, {});
    if (!reader->startReading()) return sound;
    while (const auto buffer = reader->copyNextSampleBuffer()) {
        if (sound.samples.empty()) {
            sound.rate = buffer->sampleRate;
            sound.channels = buffer->channelsPerFrame;
        }
        sound.keepsFormat = sound.keepsFormat && buffer->sampleRate == sound.rate &&
                            buffer->channelsPerFrame == sound.channels;
        EXPECT_FALSE(buffer->samples.empty());
        sound.samples.insert(sound.samples.end(), buffer->samples.begin(), buffer->samples.end());
        if (sound.seconds() > 600) break;  // more than any clip here holds
    }
    return sound;
}

/// What the `ffmpeg` program decodes, at the source's rate and channels.
std::vector<float> decoded(const std::string& path, const std::string& map = "0:a:0") {
    static int count = 0;
    const std::string bytes = test::contents(
        clip("decoded-" + std::to_string(count++) + ".f32", "-i " + path + " -map " + map + " -f f32le"));
    std::vector<float> samples(bytes.size() / 4);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 4);
    return samples;
}

/// A sound whose samples tell their time: value * 8 = seconds, on both channels.
const std::string ramp = "-f lavfi -i aevalsrc=t/8|t/8:s=8000:d=4:n=160 ";
constexpr double rampRate = 8000;

TEST(Sound, IsWhatAnIndependentDecoderDelivers) {
    struct Case {
        const char* name;
        const char* source;
        const char* coding;
        int rate, channels;
    };
    const char* stereo = "aevalsrc=0.3*sin(2000*t)|0.4*sin(3000*t+t*t*99):s=44100:d=1.5";
    const char* fast = "aevalsrc=0.3*sin(2000*t)|0.4*sin(3000*t):s=192000:d=0.5";
    const char* surround =
        "aevalsrc=sin(300*t)|sin(400*t)|sin(500*t)|sin(60*t)|sin(700*t)|sin(800*t):c=5.1:s=48000:d=1";
    for (const Case& c : {
             Case{"s16.wav", stereo, "pcm_s16le", 44100, 2},
             {"s24.wav", stereo, "pcm_s24le", 44100, 2},
             {"f32.wav", stereo, "pcm_f32le", 44100, 2},
             {"u8.wav", stereo, "pcm_u8", 44100, 2},
             {"s16.mov", stereo, "pcm_s16be", 44100, 2},
             {"plain.flac", stereo, "flac", 44100, 2},
             {"flac.mkv", stereo, "flac", 44100, 2},
             {"fast.flac", fast, "flac", 192000, 2},
             {"slow.wav", "sine=r=8000:d=1", "pcm_alaw", 8000, 1},
             {"adpcm.avi", stereo, "adpcm_ms", 44100, 2},
             {"aac.mp4", stereo, "aac", 44100, 2},
             {"aac.mkv", stereo, "aac", 44100, 2},
             {"aac.ts", stereo, "aac", 44100, 2},
             {"aac.aac", stereo, "aac", 44100, 2},
             {"mp3.mp3", stereo, "libmp3lame", 44100, 2},
             {"mp3.mkv", stereo, "libmp3lame", 44100, 2},
             {"mp2.mpg", stereo, "mp2", 44100, 2},
             {"opus.webm", stereo, "libopus -ar 48000", 48000, 2},
             {"opus.ogg", stereo, "libopus -ar 48000", 48000, 2},
             {"vorbis.ogg", stereo, "libvorbis", 44100, 2},
             {"surround.mp4", surround, "aac", 48000, 6},
             {"surround.wav", surround, "pcm_s16le", 48000, 6},
             {"ac3.ts", surround, "ac3", 48000, 6},
             {"alac.m4a", stereo, "alac", 44100, 2},
         }) {
        SCOPED_TRACE(c.name);
        const std::string path = clip(c.name, std::string("-f lavfi -i ") + c.source + " -c:a " + c.coding);
        const Sound sound = soundOf(path);
        EXPECT_EQ(sound.rate, c.rate);
        EXPECT_EQ(sound.channels, c.channels);
        const std::vector<float> expected = decoded(path);
        ASSERT_EQ(sound.samples.size(), expected.size());
        EXPECT_EQ(sound.samples, expected);
    }
}

TEST(Sound, RealClipsAndSecondTracks) {
    for (const auto& [name, track, map] : {std::tuple{"testVideoMp4.mp4", 0, "0:a:0"},
                                           {"100_0306.AVI", 0, "0:a:0"},
                                           {"nasa_13013.mp4", 0, "0:a:0"},
                                           {"nasa_13013.mp4", 1, "0:a:1"}}) {
        SCOPED_TRACE(name);
        ZEB_REAL_CLIP(path, name);
        const Sound sound = soundOf(path, static_cast<std::size_t>(track));
        const std::vector<float> expected = decoded(path, map);
        ASSERT_GE(sound.samples.size(), expected.size());  // a late start is silence in front
        const std::size_t late = sound.samples.size() - expected.size();
        EXPECT_LT(static_cast<double>(late) / sound.channels / sound.rate, 0.3);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(),
                               sound.samples.begin() + static_cast<std::ptrdiff_t>(late)));
    }
}

TEST(Sound, LateStartsBecomeSilence) {
    for (const char* container : {"mkv", "mov", "nut"}) {
        for (const double late : {0.015, 0.5, 1.25}) {
            SCOPED_TRACE(std::string(container) + " " + std::to_string(late));
            const std::string path = clip("late-" + std::to_string(late) + "." + container,
                                          test::numberedFrames(50) + "-itsoffset " + std::to_string(late) +
                                              " " + ramp + "-map 0 -map 1 -c:v mpeg4 -b:v 1M -c:a pcm_f32le");
            const Sound sound = soundOf(path);
            const auto silent = static_cast<std::size_t>(late > 0.02 ? std::lround(late * rampRate) : 0);
            ASSERT_EQ(sound.samples.size() / 2, 32000 + silent);
            for (std::size_t i = 0; i < silent * 2; ++i)
                ASSERT_EQ(sound.samples[i], 0) << i;
            for (std::size_t i = 0; i < 32000; ++i) {
                ASSERT_NEAR(sound.samples[(i + silent) * 2 + 1], static_cast<double>(i) / rampRate / 8, 1e-6)
                    << i;
            }
        }
    }
}

TEST(Sound, GapsAreFilledSoThatTheRestIsInTime) {
    for (const char* container : {"mkv", "nut"}) {
        const std::string path =
            clip(std::string("gaps.") + container,
                 ramp + "-af aselect=not(between(t\\,1\\,1.49)+between(t\\,2\\,2.2)) -c:a pcm_f32le");
        const Sound sound = soundOf(path);
        ASSERT_NEAR(sound.seconds(), 4, 0.001);
        std::size_t silent = 0;
        for (std::size_t i = 0; i < sound.samples.size() / 2; ++i) {
            const double time = static_cast<double>(i) / rampRate;
            const float value = sound.samples[i * 2];
            silent += value == 0;
            if (value != 0) {
                ASSERT_NEAR(value, time / 8, 0.0012 / 8) << time;  // Matroska counts milliseconds
            }
        }
        EXPECT_NEAR(static_cast<double>(silent) / rampRate, 0.5 + 0.22, 0.045) << container;
    }
}

TEST(Sound, WhatLiesBeforeTheStartIsDropped) {
    clip("whole.mov",
         test::numberedFrames(100) + ramp + "-map 0 -map 1 -c:v libx264 -g 20 -bf 2 -c:a pcm_f32le");
    const std::string cut = clip("cut.mov", "-ss 1.32 -i @whole.mov -c copy -avoid_negative_ts disabled");
    const Sound sound = soundOf(cut);
    ASSERT_GT(sound.samples.size(), 20000U);
    for (std::size_t i = 0; i < 20000; i += 2) {
        ASSERT_NEAR(sound.samples[i], (1.32 + static_cast<double>(i / 2) / rampRate) / 8, 0.0012 / 8) << i;
    }
}

TEST(Sound, TheFirstFormatHoldsToTheEnd) {
    const std::string tone = "-f lavfi -i sine=d=1 ";
    for (const auto& [name, coding] : {std::pair{"mp3", " -c:a libmp3lame -id3v2_version 0 -write_xing 0 "},
                                       {"aac", " -c:a aac -f adts "},
                                       {"ac3", " -c:a ac3 "}}) {
        SCOPED_TRACE(name);
        const std::string extension = std::string(".") + name;
        const std::string first = clip("format-1" + extension, tone + coding + "-ar 44100 -ac 2");
        const std::string second = clip("format-2" + extension, tone + coding + "-ar 32000 -ac 1");
        const std::string path = test::clipFolder() + "/formats" + extension;
        test::store(path, test::contents(first) + test::contents(second) + test::contents(first));
        const Sound sound = soundOf(path);
        EXPECT_EQ(sound.rate, 44100);
        EXPECT_EQ(sound.channels, 2);
        EXPECT_TRUE(sound.keepsFormat);
        EXPECT_NEAR(sound.seconds(), 3, 0.15);
        // The middle third is not just silence: its tone was brought to the first format.
        double energy = 0;
        const std::size_t middle = sound.samples.size() / 2;
        for (std::size_t i = middle; i < middle + 2000; ++i)
            energy += sound.samples[i] * sound.samples[i];
        EXPECT_GT(energy / 2000, 0.001);
    }
}

TEST(Sound, ADamagedTimeIsNotHoursOfSilence) {
    std::string file =
        test::contents(clip("times.flv", test::numberedFrames(100) + "-f lavfi -i sine=r=44100:d=4 "
                                                                     "-map 0 -map 1 -c:v libx264 -c:a aac"));
    // Tags of 11 bytes of head (type, size, milliseconds with the highest byte last, stream), body, and 4
    // bytes.
    int sounds = 0;
    for (std::size_t tag = 13; tag + 11 < file.size() && sounds < 60;) {
        const auto byte = [&](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(file[i]));
        };
        sounds += file[tag] == 8 ? 1 : 0;
        if (sounds == 60) file[tag + 7] = 1;
        tag += 11 + (byte(tag + 1) << 16 | byte(tag + 2) << 8 | byte(tag + 3)) + 4;
    }
    ASSERT_EQ(sounds, 60);
    const std::string path = test::clipFolder() + "/damaged-times.flv";
    test::store(path, file);
    const auto asset = test::open(path);
    EXPECT_NEAR(asset->duration(), 4, 0.1);
    EXPECT_NEAR(soundOf(path).seconds(), 4, 0.1);
}

}  // namespace
}  // namespace zeb
