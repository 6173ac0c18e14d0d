#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace zeb::cli {

/// The output of a run while it is not finished, and what becomes of it when the run ends early. Touches only
/// a file that the run made itself.
class PartialOutput {
public:
    struct Outcome {
        std::int64_t keptSeconds = 0;  ///< of the shorter movie; 0 = there is none
        std::string text;              ///< what became of the file; empty when the run made none
    };

    explicit PartialOutput(std::string path) : m_path(std::move(path)) {}

    /// What stood at the path before is gone: a file there is the run's own.
    void noteReplaced() { m_isReplaced = true; }
    /// The run may have created its file by now; the first call that finds one remembers which it is. Does
    /// nothing before `noteReplaced`.
    void noteCreated();

    /// Makes the file a shorter movie that ends after its last whole second, or removes it when it has none.
    Outcome settle() const;

private:
    struct Identity {
        std::uint64_t device;
        std::uint64_t number;

        bool operator==(const Identity&) const = default;
    };
    std::optional<Identity> identity() const;

    std::string m_path;
    bool m_isReplaced = false;
    std::optional<Identity> m_created;
};

}  // namespace zeb::cli
