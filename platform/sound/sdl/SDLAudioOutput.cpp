#define SDL_MAIN_HANDLED  // SDL must not rename our main function

#include "platform/sound/sdl/SDLAudioOutput.h"

#include <SDL.h>
#include <dlfcn.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <utility>

#include "platform/sound/AudioMixer.h"

namespace zeb {
namespace {

constexpr int preferredRate = 48000;
constexpr int bufferFrames = 512;  // about 10 ms: starts and stops seem immediate
constexpr std::chrono::seconds patienceAtEnd{1};

void ignoreMessage(const char*, int, const char*, int, const char*, ...) {}

/// Silences ALSA, which writes several lines to standard error if it finds no device. A missing device is no
/// error.
void silenceALSA() {
    using Handler =
        void (*)(const char* file, int line, const char* function, int error, const char* format, ...);
    void* const library = ::dlopen("libasound.so.2", RTLD_LAZY | RTLD_LOCAL);
    if (!library) return;
    const auto setHandler = reinterpret_cast<int (*)(Handler)>(::dlsym(library, "snd_lib_error_set_handler"));
    if (setHandler) setHandler(&ignoreMessage);
    // Do not unload the library: a copy loaded later would write messages again.
}

/// SDL's connection to the sound system with one open device, which calls `render` on a separate thread.
class Device {
public:
    using Render = void (*)(void* owner, std::span<float> samples);

    Device(Render render, void* owner) : m_render(render), m_owner(owner) {
        static const bool isSilenced = (silenceALSA(), true);
        static_cast<void>(isSilenced);
        // The application handles signals.
        SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
        SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "ZEBMaker");
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) {
            m_error = SDL_GetError();
            return;
        }
        m_hasSubsystem = true;
        SDL_AudioSpec wanted{};
        wanted.freq = preferredRate;
        wanted.format = AUDIO_F32SYS;
        wanted.channels = 2;
        wanted.samples = bufferFrames;
        wanted.callback = &Device::callBack;
        wanted.userdata = this;
        SDL_AudioSpec got{};
        m_id = SDL_OpenAudioDevice(nullptr, 0, &wanted, &got,
                                   SDL_AUDIO_ALLOW_FREQUENCY_CHANGE | SDL_AUDIO_ALLOW_SAMPLES_CHANGE);
        m_rate = got.freq;
        if (m_id == 0) m_error = SDL_GetError();
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    ~Device() {
        if (m_id != 0) SDL_CloseAudioDevice(m_id);
        if (m_hasSubsystem) SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }

    bool isOpen() const { return m_id != 0; }
    int sampleRate() const { return m_rate; }
    const std::string& error() const { return m_error; }
    void begin() const { SDL_PauseAudioDevice(m_id, 0); }

private:
    static void SDLCALL callBack(void* device, Uint8* bytes, int count) {
        const auto* self = static_cast<const Device*>(device);
        // SDL's buffers are aligned for any sample format.
        self->m_render(self->m_owner,
                       {reinterpret_cast<float*>(bytes), static_cast<std::size_t>(count) / sizeof(float)});
    }

    Render m_render;
    void* m_owner;
    SDL_AudioDeviceID m_id = 0;
    bool m_hasSubsystem = false;
    int m_rate = preferredRate;
    std::string m_error;
};

}  // namespace

/// The state that the output shares with its thread.
class SDLAudioOutput::Engine {
public:
    explicit Engine(Timing timing) : m_timing(timing) {}

    AudioMixer& mixer() { return m_mixer; }

    /// Wakes the thread after a source was added to the mixer. Creates the thread on the first call.
    void wake(const std::shared_ptr<Engine>& self) {
        const std::lock_guard lock(m_mutex);
        if (!m_thread.joinable()) m_thread = std::thread([self] { self->work(); });
        m_changed.notify_all();
    }

    void end() {
        std::unique_lock lock(m_mutex);
        m_isEnding = true;
        m_mixer.clear();
        m_changed.notify_all();
        if (!m_thread.joinable()) return;
        const bool hasEnded = m_changed.wait_for(lock, patienceAtEnd, [this] { return m_hasEnded; });
        lock.unlock();
        hasEnded ? m_thread.join() : m_thread.detach();
    }

    bool isOpen() const {
        const std::lock_guard lock(m_mutex);
        return m_isOpen;
    }

private:
    using Time = std::chrono::steady_clock;

    void work() {
        std::optional<Time::time_point> failure;
        std::string error;
        while (awaitWork()) {
            if (!failure || Time::now() - *failure >= m_timing.retryAfter) {
                error = play();
                failure = error.empty() ? std::nullopt : std::optional(Time::now());
            }
            if (failure) m_mixer.dropAll(error);
        }
        SDL_TLSCleanup();  // SDL does this for its threads only
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        m_changed.notify_all();
    }

    /// Waits for a source; returns false to end the thread.
    bool awaitWork() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isEnding || m_mixer.isPlaying(); });
        return !m_isEnding;
    }

    /// Keeps a device open until the silence is long enough; returns the reason if there is no device.
    std::string play() {
        Device device(&Engine::render, this);
        if (!device.isOpen()) return device.error();
        m_framesToClose = m_timing.closeAfter.count() * device.sampleRate() / 1000;
        m_mixer.resume(device.sampleRate());
        device.begin();
        std::unique_lock lock(m_mutex);
        m_isOpen = true;
        // Suspending first makes later sources wait for the next device instead of being cut off by closing
        // this one.
        m_changed.wait(lock, [this] { return m_isEnding || m_mixer.suspendIfSilentFor(m_framesToClose); });
        m_isOpen = false;
        return {};
    }

    /// Called on SDL's thread.
    static void render(void* engine, std::span<float> samples) {
        auto* self = static_cast<Engine*>(engine);
        self->m_mixer.render(samples);
        if (self->m_mixer.silentFrames() >= self->m_framesToClose) {
            const std::lock_guard lock(self->m_mutex);
            self->m_changed.notify_all();
        }
    }

    const Timing m_timing;
    AudioMixer m_mixer;
    std::int64_t m_framesToClose = 0;  ///< set while no device is open
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;
    bool m_isEnding = false;
    bool m_hasEnded = false;
    bool m_isOpen = false;
};

SDLAudioOutput::SDLAudioOutput() : SDLAudioOutput(Timing{}) {}

SDLAudioOutput::SDLAudioOutput(Timing timing) : m_engine(std::make_shared<Engine>(timing)) {}

SDLAudioOutput::~SDLAudioOutput() {
    m_engine->end();
}

void SDLAudioOutput::start(std::shared_ptr<AudioSource> source, Finished finished) {
    m_engine->mixer().start(std::move(source), std::move(finished));
    m_engine->wake(m_engine);
}

void SDLAudioOutput::stop(const AudioSource& source) {
    m_engine->mixer().stop(source);
}

bool SDLAudioOutput::isOpen() const {
    return m_engine->isOpen();
}

}  // namespace zeb
