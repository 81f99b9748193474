#pragma once

#include "connections/LineBuffer.h"
#include "devices/GPSTransfer.h"

#include <string>
#include <string_view>

namespace kelvox {

/// Receivers that are spoken to in sentences, line by line.
class SentenceTransfer : public GPSTransfer {
public:
    using GPSTransfer::GPSTransfer;

protected:
    enum class Checksum { Required, WhereGiven };

    /// The next sentence with its `$`, without its checksum and line end. BadSyntax: a damaged one.
    [[nodiscard]] Result<std::string> readSentence(double deadline, Checksum checksum);
    /// @return false when the receiver is gone
    [[nodiscard]] bool writeSentence(std::string_view sentence);
    void forgetLines() { m_lines.clear(); } ///< what was read and not looked at
    [[nodiscard]] double deadlineIn(double seconds) const
    {
        return clock().monotonicSeconds() + seconds;
    }

private:
    // Longer ones than the standard's 82 characters are met, endless ones are noise.
    LineBuffer m_lines{256};
};

/// "ddmm.mmm,N,dddmm.mmm,E" with so many decimals, rounded.
[[nodiscard]] std::string positionFields(Position position, int minuteDecimals);

/// Takes the position from four fields of a sentence; false when they are none.
[[nodiscard]] bool setPosition(ChartMarker& marker, std::string_view latitude,
                               std::string_view northSouth, std::string_view longitude,
                               std::string_view eastWest);

/// A record that does not read as its kind; the transfer is at an end.
[[nodiscard]] tl::unexpected<Error> badSentence(std::string_view sentence);

} // namespace kelvox
