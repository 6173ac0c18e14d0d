// tiny_movie FILE
//
// Writes a movie of two seconds, a bar moving over a coloured background with a rising tone, and reads it
// back: from pictures to a file and from the file to pictures.

#include <zeb/codec/SpriteEncoder.h>
#include <zeb/format/ZEBReader.h>
#include <zeb/format/ZEBWriter.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <vector>

namespace {

constexpr int width = 128, height = 64;  // a multiple of 8, which QL programs prefer
constexpr int framesPerSecond = 5, seconds = 2;
constexpr int soundRate = 20000;  // the only supported rate

/// The encoder accepts any subclass of `Picture`. A real picture is scaled to the bitmap; this one is
/// computed at its size.
class MovingBar : public zeb::Picture {
public:
    explicit MovingBar(int frame) : m_frame(frame) {}

    int width() const override { return ::width; }
    int height() const override { return ::height; }

    void draw(const zeb::BitmapContext& bitmap) const override {
        auto pixel = bitmap.pixels.begin();
        for (int y = 0; y < bitmap.height; ++y) {
            for (int x = 0; x < bitmap.width; ++x) {
                const bool isBar = x * 10 / bitmap.width == m_frame;
                *pixel++ = isBar ? 255 : 0;                                                   // red
                *pixel++ = isBar ? 255 : static_cast<std::uint8_t>(x * 255 / bitmap.width);   // green
                *pixel++ = isBar ? 255 : static_cast<std::uint8_t>(y * 255 / bitmap.height);  // blue
                *pixel++ = 255;                                                               // opaque
            }
        }
    }

private:
    int m_frame;
};

/// One second of a square wave: unsigned 8-bit samples, 128 is silence.
std::vector<std::uint8_t> tone(int hertz) {
    std::vector<std::uint8_t> samples(soundRate);
    for (int i = 0; i < soundRate; ++i)
        samples[static_cast<std::size_t>(i)] = i * 2 * hertz / soundRate % 2 == 0 ? 118 : 138;
    return samples;
}

void writeMovie(const std::string& path) {
    zeb::MovieParameters movie;
    movie.title = "A tiny movie";
    movie.width = width;
    movie.height = height;
    movie.fps = framesPerSecond;
    movie.qlMode = 32;  // 16 bits per pixel; 4 selects the QL's four colours
    movie.totalFrames = framesPerSecond * seconds;
    movie.frameIndexCount = seconds;
    movie.audioChannels = 1;
    movie.loop = true;

    zeb::ZEBWriter writer(path, movie);
    zeb::SpriteEncoder encoder;
    for (int second = 0; second < seconds; ++second) {
        std::vector<std::vector<std::uint8_t>> records;
        for (int frame = 0; frame < framesPerSecond; ++frame)
            records.push_back(
                encoder.encodeMode32Sprite(MovingBar(second * framesPerSecond + frame), width, height));
        const std::vector<std::span<const std::uint8_t>> frames(records.begin(), records.end());
        writer.writeSecond(tone(440 * (second + 1)), frames);
    }
    writer.finish();  // without it the movie plays, but seeking is slow
    writer.close();
}

/// Reads the movie back; returns false if it differs.
bool readMovie(const std::string& path) {
    zeb::ZEBReader reader(path);
    const zeb::ZEBHeader& header = reader.readHeader();
    std::cout << header.title << ": " << header.width << " x " << header.height << ", " << header.fps
              << " frames per second, " << header.frameCount << " frames\n";

    // Read frames in order, or from any frame on.
    for (const int frame : {0, 1, 2, framesPerSecond * seconds - 1}) {
        reader.seekToFrame(frame);
        const std::optional<zeb::FrameImage> image = reader.nextFrame(false);
        if (!image) {
            std::cerr << "frame " << frame << ": " << reader.lastDecodeDebug() << '\n';
            return false;
        }
        // Pixels are blue, green, red, alpha; only the bar contains red.
        int firstRed = 0;
        while (firstRed < image->width && image->pixels[static_cast<std::size_t>(4 * firstRed + 2)] == 0)
            ++firstRed;
        std::cout << "frame " << frame << ": the bar begins at column " << firstRed << '\n';
        if (firstRed != (frame * width + 9) / 10) return false;
    }
    const zeb::Soundtrack sound = reader.readAllAudio();
    std::cout << sound.bytes.size() << " bytes of sound at " << sound.sampleRate << " Hz\n";
    return sound.bytes.size() == std::size_t{soundRate} * seconds && std::ranges::count(sound.bytes, 118) > 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tiny_movie FILE\n";
        return 2;
    }
    try {
        writeMovie(argv[1]);
        return readMovie(argv[1]) ? 0 : 1;
    } catch (const std::exception& error) {
        // `what()` of every error is its description.
        std::cerr << error.what() << '\n';
        return 1;
    }
}
