#pragma once

#include <string>
#include <utility>

#include "platform/base/LocalizableError.h"

namespace zeb {

/// What ends a conversion for a reason of its own.
class ZEBConverterError : public LocalizableError {
public:
    enum class Case { cannotCreateOutput, noVideoTrack, cancelled };

    static ZEBConverterError cannotCreateOutput(const std::string& path) {
        return {Case::cannotCreateOutput,
                "Kann Ausgabedatei nicht erstellen: " + path,
                {"error_cannot_create_output_format", {path}}};
    }
    static ZEBConverterError noVideoTrack() {
        return {Case::noVideoTrack, "Kein Video-Track gefunden.", {"error_no_video_track"}};
    }
    static ZEBConverterError cancelled() {
        return {Case::cancelled, "Vorgang abgebrochen.", {"error_cancelled"}};
    }

    Case errorCase() const noexcept { return m_case; }

private:
    ZEBConverterError(Case errorCase, const std::string& description, KeyedText text)
        : LocalizableError(description, std::move(text)), m_case(errorCase) {}

    Case m_case;
};

}  // namespace zeb
