#include "cli/SettingOptions.h"

#include <cstdint>

#include "cli/Failure.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/SettingsError.h"
#include "conversion/plan/SettingsFile.h"
#include "platform/files/FileHandle.h"
#include "platform/files/StagedOutput.h"
#include "platform/text/PathName.h"

namespace zeb::cli {
namespace {

/// Calls `action` and turns its errors into `UsageError`.
template <typename Action>
void asUsage(const Action& action) {
    try {
        action();
    } catch (const SettingsError&) {
        throw UsageError(describeCurrentFailure().text);
    } catch (const FileError&) {
        throw UsageError(describeCurrentFailure().text);
    }
}

}  // namespace

void takeSettingsFile(RequestedSettings& requested, const std::string& path) {
    asUsage([&] { readSettingsFile(path, requested); });
}

void checkRequest(const RequestedSettings& requested) {
    asUsage([&] { checkSettings(requested.others); });
}

OutputTerms SettingsOutput::terms() const {
    return {m_force ? OutputTerms::Existing::replace : OutputTerms::Existing::keep,
            OutputTerms::MissingFolder::refuse};
}

bool SettingsOutput::check(const std::string& input) const {
    if (!m_arguments.saveSettings) return true;
    try {
        OutputPlace(*m_arguments.saveSettings, terms()).check(input);
        return true;
    } catch (...) {
        m_console.complain(describeFailureOf(*m_arguments.saveSettings).text);
        return false;
    }
}

bool SettingsOutput::write() const {
    if (!m_arguments.saveSettings) return true;
    const std::string& path = *m_arguments.saveSettings;
    const std::string json = settingsJson(m_arguments);
    try {
        StagedOutput output(withoutLastPiece(path), terms());
        const auto file = output.create(lastPiece(path));
        file->write({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
        file->close();
        output.commit();
        return true;
    } catch (...) {
        m_console.complain(describeFailureOf(path).text);
        return false;
    }
}

}  // namespace zeb::cli
