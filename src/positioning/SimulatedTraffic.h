#pragma once

#include "positioning/SimulatorDescription.h"

#include <string>
#include <vector>

namespace kelvox {

/// AIS traffic for demonstrations: each vessel sails to and fro on its course and reports its
/// position every 10 seconds, its name and size every minute.
class SimulatedTraffic {
public:
    void setVessels(std::vector<TrafficVessel> vessels, double nowSeconds);
    /// Complete VDM sentences due at this moment, with checksum and line end.
    void appendDue(double nowSeconds, std::vector<std::string>& sentences);

private:
    struct Sailing {
        TrafficVessel vessel;
        double nextPosition;
        double nextStatic;
    };
    std::vector<Sailing> m_vessels;
    double m_start = 0;
    int m_sequence = 0;
};

} // namespace kelvox
