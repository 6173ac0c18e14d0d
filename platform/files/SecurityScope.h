#pragma once

#include <string>

namespace zeb {

/// Temporary access to files, granted by a sandbox. On systems without sandboxes `startAccessing` returns
/// false. Callable from any thread.
class SecurityScope {
public:
    virtual ~SecurityScope() = default;

    /// Returns true if access to `path` was granted; it must then be ended by `stopAccessing`.
    virtual bool startAccessing(const std::string& path) = 0;
    virtual void stopAccessing(const std::string& path) = 0;
};

/// The implementation for systems without sandboxes.
class OpenSecurityScope final : public SecurityScope {
public:
    bool startAccessing(const std::string&) override { return false; }
    void stopAccessing(const std::string&) override {}
};

}  // namespace zeb
