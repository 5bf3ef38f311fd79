#include "platform/sim_random.h"

#include <random>

namespace tolvane::sim {

std::string randomDigits(int count) {
    static thread_local std::mt19937 generator{std::random_device{}()};
    std::uniform_int_distribution<int> digit(0, 9);
    std::string digits;
    for (int i = 0; i < count; ++i) {
        digits += static_cast<char>('0' + digit(generator));
    }
    return digits;
}

}  // namespace tolvane::sim
