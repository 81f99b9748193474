#include "app/AlarmTones.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace kelvox {

namespace {
constexpr int samplesPerSecond = 22'050;

using Wave = double (*)(double seconds);

double turn(double cycles)
{
    return std::sin(2 * std::numbers::pi * cycles);
}

/// Odd overtones, heard through engine noise; four pulses.
double buzz(double t)
{
    const double pulse = std::fmod(t, 0.4) < 0.26 ? 1 : 0;
    return pulse * (turn(233 * t) + turn(699 * t) / 3 + turn(1165 * t) / 5) * 0.6;
}

/// Struck twice, ringing out.
double bell(double t)
{
    const double since = std::fmod(t, 0.8);
    return std::exp(-4 * since)
        * (turn(880 * since) + 0.5 * turn(1760 * since * 1.19) + 0.25 * turn(2637 * since)) * 0.55;
}

/// Rises from 600 to 1200 Hz, twice a second.
double siren(double t)
{
    const double since = std::fmod(t, 0.5);
    return 0.8 * turn(600 * since + 600 * since * since);
}

/// Two short high tones.
double beep(double t)
{
    const double since = std::fmod(t, 0.22);
    return since < 0.14 ? 0.8 * turn(1320 * since) : 0;
}

struct Tone {
    const char* name;
    double seconds;
    Wave wave;
};
constexpr Tone tones[] = {
    {"Buzz", 1.6, buzz}, {"Bell", 1.6, bell}, {"Siren", 2.0, siren}, {"Beep", 0.44, beep}};

void append(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
}
} // namespace

const std::vector<std::string>& alarmToneNames()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        for (const Tone& tone : tones)
            result.emplace_back(tone.name);
        return result;
    }();
    return names;
}

std::string alarmTone(std::string_view name)
{
    const auto* tone =
        std::ranges::find_if(tones, [&](const Tone& other) { return name == other.name; });
    if (tone == std::end(tones))
        tone = tones;
    const auto count = static_cast<int>(tone->seconds * samplesPerSecond);
    constexpr std::uint32_t headerAfterSize = 36;
    const auto dataBytes = static_cast<std::uint32_t>(count) * 2;
    std::string bytes = "RIFF";
    append(bytes, headerAfterSize + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 1, 2); // plain samples
    append(bytes, 1, 2); // channels
    append(bytes, samplesPerSecond, 4);
    append(bytes, samplesPerSecond * 2, 4);
    append(bytes, 2, 2);
    append(bytes, 16, 2);
    bytes += "data";
    append(bytes, dataBytes, 4);
    constexpr double edge = 0.01; // seconds; a tone that begins or ends at once clicks
    for (int i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / samplesPerSecond;
        const double fade = std::min({1.0, t / edge, (tone->seconds - t) / edge});
        const double value = std::clamp(tone->wave(t) * fade, -1.0, 1.0);
        append(bytes, static_cast<std::uint32_t>(static_cast<std::int32_t>(value * 32'000)), 2);
    }
    return bytes;
}

} // namespace kelvox
