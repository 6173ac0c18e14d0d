#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "media/Media.h"
#include "media/demuxing/Demuxer.h"
#include "media/demuxing/StreamFacts.h"
#include "media/drawing/Deinterlacer.h"
#include "media/ffmpeg/Handles.h"
#include "media/reading/FrameClock.h"
#include "media/reading/GrabPlanner.h"

namespace zeb::ffmpeg {

/// A decoded picture and its display time, in seconds from presentation time 0.
struct TimedFrame {
    double time = 0;
    Frame frame;
};

/// Decodes one video stream from packets to progressive frames in display order. Used by one thread at a
/// time; the decoder's threads are internal. Functions that read packets throw `MediaError::interrupted` and
/// `MediaError::cannotRead`.
///
/// Concealment of damaged pictures depends on the timing of the decoder's threads. At the first sign of
/// damage the source therefore returns to an undamaged point and decodes with a single thread from there: the
/// pictures are the same for every number of threads.
class FrameSource {
public:
    /// No packet of `demuxer` has been read yet; `reopen` opens the same file again. Throws `MediaError` if
    /// there is no decoder for the stream.
    FrameSource(std::unique_ptr<Demuxer> demuxer, OpenDemuxer reopen, const VideoStreamFacts& facts,
                double origin, int threads);

    /// Tolerance for comparing a picture's time with a moment, in seconds: a picture that is later by at most
    /// this counts as not after the moment. Covers the rounding of times by containers.
    double tolerance() const noexcept { return m_tolerance; }

    /// Allows `next` to leave out pictures that the schedule does not show. Has no effect for streams that do
    /// not permit it.
    void expect(const GrabSchedule& schedule);

    /// Returns the next frame; nothing at the end.
    std::optional<TimedFrame> next();

    /// Returns true if a picture between `after` (exclusive) and `upTo` (inclusive) is missing because of
    /// damage.
    bool hasLostPicture(double after, double upTo) const;

    /// Returns false for streams whose picture times are known only by decoding from the start.
    bool canSeek() const noexcept;

    /// Continues with the last key frame before `time`, according to the container; ends planning. Returns
    /// false if the container cannot seek.
    bool seek(double time);

    /// Finds a packet whose picture depends on no other: the last one at or before `time`, else the nearest.
    /// Returns its time, or nothing. Packets are read but not decoded. If the source cannot seek, the search
    /// starts where the last one ended. Afterwards only `findKey`, `seek` and, once, `decodeFromKey` may be
    /// called.
    std::optional<double> findKey(double time);

    struct NearbyFrame {
        double time = 0;
        Frame frame;
        bool isLast = false;  ///< `packets` packets give no later picture
    };

    /// Decodes up to `packets` packets from the packet of `findKey` on (only this packet if the source cannot
    /// seek). Returns the last picture not after `time`, else the first one; nothing if there is damage.
    std::optional<NearbyFrame> decodeFromKey(double time, int packets);

private:
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
    void readUpToKey(double time);
    double passPacket();

    std::unique_ptr<Demuxer> m_demuxer;
    OpenDemuxer m_reopen;
    VideoStreamFacts m_facts;
    double m_origin;
    FrameClock m_clock;
    double m_tolerance;
    int m_threads;
    std::atomic<bool> m_sawDamage = false;  ///< set by the decoder's threads; outlives the decoder
    CodecContext m_decoder;
    Packet m_packet;

    std::optional<GrabSchedule> m_schedule;  ///< while planning follows it
    std::optional<GrabPlanner> m_planner;
    std::deque<Packet> m_planned;  ///< packets read ahead, which the planner holds
    bool m_packetsEnded = false;
    bool m_framesEnded = false;
    bool m_awaitsKey = false;                 ///< after a seek: packets before a key frame are discarded
    std::optional<std::int64_t> m_entryTime;  ///< display time of the key frame after a seek

    std::set<std::int64_t> m_awaited;        ///< display times of sent packets without a received picture
    bool m_isCareful = false;                ///< the stream is damaged: decode with one thread
    std::deque<std::int64_t> m_groupStarts;  ///< timestamps of the latest packets that start a group
    std::optional<double> m_lastHandedOut;   ///< time of the last frame that `next` returned
    std::optional<double> m_known;           ///< frames up to this time were returned before damage was seen

    Packet m_key;  ///< the packet found by `findKey`
    double m_keyTime = 0;
    double m_passedUpTo = 0;  ///< end of the search without seeking, in seconds
    std::int64_t m_passed = 0;

    std::unique_ptr<Deinterlacer> m_deinterlacer;
    std::deque<TimedFrame> m_ready;
};

}  // namespace zeb::ffmpeg
