#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace kelvox {

/// Where and how the following elements of one ordered list go: an update file's control field.
struct S57UpdateControl {
    std::uint32_t instruction = 0; ///< 0 none (a base record), 1 insert, 2 delete, 3 modify
    std::uint32_t index = 0; ///< 1-based place, advanced by one after each element
    std::uint32_t count = 0; ///< as read; the list operations do without
};

/// Adds elements under an instruction and a running index, which is advanced by one for each.
///
/// A place outside the list never fails: insert and modify append, delete does nothing. Because the
/// index runs on while the list shrinks, deletes in a row take every other element: on purpose.
/// Same result as one element after the other, in one pass over the list.
template <typename Element, typename Allocator>
void applyUpdate(std::vector<Element, Allocator>& list, std::span<const Element> elements,
                 std::uint32_t instruction, std::uint32_t& index)
{
    const auto inside = [&] { return index >= 1 && index <= list.size(); };
    const auto at = [&] { return list.begin() + static_cast<std::ptrdiff_t>(index - 1); };
    const auto count = static_cast<std::uint32_t>(elements.size());
    switch (instruction) {
    case 0:
        list.insert(list.end(), elements.begin(), elements.end());
        index += count;
        break;
    case 1:
        for (; !elements.empty() && !inside(); ++index, elements = elements.subspan(1))
            list.push_back(elements.front());
        if (!elements.empty())
            list.insert(at(), elements.begin(), elements.end());
        index += static_cast<std::uint32_t>(elements.size());
        break;
    case 2: {
        for (; !elements.empty() && index < 1; ++index)
            elements = elements.subspan(1);
        std::size_t kept = std::min<std::size_t>(index - 1, list.size());
        std::size_t read = kept;
        for (std::size_t left = elements.size(); left > 0 && read < list.size(); --left) {
            ++read; // this one goes
            if (read < list.size() && left > 1)
                list[kept++] = std::move(list[read++]);
        }
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(kept),
                   list.begin() + static_cast<std::ptrdiff_t>(read));
        index += static_cast<std::uint32_t>(elements.size());
        break;
    }
    case 3:
        for (const Element& element : elements) {
            if (inside())
                *at() = element;
            else
                list.push_back(element);
            ++index;
        }
        break;
    default:
        index += count;
        break;
    }
}

} // namespace kelvox
