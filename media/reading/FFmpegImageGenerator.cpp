#include "media/reading/FFmpegImageGenerator.h"

#include <array>
#include <utility>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

/// A jump ahead by more than this many seconds seeks to a key frame near its target.
constexpr double farAhead = 3;

}  // namespace

FFmpegImageGenerator::FFmpegImageGenerator(std::unique_ptr<Demuxer> demuxer, OpenDemuxer reopen,
                                           const VideoStreamFacts& facts, double origin, int threads)
    : m_reopen(std::move(reopen)), m_facts(facts), m_origin(origin), m_threads(threads) {
    start(std::move(demuxer));
}

void FFmpegImageGenerator::start(std::unique_ptr<Demuxer> demuxer) {
    m_source = std::make_unique<FrameSource>(std::move(demuxer), m_reopen, m_facts, m_origin, m_threads);
}

void FFmpegImageGenerator::expect(const GrabSchedule& schedule) {
    m_source->expect(schedule);
}

std::shared_ptr<const Picture> FFmpegImageGenerator::copyImage(MediaTime time) {
    const double target = time.seconds() + m_source->tolerance();
    if (!m_current && !m_next) {
        if (target > farAhead || m_isElsewhere) {
            restart(target);
        } else {
            m_next = m_source->next();
            m_currentIsFirst = true;
        }
    } else if (m_current && target < m_current->time && !m_currentIsFirst) {
        restart(target);
    } else if (m_next && target > m_next->time + farAhead && m_source->canSeek()) {
        restart(target);
    }
    if (!m_current) advance();
    while (m_next && m_next->time <= target)
        advance();
    if (!m_current) throw MediaError(MediaError::cannotDecode, {"error_media_no_picture"});
    if (m_source->hasLostPicture(m_current->time, target)) {
        throw MediaError(MediaError::cannotDecode, {"error_media_damaged_picture"});
    }
    return m_current->picture;
}

TimedPicture FFmpegImageGenerator::copyNearbyImage(MediaTime time, int pictures) {
    const bool hasDecoded = m_current || m_next;
    m_current.reset();
    m_next.reset();
    // Without seeking, the search only finds pictures after the current position.
    if (hasDecoded && !m_source->canSeek()) start(m_reopen());
    m_isElsewhere = true;
    const double target = time.seconds() + m_source->tolerance();
    const std::optional<double> keyTime = m_source->findKey(target);
    if (!keyTime) throw MediaError(MediaError::cannotDecode, {"error_media_no_picture"});
    const bool isKnown = m_nearby && m_nearby->keyTime == *keyTime && m_nearby->pictures == pictures &&
                         m_nearby->isLast && m_nearby->picture.time <= target;
    if (!isKnown) {
        m_nearby.reset();
        std::optional<FrameSource::NearbyFrame> found = m_source->decodeFromKey(target, pictures);
        if (!found) throw MediaError(MediaError::cannotDecode, {"error_media_damaged_picture"});
        auto picture = std::make_shared<FramePicture>(std::move(found->frame), m_facts, m_tools);
        m_nearby = {*keyTime, pictures, found->isLast, {found->time, std::move(picture)}};
    }
    return m_nearby->picture;
}

/// Makes the next frame the current one.
void FFmpegImageGenerator::advance() {
    if (!m_next) return;
    m_currentIsFirst = m_currentIsFirst && !m_current;
    auto picture = std::make_shared<FramePicture>(std::move(m_next->frame), m_facts, m_tools);
    m_current = Shown{m_next->time, std::move(picture)};
    m_next.reset();
    m_next = m_source->next();
}

/// Restarts decoding at a key frame before `target`: the nearest one, or earlier ones if the container's key
/// frames are wrong, or the start of the stream.
void FFmpegImageGenerator::restart(double target) {
    constexpr std::array stepsBack = {0.0, 1.0, 10.0};
    m_current.reset();
    m_next.reset();
    m_currentIsFirst = false;
    m_isElsewhere = false;
    for (const double stepBack : stepsBack) {
        const double from = target - stepBack;
        if (from <= 0 || !m_source->seek(from)) break;
        m_next = m_source->next();
        if (m_next && m_next->time <= target) return;
    }
    startAgain();
}

void FFmpegImageGenerator::startAgain() {
    m_next.reset();
    start(m_reopen());
    m_next = m_source->next();
    m_currentIsFirst = true;
}

}  // namespace zeb::ffmpeg
