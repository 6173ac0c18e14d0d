#include "conversion/run/FramePipeline.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/tasks/Tasks.h"

namespace zeb {

FramePipeline::FramePipeline(const MediaAsset& asset, const GrabSchedule& schedule, MakeEncoder makeEncoder,
                             const Limits& limits, const IsCancelled& isCancelled)
    : m_schedule(schedule), m_makeEncoder(std::move(makeEncoder)), m_limits(limits) {
    assert(limits.threads >= 1 && limits.framesAhead >= 1);
    // The decoder must also stop when the run ends for a reason other than the caller's cancellation.
    m_generator = asset.makeImageGenerator(limits.threads, [isCancelled, token = m_stopping.get_token()] {
        return token.stop_requested() || (isCancelled && isCancelled());
    });
    m_generator->expect(schedule);
    try {
        m_threads.reserve(static_cast<std::size_t>(limits.threads) + 1);
        startThread(&FramePipeline::grabAll);
        for (int i = 0; i < limits.threads; ++i)
            startThread(&FramePipeline::encodeAll);
    } catch (...) {
        m_stopping.request_stop();  // threads already started are joined by the destructors
        throw;
    }
}

FramePipeline::~FramePipeline() {
    m_stopping.request_stop();
}

void FramePipeline::startThread(void (FramePipeline::*work)(const std::stop_token&)) {
    m_threads.emplace_back([this, work] {
        try {
            (this->*work)(m_stopping.get_token());
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            m_failure = std::current_exception();
            m_frameDone.notify_one();
        }
    });
}

std::shared_ptr<const EncodedFrame> FramePipeline::next(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    const auto isDone = [this] { return m_failure || (!m_frames.empty() && m_frames.front()->frame); };
    if (!m_frameDone.wait_for(lock, patience, isDone)) return {};
    if (m_failure) std::rethrow_exception(m_failure);
    const std::shared_ptr<Slot> slot = std::move(m_frames.front());
    m_frames.pop_front();
    if (--slot->waiting == 0) m_bytesAhead -= slot->size();
    lock.unlock();
    m_roomMade.notify_one();
    return slot->frame;
}

/// Returns whether another picture may be grabbed. This cannot stay false forever: the frame taken next needs
/// no room to be finished, and taking frames makes room.
bool FramePipeline::hasRoom() const {
    return m_pictures.size() <= static_cast<std::size_t>(m_limits.threads) &&
           static_cast<std::int64_t>(m_frames.size()) < m_limits.framesAhead &&
           m_bytesAhead <= m_limits.bytesAhead;
}

void FramePipeline::grabAll(const std::stop_token& token) {
    std::shared_ptr<const Picture> lastPicture;  // kept, so that no other picture can have the same address
    std::shared_ptr<Slot> lastSlot;
    bool hasEnded = false;
    for (std::int64_t index = 0; index < m_schedule.count && !hasEnded; ++index) {
        {
            std::unique_lock lock(m_mutex);
            m_roomMade.wait(lock, token, [this] { return hasRoom(); });
        }
        if (token.stop_requested()) return;

        std::shared_ptr<const Picture> picture;
        std::exception_ptr error;
        try {
            picture = m_generator->copyImage(m_schedule.at(index));
            if (!picture) throw MediaError(MediaError::cannotDecode, {"error_media_no_picture"});
        } catch (const MediaError& mediaError) {
            hasEnded = mediaError.endsReading();
            error = std::current_exception();
        } catch (...) {
            error = std::current_exception();
        }

        if (error) {
            addFailure(std::move(error));
        } else if (picture == lastPicture) {
            addRepeat(lastSlot);
        } else {
            lastPicture = picture;
            lastSlot = addPicture(std::move(picture));
        }
    }
}

void FramePipeline::addFailure(std::exception_ptr error) {
    const auto slot = std::make_shared<Slot>();
    slot->frame = std::make_shared<const EncodedFrame>(EncodedFrame{{}, std::move(error)});
    addRepeat(slot);
}

void FramePipeline::addRepeat(const std::shared_ptr<Slot>& slot) {
    const std::lock_guard lock(m_mutex);
    m_frames.push_back(slot);
    if (slot->waiting++ == 0) m_bytesAhead += slot->size();
    m_frameDone.notify_one();
}

std::shared_ptr<FramePipeline::Slot> FramePipeline::addPicture(std::shared_ptr<const Picture> picture) {
    auto slot = std::make_shared<Slot>();
    slot->picture = std::move(picture);
    slot->waiting = 1;
    const std::lock_guard lock(m_mutex);
    m_frames.push_back(slot);
    m_pictures.push_back(slot);
    m_pictureGrabbed.notify_one();
    return slot;
}

void FramePipeline::encodeAll(const std::stop_token& token) {
    // Lower the priority: all threads depend on the decoder.
    giveWayToOtherThreads();
    const Encode encode = m_makeEncoder();
    for (;;) {
        std::unique_lock lock(m_mutex);
        m_pictureGrabbed.wait(lock, token, [this] { return !m_pictures.empty(); });
        if (token.stop_requested()) return;
        const std::shared_ptr<Slot> slot = std::move(m_pictures.front());
        m_pictures.pop_front();
        std::shared_ptr<const Picture> picture = std::move(slot->picture);
        lock.unlock();
        m_roomMade.notify_one();

        auto frame = std::make_shared<EncodedFrame>();
        try {
            frame->record = encode(*picture);
        } catch (...) {
            frame->error = std::current_exception();
        }
        picture.reset();

        lock.lock();
        slot->frame = std::move(frame);
        m_bytesAhead += slot->size();
        lock.unlock();
        m_frameDone.notify_one();
    }
}

}  // namespace zeb
