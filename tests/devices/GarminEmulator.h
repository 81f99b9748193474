#pragma once

#include "devices/Emulator.h"

#include <cstdint>
#include <map>
#include <optional>

namespace kelvox {

/// A Garmin receiver with its memory, written against the published description alone.
class GarminEmulator final : public Emulator {
public:
    struct Packet {
        std::uint8_t id = 0;
        std::string data;
        friend bool operator==(const Packet&, const Packet&) = default;
    };
    using Packets = std::vector<Packet>;

    /// @param dataTypes of its capability array; empty: it is too old to have one
    explicit GarminEmulator(std::vector<std::uint16_t> dataTypes, Fault fault = {})
        : Emulator(fault)
        , m_dataTypes(std::move(dataTypes))
    {
    }
    std::map<std::uint8_t, Packets> memory; ///< by command: what it sends without count and end
    Packets taken; ///< of the list that was sent to it last, once it is complete
    std::size_t listsTaken = 0;
    bool wasAborted = false;
    bool talksOfItself = false; ///< puts a packet that nobody asked for before everything

    [[nodiscard]] static std::string frame(std::uint8_t id, const std::string& data)
    {
        std::string body = {static_cast<char>(id), static_cast<char>(data.size())};
        body += data;
        std::uint8_t sum = 0;
        for (const char c : body)
            sum = static_cast<std::uint8_t>(sum - static_cast<std::uint8_t>(c));
        body += static_cast<char>(sum);
        std::string bytes = "\x10";
        bytes += body[0];
        for (const char c : body.substr(1))
            bytes.append(c == '\x10' ? 2 : 1, c);
        return bytes + "\x10\x03";
    }
    [[nodiscard]] static std::string word(std::size_t value)
    {
        return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
    }

    void hear(std::string_view bytes) override
    {
        m_heard += bytes;
        // Nothing of ours ends in these two but a packet: a 16 in it is doubled.
        for (std::size_t end = 0; (end = endOfPacket()) != 0; m_heard.erase(0, end))
            take(m_heard.substr(0, end));
    }

private:
    [[nodiscard]] std::string stranger() const override
    {
        return frame(51, std::string(64, '\x10'));
    }

    [[nodiscard]] std::size_t endOfPacket() const
    {
        for (std::size_t i = 2; i + 1 < m_heard.size(); ++i) {
            if (m_heard[i] != '\x10')
                continue;
            if (m_heard[i + 1] == '\x03')
                return i + 2;
            ++i;
        }
        return 0;
    }
    void take(const std::string& bytes)
    {
        std::string body(1, bytes[1]);
        for (std::size_t i = 2; i + 2 < bytes.size(); ++i) {
            body += bytes[i];
            if (bytes[i] == '\x10')
                ++i;
        }
        const Packet packet{static_cast<std::uint8_t>(body[0]), body.substr(2, body.size() - 3)};
        if (isDeafNow())
            return;
        if (frame(packet.id, packet.data) != bytes)
            send(21, body.substr(0, 1) + '\0');
        else if (packet.id == 6)
            acknowledged(static_cast<std::uint8_t>(packet.data[0]));
        else if (packet.id == 21)
            say(frame(m_last.id, m_last.data));
        else
            answer(packet);
    }
    void send(std::uint8_t id, const std::string& data)
    {
        if (id != 6 && id != 21)
            m_last = {id, data};
        if (talksOfItself)
            say(stranger());
        say(frame(id, data));
    }
    void answer(const Packet& packet)
    {
        send(6, {static_cast<char>(packet.id), '\0'});
        switch (packet.id) {
        case 254:
            send(255, word(77) + word(254) + "Yacht Plotter 3" + '\0' + "VERBMAP" + '\0');
            break;
        case 10:
            command(static_cast<std::uint8_t>(packet.data[0]));
            break;
        case 27:
            m_coming.clear();
            m_announced = static_cast<std::uint8_t>(packet.data[0])
                + 256U * static_cast<std::uint8_t>(packet.data[1]);
            break;
        case 12:
            if (m_coming.size() == m_announced && !m_coming.empty()) {
                taken = std::exchange(m_coming, {});
                ++listsTaken;
            }
            break;
        default:
            // The same once more: its acknowledgement was lost.
            if (m_coming.empty() || !(m_coming.back() == packet))
                m_coming.push_back(packet);
        }
    }
    void command(std::uint8_t code)
    {
        m_list.clear();
        wasAborted = wasAborted || code == 0;
        if (code == 0)
            return;
        const auto& records = memory[code];
        m_list.assign(records.begin(), records.end());
        m_list.push_back({12, word(code)});
        send(27, word(records.size()));
    }
    void acknowledged(std::uint8_t id)
    {
        if (id != m_last.id)
            return;
        if (id == 255 && !m_dataTypes.empty()) {
            send(248, std::string("extra\0", 6));
        } else if (id == 248) {
            std::string array = "P" + word(0) + "L" + word(1) + "A" + word(10) + "A" + word(100);
            for (const auto type : m_dataTypes)
                array += "D" + word(type);
            send(253, array);
        } else if (!m_list.empty()) {
            const auto next = m_list.front();
            m_list.pop_front();
            send(next.id, next.data);
        }
    }

    std::vector<std::uint16_t> m_dataTypes;
    std::string m_heard;
    Packet m_last;
    std::deque<Packet> m_list;
    Packets m_coming;
    std::size_t m_announced = 0;
};

} // namespace kelvox
