#include "player/MovieReader.h"

namespace zeb {
namespace {

class FileMovieReader final : public MovieReader {
public:
    explicit FileMovieReader(const std::string& path) : m_reader(path) {}

    const ZEBHeader& readHeader() override { return m_reader.readHeader(); }
    std::optional<FrameImage> nextFrame(bool loop) override { return m_reader.nextFrame(loop); }
    void seekToFrame(std::int64_t frame) override { m_reader.seekToFrame(frame); }
    void setMode32Interpretation(Mode32Interpretation value) override {
        m_reader.setMode32Interpretation(value);
    }
    Soundtrack readAllAudio() override { return m_reader.readAllAudio(); }

private:
    ZEBReader m_reader;
};

}  // namespace

std::unique_ptr<MovieReader> makeFileMovieReader(const std::string& path) {
    return std::make_unique<FileMovieReader>(path);
}

}  // namespace zeb
