#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "conversion/forecast/SizeForecast.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"
#include "platform/tasks/MainActor.h"
#include "platform/tasks/Tasks.h"

namespace zeb {

/// A forecast, or why there is none.
struct ForecastOutcome {
    std::optional<SizeForecast> forecast;
    std::string error;  ///< the text that a person sees; empty with a forecast

    bool operator==(const ForecastOutcome&) const = default;
};

/// Keeps a forecast up to date while settings change. Forecasts are made in the background, one at a time;
/// what was read of a source serves until another one comes: settings that change the frame size only have
/// the same pictures encoded again, others cost no more than arithmetic.
///
/// Used on the main thread. Library, tasks and main actor outlive it and all tasks.
class SizeForecaster {
public:
    /// Called on the main thread, never inside `update`. May destroy the forecaster.
    using Publish = std::function<void(const ForecastOutcome&)>;

    /// How long `update` waits for another one before it begins, so that a stepper held down starts one
    /// forecast and not dozens.
    static constexpr std::chrono::milliseconds patience{200};

    SizeForecaster(const MediaLibrary& library, Tasks& tasks, MainActor& mainActor, Publish publish);
    /// Nothing is published any more; what runs is cancelled and ends by itself.
    ~SizeForecaster();
    SizeForecaster(const SizeForecaster&) = delete;
    SizeForecaster& operator=(const SizeForecaster&) = delete;

    /// Asks for the forecast of this conversion; what was asked for before is not published any more.
    void update(const std::string& input, const std::string& output, const Settings& settings);

    /// There is nothing to forecast: nothing is published until the next `update`. Lets go of the source.
    void clear();

private:
    class State;
    std::shared_ptr<State> m_state;
};

}  // namespace zeb
