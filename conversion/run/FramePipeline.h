#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "media/Media.h"

namespace zeb {

/// A frame of the movie: the encoded record, or the error from grabbing or encoding it.
struct EncodedFrame {
    std::vector<std::uint8_t> record;
    std::exception_ptr error;
};

/// Grabs and encodes the pictures of a schedule on internal threads, ahead of the consumer. One thread grabs
/// in ascending order, `threads` threads encode. Records are returned in the order of the schedule. A picture
/// object grabbed several times is encoded once.
///
/// Memory limits: at most threads + 1 pictures waiting to be drawn (plus one per encoding thread and the one
/// grabbed last); at most `framesAhead` frames in any state; at most `bytesAhead` bytes of finished records,
/// counted once per picture, plus the records of the pictures being encoded.
///
/// Used by one thread. The destructor stops and joins the threads. This takes no longer than drawing a
/// picture, provided that the image generator checks its `isCancelled`.
class FramePipeline {
public:
    /// Returns the record of a picture. Used by one thread.
    using Encode = std::function<std::vector<std::uint8_t>(const Picture& picture)>;
    /// Makes the encoder of a thread; called on that thread.
    using MakeEncoder = std::function<Encode()>;

    struct Limits {
        int threads = 1;               ///< for the decoder and for the encoders each, at least 1
        std::int64_t framesAhead = 2;  ///< at least 1
        std::uint64_t bytesAhead = 0;
    };

    /// Starts at once. `isCancelled` (may be empty) is passed to the decoder and called from other threads.
    /// Throws the errors of `makeImageGenerator`.
    FramePipeline(const MediaAsset& asset, const GrabSchedule& schedule, MakeEncoder makeEncoder,
                  const Limits& limits, const IsCancelled& isCancelled);
    ~FramePipeline();
    FramePipeline(const FramePipeline&) = delete;
    FramePipeline& operator=(const FramePipeline&) = delete;

    /// Returns the next frame; the same object for frames that show the same picture. Returns null if the
    /// frame is not ready within `patience`. Call once per frame of the schedule. After an error that ends
    /// reading, no more frames follow. Throws only if a thread fails by itself (out of memory).
    std::shared_ptr<const EncodedFrame> next(std::chrono::milliseconds patience);

    /// Requests the threads to stop and returns at once. No more frames follow.
    void stop() noexcept { m_stopping.request_stop(); }

private:
    /// A grabbed picture and its record.
    struct Slot {
        std::shared_ptr<const Picture> picture;     ///< until drawn
        std::shared_ptr<const EncodedFrame> frame;  ///< once encoded
        std::int64_t waiting = 0;                   ///< number of entries in m_frames

        std::uint64_t size() const { return frame ? frame->record.size() : 0; }
    };

    void startThread(void (FramePipeline::*work)(const std::stop_token&));
    void grabAll(const std::stop_token& token);
    void encodeAll(const std::stop_token& token);
    void addFailure(std::exception_ptr error);
    void addRepeat(const std::shared_ptr<Slot>& slot);
    std::shared_ptr<Slot> addPicture(std::shared_ptr<const Picture> picture);
    bool hasRoom() const;

    const GrabSchedule m_schedule;
    const MakeEncoder m_makeEncoder;
    const Limits m_limits;
    std::stop_source m_stopping;
    std::unique_ptr<ImageGenerator> m_generator;

    std::mutex m_mutex;  ///< guards the members below, including the slots
    std::condition_variable_any m_roomMade;
    std::condition_variable_any m_pictureGrabbed;
    std::condition_variable_any m_frameDone;
    std::deque<std::shared_ptr<Slot>> m_frames;    ///< grabbed but not taken yet, in order
    std::deque<std::shared_ptr<Slot>> m_pictures;  ///< grabbed but not drawn yet
    std::uint64_t m_bytesAhead = 0;                ///< of the records in m_frames, each counted once
    std::exception_ptr m_failure;                  ///< unexpected exception that ended a thread

    std::vector<std::jthread> m_threads;  ///< last member: destroyed first, so that the threads end first
};

}  // namespace zeb
