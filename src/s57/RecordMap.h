#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvox {

/// Places by record key, in one flat table with linear probing: a cell has tens of thousands of
/// them, and a node for each would cost more than the record it leads to.
class RecordMap {
public:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    /// The place stored under a key; none when there is none.
    [[nodiscard]] std::uint32_t find(std::uint64_t key) const
    {
        if (m_slots.empty())
            return none;
        for (std::size_t i = slotOf(key);; i = (i + 1) & (m_slots.size() - 1)) {
            if (m_slots[i].place == none && !m_slots[i].erased)
                return none;
            if (m_slots[i].key == key && m_slots[i].place != none)
                return m_slots[i].place;
        }
    }
    /// Stores a place; one stored under the key before is replaced.
    void set(std::uint64_t key, std::uint32_t place)
    {
        if ((m_used + 1) * 4 > m_slots.size() * 3)
            grow();
        std::size_t i = slotOf(key);
        while ((m_slots[i].place != none || m_slots[i].erased) && m_slots[i].key != key)
            i = (i + 1) & (m_slots.size() - 1);
        if (m_slots[i].place == none) {
            m_used += m_slots[i].erased ? 0 : 1;
            ++m_count;
        }
        m_slots[i] = {key, place, false};
    }
    void erase(std::uint64_t key)
    {
        if (find(key) == none)
            return;
        std::size_t i = slotOf(key);
        while (m_slots[i].key != key || m_slots[i].place == none)
            i = (i + 1) & (m_slots.size() - 1);
        m_slots[i].place = none;
        m_slots[i].erased = true; // keeps the chain of those behind it
        --m_count;
    }
    void clear()
    {
        m_slots.clear();
        m_used = m_count = 0;
    }
    [[nodiscard]] std::size_t size() const { return m_count; }

private:
    struct Slot {
        std::uint64_t key = 0;
        std::uint32_t place = none;
        bool erased = false;
    };
    [[nodiscard]] std::size_t slotOf(std::uint64_t key) const
    {
        // Fibonacci hashing: record numbers run on, and the upper bits of their products spread
        // them evenly.
        return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> m_shift);
    }
    void grow()
    {
        std::vector<Slot> old(m_slots.empty() ? 256 : m_slots.size() * 2);
        old.swap(m_slots);
        m_shift = 64 - std::countr_zero(m_slots.size());
        m_used = m_count = 0;
        for (const Slot& slot : old)
            if (slot.place != none)
                set(slot.key, slot.place);
    }
    std::vector<Slot> m_slots; ///< a power of two of them
    int m_shift = 0; ///< leaves as many bits of a product as number the slots
    std::size_t m_used = 0; ///< slots taken or erased
    std::size_t m_count = 0;
};

} // namespace kelvox
