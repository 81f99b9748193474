#pragma once

// Counts what the program takes from the heap; included by the one source of a program.

#include <atomic>
#include <cstdlib>
#include <new>

namespace kelvox {
inline std::atomic<long long> allocationCount{0};
} // namespace kelvox

// The compiler pairs each new with its delete by name and does not see that both are ours.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size)
{
    kelvox::allocationCount.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
