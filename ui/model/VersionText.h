#pragma once

#include <string>

namespace zeb {

/// How the window names the program's version: "v0.1.0 (7)", "v—" without one; a build that is blank is left
/// out.
std::string versionText(const std::string& version, const std::string& build);

}  // namespace zeb
