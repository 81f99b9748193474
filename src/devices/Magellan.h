#pragma once

#include "devices/NmeaTransfer.h"

#include <deque>
#include <optional>

namespace kelvox {

/// Magellan receivers, by the maker's published sentences "PMGN…".
///
/// In the hand-shake each side answers a sentence with its checksum, and an unanswered one is sent
/// again: so we write. Reading goes without, because some receivers are very slow at it; a list
/// with a damaged sentence is asked for again as a whole.
class Magellan final : public SentenceTransfer {
public:
    using SentenceTransfer::SentenceTransfer;

    [[nodiscard]] Result<void> startPrivate() override;
    void stopPrivate() override;

    /// What differs from model to model.
    struct Family {
        TextRule name;
        bool isOld = false; ///< the first icon set, no route names, thousandths of minutes
        [[nodiscard]] static Family ofProduct(int productId);
    };
    /// Sentences without checksum.
    [[nodiscard]] static std::string waypointSentence(const Waypoint& waypoint,
                                                      const Family& family);
    [[nodiscard]] static std::vector<std::string>
    routeSentences(const ExchangeRecords::NamedRoute& route, const Family& family);
    [[nodiscard]] static std::optional<Waypoint> waypointFromSentence(std::string_view sentence,
                                                                      const Family& family);
    [[nodiscard]] static std::optional<RoutePart> routeFromSentence(std::string_view sentence);
    struct TrackPoint {
        Track track;
        std::string line; ///< the name of the track it belongs to
        bool isValid = false; ///< false: a pause in the track
    };
    [[nodiscard]] static std::optional<TrackPoint> trackFromSentence(std::string_view sentence);

private:
    enum class HandShake { Off, On };
    [[nodiscard]] Result<void> receiveRecords(const ExchangeKinds& kinds,
                                              ExchangeRecords& records) override;
    [[nodiscard]] Result<void> sendRecords(const ExchangeRecords& records) override;

    [[nodiscard]] Result<void> getIdent();
    [[nodiscard]] Result<std::vector<Waypoint>> receiveWaypoints();
    [[nodiscard]] Result<RouteParts> receiveRoutes();
    [[nodiscard]] Result<std::vector<Track>> receiveTracks();
    /// Asks for a list and gives take() its sentences of the kind; begin() starts each attempt.
    template <typename Begin, typename Take>
    [[nodiscard]] Result<void> receiveList(std::string_view command, std::string_view kind,
                                           TransferProgress::Kind progressKind, const Begin& begin,
                                           const Take& take);
    [[nodiscard]] bool write(std::string_view sentence);
    static constexpr int handShakeAttempts = 5; ///< the maker's figure
    /// Sends until the receiver has answered with the checksum.
    [[nodiscard]] Result<void> sendAcknowledged(std::string_view sentence, double firstAnswer,
                                                int attempts = handShakeAttempts);
    /// The next of the maker's own sentences, answered while the hand-shake is on.
    [[nodiscard]] Result<std::string> readOwn(double deadline);

    Family m_family;
    HandShake m_handShake = HandShake::Off;
    bool m_inList = false;
    std::deque<std::string> m_waiting; ///< came while an acknowledgement was awaited
};

} // namespace kelvox
