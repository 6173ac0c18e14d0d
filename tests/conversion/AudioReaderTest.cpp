#include "conversion/sound/AudioReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "format/ZEBErrors.h"
#include "tests/doubles/FakeMedia.h"

namespace zeb {
namespace {

using fake::FakeAsset;
using fake::FakeFilm;
using fake::FakeSamples;
using Bytes = std::vector<std::uint8_t>;

constexpr int targetRate = 20000;

std::vector<float> noise(std::size_t count, float amplitude = 1.3F) {
    std::mt19937 random(static_cast<std::uint32_t>(count));
    std::vector<float> samples(count);
    for (float& sample : samples) {
        sample = amplitude * (static_cast<float>(random() % 20001) / 10000 - 1);
        if (random() % 64 == 0) sample = std::round(sample);  // exact full scale or silence
    }
    return samples;
}

/// Reference conversion of the whole track at once.
Bytes convertedWhole(const std::vector<float>& samples, double sourceRate, int sourceChannels, int channels) {
    const auto frames = static_cast<std::int64_t>(samples.size()) / sourceChannels;
    const auto value = [&](std::int64_t frame, int channel) {
        const std::int64_t start = std::clamp<std::int64_t>(frame, 0, frames - 1) * sourceChannels;
        const auto at = [&](int c) { return samples[static_cast<std::size_t>(start + c)]; };
        if (sourceChannels == 2 && channels == 1) return (at(0) + at(1)) * 0.5F;
        return at(std::min(channel, sourceChannels - 1));
    };
    const double targetFrames = std::ceil(targetRate * static_cast<double>(frames) / sourceRate);
    Bytes bytes;
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(targetFrames); ++i) {
        const double position = static_cast<double>(i) * sourceRate / targetRate;
        const double left = std::floor(position);
        const auto fraction = static_cast<float>(position - left);
        for (int channel = 0; channel < channels; ++channel) {
            const float s0 = value(static_cast<std::int64_t>(left), channel);
            const float s1 = value(static_cast<std::int64_t>(left) + 1, channel);
            const float v = s0 + (s1 - s0) * fraction;
            const double byte =
                v >= 1.0F ? 255 : std::trunc(std::max(static_cast<double>(v), -1.0) * 127 + 128);
            bytes.push_back(static_cast<std::uint8_t>(std::clamp(byte, 0.0, 255.0)));
        }
    }
    return bytes;
}

/// Divides samples into buffers. Their sizes in samples repeat `sizes`.
std::vector<FakeSamples> divided(const std::vector<float>& samples, double rate, int channels,
                                 const std::vector<std::size_t>& sizes) {
    std::vector<FakeSamples> buffers;
    for (std::size_t at = 0; at < samples.size();) {
        const std::size_t count = std::min(sizes[buffers.size() % sizes.size()], samples.size() - at);
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(at);
        buffers.push_back({rate, channels, {begin, begin + static_cast<std::ptrdiff_t>(count)}});
        at += count;
    }
    return buffers;
}

Bytes contents(const SoundBytes& sound) {
    Bytes bytes(sound.size());
    EXPECT_EQ(sound.copy(0, bytes), bytes.size());
    return bytes;
}

struct Result {
    Bytes bytes;
    std::string log;
};

Result read(const FakeFilm& film, int channels, int track = 0,
            std::uint64_t maximum = AudioReader::allFrames) {
    Result result;
    const auto log = [&](const std::string& text) { result.log += text; };
    const auto warned = [&](const std::string& text) { result.log += "! " + text; };
    result.bytes = contents(AudioReader::read(FakeAsset(film), targetRate, channels, track, {},
                                              {.logged = log, .warned = warned}, maximum));
    return result;
}

Result readBuffers(std::vector<FakeSamples> buffers, int channels,
                   std::uint64_t maximum = AudioReader::allFrames) {
    return read({.soundTracks = {fake::soundOf(std::move(buffers))}}, channels, 0, maximum);
}

TEST(AudioReader, StreamingMatchesWholeTrackConversion) {
    const std::vector<std::size_t> divisions[] = {{1}, {7, 1024, 13}, {1u << 20}};
    for (const double rate : {1.0, 8000.0, 19999.0, 20000.0, 44100.0, 47999.9, 192000.0, 2147483647.0}) {
        for (const int sourceChannels : {1, 2, 3, 6}) {
            // Not a multiple of the channel count: the incomplete frame at the end is ignored.
            const std::size_t frames = rate < 100 ? 5 : 2500;
            const auto samples =
                noise(frames * static_cast<std::size_t>(sourceChannels) + (sourceChannels > 1 ? 1 : 0));
            for (const int channels : {1, 2}) {
                const Bytes expected = convertedWhole(samples, rate, sourceChannels, channels);
                for (const auto& sizes : divisions) {
                    const Result result =
                        readBuffers(divided(samples, rate, sourceChannels, sizes), channels);
                    ASSERT_TRUE(result.bytes == expected) << rate << " Hz, " << sourceChannels << " to "
                                                          << channels << ", buffers of " << sizes[0];
                }
            }
        }
    }
}

TEST(AudioReader, LimitsKeptBytesButReportsWholeLength) {
    const auto samples = noise(96000);
    const Result cut = readBuffers(divided(samples, 48000, 2, {4096}), 1, 5000);
    Bytes start = convertedWhole(samples, 48000, 2, 1);
    start.resize(5000);
    EXPECT_TRUE(cut.bytes == start);
    EXPECT_EQ(cut.log,
              "Sound: source 48000 Hz, 2 ch, 48000 frames → "
              "movie 20000 Hz, 1 ch, 20000 frames");
    EXPECT_EQ(readBuffers({{48000, 2, {}}}, 2).log, "! The sound track is empty: the movie gets no sound.");
    EXPECT_EQ(read({}, 2).log, "No sound track: the movie gets no sound.");
}

TEST(AudioReader, KeepsSoundBeforeDamage) {
    FakeFilm film;
    film.soundTracks = {[](std::size_t index, FakeSamples& buffer) {
        if (index > 0) throw MediaError(MediaError::cannotDecode, {"damaged"});
        buffer = {20000, 1, {0.5F, 0.5F}};
        return true;
    }};
    for (const int track : {-1, 0, 7})  // the nearest track is taken
        EXPECT_EQ(read(film, 1, track).bytes, (Bytes{191, 191}));
    EXPECT_EQ(readBuffers({{20000, 1, {std::numeric_limits<float>::quiet_NaN()}}}, 1).bytes, Bytes{128});
    film.soundStarts = false;
    EXPECT_EQ(read(film, 1).bytes, Bytes());
    film.soundCannotBeOpened = MediaError(MediaError::cannotOpen, {"no"});
    EXPECT_THROW(read(film, 1), MediaError);
}

TEST(AudioReader, StopsAtAnyCancellationCheck) {
    FakeFilm film;
    const auto samples = noise(3000);
    film.soundTracks = {fake::soundOf(divided(samples, 48000, 2, {500}))};
    bool completed = false;
    for (int patience = 0; !completed; ++patience) {
        int asked = 0;
        try {
            AudioReader::read(FakeAsset(film), targetRate, 2, 0, [&] { return asked++ >= patience; }, {});
            completed = true;
            EXPECT_GT(patience, 6);
        } catch (const ZEBConverterError& error) {
            EXPECT_EQ(error.errorCase(), ZEBConverterError::Case::cancelled);
            EXPECT_EQ(asked, patience + 1);
        }
    }
}

TEST(SoundBytes, JoinsItsBlocksInOrder) {
    SoundBytes sound;
    Bytes all;
    for (const std::size_t size : {1u, 1000003u, 48577u, 2100000u}) {
        Bytes piece(size);
        for (std::size_t i = 0; i < size; ++i)
            piece[i] = static_cast<std::uint8_t>((i * 7919) >> 5);
        sound.append(piece);
        all.insert(all.end(), piece.begin(), piece.end());
    }
    EXPECT_TRUE(contents(sound) == all);
    Bytes across(20);
    EXPECT_EQ(sound.copy((1u << 20) - 7, across), 20u);
    EXPECT_TRUE(std::equal(across.begin(), across.end(), all.begin() + (1 << 20) - 7));
    EXPECT_EQ(sound.copy(all.size() - 3, across), 3u);
}

}  // namespace
}  // namespace zeb
