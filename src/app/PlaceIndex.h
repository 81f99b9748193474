#pragma once

#include "s57/CellGeometry.h"

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// The names on the charts, for a search as one types. The names of a cell are gathered once.
class PlaceIndex {
public:
    struct Place {
        std::string name;
        std::string folded; ///< for comparing
        std::string_view className; ///< from the catalogue
        Position position;
    };
    using Places = std::vector<Place>;
    using Cells = std::vector<std::shared_ptr<const CellGeometry>>;

    /// The named objects of a cell, each name once for each class. Any thread.
    [[nodiscard]] static std::shared_ptr<const Places> placesOf(const CellGeometry& geometry);

    /// Cells whose names are not known yet; those that are gone are forgotten.
    [[nodiscard]] Cells missing(const Cells& cells);
    void add(const std::shared_ptr<const CellGeometry>& cell, std::shared_ptr<const Places> places);

    /// Names that begin with the text first, then those that contain it, the nearest first; of the
    /// same name and class within a mile one.
    [[nodiscard]] std::vector<Place> find(std::string_view text, Position near,
                                          std::size_t atMost) const;

private:
    std::map<std::shared_ptr<const CellGeometry>, std::shared_ptr<const Places>> m_cells;
};

} // namespace kelvox
