#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Fills `arguments` into the specifiers of `format`: %lld (whole number), %f with an optional precision of
/// up to two digits (real number, six decimals without one), %@ (text), %% (a per cent sign). `%2$lld` takes
/// the second argument; specifiers without a number take one after the other. A text that has a key is filled
/// in as its key: `localizedText` looks keys up before.
///
/// Safe for any format and arguments: an argument of another type than its specifier's is written in its own
/// type's form, and a specifier without an argument, or one not named here, stays as it stands. Digits are
/// not grouped.
std::string formatText(std::string_view format, std::span<const TextArgument> arguments,
                       std::string_view decimalMark = ".");

}  // namespace zeb
