#pragma once

#include "base/Result.h"
#include "chartview/ViewFrame.h"

#include <QImage>

#include <string>

namespace kelvox {

/// One view drawn in the three colour schemes, all of the frame's size.
struct SchemePictures {
    QImage day;
    QImage dusk;
    QImage night;
};

/// The bytes of a KAP file that shows the pictures at their place on the earth, WGS 84.
///
/// The day's most frequent colours are kept as they are, at most 127; the others become the nearest
/// of these. Dusk and night are each colour's mean where it stands. Fails for a turned frame, a
/// picture of another size, or none.
[[nodiscard]] Result<std::string> kapFromPictures(const SchemePictures& pictures,
                                                  const ViewFrame& frame, const std::string& name,
                                                  const std::string& number);

} // namespace kelvox
