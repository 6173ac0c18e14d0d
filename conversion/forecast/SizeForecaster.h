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

/// A forecast, or the error that prevented it.
struct ForecastOutcome {
    std::optional<SizeForecast> forecast;
    std::string error;  ///< text for the user; empty with a forecast

    bool operator==(const ForecastOutcome&) const = default;
};

/// Keeps a forecast up to date while settings change. Forecasts are made in the background, one at a time.
/// Data read from a source is kept until the source changes: a new frame size only encodes the same pictures
/// again, other settings only need arithmetic.
///
/// Used on the main thread. Library, tasks and main actor must outlive the forecaster and all tasks.
class SizeForecaster {
public:
    /// Called on the main thread, never inside `update`. May destroy the forecaster.
    using Publish = std::function<void(const ForecastOutcome&)>;

    /// Delay between `update` and the start of the forecast, so that a stepper held down starts one forecast
    /// instead of dozens.
    static constexpr std::chrono::milliseconds patience{200};

    SizeForecaster(const MediaLibrary& library, Tasks& tasks, MainActor& mainActor, Publish publish);
    /// Stops publishing and cancels the running forecast without waiting for it.
    ~SizeForecaster();
    SizeForecaster(const SizeForecaster&) = delete;
    SizeForecaster& operator=(const SizeForecaster&) = delete;

    /// Requests the forecast of this conversion. Earlier requests are not published any more.
    void update(const std::string& input, const std::string& output, const Settings& settings);

    /// Publishes nothing until the next `update` and releases the source.
    void clear();

private:
    class State;
    std::shared_ptr<State> m_state;
};

}  // namespace zeb
