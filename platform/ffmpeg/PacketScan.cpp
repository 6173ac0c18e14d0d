#include "platform/ffmpeg/PacketScan.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

/// Even a slide show with a murmur of sound takes more than this per second.
constexpr double leastPlausibleBytesPerSecond = 2000;
constexpr double neverDoubtedBelow = 20;  // seconds
constexpr double fastestFilm = 10'000;    // pictures per second; more comes of damaged times

struct ScannedVideo {
    std::int64_t packets = 0;
    double firstTime = 0;
    double lastTime = 0;
};

struct ScanResult {
    double end = 0;  ///< of the last picture or sound, in seconds of the container's clock
    std::vector<ScannedVideo> videos;
};

class Scan {
public:
    Scan(const std::string& path, const ContainerFacts& facts, const IsCancelled& isCancelled)
        : m_demuxer(path, isCancelled), m_facts(facts) {
        m_result.videos.resize(facts.videos.size());
        m_result.end = facts.origin;
    }

    /// Starts at the key frame before `time` instead of at the start.
    void skipTo(double time) {
        const VideoStreamFacts& video = m_facts.videos.front();
        m_demuxer.seek(video.stream, static_cast<std::int64_t>(time / video.timeBase.value()));
    }

    ScanResult run() {
        const Packet packet = makePacket();
        while (m_demuxer.read(*packet)) {
            count(*packet);
            av_packet_unref(packet.get());
        }
        return m_result;
    }

private:
    void count(const AVPacket& packet) {
        const AVRational timeBase = m_demuxer.format()->streams[packet.stream_index]->time_base;
        const std::int64_t stamp = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
        const double time = static_cast<double>(stamp) * av_q2d(timeBase);
        double length = static_cast<double>(std::max<std::int64_t>(packet.duration, 0)) * av_q2d(timeBase);
        for (std::size_t i = 0; i < m_facts.videos.size(); ++i) {
            const VideoStreamFacts& facts = m_facts.videos[i];
            if (facts.stream != packet.stream_index || (packet.flags & AV_PKT_FLAG_DISCARD) != 0) continue;
            ScannedVideo& video = m_result.videos[i];
            ++video.packets;
            if (!facts.hasTimestamps) {
                const double end =
                    m_facts.origin + static_cast<double>(video.packets) * facts.frameDuration();
                m_result.end = std::max(m_result.end, end);
                return;
            }
            if (stamp == AV_NOPTS_VALUE) return;
            if (length <= 0) length = facts.frameDuration();
            video.firstTime = video.packets == 1 ? time : std::min(video.firstTime, time);
            video.lastTime = std::max(video.lastTime, time);
            m_result.end = std::max(m_result.end, time + length);
            return;
        }
        const bool isSound =
            std::any_of(m_facts.sounds.begin(), m_facts.sounds.end(),
                        [&](const auto& sound) { return sound.stream == packet.stream_index; });
        if (isSound && stamp != AV_NOPTS_VALUE) m_result.end = std::max(m_result.end, time + length);
    }

    Demuxer m_demuxer;
    const ContainerFacts& m_facts;
    ScanResult m_result;
};

/// What the container says, in seconds from presentation time 0; nothing where it says nothing to rely on.
std::optional<double> statedDuration(const Demuxer& demuxer, const ContainerFacts& facts) {
    const AVFormatContext& format = *demuxer.format();
    if (format.duration == AV_NOPTS_VALUE || format.duration <= 0) return std::nullopt;
    if (format.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) return std::nullopt;
    if (std::any_of(facts.videos.begin(), facts.videos.end(),
                    [](const auto& v) { return !v.hasTimestamps; })) {
        return std::nullopt;
    }
    const double stated = static_cast<double>(format.duration) / AV_TIME_BASE;
    const double bytesPerSecond = static_cast<double>(demuxer.fileSize()) / stated;
    if (stated > neverDoubtedBelow && bytesPerSecond < leastPlausibleBytesPerSecond) return std::nullopt;
    return stated;
}

/// The latest end of the streams that know theirs, in seconds from presentation time 0; nothing if none does.
std::optional<double> streamsEnd(const Demuxer& demuxer, const ContainerFacts& facts) {
    const AVFormatContext& format = *demuxer.format();
    std::optional<double> latest;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream& stream = *format.streams[i];
        if (stream.start_time == AV_NOPTS_VALUE || stream.duration == AV_NOPTS_VALUE) continue;
        const double end =
            static_cast<double>(stream.start_time + stream.duration) * av_q2d(stream.time_base);
        latest = std::max(latest.value_or(0), end - facts.origin);
    }
    return latest;
}

/// Some containers count their length from the clock's zero, others from the first picture, and some only let
/// it be estimated: told by where the streams end.
std::optional<double> durationFromOrigin(const std::string& path, const Demuxer& demuxer,
                                         const ContainerFacts& facts, const IsCancelled& isCancelled) {
    constexpr double tolerance = 0.05;
    const std::optional<double> stated = statedDuration(demuxer, facts);
    if (!stated || facts.videos.empty()) return stated;
    const bool isEstimated = demuxer.format()->duration_estimation_method == AVFMT_DURATION_FROM_PTS;
    if (facts.origin < tolerance && !isEstimated) return stated;
    std::optional<double> end = isEstimated ? std::nullopt : streamsEnd(demuxer, facts);
    if (!end) {
        constexpr double tail = 1;  // second
        Scan scan(path, facts, isCancelled);
        scan.skipTo(facts.origin + *stated - tail);
        end = scan.run().end - facts.origin;
        // An estimate from the last times may lack the length of the last pictures, not more.
        if (isEstimated) return *end > *stated && *end < *stated + tail ? *end : *stated;
    }
    return *end > 0 && *end < *stated ? *end : *stated;
}

}  // namespace

double presentationDuration(const std::string& path, const Demuxer& opened, ContainerFacts& facts,
                            const IsCancelled& isCancelled) {
    const std::optional<double> stated = durationFromOrigin(path, opened, facts, isCancelled);
    const bool ratesKnown = std::all_of(facts.videos.begin(), facts.videos.end(),
                                        [](const VideoStreamFacts& video) { return video.frameRate > 0; });
    if (facts.videos.empty() || (stated && ratesKnown)) return stated.value_or(0);

    const ScanResult scanned = Scan(path, facts, isCancelled).run();
    for (std::size_t i = 0; i < facts.videos.size(); ++i) {
        const ScannedVideo& video = scanned.videos[i];
        if (facts.videos[i].frameRate > 0 || video.packets < 2 || video.lastTime <= video.firstTime) continue;
        const double rate = static_cast<double>(video.packets - 1) / (video.lastTime - video.firstTime);
        if (rate <= fastestFilm) facts.videos[i].frameRate = rate;
    }
    return stated.value_or(std::max(0.0, scanned.end - facts.origin));
}

}  // namespace zeb::ffmpeg
