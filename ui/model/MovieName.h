#pragma once

#include "platform/text/URL.h"

namespace zeb {

/// Whether a URL's path ends in ".zeb", in any case.
bool namesMovie(const URL& url);

}  // namespace zeb
