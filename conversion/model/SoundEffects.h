#pragma once

namespace zeb {

/// Sound effects of the application.
enum class SoundEffect {
    accessingFile,            ///< a file panel is about to be shown
    transferComplete,         ///< a run has finished
    programLoadedAndReady,    ///< an output has been picked, and the combination of input and output is new
    programInProgress,        ///< a run starts
    deactivationComplete,     ///< the user cancels a run
    logsAccessed,             ///< the log has been copied
    nowEstablishingDatalink,  ///< a movie is being opened in the player
};

/// Plays effects. Main thread. Errors are ignored.
class SoundEffects {
public:
    virtual ~SoundEffects() = default;

    virtual void play(SoundEffect effect) = 0;
};

}  // namespace zeb
