#pragma once

#include "support/AISWriter.h"

#include <random>
#include <string>
#include <vector>

namespace kelvox {

/// The sentences of a fleet that sails about in a square of two degrees, always the same.
class Traffic {
public:
    explicit Traffic(std::size_t vessels)
    {
        for (std::size_t i = 0; i < vessels; ++i)
            m_vessels.push_back({.mmsi = static_cast<std::uint32_t>(200'000'000 + i * 977),
                                 .longitude = number(-600'000, 600'000),
                                 .latitude = number(29'400'000, 30'600'000),
                                 .speed = number(0, 250),
                                 .course = number(0, 3599),
                                 .heading = number(0, 359)});
    }
    /// The next report of a vessel, a little farther on; every third is class B.
    std::string next(std::size_t vessel)
    {
        auto& raw = m_vessels[vessel];
        raw.longitude += number(-50, 50);
        raw.latitude += number(-50, 50);
        return vessel % 3 == 2 ? raw.classB().sentence() : raw.classA().sentence();
    }
    /// The vessel's name, as class B sends it.
    [[nodiscard]] std::string name(std::size_t vessel) const
    {
        return AISWriter()
            .add(24, 6)
            .add(0, 2)
            .add(m_vessels[vessel].mmsi, 30)
            .add(0, 2)
            .add("VESSEL NUMBER " + std::to_string(vessel), 20)
            .sentence();
    }
    /// The vessel leaves and another one comes in its place.
    void replace(std::size_t vessel) { m_vessels[vessel].mmsi += 1; }
    int number(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }

private:
    std::mt19937 m_random{20240501};
    std::vector<RawReport> m_vessels;
};

} // namespace kelvox
