// Reads settings files: only the documented error is thrown, and settings that were read are written and read
// again without loss.

#include "conversion/plan/SettingsError.h"
#include "conversion/plan/SettingsFile.h"
#include "fuzz/FuzzInput.h"

using namespace zeb;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RequestedSettings requested;
    try {
        readSettings({reinterpret_cast<const char*>(data), size}, requested);
    } catch (const SettingsError&) {
        return 0;
    }
    const std::string written = settingsJson(requested);
    RequestedSettings again;
    readSettings(written, again);
    fuzz::require(again.others == requested.others, "the settings are kept");
    fuzz::require(settingsJson(again) == written, "what was written is what was read");
    return 0;
}
