#include "devices/ReceiverSetup.h"

#include "devices/Garmin.h"
#include "devices/SerialLine.h"

namespace kelvox {

PortPlan::Setup garminSetup(const Clock& clock,
                            std::function<void(const std::string& ident)> identified)
{
    return [&clock, identified = std::move(identified)](Serial& port, const auto& /*restart*/) {
        constexpr GPSTransfer::Timing brief{.answer = 1, .attempts = 1};
        Garmin garmin(clock, {}, brief);
        garmin.setPort(std::make_unique<SerialLine>(port, clock, std::stop_token()));
        garmin.initialise();
        if (identified && !garmin.ident().empty())
            identified(garmin.ident());
    };
}

} // namespace kelvox
