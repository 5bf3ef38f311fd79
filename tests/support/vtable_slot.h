#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

// Callers reach these objects through vtable slots. On the Itanium ABI a pointer to a virtual
// member function holds 1 + its byte offset in the vtable.
template <typename Method>
std::size_t vtableIndex(Method method) {
    static_assert(sizeof(Method) == 2 * sizeof(std::uintptr_t), "Itanium member pointer");
    std::uintptr_t words[2];
    std::memcpy(words, &method, sizeof words);
    EXPECT_EQ(words[0] & 1u, 1u) << "not a virtual member";
    return (words[0] - 1) / sizeof(void*);
}

struct SlotCase {
    const char* name;
    std::size_t vtableIndex;
    std::size_t slot;
};
