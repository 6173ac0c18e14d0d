#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/base/KeyedText.h"

namespace zeb {

/// Fills `arguments` into the specifiers of `format`: %lld (whole number), %f with an optional precision of
/// up to two digits (real number, six decimals without one), %@ (text), %% (a per cent sign). `%2$lld` uses
/// the second argument; specifiers without a number use the arguments in order. A text with a key is filled
/// in as its key, because `localizedText` has already replaced keys.
///
/// Safe for any format and arguments: an argument of another type than its specifier's is written in the form
/// of its type. A specifier without an argument, or an unknown one, stays unchanged. Digits are not grouped.
std::string formatText(std::string_view format, std::span<const TextArgument> arguments,
                       std::string_view decimalMark = ".");

}  // namespace zeb
