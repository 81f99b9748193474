#include "positioning/NmeaFields.h"

#include <algorithm>
#include <cstring>

namespace kelvox {

NmeaFields::NmeaFields(std::string_view sentence)
    : m_text(sentence.substr(0, sentence.find('\0')))
{
    if (m_text.empty())
        return;
    const char* const begin = m_text.data();
    const char* const end = begin + m_text.size();
    for (const char* at = begin;;) {
        if (m_count < inlineFields)
            m_start[m_count] = static_cast<std::uint32_t>(at - begin);
        ++m_count;
        const auto* comma =
            static_cast<const char*>(std::memchr(at, ',', static_cast<std::size_t>(end - at)));
        if (m_count <= inlineFields)
            m_start[m_count] = static_cast<std::uint32_t>((comma ? comma : end) - begin + 1);
        if (!comma)
            return;
        at = comma + 1;
    }
}

std::string_view NmeaFields::operator[](std::size_t index) const
{
    if (index >= m_count)
        return {};
    if (index < inlineFields)
        return m_text.substr(m_start[index], m_start[index + 1] - m_start[index] - 1);
    auto rest = m_text.substr(m_start[inlineFields]);
    for (auto skip = index - inlineFields; skip > 0; --skip)
        rest.remove_prefix(rest.find(',') + 1);
    return rest.substr(0, rest.find(','));
}

} // namespace kelvox
