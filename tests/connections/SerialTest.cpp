#include "connections/Serial.h"
#include "connections/SirfSetup.h"

#include "support/PseudoTerminal.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <termios.h>

#include <fstream>

namespace kelvox {
namespace {

TEST(Serial, PortNames)
{
    EXPECT_EQ(Serial::devicePath("usbserial-1410"), "/dev/cu.usbserial-1410");
    EXPECT_EQ(Serial::devicePath("/dev/tty.usbserial"), "/dev/tty.usbserial");
    EXPECT_EQ(Serial::devicePath("/dev/cu.modem"), "/dev/cu.modem");
    EXPECT_EQ(Serial::devicePath("/dev/ttyUSB0"), "/dev/ttyUSB0");
    EXPECT_EQ(Serial::shortPortName("/dev/cu.usbserial-1410"), "usbserial-1410");
    EXPECT_EQ(Serial::shortPortName("/dev/ttyUSB0"), "ttyUSB0");
}

TEST(Serial, LineSettingsOfARealTerminal)
{
    PseudoTerminal line;
    Serial serial;
    ASSERT_TRUE(serial.open(line.path(), "4800", Serial::FlowControl::Both));
    termios settings{};
    ASSERT_EQ(::tcgetattr(serial.descriptor(), &settings), 0);
    EXPECT_EQ(::cfgetispeed(&settings), static_cast<speed_t>(B4800));
    EXPECT_EQ(settings.c_cflag & (CSIZE | CREAD | CLOCAL | CSTOPB | PARENB), CS8 | CREAD | CLOCAL);
    EXPECT_NE(settings.c_cflag & CRTSCTS, 0U);
    EXPECT_EQ(settings.c_iflag, static_cast<tcflag_t>(IXON | IXOFF | IXANY));
    EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG), 0U) << "raw";
    EXPECT_EQ(settings.c_oflag & OPOST, 0U);
    EXPECT_EQ(settings.c_cc[VTIME], 5);
    EXPECT_EQ(::fcntl(serial.descriptor(), F_GETFL) & O_NONBLOCK, 0);

    Serial second;
    const auto refused = second.open(line.path(), "4800");
    ASSERT_FALSE(refused) << "exclusive";
    EXPECT_NE(refused.error().message.find("another program is using it"), std::string::npos);
    serial.closePort();
    EXPECT_TRUE(second.openPort(line.path(), "9600", false, false));
}

TEST(Serial, RefusalsSayWhatToDo)
{
    Serial serial;
    EXPECT_NE(serial.open("/dev/tty.nothere", "4800").error().message.find("Plug it in"),
              std::string::npos);
    EXPECT_NE(serial.open("/dev/null", "4801").error().message.find("4801"), std::string::npos);
    EXPECT_FALSE(serial.open("/dev/null", "4800")) << "not a terminal";
    EXPECT_FALSE(serial.isOpen());
}

TEST(Serial, LinesAndPiecesOfAtMost256Bytes)
{
    PseudoTerminal line;
    Serial serial;
    ASSERT_TRUE(serial.open(line.path(), "115200"));
    line.write("$A\r\n$B\r\n" + std::string(300, 'x') + "\nrest");
    const auto next = [&serial] { return serial.readPortUntilChar('\n', 256).value_or(""); };
    EXPECT_EQ(next(), "$A\r\n");
    EXPECT_EQ(next(), "$B\r\n");
    EXPECT_EQ(next(), std::string(256, 'x'));
    EXPECT_EQ(next(), std::string(44, 'x') + '\n');
    EXPECT_EQ(serial.readPortChar(), 'r');
    EXPECT_EQ(serial.readPortForLength(2), "es");
    EXPECT_EQ(next(), "t") << "an unfinished line, once the line is silent";
    EXPECT_EQ(serial.readPortUntilChar('\n', 256), std::nullopt);

    EXPECT_TRUE(serial.writePort("$OUT\r\n"));
    EXPECT_EQ(line.read(6), "$OUT\r\n");
    EXPECT_FALSE(serial.writePort(std::string(1 << 20, 'x'))) << "a stalled line gives up";
    line.unplug();
    std::string bytes;
    EXPECT_EQ(serial.read(bytes), Serial::ReadStatus::Closed);
}

TEST(Serial, ListsDevicesByTheirReadableNames)
{
    TemporaryFolder folder;
    const auto put = [&](const std::string& file, const std::string& text) {
        std::filesystem::create_directories((folder.path() / file).parent_path());
        std::ofstream(folder.path() / file) << text << '\n';
    };
    put("usb/1-1/product", "GPS Mouse");
    put("usb/1-1/manufacturer", "Sea Works");
    put("usb/1-1/1-1:1.0/ttyUSB0/port_number", "0");
    put("class/ttyUSB0/type", "");
    put("class/ttyS0/type", "4");
    put("class/ttyS0/device/id", "PNP0501");
    put("class/ttyS1/type", "0");
    put("class/ttyS1/device/id", "none");
    put("class/tty0/active", "");
    std::filesystem::create_symlink(folder.path() / "usb/1-1/1-1:1.0/ttyUSB0",
                                    folder.path() / "class/ttyUSB0/device");
    for (const auto* device : {"ttyUSB0", "ttyS0", "ttyS1", "tty0"})
        put(std::string("dev/") + device, "");
    const auto ports = Serial::listPorts(folder.path() / "class", folder.path() / "dev");
    const auto dev = (folder.path() / "dev").string();
    EXPECT_EQ(ports,
              (std::vector<SerialPortInfo>{{dev + "/ttyS0", "Serial port (ttyS0)"},
                                           {dev + "/ttyUSB0", "Sea Works GPS Mouse (ttyUSB0)"}}));
}

TEST(Sirf, PublishedFrames)
{
    const auto frame = sirfToNmea(4800);
    const unsigned char published[] = {0xA0, 0xA2, 0x00, 0x18, 0x81, 0x02, 0x01, 0x01,
                                       0x01, 0x01, 0x01, 0x01, 0x05, 0x01, 0x01, 0x01,
                                       0x01, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01,
                                       0x00, 0x00, 0x12, 0xC0, 0x01, 0x67, 0xB0, 0xB3};
    EXPECT_EQ(frame, std::string(std::begin(published), std::end(published)));
    EXPECT_EQ(sirfToBinary(9600), "$PSRF100,0,9600,8,1,0*0C\r\n");
}

} // namespace
} // namespace kelvox
