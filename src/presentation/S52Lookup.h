#pragma once

#include "presentation/S52Model.h"
#include "s57/S57ChartItems.h"

namespace kelvox {

/// Finds each feature its entry in the look-up tables.
class S52Lookup {
public:
    /// Whether features of the class are drawn by a look-up entry: the display knows it and has no
    /// routine of its own for it.
    [[nodiscard]] static bool takesEntry(int classCode);
    /// Assigns its entry to every feature of a cell; again after the choice of symbols changed.
    /// May run while other threads draw: they see the old or the new entry of each feature.
    static void setS52Lupts(const S57ChartItems& cell, const S52Model& model);
    /// Leaves alone what is never drawn by look-up.
    static void setS52LuptForFeature(S57Feature& feature, const S52Model& model);
    /// The last entry of the feature's class that matches, else the class's first one; null when
    /// the table has none. That the number of conditions does not count is on purpose.
    [[nodiscard]] static const S52Lupt* s52LuptForS57Feature(const S57Feature& feature,
                                                             const S52Model& model);
    /// Whether every condition holds. A condition is an acronym with the beginning of a value: it
    /// holds for longer values too, and a bare acronym for any value but an empty one.
    [[nodiscard]] static bool s52LuptMatchesS57Feature(const S57Feature& feature,
                                                       const S52Lupt& entry);
};

} // namespace kelvox
