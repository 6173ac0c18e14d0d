#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <queue>
#include <set>
#include <vector>

#include "media/Media.h"
#include "media/drawing/Deinterlacer.h"
#include "media/ffmpeg/Handles.h"
#include "media/reading/Demuxer.h"
#include "media/reading/GrabPlanner.h"
#include "media/reading/StreamFacts.h"

namespace zeb::ffmpeg {

/// A decoded picture and when it is shown, in seconds from presentation time 0.
struct TimedFrame {
    double time = 0;
    Frame frame;
};

/// Decodes one video stream from packets to progressive frames in display order. Used by one thread at a
/// time; the decoder's own threads are inside. What reads packets throws `MediaError::interrupted` and
/// `MediaError::cannotRead`.
///
/// How decoders patch damaged pictures depends on the timing of their threads. So the first sign of damage
/// makes this go back to a point from which all is sound, and decode with a single thread from there: the
/// pictures are the same for every number of threads.
class FrameSource {
public:
    /// `demuxer` must not have been read from yet; `reopen` opens the same file once more.
    /// Throws `MediaError` when there is no decoder for the stream.
    FrameSource(std::unique_ptr<Demuxer> demuxer, OpenDemuxer reopen, const VideoStreamFacts& facts,
                double origin, int threads);

    /// How far a picture's time may lie after a moment and still count as not after it: what containers lose
    /// by rounding times.
    double tolerance() const noexcept { return m_tolerance; }

    /// From here on only pictures that the schedule shows need come out; others may be missing. Has no effect
    /// where the stream does not allow it.
    void expect(const GrabSchedule& schedule);

    /// The next frame; nothing at the end.
    std::optional<TimedFrame> next();

    /// Whether a picture that belongs between `after` (exclusive) and `upTo` (inclusive) is missing because
    /// of damage.
    bool hasLostPicture(double after, double upTo) const;

    /// False for streams whose pictures get their times by decoding from the start.
    bool canSeek() const noexcept;

    /// Goes on with the key frame before `time`, as far as the container knows it; plans no more. False when
    /// the container cannot seek.
    bool seek(double time);

    /// Looks for a packet whose picture can be decoded without any other: the last one at or before `time`,
    /// else the nearest that is found. Its time, or nothing. Packets are read but not decoded; where the
    /// source cannot seek, from where the last search ended. Afterwards only `findKey`, `seek` and, once,
    /// `decodeFromKey`.
    std::optional<double> findKey(double time);

    struct NearbyFrame {
        double time = 0;
        Frame frame;
        bool isLast = false;  ///< so many packets lead no further
    };

    /// From the packet that `findKey` has found, decodes it and those behind it, `packets` in all at most
    /// (only that one where the source cannot seek): the last picture not after `time`, else the first.
    /// Nothing when there is damage.
    std::optional<NearbyFrame> decodeFromKey(double time, int packets);

private:
    enum class Timing {
        byPresentation,  ///< packets carry display times
        byDecoding,  ///< packets carry times in decoding order only: the pictures take them in display order
        byCounting,  ///< no times at all
    };

    void useDemuxer(std::unique_ptr<Demuxer> demuxer);
    void openDecoder(int threads);
    void reset();
    void decodeCarefully();
    void renewDecoder();
    bool seekToGroup(std::int64_t timestamp);
    bool canPlan() const;
    void endPlanning();
    void holdPacket();
    bool readPacket();
    bool isUsable(const AVPacket& packet);
    void sendNextPacket();
    void send(const AVPacket* packet);
    void receiveFrames();
    void accept(Frame frame);
    void pullDeinterlaced();
    void deliver(double time, Frame frame);
    double timeOf(const AVFrame& frame);
    double seconds(std::int64_t timestamp) const;
    bool startsGroup(const AVPacket& packet) const;
    bool isShown(const AVPacket& packet) const;
    void readUpToKey(double time);
    double passPacket();

    std::unique_ptr<Demuxer> m_demuxer;
    OpenDemuxer m_reopen;
    VideoStreamFacts m_facts;
    double m_origin;
    double m_tolerance;
    int m_threads;
    std::atomic<bool> m_sawDamage = false;  ///< set by the decoder's threads; outlives the decoder
    CodecContext m_decoder;
    Packet m_packet;
    std::optional<Timing> m_timing;  ///< known from the first packet on

    std::optional<GrabSchedule> m_schedule;  ///< while planning goes by it
    std::optional<GrabPlanner> m_planner;
    std::deque<Packet> m_planned;  ///< read ahead: the packets that the planner holds, if there is one
    bool m_packetsEnded = false;
    bool m_framesEnded = false;
    bool m_awaitsKey = false;                 ///< after a seek: what comes before a key frame is of no use
    std::optional<std::int64_t> m_entryTime;  ///< display time of the key frame that a seek led to

    std::int64_t m_counted = 0;  ///< frames so far, for counting
    std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>> m_decodingTimes;
    double m_lastTime = 0;
    bool m_hasLastTime = false;

    std::set<std::int64_t> m_awaited;  ///< display times of packets sent whose pictures have not come out
    bool m_isCareful = false;          ///< the stream has shown damage: one thread from here on
    std::deque<std::int64_t> m_groupStarts;  ///< stamps of the latest packets that depend on none before them
    std::optional<double> m_lastHandedOut;   ///< time of the last frame that `next` returned
    std::optional<double> m_known;  ///< frames up to this time were handed out before damage was seen

    Packet m_key;  ///< what `findKey` has found
    double m_keyTime = 0;
    double m_passedUpTo = 0;  ///< how far a search without seeking has come
    std::int64_t m_passed = 0;

    std::unique_ptr<Deinterlacer> m_deinterlacer;
    std::deque<TimedFrame> m_ready;
};

}  // namespace zeb::ffmpeg
