#include "player/ZEBPlayerModel.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <limits>
#include <mutex>
#include <utility>

#include "platform/files/FileHandle.h"
#include "platform/text/ErrorText.h"
#include "platform/text/LocalizedText.h"
#include "player/PlaybackPeriod.h"

namespace zeb {
namespace {

std::string headerLineOf(const ZEBHeader& header) {
    return header.title + " • " + std::to_string(header.width) + "x" + std::to_string(header.height) + " • " +
           std::to_string(header.fps) + " fps • Mode " + std::to_string(header.mode);
}

/// Returns whether the exception being handled is a missing file.
bool isMissing() {
    try {
        throw;
    } catch (const FileError& error) {
        return error.code() == ENOENT || error.code() == ENOTDIR;
    } catch (...) {
        return false;
    }
}

int clampedToInt(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, 0, std::numeric_limits<int>::max()));
}

ZEBPlayerModel::Image imageOf(std::optional<FrameImage> frame) {
    return frame ? std::make_shared<const FrameImage>(*std::move(frame)) : nullptr;
}

}  // namespace

struct ZEBPlayerModel::Reel {
    std::unique_ptr<MovieReader> reader;  ///< guarded by `mutex`, except for `readAllAudio`
    std::atomic<bool> isLooping = false;

    std::mutex mutex;
    std::condition_variable_any wasShown;
    std::optional<ReadFrame> readFrame;  ///< guarded by `mutex`: read by a task, shown on the main thread
};

namespace {

/// Data of the playback task. The model itself belongs to the main thread.
template <typename Reel>
struct Playback {
    std::shared_ptr<Reel> reel;
    std::int64_t next = 0;
    std::int64_t totalFrames = 0;
    Clock::Instant begin;  ///< the moment of the first frame
    std::chrono::milliseconds period{};
    const Clock& clock;
    MainActor& mainActor;
    MainActor::Work show;  ///< shows the reel's frame; runs on the main thread
};

/// Plays until the end or until `token` requests a stop. Throws the errors of the reader.
template <typename Reel>
void playLoop(Playback<Reel> playback, const std::stop_token& token) {
    Reel& reel = *playback.reel;
    Clock::Instant deadline = playback.begin;
    while (!token.stop_requested()) {
        {
            std::unique_lock lock(reel.mutex);
            // The canceller takes the lock after requesting the stop, so the reader must not be used after
            // this check.
            if (token.stop_requested()) return;
            if (playback.totalFrames > 0 && playback.next >= playback.totalFrames) {
                if (!reel.isLooping) return;
                reel.reader->seekToFrame(0);
                playback.next = 0;
            }
            auto image = imageOf(reel.reader->nextFrame(reel.isLooping));
            reel.readFrame = {playback.next++, std::move(image), deadline + playback.period};
        }
        playback.mainActor.post(playback.show);
        {
            // No frame is skipped: read the next frame after this one has been shown.
            std::unique_lock lock(reel.mutex);
            reel.wasShown.wait(lock, token, [&] { return !reel.readFrame; });
        }
        deadline += playback.period;
        if (playback.clock.now() < deadline && !playback.clock.sleepUntil(deadline, token)) return;
    }
}

}  // namespace

ZEBPlayerModel::ZEBPlayerModel(PlayerServices services, QObject* parent)
    : QObject(parent), m_services(std::move(services)), m_sound(m_services.audioOutput, m_services.clock) {}

ZEBPlayerModel::~ZEBPlayerModel() {
    if (m_playTask) m_playTask->cancel();
}

template <typename T>
void ZEBPlayerModel::publish(T& field, T value, void (ZEBPlayerModel::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    emit(this->*changed)();
}

template <typename Work>
auto ZEBPlayerModel::whileAlive(Work work) {
    return [alive = std::weak_ptr(m_alive), work = std::move(work)] {
        if (!alive.expired()) work();
    };
}

// MARK: State shown by the window

double ZEBPlayerModel::durationSeconds() const {
    return m_totalFrames < 1 ? 0 : static_cast<double>(m_totalFrames) / std::max(m_fps, 1);
}

double ZEBPlayerModel::currentSeconds() const {
    return static_cast<double>(m_displayedFrameIndex) / std::max(m_fps, 1);
}

bool ZEBPlayerModel::canStepForward() const {
    return m_totalFrames == 0 || m_displayedFrameIndex < m_totalFrames - 1;
}

int ZEBPlayerModel::displayedFrameIndexForWindow() const {
    return clampedToInt(m_displayedFrameIndex);
}

int ZEBPlayerModel::totalFramesForWindow() const {
    return clampedToInt(m_totalFrames);
}

void ZEBPlayerModel::show(std::int64_t index, Image image) {
    m_currentFrameIndex = index + 1;
    const std::string status =
        image ? m_headerLine : localizedText("player_undecodable_format", {m_headerLine});
    publish(m_displayedFrameIndex,
            std::clamp<std::int64_t>(index, 0, std::max<std::int64_t>(m_totalFrames - 1, 0)),
            &ZEBPlayerModel::displayedFrameIndexChanged);
    publish(m_image, std::move(image), &ZEBPlayerModel::imageChanged);
    publish(m_statusText, status, &ZEBPlayerModel::statusTextChanged);
}

void ZEBPlayerModel::showError(const std::string& description) {
    publish(m_statusText, localizedText("log_error_format", {description}),
            &ZEBPlayerModel::statusTextChanged);
}

// MARK: Control

void ZEBPlayerModel::open(const std::string& path) {
    unload();
    m_reel = std::make_shared<Reel>();
    m_reel->reader = m_services.makeReader(path);
    m_reel->reader->setMode32Interpretation(m_mode32);
    m_reel->isLooping = m_isLooping;
    prepareAudio();
    try {
        showHeader(m_reel->reader->readHeader());
    } catch (...) {
        m_reel.reset();
        publish(m_image, {}, &ZEBPlayerModel::imageChanged);
        if (isMissing()) {
            publish(m_statusText, localizedText("error_zeb_missing_format", {path}),
                    &ZEBPlayerModel::statusTextChanged);
        } else {
            showError(currentErrorText());
        }
        return;
    }
    try {
        show(0, imageOf(m_reel->reader->nextFrame(m_isLooping)));
    } catch (...) {
        showError(currentErrorText());
    }
}

void ZEBPlayerModel::showHeader(const ZEBHeader& header) {
    m_headerLine = headerLineOf(header);
    publish(m_qlMode, header.mode, &ZEBPlayerModel::qlModeChanged);
    publish(m_totalFrames, header.frameCount, &ZEBPlayerModel::totalFramesChanged);
    publish(m_fps, std::max(header.fps, 1), &ZEBPlayerModel::fpsChanged);
    publish(m_statusText, m_headerLine, &ZEBPlayerModel::statusTextChanged);
}

void ZEBPlayerModel::unload() {
    pause();
    m_reel.reset();
    m_currentFrameIndex = 0;
    publish(m_displayedFrameIndex, std::int64_t{0}, &ZEBPlayerModel::displayedFrameIndexChanged);
    publish(m_totalFrames, std::int64_t{0}, &ZEBPlayerModel::totalFramesChanged);
    publish(m_fps, 1, &ZEBPlayerModel::fpsChanged);
    publish(m_qlMode, 0, &ZEBPlayerModel::qlModeChanged);
    m_sound.teardown();
}

void ZEBPlayerModel::play() {
    if (!m_reel) return;
    pause();
    m_nextMoment = m_services.clock.now();
    startAudio();
    publish(m_isPlaying, true, &ZEBPlayerModel::isPlayingChanged);

    const std::int64_t number = ++m_playback;
    Playback<Reel> playback{m_reel,
                            m_currentFrameIndex,
                            m_totalFrames,
                            m_nextMoment,
                            playbackPeriod(m_fps),
                            m_services.clock,
                            m_services.mainActor,
                            whileAlive([this, reel = m_reel] { showReadFrame(*reel); })};
    auto ended = [this, reel = m_reel, number](const std::string& failure) {
        playbackEnded(reel, number, failure);
    };
    m_playTask = m_services.tasks.start(
        TaskPriority::userInitiated,
        [playback, ended, alive = std::weak_ptr(m_alive)](const std::stop_token& token) {
            std::string failure;
            try {
                playLoop(playback, token);
            } catch (...) {
                failure = currentErrorText();
            }
            playback.mainActor.post([ended, alive, failure] {
                if (!alive.expired()) ended(failure);
            });
        });
}

void ZEBPlayerModel::showReadFrame(Reel& reel) {
    std::optional<ReadFrame> frame;
    {
        const std::lock_guard lock(reel.mutex);
        frame = std::exchange(reel.readFrame, {});
        reel.wasShown.notify_all();
    }
    if (!frame) return;
    const bool beganAgain = frame->index < m_currentFrameIndex;
    m_nextMoment = frame->nextMoment;
    show(frame->index, std::move(frame->image));
    if (!beganAgain) return;
    m_sound.picturesBeganAgain();
    rejoinSound();
}

void ZEBPlayerModel::playbackEnded(const std::shared_ptr<Reel>& reel, std::int64_t playback,
                                   const std::string& failure) {
    if (reel != m_reel || playback != m_playback || !m_isPlaying) return;
    if (!failure.empty()) showError(failure);
    m_playTask.reset();
    m_sound.pause();
    publish(m_isPlaying, false, &ZEBPlayerModel::isPlayingChanged);
}

void ZEBPlayerModel::pause() {
    publish(m_isPlaying, false, &ZEBPlayerModel::isPlayingChanged);
    if (m_playTask) {
        m_playTask->cancel();
        m_playTask.reset();
        showReadFrame(*m_reel);
    }
    m_sound.pause();
}

void ZEBPlayerModel::seek(std::int64_t frame) {
    if (!m_reel) return;
    pause();
    readAndShow(std::clamp<std::int64_t>(frame, 0, std::max<std::int64_t>(m_totalFrames - 1, 0)));
}

void ZEBPlayerModel::readAndShow(std::int64_t frame) {
    try {
        Image image;
        {
            const std::lock_guard lock(m_reel->mutex);
            m_reel->reader->seekToFrame(frame);
            image = imageOf(m_reel->reader->nextFrame(m_isLooping));
        }
        show(frame, std::move(image));
    } catch (...) {
        showError(currentErrorText());
    }
}

void ZEBPlayerModel::setLooping(bool isLooping) {
    if (m_reel) m_reel->isLooping = isLooping;
    publish(m_isLooping, isLooping, &ZEBPlayerModel::isLoopingChanged);
    m_sound.setLoops(isLooping);
    if (isLooping) rejoinSound();
}

void ZEBPlayerModel::setMode32(Mode32Interpretation mode32) {
    if (m_reel) {
        const std::lock_guard lock(m_reel->mutex);
        m_reel->reader->setMode32Interpretation(mode32);
    }
    const bool isNew = mode32 != m_mode32;
    publish(m_mode32, mode32, &ZEBPlayerModel::mode32Changed);
    if (isNew && m_reel && !m_isPlaying && m_qlMode == 32) readAndShow(m_displayedFrameIndex);
}

// MARK: Sound

void ZEBPlayerModel::prepareAudio() {
    auto deliver = [this, reel = m_reel](std::shared_ptr<const Soundtrack> soundtrack) {
        if (reel != m_reel) return;
        m_sound.setSoundtrack(std::move(soundtrack));
        if (m_isPlaying) startAudio();
    };
    m_services.tasks.start(
        TaskPriority::userInitiated, [deliver, alive = std::weak_ptr(m_alive), reel = m_reel,
                                      &mainActor = m_services.mainActor](const std::stop_token&) {
            std::shared_ptr<const Soundtrack> soundtrack;
            try {
                soundtrack = std::make_shared<const Soundtrack>(reel->reader->readAllAudio());
            } catch (...) {
                std::printf("ZEB audio prepare failed: %s\n", currentErrorText().c_str());
                return;
            }
            if (soundtrack->sampleRate < 1 || soundtrack->audioChannels < 1 || soundtrack->bytes.empty())
                return;
            mainActor.post([deliver, alive, soundtrack] {
                if (!alive.expired()) deliver(soundtrack);
            });
        });
}

void ZEBPlayerModel::startAudio() {
    m_sound.start(m_currentFrameIndex, {m_totalFrames, m_fps}, m_nextMoment);
}

/// Restarts the sound if it has ended. It runs slightly ahead of the pictures and may have ended before
/// looping was switched on.
void ZEBPlayerModel::rejoinSound() {
    if (m_isPlaying && m_sound.hasEnded()) startAudio();
}

}  // namespace zeb
