#include "exchange/KmzFolder.h"

#include "exchange/Program.h"

#include <cstdlib>

namespace kelvox {

KmzFolder::KmzFolder()
{
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "kelvox-kmz-XXXXXX").string();
    if (!error && ::mkdtemp(name.data())) // for the user alone
        m_path = name;
}

KmzFolder::~KmzFolder()
{
    std::error_code ignored;
    if (!m_path.empty())
        std::filesystem::remove_all(m_path, ignored);
}

Result<std::filesystem::path> KmzFolder::unpack(const std::filesystem::path& file,
                                                unsigned long long largest) const
{
    if (m_path.empty())
        return failure(Error::Code::CannotOpen, "no temporary folder");
    std::error_code error;
    const auto source = std::filesystem::canonical(file, error); // begins with a slash, never "-"
    if (error || !std::filesystem::is_regular_file(source))
        return failure(Error::Code::CannotOpen, error ? error.message() : "not a regular file");
    // The command takes the name for a pattern; a link with a plain name has nothing to expand.
    const auto archive = m_path / "archive.kmz";
    const auto target = m_path / "files";
    std::filesystem::create_symlink(source, archive, error);
    if (error || !std::filesystem::create_directory(target, error))
        return failure(Error::Code::CannotOpen, error.message());
    auto unpacked = runProgram(
        {"unzip", "-o", "-qq", "-d", target.string(), archive.string(), "doc.kml"}, largest);
    auto document = target / "doc.kml";
    // A damaged member elsewhere does not matter; a link in place of the document would.
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(document, error)))
        return failure(Error::Code::CannotOpen,
                       unpacked ? "holds no doc.kml" : unpacked.error().message);
    return document;
}

} // namespace kelvox
