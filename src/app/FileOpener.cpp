#include "app/FileOpener.h"

#include <algorithm>

namespace kelvox {

void FileOpener::add(std::function<bool(const std::filesystem::path&)> isOfKind,
                     std::function<void(const Files&)> open)
{
    m_kinds.push_back({std::move(isOfKind), std::move(open)});
}

void FileOpener::open(const Files& files) const
{
    std::vector<Files> sorted(m_kinds.size() + 1);
    for (const auto& file : files) {
        const auto kind =
            std::ranges::find_if(m_kinds, [&](const Kind& it) { return it.isOfKind(file); });
        sorted[static_cast<std::size_t>(kind - m_kinds.begin())].push_back(file);
    }
    for (std::size_t i = 0; i < m_kinds.size(); ++i)
        if (!sorted[i].empty())
            m_kinds[i].open(sorted[i]);
    if (!sorted.back().empty() && m_fallback)
        m_fallback(sorted.back());
}

} // namespace kelvox
