// Which serial devices this machine has, and what people call them.

#include "connections/Serial.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>

namespace kelvox {
namespace {

namespace fs = std::filesystem;

std::string firstLine(const fs::path& file)
{
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

/// Maker and product of the USB device that the port belongs to; empty for built-in ports.
std::string usbName(const fs::path& device)
{
    constexpr int levels = 4; // port, interface, device, and one to spare for hubs' own ports
    std::error_code error;
    auto folder = fs::canonical(device, error);
    for (int level = 0; !error && level < levels; ++level, folder = folder.parent_path()) {
        const auto product = firstLine(folder / "product");
        if (product.empty())
            continue;
        const auto maker = firstLine(folder / "manufacturer");
        return maker.empty() || product.starts_with(maker) ? product
                                                           : fmt::format("{} {}", maker, product);
    }
    return {};
}

/// The system lists placeholders for ports that no hardware answers to: their type is 0.
bool hasHardware(const fs::path& entry)
{
    std::error_code error;
    if (!fs::exists(entry / "device", error))
        return false;
    const auto type = firstLine(entry / "type");
    return type != "0";
}

} // namespace

std::vector<SerialPortInfo> Serial::listPorts(const fs::path& classFolder,
                                              const fs::path& deviceFolder)
{
    std::vector<SerialPortInfo> ports;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(classFolder, error)) {
        if (!hasHardware(entry.path()))
            continue;
        const auto device = entry.path().filename().string();
        const auto path = deviceFolder / device;
        if (!fs::exists(path, error))
            continue;
        auto name = usbName(entry.path() / "device");
        if (name.empty())
            name = device.starts_with("rfcomm") ? "Bluetooth serial" : "Serial port";
        ports.push_back({path.string(), fmt::format("{} ({})", name, device)});
    }
    std::sort(ports.begin(), ports.end(),
              [](const auto& a, const auto& b) { return a.path < b.path; });
    return ports;
}

std::string Serial::shortPortName(const std::string& path)
{
    for (const std::string_view prefix : {"/dev/cu.", "/dev/tty.", "/dev/"})
        if (path.starts_with(prefix))
            return path.substr(prefix.size());
    return path;
}

} // namespace kelvox
