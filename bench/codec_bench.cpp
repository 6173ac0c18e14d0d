// Benchmarks of the frame codec's kernels on frames of 512 x 288 pixels, each compared with the plain loop
// and with memcpy. ZEB_BENCH_FRAMES is the path of a file of raw RGBA frames of that size, the source of the
// natural frames; without it they are synthetic.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "codec/ColourControls.h"
#include "codec/ColourReduction.h"
#include "codec/FrameDecoder.h"
#include "codec/RLE2.h"
#include "codec/SpriteEncoder.h"
#include "codec/natural/NaturalReduction.h"
#include "tests/codec/ReferenceCodec.h"
#include "tests/codec/SyntheticPictures.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int width = 512;
constexpr int height = 288;
constexpr std::size_t pixelCount = std::size_t{width} * height;
constexpr int colours = 4;
/// More than one, so that branch predictors cannot learn the data of one frame.
constexpr std::size_t frameCount = 8;

/// A frame in all stages of coding.
struct Frame {
    explicit Frame(Bytes pixels)
        : rgba(std::move(pixels)), words(pixelCount * 2), block{'R', 'L', 'E', '2', 0, 0, 0, 0} {
        zeb::reference::packRGB565(rgba, words);
        for (std::size_t i = 0; i < 4; ++i)
            block[4 + i] = static_cast<std::uint8_t>(words.size() >> (24 - 8 * i));
        zeb::reference::compressRLE2(words, block);
    }

    Bytes rgba;
    Bytes words;
    Bytes block;
};

using Frames = std::vector<Frame>;

/// Reads frames at regular distances from the whole file.
Frames readFrames(const std::filesystem::path& path) {
    constexpr std::size_t frameBytes = pixelCount * 4;
    const std::size_t available = std::filesystem::file_size(path) / frameBytes;
    if (available == 0) throw std::runtime_error(path.string() + " holds no frame");
    std::ifstream file(path, std::ios::binary);
    Frames frames;
    for (std::size_t i = 0; i < frameCount; ++i) {
        Bytes rgba(frameBytes);
        file.seekg(static_cast<std::streamoff>((2 * i + 1) * available / (2 * frameCount) * frameBytes));
        file.read(reinterpret_cast<char*>(rgba.data()), static_cast<std::streamsize>(frameBytes));
        if (!file) throw std::runtime_error("cannot read " + path.string());
        frames.emplace_back(std::move(rgba));
    }
    return frames;
}

template <typename Make>
Frames makeFrames(Make make) {
    Frames frames;
    for (unsigned i = 0; i < frameCount; ++i)
        frames.emplace_back(make(i));
    return frames;
}

/// A picture at its target size: drawing it is a copy.
class MemoryPicture : public zeb::Picture {
public:
    explicit MemoryPicture(const Bytes& rgba) : m_rgba(rgba) {}
    int width() const override { return ::width; }
    int height() const override { return ::height; }
    void draw(const zeb::BitmapContext& bitmap) const override {
        std::ranges::copy(m_rgba, bitmap.pixels.begin());
    }

private:
    const Bytes& m_rgba;
};

/// Registers a benchmark of `run` on one frame; `bytes` is the amount of data per frame.
template <typename Run>
void add(const std::string& name, const Frames& frames, std::size_t bytes, Run run) {
    const auto body = [&frames, bytes, run](benchmark::State& state) mutable {
        std::size_t next = 0;
        for (auto _ : state) {
            run(frames[next]);
            benchmark::ClobberMemory();
            next = (next + 1) % frames.size();
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    };
    benchmark::RegisterBenchmark(name.c_str(), body)->Unit(benchmark::kMicrosecond);
}

void addRunLengths(const std::string& kind, const Frames& frames) {
    constexpr std::size_t bytes = pixelCount * 2;
    add("compressRLE2/" + kind + "/plain", frames, bytes, [packets = Bytes()](const Frame& frame) mutable {
        packets.clear();
        zeb::reference::compressRLE2(frame.words, packets);
    });
    add("compressRLE2/" + kind, frames, bytes, [packets = Bytes()](const Frame& frame) mutable {
        packets.clear();
        zeb::compressRLE2(frame.words, packets);
    });
    add("expandRLE2/" + kind + "/plain", frames, bytes, [](const Frame& frame) {
        benchmark::DoNotOptimize(zeb::reference::expandRLE2(frame.block, frame.words.size()));
    });
    add("expandRLE2/" + kind + "/new buffer", frames, bytes, [](const Frame& frame) {
        benchmark::DoNotOptimize(zeb::expandRLE2(frame.block, frame.words.size()));
    });
    add("expandRLE2/" + kind, frames, bytes, [expanded = Bytes()](const Frame& frame) mutable {
        if (!zeb::expandRLE2(frame.block, frame.words.size(), expanded)) std::abort();
    });
}

void addColourReduction(const Frames& frames) {
    constexpr std::size_t bytes = pixelCount * 4;
    add("packRGB565/plain", frames, bytes, [words = Bytes(pixelCount * 2)](const Frame& frame) mutable {
        zeb::reference::packRGB565(frame.rgba, words);
    });
    add("packRGB565", frames, bytes,
        [words = Bytes(pixelCount * 2)](const Frame& frame) mutable { zeb::packRGB565(frame.rgba, words); });
    add("packRGB565Rows", frames, bytes, [words = Bytes(pixelCount * 2)](const Frame& frame) mutable {
        zeb::packRGB565Rows(frame.rgba, width, words);
    });
    for (const bool dither : {false, true}) {
        const std::string name = dither ? "quantise/dithered" : "quantise";
        add(name + "/plain", frames, bytes,
            [dither, indices = Bytes(pixelCount), luma = std::vector<double>()](const Frame& frame) mutable {
                zeb::reference::quantizeLuma(frame.rgba, width, height, colours, dither, luma, indices);
            });
        add(name, frames, bytes,
            [dither, indices = Bytes(pixelCount),
             quantiser = zeb::LuminanceQuantiser(colours)](const Frame& frame) mutable {
                if (dither) {
                    quantiser.dither(frame.rgba, width, height, indices);
                } else {
                    quantiser.quantise(frame.rgba, indices);
                }
            });
    }
}

void addNaturalColours(const Frames& frames) {
    add("NaturalTable", frames, 0,
        [](const Frame&) { benchmark::DoNotOptimize(zeb::NaturalTable(zeb::NaturalParameters())); });
    zeb::NaturalParameters adjusted;
    adjusted.controls = {.black = 0.02, .gamma = 1.3, .saturation = 1.2};
    add("NaturalTable/adjusted", frames, 0,
        [adjusted](const Frame&) { benchmark::DoNotOptimize(zeb::NaturalTable(adjusted)); });
    add("ColourAdjustment", frames, pixelCount * 4,
        [rgba = Bytes(pixelCount * 4),
         adjustment = zeb::ColourAdjustment(adjusted.controls)](const Frame& frame) mutable {
            std::memcpy(rgba.data(), frame.rgba.data(), rgba.size());
            adjustment.apply(rgba);
        });
    const auto table = std::make_shared<const zeb::NaturalTable>(zeb::NaturalParameters());
    for (const bool isFine : {false, true}) {
        // Shared, because the benchmark copies its body.
        const auto reduction = std::make_shared<zeb::NaturalReduction>(
            table, isFine ? zeb::NaturalDithering::fine : zeb::NaturalDithering::ordered, 100);
        add(isFine ? "natural/fine" : "natural/ordered", frames, pixelCount * 4,
            [reduction, indices = Bytes(pixelCount)](const Frame& frame) mutable {
                reduction->reduce(frame.rgba, width, height, indices);
            });
    }
}

void addRecords(const Frames& frames) {
    constexpr std::size_t bytes = pixelCount * 4;
    add("encodeMode32Sprite", frames, bytes, [encoder = zeb::SpriteEncoder()](const Frame& frame) mutable {
        benchmark::DoNotOptimize(encoder.encodeMode32Sprite(MemoryPicture(frame.rgba), width, height));
    });
    for (const bool dither : {false, true}) {
        add(dither ? "encodeMode4Sprite/dithered" : "encodeMode4Sprite", frames, bytes,
            [dither, encoder = zeb::SpriteEncoder()](const Frame& frame) mutable {
                benchmark::DoNotOptimize(
                    encoder.encodeMode4Sprite(MemoryPicture(frame.rgba), width, height, dither));
            });
    }
}

/// The reference copy allocates a picture each time, as decoding a record does.
void addDecoding(const Frames& frames) {
    constexpr std::size_t bytes = pixelCount * 4;
    add("decoded picture/memcpy", frames, bytes, [copy = Bytes(bytes)](const Frame& frame) mutable {
        std::memcpy(copy.data(), frame.rgba.data(), copy.size());
    });
    add("decoded picture/memcpy into a new buffer", frames, bytes,
        [](const Frame& frame) { benchmark::DoNotOptimize(Bytes(frame.rgba)); });
    for (const int mode : {32, 4}) {
        // Records by the address of their frame.
        std::map<const Frame*, Bytes> records;
        zeb::SpriteEncoder encoder;
        for (const Frame& frame : frames) {
            const MemoryPicture picture(frame.rgba);
            records[&frame] = mode == 32 ? encoder.encodeMode32Sprite(picture, width, height)
                                         : encoder.encodeMode4Sprite(picture, width, height, true);
        }
        add("decodeFrame/mode " + std::to_string(mode), frames, bytes,
            [records, decoder = zeb::FrameDecoder()](const Frame& frame) mutable {
                if (!decoder.decodeFrame(records.at(&frame), width, height)) std::abort();
            });
    }
}

int run(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;

    const char* path = std::getenv("ZEB_BENCH_FRAMES");
    const Frames natural = path != nullptr ? readFrames(path) : makeFrames([](unsigned seed) {
        return zeb::synthetic::natural(width, height, seed);
    });
    const Frames flat = makeFrames([](unsigned seed) {
        return zeb::synthetic::flat(width, height, static_cast<std::uint8_t>(seed * 20), 90, 160);
    });
    const Frames noise = makeFrames([](unsigned seed) { return zeb::synthetic::noise(width, height, seed); });

    std::size_t packed = 0;
    for (const Frame& frame : natural)
        packed += frame.block.size();
    benchmark::AddCustomContext("natural frames", path != nullptr ? path : "synthetic");
    benchmark::AddCustomContext(
        "compressed to",
        std::to_string(static_cast<double>(packed) / static_cast<double>(frameCount * pixelCount * 2)));

    add("memcpy", natural, pixelCount * 2, [copy = Bytes(pixelCount * 2)](const Frame& frame) mutable {
        std::memcpy(copy.data(), frame.words.data(), copy.size());
    });
    addRunLengths("natural", natural);
    addRunLengths("flat", flat);
    addRunLengths("noise", noise);
    addColourReduction(natural);
    addNaturalColours(natural);
    addRecords(natural);
    addDecoding(natural);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "codec_bench: " << error.what() << "\n";
        return 1;
    }
}
