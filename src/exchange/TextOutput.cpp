#include "exchange/TextOutput.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kelvox {

TextOutput::TextOutput(const std::filesystem::path& path, std::stop_token stop)
    : m_path(path)
    , m_stop(std::move(stop))
{
    // A link is followed, so that a user who keeps the file elsewhere keeps it there.
    std::error_code notThere;
    if (auto real = std::filesystem::canonical(path, notThere); !notThere)
        m_path = std::move(real);
    if (std::filesystem::is_directory(m_path, notThere)) {
        m_error = EISDIR;
        return;
    }
    m_temporary = m_path.string() + ".XXXXXX";
    m_file = ::mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_file < 0)
        m_error = errno;
    m_text.reserve(pieceSize + 512);
}

TextOutput::~TextOutput()
{
    if (m_file < 0)
        return;
    ::close(m_file);
    ::unlink(m_temporary.c_str());
}

TextOutput& TextOutput::operator<<(float degrees)
{
    // The product is exact in double precision, so the rounding is that of printf.
    const double scaled = std::nearbyint(std::abs(static_cast<double>(degrees)) * 1e6);
    if (!(scaled < 1e15)) // never of a place on the earth
        return *this << "0.000000";
    const auto value = static_cast<unsigned long long>(scaled);
    std::array<char, 32> text{};
    char* out = text.data();
    if (std::signbit(degrees))
        *out++ = '-';
    out = std::to_chars(out, text.data() + text.size(), value / 1'000'000).ptr;
    *out++ = '.';
    auto rest = value % 1'000'000;
    for (int i = 5; i >= 0; --i, rest /= 10)
        out[i] = static_cast<char>('0' + rest % 10);
    out += 6;
    return *this << std::string_view(text.data(), static_cast<std::size_t>(out - text.data()));
}

void TextOutput::flush()
{
    std::string_view rest = m_text;
    if (m_error == 0 && m_stop.stop_requested())
        m_error = ECANCELED;
    while (m_error == 0 && !rest.empty()) {
        const auto written = ::write(m_file, rest.data(), rest.size());
        if (written >= 0)
            rest.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            m_error = errno;
    }
    m_text.clear();
}

Result<void> TextOutput::finish()
{
    flush();
    struct stat old { };
    const mode_t mode = ::stat(m_path.c_str(), &old) == 0 ? old.st_mode & 07777 : 0644;
    if (m_error == 0 && (::fchmod(m_file, mode) != 0 || ::fsync(m_file) != 0))
        m_error = errno;
    // Syncing may have taken long.
    if (m_error == 0 && m_stop.stop_requested())
        m_error = ECANCELED;
    if (m_error == 0 && ::rename(m_temporary.c_str(), m_path.c_str()) != 0)
        m_error = errno;
    if (m_error != 0)
        return failure(m_error == ECANCELED ? Error::Code::Cancelled : Error::Code::CannotOpen,
                       std::strerror(m_error));
    ::close(std::exchange(m_file, -1));
    return {};
}

} // namespace kelvox
