#include "ui/model/VersionText.h"

#include "platform/text/TextTrim.h"
#include "ui/model/UnknownText.h"

namespace zeb {

std::string versionText(const std::string& version, const std::string& build) {
    const std::string number = trimmed(version).empty() ? unknownText : version;
    return "v" + number + (trimmed(build).empty() ? "" : " (" + build + ")");
}

}  // namespace zeb
