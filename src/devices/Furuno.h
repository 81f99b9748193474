#pragma once

#include "devices/NmeaTransfer.h"

#include <optional>

namespace kelvox {

/// Furuno receivers. The user starts loading or saving in the receiver's menu; lines go one way,
/// without acknowledgement or checksum, the last one says that it is the last.
class Furuno final : public SentenceTransfer {
public:
    using SentenceTransfer::SentenceTransfer;

    /// Longer routes would lose their end in the smaller models.
    static constexpr std::size_t mostRoutePoints = 32;

    [[nodiscard]] Result<void> startPrivate() override;
    void stopPrivate() override;

    // Lines without their end.
    [[nodiscard]] static std::string waypointSentence(const Waypoint& waypoint);
    /// The route's parts and its comment. Numbers from 1 to 30.
    [[nodiscard]] static std::vector<std::string>
    routeSentences(unsigned number, const ExchangeRecords::NamedRoute& route);
    [[nodiscard]] static std::optional<Waypoint> waypointFromSentence(std::string_view sentence);
    [[nodiscard]] static std::optional<RoutePart> routeFromSentence(std::string_view sentence);

private:
    [[nodiscard]] Result<void> receiveRecords(const ExchangeKinds& kinds,
                                              ExchangeRecords& records) override;
    [[nodiscard]] Result<void> sendRecords(const ExchangeRecords& records) override;

    bool m_inList = false;
};

} // namespace kelvox
