#pragma once

#include "base/Result.h"
#include "chartview/ViewFrame.h"
#include "presentation/S57ObjectRender.h"

#include <filesystem>

namespace kelvox {

/// What lies under a click on the chart. Any thread.
class ChartPick {
public:
    enum class Kind { Mark, Line, Area, Information };

    /// One object of the chart that the click meets.
    struct Hit {
        std::shared_ptr<const CellGeometry> cell; ///< keeps the feature alive
        std::size_t feature = 0; ///< place in the cell's list
        std::size_t cellRank = 0; ///< 0 for the cell on top
        Kind kind = Kind::Mark; ///< Information: a meta object, which is never drawn
        double distance = 0; ///< pixels from the click; 0 inside an area
        double size = 0; ///< of the box around an area, to be compared only
        std::optional<CellGeometry::Sounding> sounding; ///< the nearest one, of a group
    };

    /// The objects at a pixel, as drawn with these settings: marks before lines before areas before
    /// information about the chart; the nearest mark or line first, then the smallest area. Objects
    /// hidden by a cell above are left out, and so is what the filters hide.
    /// @param cells the best first, as they are drawn
    [[nodiscard]] static std::vector<Hit>
    at(std::span<const std::shared_ptr<const CellGeometry>> cells, const Portrayal& portrayal,
       const RenderSettings& settings, const ViewFrame& frame, Point pixel);

    struct Attribute {
        int code = 0;
        std::string acronym;
        std::string name;
        std::string value; ///< as the cell holds it, UTF-8
        std::string words; ///< as one reads it, in the user's units
        bool ofRecord = false; ///< about the recording, not the object; these come last
    };
    /// A text beside the cell that the object points to.
    struct TextFile {
        std::string name;
        std::filesystem::path path; ///< empty when it is not there
    };
    /// All that the chart says of an object.
    struct Description {
        std::string acronym;
        std::string className;
        std::string title; ///< the object's name, else the name of its class
        std::string carrier; ///< what a light or topmark stands on; empty when it stands alone
        std::optional<Position> position; ///< of a point
        std::vector<Attribute> attributes;
        std::vector<std::string> information; ///< notes, the international text first
        std::vector<TextFile> textFiles;
        std::string cell; ///< the file's name without extension
        std::string edition;
        std::string update;
        std::string issueDate; ///< YYYYMMDD
        std::uint32_t compiledScale = 0;
    };
    [[nodiscard]] static Description describe(const Hit& hit, const RenderSettings& settings);
    /// The text as UTF-8; files of more than a megabyte are refused.
    [[nodiscard]] static Result<std::string> read(const TextFile& file);
};

} // namespace kelvox
