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

#include "codec/SpriteEncoder.h"
#include "media/Media.h"

namespace zeb {

/// A frame of the movie on its way to the file: the encoded record, or the error of grabbing or encoding it.
struct EncodedFrame {
    std::vector<std::uint8_t> record;
    std::exception_ptr error;
};

/// Grabs the pictures of a schedule and encodes them, ahead of the one who takes the records, on threads of
/// its own: one grabs in ascending order, `threads` encode. Records come out in the order of the schedule.
/// Grabs that give the same picture object are encoded once.
///
/// Held at any time are at most threads + 1 pictures that wait to be drawn (besides one per encoding thread
/// and the one grabbed last), `framesAhead` frames in whatever state, and, counted once per picture,
/// `bytesAhead` bytes of finished records plus what the pictures in hand will become.
///
/// Used by one thread. Destroying it stops and joins its threads; that takes no longer than drawing a
/// picture, given that the image generator heeds its `isCancelled`.
class FramePipeline {
public:
    /// Called on the encoding threads, each with an encoder of its own.
    using Encode = std::function<std::vector<std::uint8_t>(SpriteEncoder& encoder, const Picture& picture)>;

    struct Limits {
        int threads = 1;               ///< for the decoder and for the encoders each, at least 1
        std::int64_t framesAhead = 2;  ///< at least 1
        std::uint64_t bytesAhead = 0;
    };

    /// Starts at once. `isCancelled` (may be empty) is handed to the decoder and asked from other threads.
    /// Throws what making the image generator throws.
    FramePipeline(const MediaAsset& asset, const GrabSchedule& schedule, Encode encode, const Limits& limits,
                  const IsCancelled& isCancelled);
    ~FramePipeline();
    FramePipeline(const FramePipeline&) = delete;
    FramePipeline& operator=(const FramePipeline&) = delete;

    /// The next frame, the same object for frames that show the same picture; null when it is not there
    /// within `patience`. To be called for as many frames as the schedule has; after an error
    /// that ends reading no more come. Throws only when a thread's own bookkeeping failed (out of
    /// memory).
    std::shared_ptr<const EncodedFrame> next(std::chrono::milliseconds patience);

    /// Tells the threads to stop and returns at once; no more frames come.
    void stop() noexcept { m_stopping.request_stop(); }

private:
    /// A grabbed picture on its way to a record.
    struct Slot {
        std::shared_ptr<const Picture> picture;     ///< until it is drawn
        std::shared_ptr<const EncodedFrame> frame;  ///< once it is done
        std::int64_t waiting = 0;                   ///< how many entries of m_frames it is

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
    const Encode m_encode;
    const Limits m_limits;
    std::stop_source m_stopping;
    std::unique_ptr<ImageGenerator> m_generator;

    std::mutex m_mutex;  ///< guards what follows, slots included
    std::condition_variable_any m_roomMade;
    std::condition_variable_any m_pictureGrabbed;
    std::condition_variable_any m_frameDone;
    std::deque<std::shared_ptr<Slot>> m_frames;    ///< grabbed and not taken yet, in order
    std::deque<std::shared_ptr<Slot>> m_pictures;  ///< grabbed and not drawn yet
    std::uint64_t m_bytesAhead = 0;                ///< of the records in m_frames, each counted once
    std::exception_ptr m_failure;                  ///< what ended a thread against all plans

    std::vector<std::jthread> m_threads;  ///< last, so that they end first
};

}  // namespace zeb
