#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/sound/AudioOutput.h"

namespace zeb::test {

/// Records started sources and plays nothing.
class RecordingOutput final : public AudioOutput {
public:
    struct Started {
        std::shared_ptr<AudioSource> source;
        Finished finished;
        bool isStopped = false;
    };

    void start(std::shared_ptr<AudioSource> source, Finished finished) override {
        started.push_back({std::move(source), std::move(finished)});
    }
    void stop(const AudioSource& source) override {
        for (Started& sound : started)
            sound.isStopped = sound.isStopped || sound.source.get() == &source;
    }

    std::vector<Started> started;
};

}  // namespace zeb::test
