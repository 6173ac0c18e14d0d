#pragma once

#include <QtQml/qqml.h>
#include <QtQml/qqmlregistration.h>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QWindow>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/files/FileManager.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/URL.h"
#include "player/ZEBPlayerModel.h"

namespace zeb {

/// Commands of other windows that are also available by keys in a player window. An empty command does
/// nothing. Called on the main thread.
struct PlayerCommands {
    std::function<void()> chooseVideo;
    std::function<void()> playMovie;
    std::function<void()> showSettings;
    std::function<void()> showHelp;
    /// Opens a movie that was dropped on the player.
    std::function<void(const URL&)> openMovie;
};

/// Returns `text` with a space for each line end.
QString oneLine(QString text);

/// Registers the model with QML; the model itself does not depend on QML.
struct PlayerModelForQML {
    Q_GADGET
    QML_FOREIGN(zeb::ZEBPlayerModel)
    QML_NAMED_ELEMENT(ZEBPlayerModel)
    QML_UNCREATABLE("Every sheet has its own")
};

/// The logic of a player window's content: the state and the actions of its controls. Main thread.
class PlayerSheetModel final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window manager")
    Q_PROPERTY(zeb::ZEBPlayerModel* model READ model CONSTANT)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY statusLineChanged)
    Q_PROPERTY(QString timeText READ timeText NOTIFY positionChanged)
    Q_PROPERTY(QString counterText READ counterText NOTIFY positionChanged)
    Q_PROPERTY(double sliderValue READ sliderValue NOTIFY positionChanged)
    Q_PROPERTY(double sliderMaximum READ sliderMaximum NOTIFY positionChanged)
    Q_PROPERTY(bool sliderEnabled READ sliderEnabled NOTIFY positionChanged)
    Q_PROPERTY(bool canStepBack READ canStepBack NOTIFY positionChanged)
    Q_PROPERTY(bool canStepForward READ canStepForward NOTIFY positionChanged)
    Q_PROPERTY(bool hasImage READ hasImage NOTIFY hasImageChanged)
    Q_PROPERTY(bool isMode32 READ isMode32 NOTIFY modeChanged)
    Q_PROPERTY(QString modeText READ modeText NOTIFY modeChanged)
    Q_PROPERTY(QStringList mode32Labels READ mode32Labels CONSTANT)
    Q_PROPERTY(int storedMode32 READ storedMode32 WRITE setStoredMode32 NOTIFY storedMode32Changed)
    Q_PROPERTY(bool storedLoop READ storedLoop WRITE setStoredLoop NOTIFY storedLoopChanged)

public:
    static constexpr std::string_view mode32Key = "zeb.player.mode32";
    static constexpr std::string_view loopKey = "zeb.player.loop";

    /// Actions of the close and converter buttons.
    struct Actions {
        std::function<void()> close;
        std::function<void()> openMaker;
        PlayerCommands commands;
    };

    /// `path` is the path of the movie. Services, defaults and notification centre outlive the model.
    PlayerSheetModel(std::string path, PlayerServices services, UserDefaults& defaults,
                     NotificationCenter& notifications, Actions actions, QObject* parent = nullptr);
    ~PlayerSheetModel() override;

    ZEBPlayerModel* model() { return &m_model; }

    /// The model's status on one line, even if the title of the movie has several.
    QString statusLine() const;
    /// While the slider is held, time and counter refer to the frame at the slider.
    QString timeText() const;
    QString counterText() const;
    double sliderValue() const;
    double sliderMaximum() const;
    bool sliderEnabled() const { return m_model.totalFrames() >= 2; }
    bool canStepBack() const { return m_model.displayedFrameIndex() >= 1; }
    bool canStepForward() const { return m_model.canStepForward(); }
    bool hasImage() const { return m_model.image() != nullptr; }
    bool isMode32() const { return m_model.qlMode() == 32; }
    QString modeText() const;
    QStringList mode32Labels() const;

    /// Stored settings shared by all player windows: the interpretation of 16-bit pixels, as an index into
    /// the labels, and looping.
    int storedMode32() const;
    void setStoredMode32(int index);
    bool storedLoop() const;
    void setStoredLoop(bool loops);

    /// Whether the file was replaced or modified since it was opened.
    bool movieHasChanged() const;

    /// Opens the movie: when the window appears, and with the reload button.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void disappear();
    Q_INVOKABLE void toBeginning();
    Q_INVOKABLE void stepBack();
    Q_INVOKABLE void playOrPause();
    Q_INVOKABLE void stop();
    Q_INVOKABLE void stepForward();
    Q_INVOKABLE void toEnd();
    Q_INVOKABLE void close();
    Q_INVOKABLE void openMaker();
    Q_INVOKABLE void chooseVideo();
    Q_INVOKABLE void playMovie();
    Q_INVOKABLE void showSettings();
    Q_INVOKABLE void showHelp();
    /// Switches between full screen and the previous state of the window, maximised or not.
    Q_INVOKABLE void toggleFullScreen(QWindow* window);
    /// Handles files dropped on the window: opens movies.
    Q_INVOKABLE bool takesURLs(const QList<QUrl>& urls) const;
    Q_INVOKABLE void takeDroppedURLs(const QList<QUrl>& urls);
    /// Handles the slider: no frame is read while it is held. A key press moves it once.
    Q_INVOKABLE void setScrubbing(bool isScrubbing);
    Q_INVOKABLE void scrubTo(double frame);
    /// Handles a key (Qt::Key) not handled by a control. Returns whether the key has a function here.
    Q_INVOKABLE bool handleKey(int key, int modifiers);

signals:
    void statusLineChanged();
    void positionChanged();
    void hasImageChanged();
    void modeChanged();
    void storedMode32Changed();
    void storedLoopChanged();

private:
    void applyStored();
    std::int64_t shownFrame() const;
    std::vector<URL> moviesAmong(const QList<QUrl>& urls) const;
    void beginScrubbing();
    void endScrubbing();

    std::string m_path;
    std::optional<files::Version> m_version;  ///< of the movie when it was opened
    UserDefaults& m_defaults;
    Actions m_actions;
    ZEBPlayerModel m_model;
    double m_scrubFrame = 0;
    bool m_isScrubbing = false;
    bool m_resumeAfterScrub = false;
    NotificationCenter::Observation m_defaultsObservation;
};

}  // namespace zeb
