#pragma once

namespace zeb {

/// Whether a character stands for a number by itself: a digit of any script, a fraction, a Roman or circled
/// numeral (general categories Nd, Nl and No of Unicode 14).
bool isNumericCharacter(char32_t character);

}  // namespace zeb
