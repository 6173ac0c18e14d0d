#include "conversion/AudioReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "conversion/AudioSlice.h"
#include "format/ZEBConverterError.h"
#include "platform/fake/FakeMedia.h"

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define ZEB_SANITIZED
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define ZEB_SANITIZED
#endif
#endif

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
        if (random() % 64 == 0) sample = std::round(sample);  // full scale and silence, exactly
    }
    return samples;
}

/// The rule as it reads, over the whole track at once.
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

/// Divides samples into buffers whose sizes (in samples) repeat `sizes`.
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
    std::vector<std::string> log;
};

Result read(FakeFilm film, int channels, int track = 0, std::uint64_t maximum = AudioReader::allFrames) {
    Result result;
    const auto log = [&](const std::string& text) { result.log.push_back(text); };
    const SoundBytes sound =
        AudioReader::read(FakeAsset(std::move(film)), targetRate, channels, track, {}, log, maximum);
    result.bytes = contents(sound);
    return result;
}

Result readBuffers(std::vector<FakeSamples> buffers, int channels,
                   std::uint64_t maximum = AudioReader::allFrames) {
    FakeFilm film;
    film.soundTracks = {fake::soundOf(std::move(buffers))};
    return read(std::move(film), channels, 0, maximum);
}

TEST(AudioReader, streamedResultEqualsTheWholeTrack) {
    const std::vector<std::size_t> divisions[] = {{1}, {7, 1024, 13}, {4099}, {1u << 20}};
    for (const double rate : {1.0, 999.5, 8000.0, 11025.0, 16000.0, 19999.0, 20000.0, 22050.0, 32000.0,
                              44100.0, 47999.9, 48000.0, 96000.0, 192000.0, 5e6, 2147483647.0}) {
        for (int sourceChannels = 1; sourceChannels <= 8; ++sourceChannels) {
            // Not a multiple of the channels: the incomplete frame at the end does not count.
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

TEST(AudioReader, quantises) {
    const float values[] = {
        0, 0.5F, -1, 0.999F, 1, 1.5F, -1.5F, std::numeric_limits<float>::quiet_NaN(), 0.99999994F};
    for (const auto& [index, byte] :
         {std::pair{0, 128}, {1, 191}, {2, 1}, {3, 254}, {4, 255}, {5, 255}, {6, 1}, {7, 128}, {8, 254}}) {
        EXPECT_EQ(readBuffers({{20000, 1, {values[index]}}}, 1).bytes, Bytes{static_cast<std::uint8_t>(byte)})
            << index;
    }
}

TEST(AudioReader, lastFormatHoldsForTheWholeTrack) {
    const auto samples = noise(6000);
    const struct {
        double firstRate;
        int firstChannels;
        std::size_t firstSamples;
        double lastRate;
        int lastChannels;
        int readers;
    } cases[] = {
        {44100, 2, 1001, 48000, 2, 2},                              // another rate
        {48000, 2, 1001, 48000, 1, 2},                              // other channels
        {48000, 6, 1001, 22050, 2, 2}, {44100, 2, 0, 32000, 1, 1},  // nothing heard in the first format
        {44100, 2, 6000, 32000, 1, 2},                              // nothing heard in the last one
    };
    for (const auto& c : cases) {
        const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(c.firstSamples);
        FakeFilm film;
        film.soundTracks = {fake::soundOf({{c.firstRate, c.firstChannels, {samples.begin(), middle}},
                                           {c.lastRate, c.lastChannels, {middle, samples.end()}},
                                           {0, 0, {}}})};  // says nothing about the format
        const auto record = std::make_shared<fake::FakeRecord>();
        const SoundBytes sound = AudioReader::read(FakeAsset(film, record), targetRate, 2, 0, {}, {});
        EXPECT_TRUE(contents(sound) == convertedWhole(samples, c.lastRate, c.lastChannels, 2)) << c.lastRate;
        EXPECT_EQ(record->soundReaders.size(), static_cast<std::size_t>(c.readers));
    }
}

TEST(AudioReader, saysWhatItFound) {
    const auto samples = noise(960000);
    EXPECT_THAT(
        readBuffers(divided(samples, 48000, 2, {4096}), 1).log,
        testing::ElementsAre("Audio: src 48000Hz, 2ch, frames=480000 → dst 20000Hz, 1ch, frames=200000"));
    // Kept are only as many frames as asked for, but the line tells the whole length.
    const Result cut = readBuffers(divided(samples, 48000, 2, {4096}), 1, 5000);
    Bytes start = convertedWhole(samples, 48000, 2, 1);
    start.resize(5000);
    EXPECT_TRUE(cut.bytes == start);
    EXPECT_THAT(cut.log, testing::ElementsAre(testing::HasSubstr("1ch, frames=200000")));
    // Fewer samples than one frame has.
    const Result fragment = readBuffers({{44100.9, 4, {0.5F}}}, 2);
    EXPECT_TRUE(fragment.bytes.empty());
    EXPECT_THAT(fragment.log,
                testing::ElementsAre("Audio: src 44100Hz, 4ch, frames=0 → dst 20000Hz, 2ch, frames=0"));

    EXPECT_THAT(readBuffers({{48000, 2, {}}}, 2).log,
                testing::ElementsAre("Audio leer – schreibe ohne Audio."));
    EXPECT_THAT(read({}, 2).log, testing::ElementsAre("Kein Audio-Track – schreibe ohne Audio."));
    FakeFilm mute;
    mute.soundTracks = {fake::soundOf({})};
    mute.soundStarts = false;
    EXPECT_THAT(read(mute, 2).log,
                testing::ElementsAre("AudioReader konnte nicht starten – schreibe ohne Audio."));
}

TEST(AudioReader, picksTheNearestTrack) {
    FakeFilm film;
    film.soundTracks = {fake::soundOf({{20000, 1, {0.5F}}}), fake::soundOf({{20000, 1, {-1}}})};
    for (const auto& [track, byte] : {std::pair{-1, 191}, {0, 191}, {1, 1}, {7, 1}}) {
        EXPECT_EQ(read(film, 1, track).bytes, Bytes{static_cast<std::uint8_t>(byte)}) << track;
    }
}

TEST(AudioReader, keepsWhatCameBeforeDamage) {
    FakeFilm film;
    film.soundTracks = {[](std::size_t index, FakeSamples& buffer) {
        if (index > 0) throw MediaError(MediaError::cannotDecode, "damaged");
        buffer = {20000, 1, {0.5F, 0.5F}};
        return true;
    }};
    EXPECT_EQ(read(film, 1).bytes, (Bytes{191, 191}));
    film.soundCannotBeOpened = MediaError(MediaError::cannotOpen, "no");
    EXPECT_THROW(read(film, 1), MediaError);
}

TEST(AudioReader, stopsAtWhicheverQuestionIsAnsweredYes) {
    FakeFilm film;
    const auto samples = noise(3000);
    auto buffers = divided(samples, 48000, 2, {500});
    buffers.push_back({44100, 2, {}});  // so that there are two passes
    film.soundTracks = {fake::soundOf(buffers)};
    bool completed = false;
    for (int patience = 0; !completed; ++patience) {
        int asked = 0;
        try {
            AudioReader::read(FakeAsset(film), targetRate, 2, 0, [&] { return asked++ >= patience; }, {});
            completed = true;
            EXPECT_GT(patience, 2 * 6);
        } catch (const ZEBConverterError& error) {
            EXPECT_EQ(error.errorCase(), ZEBConverterError::Case::cancelled);
            EXPECT_EQ(asked, patience + 1);
        }
    }
}

TEST(AudioReader, asksOftenWithinALargeBuffer) {
    const std::pair<double, std::size_t> longSounds[] = {{1, 200}, {48000, 2000000}, {1e9, 2000000}};
    for (const auto& [rate, count] : longSounds) {
        FakeFilm film;
        film.soundTracks = {fake::soundOf({{rate, 1, std::vector<float>(count)}})};
        std::uint64_t asked = 0;
        const auto isCancelled = [&] { return ++asked == 0; };
        const SoundBytes sound = AudioReader::read(FakeAsset(film), targetRate, 1, 0, isCancelled, {});
        EXPECT_GE(asked, sound.size() / 4096);
        EXPECT_GE(asked, count / 16384);
    }
}

TEST(AudioReader, memoryIsTheResultAndALittle) {
#ifdef ZEB_SANITIZED
    GTEST_SKIP() << "sanitizers have a memory of their own";
#endif
    const auto peak = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss * 1024L;
    };
    constexpr std::size_t seconds = 600;
    FakeFilm film;
    film.duration = 1e12;  // what the container claims must cost nothing
    film.soundTracks = {[](std::size_t index, FakeSamples& buffer) {
        buffer.samples.resize(96000);
        return index < seconds;
    }};
    const long before = peak();
    const SoundBytes sound = AudioReader::read(FakeAsset(film), targetRate, 2, 0, {}, {});
    ASSERT_EQ(sound.size(), seconds * targetRate * 2);
    EXPECT_LT(peak() - before, static_cast<long>(sound.size()) + (8L << 20));
}

TEST(AudioSlice, isAlwaysAWholeSecond) {
    SoundBytes sound;
    sound.append(Bytes(70000, 7));
    EXPECT_EQ(audioSlice(0, 1, 20000, sound), Bytes(20000, 7));
    Bytes last(10000, 7);
    last.resize(20000, 0x80);
    EXPECT_EQ(audioSlice(3, 1, 20000, sound), last);
    for (const std::int64_t second : {std::int64_t{4}, std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(audioSlice(second, 1, 20000, sound), Bytes(20000, 0x80));
    }
    EXPECT_TRUE(audioSlice(0, 0, 20000, sound).empty());
    EXPECT_TRUE(audioSlice(0, 1, 0, sound).empty());
}

TEST(SoundBytes, joinsItsBlocks) {
    SoundBytes sound;
    Bytes all;
    for (std::size_t size : {1u, 1000003u, 48577u, 0u, 2100000u}) {
        Bytes piece(size);
        for (std::size_t i = 0; i < size; ++i)
            piece[i] = static_cast<std::uint8_t>((i * 7919) >> 5);
        sound.append(piece);
        all.insert(all.end(), piece.begin(), piece.end());
    }
    EXPECT_TRUE(contents(sound) == all);
    Bytes across(20);
    EXPECT_EQ(sound.copy((1u << 20) - 70, across), 20u);
    EXPECT_TRUE(std::equal(across.begin(), across.end(), all.begin() + (1 << 20) - 70));
    EXPECT_EQ(sound.copy(all.size() - 3, across), 3u);
    EXPECT_EQ(sound.copy(all.size(), across), 0u);
}

}  // namespace
}  // namespace zeb
