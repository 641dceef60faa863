#pragma once

#include "CleanerCore/Support/Date.h"

#include <string>

namespace loftmere::DateText {

// The day of a moment as people write it, in a locale's medium style and in the computer's time zone, such as
// "Mar 1, 2026" for "en_US" and "01.03.2026" for "de_DE". An unknown locale gets the style of its language,
// else a neutral one. Any thread.
std::string medium(Date date, const std::string& locale);

} // namespace loftmere::DateText
