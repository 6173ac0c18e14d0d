#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <queue>
#include <vector>

#include "media/demuxing/StreamFacts.h"
#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

/// Gives each decoded picture of a stream its time, in seconds from presentation time 0. Times never
/// decrease.
class FrameClock {
public:
    enum class Timing {
        byPresentation,  ///< packets carry display times
        byDecoding,      ///< packets carry times in decoding order only; pictures take them in display order
        byCounting,      ///< no times at all
    };

    FrameClock(const VideoStreamFacts& facts, double origin) : m_facts(facts), m_origin(origin) {}

    /// Seconds from presentation time 0 for a timestamp of the stream.
    double seconds(std::int64_t timestamp) const;
    /// How the stream carries times; known from its first packet on.
    const std::optional<Timing>& timing() const noexcept { return m_timing; }
    /// The time of picture `number` of a stream without times.
    double countedTime(std::int64_t number) const;

    /// Derives the timing from the first packet; later packets do not change it.
    void takePacket(const AVPacket& packet);
    /// Notes the decoding time of a packet that was sent to the decoder. At most `most` times are held, so
    /// that those of lost pictures do not delay the others.
    void sent(std::int64_t decodingTime, std::size_t most);
    /// Returns the time of the next picture in display order. `startsGroup`: the picture depends on none
    /// before it.
    double timeOf(const AVFrame& frame, bool startsGroup);

    /// Forgets all pictures, for example after a seek; the timing stays.
    void reset();
    /// Lets the next picture have any time.
    void forgetLastTime() noexcept { m_lastTime.reset(); }

private:
    double streamTime(const AVFrame& frame, bool startsGroup);

    VideoStreamFacts m_facts;
    double m_origin;
    std::optional<Timing> m_timing;
    std::int64_t m_counted = 0;  ///< pictures so far, for counting
    std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>> m_decodingTimes;
    std::optional<double> m_lastTime;
};

}  // namespace zeb::ffmpeg
