#include "conversion/comparison/MovieFrames.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "conversion/export/MovieInput.h"

namespace zeb {
namespace {

std::int64_t frameCount(const std::string& path, const IsCancelled& isCancelled) {
    MovieInput input(path, isCancelled);
    const MovieFacts facts = readMovieFacts(input);
    if (facts.isFinished) return facts.header.frameCount;
    const std::int64_t damaged = facts.damage ? facts.damage->seconds * facts.header.fps : 0;
    return facts.wholeFrames + damaged;
}

}  // namespace

MovieFrames::MovieFrames(const std::string& path, const IsCancelled& isCancelled)
    : m_walker(std::make_unique<MovieInput>(path, isCancelled)), m_count(frameCount(path, isCancelled)) {}

std::optional<FrameImage> MovieFrames::at(std::int64_t index) {
    const std::int64_t number = index / header().fps;
    if (!m_second || m_second->number != number) {
        const bool isNext = m_second && m_second->number + 1 == number;
        if (!isNext) m_walker.seekTo(number);
        m_second = m_walker.next();
    }
    const auto place = static_cast<std::size_t>(index % header().fps);
    if (!m_second || place >= m_second->frames.size()) return std::nullopt;
    m_walker.readFrame(m_second->frames[place], m_record);
    std::optional<FrameImage> image = m_decoder.decodeFrame(m_record, header().width, header().height);
    if (!image) return std::nullopt;
    for (std::size_t i = 0; i + 2 < image->pixels.size(); i += 4)
        std::swap(image->pixels[i], image->pixels[i + 2]);
    return image;
}

}  // namespace zeb
