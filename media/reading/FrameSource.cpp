#include "media/reading/FrameSource.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "media/demuxing/PacketKind.h"
#include "media/ffmpeg/Libraries.h"
#include "media/reading/DamageWatch.h"

namespace zeb::ffmpeg {
namespace {

constexpr double nanosecondsPerSecond = 1e9;

double toleranceOf(const VideoStreamFacts& facts) {
    constexpr double leastTolerance = 0.001;
    const double tick = facts.timeBase.value();
    // Times whose tick is about one picture are not rounded.
    return tick < facts.frameDuration() / 2 ? std::max(leastTolerance, tick) : leastTolerance;
}

}  // namespace

FrameSource::FrameSource(std::unique_ptr<Demuxer> demuxer, OpenDemuxer reopen, const VideoStreamFacts& facts,
                         double origin, int threads)
    : m_reopen(std::move(reopen)),
      m_facts(facts),
      m_origin(origin),
      m_clock(facts, origin),
      m_tolerance(toleranceOf(facts)),
      m_threads(threads),
      m_packet(makePacket()) {
    useDemuxer(std::move(demuxer));
    openDecoder(threads);
}

void FrameSource::useDemuxer(std::unique_ptr<Demuxer> demuxer) {
    m_demuxer = std::move(demuxer);
    AVFormatContext& format = *m_demuxer->format();
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        if (static_cast<int>(i) != m_facts.stream) format.streams[i]->discard = AVDISCARD_ALL;
    }
}

void FrameSource::openDecoder(int threads) {
    const AVStream& stream = *m_demuxer->format()->streams[m_facts.stream];
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr) {
        throw MediaError(MediaError::cannotDecode,
                         {"error_media_no_decoder_format", {avcodec_get_name(stream.codecpar->codec_id)}});
    }
    m_decoder.reset(avcodec_alloc_context3(codec));
    if (!m_decoder) throw std::bad_alloc();
    if (avcodec_parameters_to_context(m_decoder.get(), stream.codecpar) < 0) throw std::bad_alloc();
    m_decoder->pkt_timebase = stream.time_base;
    // A picture waits for its reference pictures: two more threads than cores keep all cores busy.
    m_decoder->thread_count = threads > 1 ? threads + 2 : 1;
    watchForDamage(*m_decoder, m_sawDamage);
    if (avcodec_open2(m_decoder.get(), codec, nullptr) < 0) {
        throw MediaError(MediaError::cannotDecode, {"error_media_decoder_start"});
    }
}

void FrameSource::reset() {
    m_planner.reset();
    if (m_schedule) m_planner.emplace(*m_schedule, m_tolerance);
    m_planned.clear();
    m_packetsEnded = m_framesEnded = false;
    m_awaitsKey = false;
    m_entryTime.reset();
    m_clock.reset();
    m_awaited.clear();
    m_groupStarts.clear();
    m_deinterlacer.reset();
    m_ready.clear();
}

/// Restarts with a single thread. Every frame returned so far was undamaged, so restart at the last group
/// that begins before it, or at the beginning. Planning continues: a skipped damaged packet must be skipped
/// again, or the pictures would depend on when the damage was noticed.
void FrameSource::decodeCarefully() {
    m_isCareful = true;
    m_known = m_lastHandedOut;
    std::optional<std::int64_t> group;
    for (const std::int64_t start : m_groupStarts) {
        if (m_known && m_clock.seconds(start) <= *m_known) group = start;
    }
    openDecoder(1);
    reset();
    if (!group || !seekToGroup(*group)) {
        useDemuxer(m_reopen());
        reset();
    }
    m_sawDamage = false;
}

/// Decoders conceal damage with data from earlier pictures. With a new decoder, a group is decoded to the
/// same pictures wherever decoding began.
void FrameSource::renewDecoder() {
    const AVDiscard skipped = m_decoder->skip_frame;
    avcodec_send_packet(m_decoder.get(), nullptr);
    receiveFrames();
    openDecoder(1);
    m_decoder->skip_frame = skipped;
}

bool FrameSource::seekToGroup(std::int64_t timestamp) {
    if (!m_demuxer->seek(m_facts.stream, timestamp) || !readPacket()) return false;
    const bool isFound = m_packet->pts == timestamp;
    holdPacket();
    return isFound;
}

void FrameSource::expect(const GrabSchedule& schedule) {
    if (!canPlan()) return;
    m_schedule = schedule;
    m_planner.emplace(schedule, m_tolerance);
}

void FrameSource::endPlanning() {
    m_schedule.reset();
    m_planner.reset();
}

/// Returns true if every packet is one picture with a time, and no picture needs its neighbours to be
/// complete (interlaced fields).
bool FrameSource::canPlan() const {
    const AVCodecParameters& parameters = *m_demuxer->format()->streams[m_facts.stream]->codecpar;
    if (parameters.field_order != AV_FIELD_PROGRESSIVE && parameters.field_order != AV_FIELD_UNKNOWN)
        return false;
    if (!m_facts.hasTimestamps || m_clock.timing() || m_isCareful) return false;
    switch (parameters.codec_id) {
        case AV_CODEC_ID_H264:
        case AV_CODEC_ID_HEVC:
        case AV_CODEC_ID_MPEG1VIDEO:
        case AV_CODEC_ID_MPEG2VIDEO:
        case AV_CODEC_ID_MPEG4:
            return true;
        default:
            return isIntraOnly(parameters.codec_id);
    }
}

/// Returns true if the packet can be decoded after a seek. Packets before the key frame, and later ones
/// displayed before it, may refer to packets that were not read; decoders would report damage.
bool FrameSource::isUsable(const AVPacket& packet) {
    if (m_awaitsKey) {
        const bool mustStartGroup =
            m_clock.timing() != FrameClock::Timing::byPresentation && m_decoder->has_b_frames > 0;
        if ((packet.flags & AV_PKT_FLAG_KEY) == 0 || (mustStartGroup && !startsGroup(packet, *m_decoder)))
            return false;
        m_awaitsKey = false;
        if (packet.pts != AV_NOPTS_VALUE) m_entryTime = packet.pts;
    }
    return !m_entryTime || packet.pts == AV_NOPTS_VALUE || packet.pts >= *m_entryTime;
}

bool FrameSource::readPacket() {
    while (!m_packetsEnded) {
        if (!m_demuxer->read(*m_packet)) {
            m_packetsEnded = true;
            break;
        }
        if (m_packet->stream_index == m_facts.stream && m_packet->size > 0 && isUsable(*m_packet)) {
            m_clock.takePacket(*m_packet);
            if (m_clock.timing() != FrameClock::Timing::byPresentation) endPlanning();
            // Decoders copy the timestamp to the picture. A decoding time identifies the picture's packet.
            if (m_clock.timing() == FrameClock::Timing::byDecoding) m_packet->pts = m_packet->dts;
            return true;
        }
        av_packet_unref(m_packet.get());
    }
    return false;
}

/// Appends the packet just read to `m_planned` and to the plan.
void FrameSource::holdPacket() {
    if (m_packet->pts == AV_NOPTS_VALUE) endPlanning();
    if (m_planner) {
        PlannedPacket planned;
        planned.displayTime = m_clock.seconds(m_packet->pts);
        if (m_packet->dts != AV_NOPTS_VALUE) {
            planned.decodeTime = m_clock.seconds(std::min(m_packet->dts, m_packet->pts));
        }
        planned.startsGroup = startsGroup(*m_packet, *m_decoder);
        planned.isShown = isShown(*m_packet, m_decoder->codec_id);
        planned.size = static_cast<std::size_t>(m_packet->size);
        m_planner->add(planned);
    }
    m_planned.push_back(std::exchange(m_packet, makePacket()));
}

void FrameSource::sendNextPacket() {
    while (m_planner && !m_packetsEnded && !m_planner->isReady()) {
        if (!readPacket()) {
            m_planner->end();
            break;
        }
        holdPacket();
    }
    if (m_planned.empty()) {
        if (!m_packetsEnded && readPacket()) {
            m_decoder->skip_frame = AVDISCARD_DEFAULT;
            send(m_packet.get());
            av_packet_unref(m_packet.get());
        } else {
            send(nullptr);
        }
        return;
    }
    const PacketUse use = m_planner ? m_planner->take() : PacketUse::decode;
    const Packet packet = std::move(m_planned.front());
    m_planned.pop_front();
    if (use == PacketUse::drop) return;
    m_decoder->skip_frame = use == PacketUse::decode ? AVDISCARD_DEFAULT : AVDISCARD_NONREF;
    send(packet.get());
}

/// Sends a packet to the decoder (null at the end) and receives all frames that are ready, so that a decoder
/// setting for this packet does not affect the next one.
void FrameSource::send(const AVPacket* packet) {
    const bool hasPicture = packet != nullptr && isShown(*packet, m_decoder->codec_id);
    if (hasPicture && m_clock.timing() == FrameClock::Timing::byDecoding && packet->dts != AV_NOPTS_VALUE) {
        m_clock.sent(packet->dts,
                     static_cast<std::size_t>(m_decoder->has_b_frames + (m_isCareful ? 1 : m_threads) + 2));
    }
    if (hasPicture && m_clock.timing() == FrameClock::Timing::byPresentation &&
        packet->pts != AV_NOPTS_VALUE && m_decoder->skip_frame == AVDISCARD_DEFAULT) {
        constexpr std::size_t mostAwaited = 1024;
        if (m_awaited.size() >= mostAwaited) m_awaited.erase(m_awaited.begin());
        m_awaited.insert(packet->pts);
    }
    if (hasPicture && m_clock.timing() != FrameClock::Timing::byCounting &&
        startsGroup(*packet, *m_decoder)) {
        if (m_isCareful && !isIntraOnly(m_decoder->codec_id)) renewDecoder();
        constexpr std::size_t mostGroups = 64;
        if (m_groupStarts.size() >= mostGroups) m_groupStarts.pop_front();
        m_groupStarts.push_back(packet->pts);
    }
    const int result = avcodec_send_packet(m_decoder.get(), packet);
    if (result < 0 && result != AVERROR_EOF) m_sawDamage = true;
    receiveFrames();
}

void FrameSource::receiveFrames() {
    // Limit the loop for a decoder that reports errors without consuming data.
    int errorsInARow = 0;
    constexpr int mostErrorsInARow = 64;
    for (;;) {
        Frame frame = makeFrame();
        const int result = avcodec_receive_frame(m_decoder.get(), frame.get());
        if (result == AVERROR(EAGAIN)) return;
        if (result == AVERROR_EOF || (result < 0 && ++errorsInARow > mostErrorsInARow)) {
            if (m_packetsEnded && m_planned.empty()) {
                m_framesEnded = true;
                if (m_deinterlacer) {
                    m_deinterlacer->push(nullptr);
                    pullDeinterlaced();
                }
            }
            return;
        }
        if (result < 0) {
            m_sawDamage = true;
            continue;
        }
        errorsInARow = 0;
        accept(std::move(frame));
    }
}

void FrameSource::accept(Frame frame) {
    if (frame->decode_error_flags != 0) m_sawDamage = true;
    m_awaited.erase(frame->pts);
    const bool startsGroup = std::ranges::find(m_groupStarts, frame->pts) != m_groupStarts.end();
    const double time = m_clock.timeOf(*frame, startsGroup);
    if (!m_deinterlacer && frame->interlaced_frame == 0) {
        deliver(time, std::move(frame));
        return;
    }
    if (m_deinterlacer && !m_deinterlacer->takes(*frame)) {
        m_deinterlacer->push(nullptr);
        pullDeinterlaced();
        m_deinterlacer.reset();
    }
    if (!m_deinterlacer) m_deinterlacer = std::make_unique<Deinterlacer>(*frame, m_threads);
    frame->pts = std::llround(time * nanosecondsPerSecond);
    m_deinterlacer->push(frame.get());
    pullDeinterlaced();
}

void FrameSource::pullDeinterlaced() {
    while (Frame frame = m_deinterlacer->pull()) {
        const double time = static_cast<double>(frame->pts) / nanosecondsPerSecond;
        deliver(time, std::move(frame));
    }
}

void FrameSource::deliver(double time, Frame frame) {
    if (m_known && time <= *m_known) return;
    m_ready.push_back({time, std::move(frame)});
}

std::optional<TimedFrame> FrameSource::next() {
    for (;;) {
        // A frame is returned only after all packets up to its packet have been decoded. If no damage has
        // been seen by then, the frame is undamaged.
        if (m_sawDamage && !m_isCareful) decodeCarefully();
        if (!m_ready.empty()) break;
        if (m_framesEnded) return std::nullopt;
        sendNextPacket();
    }
    TimedFrame frame = std::move(m_ready.front());
    m_ready.pop_front();
    m_lastHandedOut = frame.time;
    return frame;
}

bool FrameSource::hasLostPicture(double after, double upTo) const {
    if (!m_isCareful) return false;
    return std::any_of(m_awaited.begin(), m_awaited.end(), [&](std::int64_t timestamp) {
        const double time = m_clock.seconds(timestamp);
        return time > after + m_tolerance / 2 && time <= upTo;
    });
}

bool FrameSource::canSeek() const noexcept {
    if (!m_facts.hasTimestamps || !m_demuxer->canSeek()) return false;
    // Decoding times are assigned to pictures in display order. That fails if pictures after a key frame
    // refer to pictures before it and cannot be decoded. Only these codings mark key frames that no later
    // picture refers past.
    const bool marksEntries =
        m_decoder->codec_id == AV_CODEC_ID_H264 || m_decoder->codec_id == AV_CODEC_ID_HEVC;
    return m_clock.timing() == FrameClock::Timing::byPresentation || m_decoder->has_b_frames == 0 ||
           marksEntries;
}

bool FrameSource::seek(double time) {
    if (!canSeek()) return false;
    const auto timestamp =
        static_cast<std::int64_t>(std::floor((time + m_origin) / m_facts.timeBase.value()));
    if (!m_demuxer->seek(m_facts.stream, timestamp)) return false;
    avcodec_flush_buffers(m_decoder.get());
    m_decoder->skip_frame = AVDISCARD_DEFAULT;
    m_schedule.reset();
    reset();
    m_awaitsKey = true;
    m_lastHandedOut.reset();
    m_known.reset();
    return true;
}

/// Consumes the packet just read during a search: keeps a key frame, discards others. Returns its time.
double FrameSource::passPacket() {
    const std::int64_t stamp = m_packet->pts;
    const double time = m_clock.timing() == FrameClock::Timing::byCounting || stamp == AV_NOPTS_VALUE
                            ? m_clock.countedTime(m_passed)
                            : m_clock.seconds(stamp);
    ++m_passed;
    if ((m_packet->flags & AV_PKT_FLAG_KEY) != 0) {
        m_key = std::exchange(m_packet, makePacket());
        m_keyTime = time;
    } else {
        av_packet_unref(m_packet.get());
    }
    return time;
}

void FrameSource::readUpToKey(double time) {
    while (m_passedUpTo < time && readPacket())
        m_passedUpTo = passPacket();
}

std::optional<double> FrameSource::findKey(double time) {
    // The first packet determines the timing of the stream, and so whether it can seek.
    if (!m_clock.timing() && readPacket()) m_passedUpTo = passPacket();
    if (!canSeek()) {
        readUpToKey(time);
        return m_key ? std::optional(m_keyTime) : std::nullopt;
    }
    m_key.reset();
    // Some containers seek to a key packet after the time, or find none near the end.
    constexpr std::array stepsBack = {0.0, 1.0, 10.0};
    for (const double stepBack : stepsBack) {
        const double from = std::max(time - stepBack, 0.0);
        if (!seek(from)) break;
        if (readPacket()) passPacket();
        if (from <= 0 || (m_key && m_keyTime <= time)) break;
    }
    return m_key ? std::optional(m_keyTime) : std::nullopt;
}

std::optional<FrameSource::NearbyFrame> FrameSource::decodeFromKey(double time, int packets) {
    if (!m_key) return std::nullopt;
    avcodec_flush_buffers(m_decoder.get());
    m_decoder->skip_frame = AVDISCARD_DEFAULT;
    m_deinterlacer.reset();
    m_ready.clear();
    m_clock.forgetLastTime();
    m_framesEnded = false;
    m_known.reset();
    m_sawDamage = false;
    send(m_key.get());
    // A packet may hold only one field; the second field is then in the next packet.
    const AVFieldOrder order = m_demuxer->format()->streams[m_facts.stream]->codecpar->field_order;
    const int least = order == AV_FIELD_PROGRESSIVE || order == AV_FIELD_UNKNOWN ? 1 : 2;
    const int most = canSeek() ? std::max(packets, least) : 1;
    int sent = 1;
    const auto hasArrived = [&] { return !m_ready.empty() && m_ready.back().time > time; };
    for (; sent < most && (sent < least || !hasArrived()) && readPacket(); ++sent) {
        send(m_packet.get());
        av_packet_unref(m_packet.get());
    }
    send(nullptr);
    if (m_deinterlacer && !m_framesEnded) {
        m_deinterlacer->push(nullptr);
        pullDeinterlaced();
    }
    m_deinterlacer.reset();
    if (m_sawDamage.exchange(false) || m_ready.empty()) return std::nullopt;

    std::size_t found = 0;
    while (found + 1 < m_ready.size() && m_ready[found + 1].time <= time)
        ++found;
    const bool isLast = sent == most && found + 1 == m_ready.size();
    NearbyFrame nearby{m_clock.timing() == FrameClock::Timing::byCounting ? m_keyTime : m_ready[found].time,
                       std::move(m_ready[found].frame), isLast};
    m_ready.clear();
    return nearby;
}

}  // namespace zeb::ffmpeg
