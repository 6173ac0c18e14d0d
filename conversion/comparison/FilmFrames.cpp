#include "conversion/comparison/FilmFrames.h"

#include <utility>

#include "conversion/look/FrameMaker.h"

namespace zeb {

FilmFrames::FilmFrames(const MediaAsset& film, const ConversionPlan& plan, const Settings& settings,
                       int threads, IsCancelled isCancelled)
    : m_source(plan.source),
      m_settings(settings),
      m_schedule(grabSchedule(plan)),
      m_generator(film.makeImageGenerator(threads, std::move(isCancelled))) {
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

PixelBytes FilmFrames::drawn(const Picture& picture, FrameSize size) const {
    Settings settings = m_settings;
    settings.width = size.width;
    settings.height = size.height;
    FrameGeometry geometry = frameGeometry(m_source.width, m_source.height, settings);
    if (settings.shape.fit == Shape::Fit::scale || geometry.size != size) {
        // The movie's size holds, whatever size was requested for it, and if no conversion makes this size.
        geometry.size = size;
        geometry.area = {0, 0, size.width, size.height};
    }
    PixelBytes pixels(static_cast<std::size_t>(geometry.size.width) *
                      static_cast<std::size_t>(geometry.size.height) * 4);
    drawInShape(picture, geometry, settings.shape.padColour, pixels);
    return pixels;
}

}  // namespace zeb
