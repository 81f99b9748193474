#pragma once

#include <filesystem>
#include <functional>
#include <vector>

namespace kelvox {

/// Sorts files that were dropped, chosen or named on the command line by what they are, and hands
/// each kind to the part of the program that knows it.
class FileOpener {
public:
    using Files = std::vector<std::filesystem::path>;

    /// @param isOfKind asked in the order of adding; must not take long
    void add(std::function<bool(const std::filesystem::path&)> isOfKind,
             std::function<void(const Files&)> open);
    /// Takes what is of no other kind.
    void setFallback(std::function<void(const Files&)> open) { m_fallback = std::move(open); }

    void open(const Files& files) const;

private:
    struct Kind {
        std::function<bool(const std::filesystem::path&)> isOfKind;
        std::function<void(const Files&)> open;
    };
    std::vector<Kind> m_kinds;
    std::function<void(const Files&)> m_fallback;
};

} // namespace kelvox
