#pragma once

#include <string>

namespace zeb {

/// Access to files that a sandbox grants for a while. Systems without such sandboxes answer false: nothing is
/// to be done, and nothing to be ended. Callable from any thread.
class SecurityScope {
public:
    virtual ~SecurityScope() = default;

    /// True when access to `path` was granted and has to be ended by `stopAccessing`.
    virtual bool startAccessing(const std::string& path) = 0;
    virtual void stopAccessing(const std::string& path) = 0;
};

/// The one for systems without a sandbox.
class OpenSecurityScope final : public SecurityScope {
public:
    bool startAccessing(const std::string&) override { return false; }
    void stopAccessing(const std::string&) override {}
};

}  // namespace zeb
