#pragma once

#include <stdexcept>
#include <string>

namespace zeb {

/// What ends a conversion for a reason of its own. `what()` is the text that a person sees.
class ZEBConverterError : public std::runtime_error {
public:
    enum class Case { cannotCreateOutput, noVideoTrack, cancelled };

    static ZEBConverterError cannotCreateOutput(const std::string& path) {
        return {Case::cannotCreateOutput, "Kann Ausgabedatei nicht erstellen: " + path};
    }
    static ZEBConverterError noVideoTrack() { return {Case::noVideoTrack, "Kein Video-Track gefunden."}; }
    static ZEBConverterError cancelled() { return {Case::cancelled, "Vorgang abgebrochen."}; }

    Case errorCase() const noexcept { return m_case; }

private:
    ZEBConverterError(Case errorCase, const std::string& text)
        : std::runtime_error(text), m_case(errorCase) {}

    Case m_case;
};

}  // namespace zeb
