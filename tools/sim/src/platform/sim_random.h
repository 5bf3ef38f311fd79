#pragma once

#include <string>

namespace tolvane::sim {

// `count` random decimal digits, for tokens and codes nobody should be able to guess.
std::string randomDigits(int count);

}  // namespace tolvane::sim
