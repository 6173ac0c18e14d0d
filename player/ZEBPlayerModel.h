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

/// What a player stands on. All of it outlives the model; what tasks use (clock, main actor) outlives
/// `tasks`.
struct PlayerServices {
    MakeMovieReader makeReader;
    AudioOutput& audioOutput;
    MainActor& mainActor;
    Tasks& tasks;
    const Clock& clock;
};

/// Plays one movie: shows frames one at a time, at the movie's rate while playing, with the sound in step.
/// Main thread.
///
/// While a movie is shown, `displayedFrameIndex` is the frame before the one that the reader reads next.
/// While it plays, frames are read and decoded in a task; every control operation waits for the frame that is
/// being read, shows it, and only then touches the reader. Opening and seeking read their one frame at once.
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

    /// The frame on screen; none before the first one and for a frame that could not be decoded.
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

    /// Shows the movie's first frame, not playing. Where no header can be read, the status says why, and
    /// there is no movie.
    void open(const std::string& path);
    /// Stops everything and forgets the movie.
    void unload();
    void play();
    void pause();
    /// Shows the given frame, or the nearest that there is, not playing.
    void seek(std::int64_t frame);

    /// Start again at frame 0 after the last one.
    void setLooping(bool isLooping);
    /// How 16-bit pixels are read: at once while paused, from the next frame on while playing.
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
    /// What a task has read and the main thread has not shown yet.
    struct ReadFrame {
        std::int64_t index = 0;
        Image image;
        Clock::Instant nextMoment;  ///< when the one after it is to be on screen
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

    // Qt Quick's sliders and texts count in 32 bits.
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
    std::int64_t m_currentFrameIndex = 0;  ///< the frame that is read next
    Clock::Instant m_nextMoment;           ///< while playing: when that one is to be on screen
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
