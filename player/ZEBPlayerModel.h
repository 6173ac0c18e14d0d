#pragma once

#include <QObject>
#include <QString>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "codec/FrameDecoder.h"
#include "codec/Mode32Interpretation.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/MainActor.h"
#include "platform/tasks/Tasks.h"
#include "player/MovieReader.h"
#include "player/SoundtrackPlayer.h"

namespace zeb {

/// Services used by a player. All of them outlive the model. Clock and main actor, which tasks use, outlive
/// `tasks`.
struct PlayerServices {
    MakeMovieReader makeReader;
    AudioOutput& audioOutput;
    MainActor& mainActor;
    Tasks& tasks;
    const Clock& clock;
};

/// Plays one movie: shows its frames one at a time, at the rate of the movie while playing, with the sound in
/// step. Main thread.
///
/// While a movie is shown, `displayedFrameIndex` is the frame before the next one to read. During playback a
/// task reads and decodes the frames. Every control operation waits for the frame being read, shows it, and
/// only then uses the reader. Opening and seeking read one frame synchronously.
class ZEBPlayerModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(int displayedFrameIndex READ displayedFrameIndexForWindow NOTIFY displayedFrameIndexChanged)
    Q_PROPERTY(int totalFrames READ totalFramesForWindow NOTIFY totalFramesChanged)
    Q_PROPERTY(int fps READ fps NOTIFY fpsChanged)
    Q_PROPERTY(int qlMode READ qlMode NOTIFY qlModeChanged)

public:
    using Image = std::shared_ptr<const FrameImage>;

    explicit ZEBPlayerModel(PlayerServices services, QObject* parent = nullptr);
    ~ZEBPlayerModel() override;

    /// The frame on screen. Null before the first frame and for a frame that could not be decoded.
    const Image& image() const { return m_image; }
    bool isPlaying() const { return m_isPlaying; }
    QString statusText() const { return QString::fromStdString(m_statusText); }
    bool isLooping() const { return m_isLooping; }
    Mode32Interpretation mode32() const { return m_mode32; }
    std::int64_t displayedFrameIndex() const { return m_displayedFrameIndex; }
    std::int64_t totalFrames() const { return m_totalFrames; }
    int fps() const { return m_fps; }
    int qlMode() const { return m_qlMode; }

    double durationSeconds() const;
    double currentSeconds() const;
    bool canStepForward() const;

    /// Shows the movie's first frame, paused. If the header cannot be read, the status shows the error and no
    /// movie is open.
    void open(const std::string& path);
    /// Stops playback and closes the movie.
    void unload();
    void play();
    void pause();
    /// Shows the given frame, clamped to the movie, paused.
    void seek(std::int64_t frame);

    /// Sets whether playback starts again at frame 0 after the last frame.
    void setLooping(bool isLooping);
    /// Sets how 16-bit pixels are interpreted: immediately while paused, from the next frame on while
    /// playing.
    void setMode32(Mode32Interpretation mode32);

signals:
    void imageChanged();
    void isPlayingChanged();
    void statusTextChanged();
    void isLoopingChanged();
    void mode32Changed();
    void displayedFrameIndexChanged();
    void totalFramesChanged();
    void fpsChanged();
    void qlModeChanged();

private:
    /// The open movie, shared with the task that plays it.
    struct Reel;
    /// A frame read by a task and not yet shown by the main thread.
    struct ReadFrame {
        std::int64_t index = 0;
        Image image;
        Clock::Instant nextMoment;  ///< time at which the following frame is due on screen
    };

    template <typename T>
    void publish(T& field, T value, void (ZEBPlayerModel::*changed)());
    template <typename Work>
    auto whileAlive(Work work);

    void showHeader(const ZEBHeader& header);
    void show(std::int64_t index, Image image);
    void showError(const std::string& description);
    void readAndShow(std::int64_t frame);
    void showReadFrame(Reel& reel);
    void playbackEnded(const std::shared_ptr<Reel>& reel, std::int64_t playback, const std::string& failure);
    void prepareAudio();
    void startAudio();
    void rejoinSound();

    // Sliders and texts of Qt Quick use 32-bit numbers.
    int displayedFrameIndexForWindow() const;
    int totalFramesForWindow() const;

    PlayerServices m_services;
    Image m_image;
    bool m_isPlaying = false;
    std::string m_statusText;
    bool m_isLooping = false;
    Mode32Interpretation m_mode32 = Mode32Interpretation::rgb565LE;
    std::int64_t m_displayedFrameIndex = 0;
    std::int64_t m_totalFrames = 0;
    int m_fps = 1;
    int m_qlMode = 0;

    std::string m_headerLine;
    std::shared_ptr<Reel> m_reel;
    std::optional<Task> m_playTask;
    std::int64_t m_playback = 0;  ///< the number of the latest `play`
    SoundtrackPlayer m_sound;
    std::int64_t m_currentFrameIndex = 0;  ///< the frame to read next
    Clock::Instant m_nextMoment;           ///< while playing: when that frame is due on screen
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
