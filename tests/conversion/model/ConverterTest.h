#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "conversion/model/ConverterViewModel.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/doubles/FakePanels.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "tests/doubles/HandDrivenClock.h"
#include "tests/doubles/HandDrivenMainActor.h"
#include "tests/doubles/HandDrivenTasks.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {

class RecordingSounds final : public SoundEffects {
public:
    void play(SoundEffect effect) override { played.push_back(effect); }
    std::vector<SoundEffect> played;
};

class RecordingScope final : public SecurityScope {
public:
    bool startAccessing(const std::string& path) override {
        const std::lock_guard lock(m_mutex);
        calls.push_back("+" + path);
        return path.ends_with(".zeb");
    }
    void stopAccessing(const std::string& path) override {
        const std::lock_guard lock(m_mutex);
        calls.push_back("-" + path);
    }
    std::vector<std::string> calls;

private:
    std::mutex m_mutex;
};

/// A converter with threads, clock and conversions that the test drives by hand.
class ConverterTest : public testing::Test {
protected:
    void settle() {
        do {
            tasks.runAll();
        } while (mainActor.run() > 0 || tasks.waiting() > 0);
    }
    void takeFilm(const std::string& path) {
        model->setInput(URL::forFile(path));
        settle();
    }
    void startAndSettle() {
        model->start();
        settle();
    }

    TemporaryFolder folder;
    fake::FakeLibrary films;
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    fake::FakePanels panels;
    std::string clipboard;
    RecordingSounds sounds;
    RecordingScope scope;
    fake::HandDrivenMainActor mainActor;
    fake::HandDrivenTasks tasks;
    fake::HandDrivenClock clock;
    /// `run` replaces the conversion after its file has been created. `runs` holds the settings of each
    /// conversion.
    std::function<void(const ConversionCallbacks&, const std::string& output)> run =
        [](const ConversionCallbacks&, const std::string&) {};
    std::vector<Settings> runs;
    std::unique_ptr<ConverterViewModel> makeModel() {
        return std::make_unique<ConverterViewModel>(
            ConverterServices{films,
                              [this](const std::string&, OutputPlace& output, const Settings& settings,
                                     const ConversionCallbacks& callbacks) {
                                  runs.push_back(settings);
                                  output.setAside();
                                  output.create()->close();
                                  run(callbacks, output.path());
                                  output.commit();
                              },
                              defaults, panels, [this](const std::string& text) { clipboard = text; }, sounds,
                              scope, mainActor, tasks, clock});
    }
    std::unique_ptr<ConverterViewModel> model = makeModel();
};

}  // namespace zeb::test
