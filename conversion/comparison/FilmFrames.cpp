#include "conversion/comparison/FilmFrames.h"

#include <utility>

namespace zeb {

FilmFrames::FilmFrames(const MediaAsset& film, const ConversionPlan& plan, int threads,
                       IsCancelled isCancelled)
    : m_schedule(grabSchedule(plan)), m_generator(film.makeImageGenerator(threads, std::move(isCancelled))) {
    m_generator->expect(m_schedule);
}

std::shared_ptr<const Picture> FilmFrames::at(std::int64_t index) {
    try {
        return m_generator->copyImage(m_schedule.at(index));
    } catch (const MediaError& error) {
        if (error.endsReading()) throw;
        return nullptr;
    }
}

PixelBytes FilmFrames::drawn(const Picture& picture, FrameSize size) {
    PixelBytes pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4);
    picture.draw({pixels, size.width, size.height, DrawingColourSpace::sRGB});
    return pixels;
}

}  // namespace zeb
