// Measures the time to open a long movie and to seek in it.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "codec/SpriteEncoder.h"
#include "format/ZEBReader.h"
#include "format/ZEBWriter.h"
#include "tests/codec/SyntheticPictures.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr int width = 512, height = 256, fps = 25;
constexpr std::uint64_t movieBytes = std::uint64_t{2} << 30;
constexpr int jumps = 1000;

class MemoryPicture : public zeb::Picture {
public:
    explicit MemoryPicture(Bytes rgba) : m_rgba(std::move(rgba)) {}
    int width() const override { return ::width; }
    int height() const override { return ::height; }
    void draw(const zeb::BitmapContext& bitmap) const override {
        std::ranges::copy(m_rgba, bitmap.pixels.begin());
    }

private:
    Bytes m_rgba;
};

/// Writes a stereo movie of 2 GiB. Without `finish` its index stays empty, as after a crash.
void writeMovie(const std::string& path, bool hasIndex) {
    zeb::SpriteEncoder encoder;
    std::vector<Bytes> records;
    std::uint64_t bytesPerSecond = 4 + 4 + 40000;
    for (unsigned i = 0; i < fps; ++i) {
        const MemoryPicture picture(zeb::synthetic::natural(width, height, i));
        records.push_back(encoder.encodeMode32Sprite(picture, width, height));
        bytesPerSecond += 4 + records.back().size();
    }
    const auto seconds = static_cast<std::int64_t>(movieBytes / bytesPerSecond);
    zeb::MovieParameters movie{"Bench", width, height, fps, 32, seconds * fps, seconds, 2, false};
    zeb::ZEBWriter writer(path, movie);
    const Bytes sound(40000, 128);
    const std::vector<std::span<const std::uint8_t>> frames(records.begin(), records.end());
    for (std::int64_t second = 0; second < seconds; ++second)
        writer.writeSecond(sound, frames);
    if (hasIndex) writer.finish();
    writer.close();
}

void open(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        zeb::ZEBReader reader(path);
        reader.readHeader();
        if (!reader.nextFrame(false)) std::abort();
    }
}

void jump(benchmark::State& state, const std::string& path) {
    zeb::ZEBReader reader(path);
    const std::int64_t frames = reader.readHeader().frameCount;
    for (auto _ : state) {
        std::mt19937 random(1);
        for (int i = 0; i < jumps; ++i) {
            reader.seekToFrame(std::uniform_int_distribution<std::int64_t>(0, frames - 1)(random));
            if (!reader.nextFrame(false)) std::abort();
        }
    }
}

int run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    const fs::path folder = fs::temp_directory_path() / "zeb-reader-bench";
    fs::create_directories(folder);
    const std::string whole = folder / "whole.zeb", torn = folder / "torn.zeb";
    writeMovie(whole, true);
    writeMovie(torn, false);
    for (const std::string& path : {whole, torn}) {
        const std::string kind = path == whole ? "/index" : "/no index";
        benchmark::RegisterBenchmark(("open to the first frame" + kind).c_str(), open, path)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("1000 jumps, a frame each" + kind).c_str(), jump, path)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::RunSpecifiedBenchmarks();
    fs::remove_all(folder);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "reader_bench: " << error.what() << "\n";
        return 1;
    }
}
