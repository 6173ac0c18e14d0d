#include "media/demuxing/PacketScan.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

/// Slide shows with quiet sound have more bytes per second than this.
constexpr double leastPlausibleBytesPerSecond = 2000;
constexpr double neverDoubtedBelow = 20;  // seconds; shorter stated durations are accepted
constexpr double fastestFilm = 10'000;    // pictures per second; higher rates result from damaged times
/// Tolerance in seconds for the end of a track before its stated end.
constexpr double statedEndTolerance = 1;
constexpr double longestOverlap = 1;  // seconds by which packets of one stream may be out of order

/// Measurements of a stream's packets, in seconds of the container's clock.
struct ScannedStream {
    std::int64_t packets = 0;
    double firstTime = 0;
    double lastTime = 0;
    std::optional<double> end;
    std::optional<double> doubtfulEnd;  ///< of the latest packet, if its time is far ahead

    /// Adds a packet. A time far ahead is taken for damage if the time of the next packet falls back.
    void reach(double start, double packetEnd) {
        if (doubtfulEnd && start > *doubtfulEnd - longestOverlap) settle();
        if (end && start > *end && !followsInTime(*end, start)) {
            doubtfulEnd = packetEnd;
        } else {
            doubtfulEnd.reset();
            end = std::max(end.value_or(packetEnd), packetEnd);
        }
    }
    /// Accepts the doubtful end: it was the last packet, or the next one confirms it.
    void settle() {
        if (doubtfulEnd) end = std::max(*end, *doubtfulEnd);
        doubtfulEnd.reset();
    }
};

class Scan {
public:
    Scan(std::unique_ptr<Demuxer> demuxer, const ContainerFacts& facts)
        : m_demuxer(std::move(demuxer)),
          m_facts(facts),
          m_videos(facts.videos.size()),
          m_sounds(facts.sounds.size()),
          m_joints(facts.videos.front().stream) {}

    /// Starts at the key frame before `time` instead of at the beginning.
    void skipTo(double time) {
        const VideoStreamFacts& video = m_facts.videos.front();
        m_demuxer->seek(video.stream, static_cast<std::int64_t>(time / video.timeBase.value()));
    }

    /// Reads the packets of one stream only. If an index points past the end of the file, reading ends at the
    /// first stream with such an entry.
    void readOnly(int stream) {
        AVFormatContext& format = *m_demuxer->format();
        for (unsigned i = 0; i < format.nb_streams; ++i)
            format.streams[i]->discard = static_cast<int>(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }

    void run() {
        const Packet packet = makePacket();
        while (m_demuxer->read(*packet)) {
            count(*packet);
            av_packet_unref(packet.get());
        }
        for (ScannedStream& stream : m_videos)
            stream.settle();
        for (ScannedStream& stream : m_sounds)
            stream.settle();
    }

    const std::vector<ScannedStream>& videos() const { return m_videos; }
    const std::vector<ScannedStream>& sounds() const { return m_sounds; }
    TimeJoints joints() const { return m_joints.joints(); }

private:
    void count(const AVPacket& packet) {
        const AVRational timeBase = m_demuxer->format()->streams[packet.stream_index]->time_base;
        const std::int64_t stamp = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
        const double time = static_cast<double>(stamp) * av_q2d(timeBase);
        double length = static_cast<double>(std::max<std::int64_t>(packet.duration, 0)) * av_q2d(timeBase);
        for (std::size_t i = 0; i < m_facts.videos.size(); ++i) {
            const VideoStreamFacts& facts = m_facts.videos[i];
            if (facts.stream != packet.stream_index || (packet.flags & AV_PKT_FLAG_DISCARD) != 0) continue;
            ScannedStream& video = m_videos[i];
            ++video.packets;
            if (!facts.hasTimestamps) {
                const double end =
                    m_facts.origin + static_cast<double>(video.packets) * facts.frameDuration();
                video.reach(end - facts.frameDuration(), end);
                return;
            }
            if (stamp == AV_NOPTS_VALUE) return;
            if (length <= 0) length = facts.frameDuration();
            video.firstTime = video.packets == 1 ? time : std::min(video.firstTime, time);
            video.lastTime = std::max(video.lastTime, time);
            video.reach(time, time + length);
            place(packet, time, time + length);
            return;
        }
        for (std::size_t i = 0; i < m_facts.sounds.size(); ++i) {
            if (m_facts.sounds[i].stream != packet.stream_index || stamp == AV_NOPTS_VALUE) continue;
            m_sounds[i].reach(time, time + length);
            place(packet, time, time + length);
        }
    }

    void place(const AVPacket& packet, double start, double end) {
        const std::int64_t decoded = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
        const double tick = av_q2d(m_demuxer->format()->streams[packet.stream_index]->time_base);
        m_joints.add({packet.stream_index, packet.pos, static_cast<double>(decoded) * tick, start, end});
    }

    std::unique_ptr<Demuxer> m_demuxer;
    const ContainerFacts& m_facts;
    std::vector<ScannedStream> m_videos;
    std::vector<ScannedStream> m_sounds;
    TimeJointFinder m_joints;
};

bool isEstimate(const AVFormatContext& format) {
    return format.duration_estimation_method != AVFMT_DURATION_FROM_STREAM;
}

/// Returns the duration that the container states, in seconds; nothing if it is missing or implausible.
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

/// Parses a time such as "00:00:20.023000000" to seconds.
std::optional<double> clockTime(std::string_view text) {
    double seconds = 0;
    for (;;) {
        const std::string_view part = text.substr(0, text.find(':'));
        double value = 0;
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        if (error != std::errc() || end != part.data() + part.size() || !(value >= 0)) return std::nullopt;
        seconds = seconds * 60 + value;
        if (part.size() == text.size()) return seconds;
        text.remove_prefix(part.size() + 1);
    }
}

/// Returns the end that a container states for a stream, in seconds from presentation time 0.
std::optional<double> statedEnd(const Demuxer& demuxer, int index, double origin) {
    const AVFormatContext& format = *demuxer.format();
    const AVStream& stream = *format.streams[index];
    if (isEstimate(format)) return std::nullopt;
    const double tick = av_q2d(stream.time_base);
    // If the index at the end of an AVI file is missing, only the frame count in its header is correct.
    if (std::string_view(format.iformat->name) == "avi" && stream.nb_frames > 0)
        return static_cast<double>(stream.nb_frames) * tick - origin;
    if (stream.start_time != AV_NOPTS_VALUE && stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
        return static_cast<double>(stream.start_time + stream.duration) * tick - origin;
    const AVDictionaryEntry* tag = av_dict_get(stream.metadata, "DURATION", nullptr, 0);
    const std::optional<double> tagged = tag == nullptr ? std::nullopt : clockTime(tag->value);
    if (!tagged || format.duration == AV_NOPTS_VALUE) return std::nullopt;
    // A tag may have been copied from another file: limit it to the duration.
    return std::min(*tagged, static_cast<double>(format.duration) / AV_TIME_BASE) - origin;
}

enum class Index {
    none,      ///< lists key frames only, or not the whole file
    complete,  ///< lists all pictures and sounds, and the file contains them
    cutOff,    ///< points past the end of the file
};

/// Returns the state of a stream's index, for containers whose index lists every packet.
Index indexOf(const Demuxer& demuxer, int index, double origin) {
    AVStream* const stream = demuxer.format()->streams[index];
    const std::string_view name = demuxer.format()->iformat->name;
    const int count = avformat_index_get_entries_count(stream);
    const std::optional<double> stated = statedEnd(demuxer, index, origin);
    if ((name != "avi" && name.find("mp4") == std::string_view::npos) || count == 0 || !stated)
        return Index::none;
    std::int64_t lastTime = 0;
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(stream, i);
        if (entry.pos < 0 || static_cast<std::uint64_t>(entry.pos + entry.size) > demuxer.fileSize())
            return Index::cutOff;
        lastTime = std::max(lastTime, entry.timestamp);
    }
    const double last = static_cast<double>(lastTime) * av_q2d(stream->time_base) - origin;
    return last >= *stated - statedEndTolerance ? Index::complete : Index::none;
}

/// Returns the combined state of the indexes of the first video and all sounds.
Index indexOf(const Demuxer& demuxer, const ContainerFacts& facts) {
    Index index = indexOf(demuxer, facts.videos.front().stream, facts.origin);
    for (const SoundStreamFacts& sound : facts.sounds) {
        const Index other = indexOf(demuxer, sound.stream, facts.origin);
        const bool isEmpty = avformat_index_get_entries_count(demuxer.format()->streams[sound.stream]) == 0;
        if (!isEmpty && other != Index::complete && index != Index::cutOff) index = other;
    }
    return index;
}

/// Sets the missing frame rates of videos.
void measureRates(ContainerFacts& facts, const std::vector<ScannedStream>& scanned) {
    for (std::size_t i = 0; i < facts.videos.size(); ++i) {
        const ScannedStream& video = scanned[i];
        if (facts.videos[i].frameRate > 0 || video.packets < 2 || video.lastTime <= video.firstTime) continue;
        const double rate = static_cast<double>(video.packets - 1) / (video.lastTime - video.firstTime);
        if (rate <= fastestFilm) facts.videos[i].frameRate = rate;
    }
}

class Measurement {
public:
    Measurement(ContainerFacts& facts, const Demuxer& opened, const OpenDemuxer& reopen)
        : m_facts(facts), m_opened(opened), m_reopen(reopen), m_stated(statedDuration(opened, facts)) {}

    void run() {
        if (m_facts.videos.empty()) {
            for (SoundStreamFacts& sound : m_facts.sounds)
                sound.track.end.time = m_stated.value_or(0);
            return;
        }
        const bool areRatesKnown = std::all_of(m_facts.videos.begin(), m_facts.videos.end(),
                                               [](const auto& video) { return video.frameRate > 0; });
        const bool maySkip = m_stated && areRatesKnown && !mayBeginAgain();
        const Index index = indexOf(m_opened, m_facts);
        if (index == Index::complete && maySkip) {
            believeStatedEnds();
        } else if (index == Index::cutOff) {
            scanStreams();
        } else if (!maySkip || !scanTail()) {
            scanAll();
        }
        noteBreakOffs();
    }

private:
    bool mayBeginAgain() const {
        return (m_opened.format()->iformat->flags & AVFMT_TS_DISCONT) != 0 &&
               m_facts.videos.front().hasTimestamps;
    }

    std::optional<double> statedEndOf(int stream) const {
        return statedEnd(m_opened, stream, m_facts.origin);
    }

    void believeStatedEnds() {
        for (VideoStreamFacts& video : m_facts.videos)
            video.end.time = statedEndOf(video.stream).value_or(*m_stated);
        for (SoundStreamFacts& sound : m_facts.sounds)
            sound.track.end.time = statedEndOf(sound.stream).value_or(*m_stated);
    }

    void scanStreams() {
        const auto endOf = [this](int stream, auto streams, std::size_t index) {
            Scan scan(m_reopen(), m_facts);
            scan.readOnly(stream);
            scan.run();
            return (scan.*streams)()[index].end.value_or(m_facts.origin) - m_facts.origin;
        };
        for (std::size_t i = 0; i < m_facts.videos.size(); ++i)
            m_facts.videos[i].end.time = endOf(m_facts.videos[i].stream, &Scan::videos, i);
        for (std::size_t i = 0; i < m_facts.sounds.size(); ++i)
            m_facts.sounds[i].track.end.time = endOf(m_facts.sounds[i].stream, &Scan::sounds, i);
    }

    /// Reads the packets near the stated end; returns false if no picture of the first video is among them.
    bool scanTail() {
        constexpr double tail = 1;  // second
        Scan scan(m_reopen(), m_facts);
        const double start = std::max(*m_stated - tail, 0.0);
        scan.skipTo(m_facts.origin + start);
        scan.run();
        if (!scan.videos().front().end) return false;
        takeEnds(scan, start);
        return true;
    }

    void scanAll() {
        auto scan = std::make_unique<Scan>(m_reopen(), m_facts);
        scan->run();
        if (mayBeginAgain()) {
            m_facts.joints = scan->joints();
            if (!m_facts.joints.empty()) {
                scan = std::make_unique<Scan>(m_reopen(), m_facts);
                scan->run();
            }
        }
        measureRates(m_facts, scan->videos());
        takeEnds(*scan, 0);
    }

    /// Sets the ends of all tracks. All packets from `from` on have been read; a stream without any of them
    /// ends before `from`.
    void takeEnds(const Scan& scan, double from) {
        const auto endOf = [&](const ScannedStream& scanned, int stream) {
            if (scanned.end) return std::max(*scanned.end - m_facts.origin, 0.0);
            return std::min(statedEndOf(stream).value_or(from), from);
        };
        for (std::size_t i = 0; i < m_facts.videos.size(); ++i)
            m_facts.videos[i].end.time = endOf(scan.videos()[i], m_facts.videos[i].stream);
        for (std::size_t i = 0; i < m_facts.sounds.size(); ++i)
            m_facts.sounds[i].track.end.time = endOf(scan.sounds()[i], m_facts.sounds[i].stream);
    }

    void noteBreakOffs() {
        const auto note = [](TrackEnd& end, std::optional<double> stated) {
            if (stated && *stated > end.time + statedEndTolerance) end.stated = stated;
        };
        VideoStreamFacts& video = m_facts.videos.front();
        std::optional<double> stated = statedEndOf(video.stream);
        double latest = video.end.time;
        for (SoundStreamFacts& sound : m_facts.sounds) {
            note(sound.track.end, statedEndOf(sound.stream));
            latest = std::max(latest, sound.track.end.time);
        }
        // If no track reaches the stated duration of the file, assume that the pictures break off.
        const bool isStated = m_stated && !isEstimate(*m_opened.format());
        if (!stated && isStated && latest + statedEndTolerance < *m_stated) stated = m_stated;
        note(video.end, stated);
    }

    ContainerFacts& m_facts;
    const Demuxer& m_opened;
    const OpenDemuxer& m_reopen;
    std::optional<double> m_stated;  ///< stated duration of the file in seconds
};

}  // namespace

void measure(ContainerFacts& facts, const Demuxer& opened, const OpenDemuxer& reopen) {
    Measurement(facts, opened, reopen).run();
}

}  // namespace zeb::ffmpeg
