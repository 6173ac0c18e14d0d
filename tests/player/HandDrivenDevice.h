#pragma once

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "platform/sound/AudioMixer.h"
#include "platform/sound/AudioOutput.h"

namespace zeb::test {

/// A sound device that plays on the test's request.
class HandDrivenDevice final : public AudioOutput {
public:
    explicit HandDrivenDevice(int rate) : m_rate(rate) { m_mixer.resume(rate); }
    void start(std::shared_ptr<AudioSource> source, Finished finished) override {
        m_mixer.start(std::move(source), std::move(finished));
    }
    void stop(const AudioSource& source) override { m_mixer.stop(source); }

    void play(std::chrono::milliseconds time) {
        heard.resize(static_cast<std::size_t>(2 * m_rate * time.count() / 1000));
        m_mixer.render(heard);
    }

    std::vector<float> heard;  ///< samples of the latest `play`

private:
    int m_rate;
    AudioMixer m_mixer;
};

}  // namespace zeb::test
