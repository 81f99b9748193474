#pragma once

#include <string>
#include <string_view>

namespace kelvox {

class S57ChartItems;
class S57Feature;

/// Codes of classes that the program treats by name. From the S-57 object catalogue.
namespace s57class {
inline constexpr int ACHBRT = 3, ACHARE = 4, BCNCAR = 5, BCNSPP = 9, BOYCAR = 14, BOYSPP = 19;
inline constexpr int DAYMAR = 39, DEPARE = 42, DEPCNT = 43, DRGARE = 46, FOGSIG = 58, LAKARE = 69;
inline constexpr int LNDARE = 71, LNDMRK = 74, LIGHTS = 75, LITFLT = 76, LITVES = 77, OBSTRN = 86;
inline constexpr int RADSTA = 102, RTPBCN = 103, RETRFL = 113, SBDARE = 121, SOUNDG = 129;
inline constexpr int TOPMAR = 144, UWTROC = 153, UNSARE = 154, WATTUR = 156, WRECKS = 159;
inline constexpr int M_COVR = 302, annotation = 22001;
} // namespace s57class

/// Codes of attributes that the program reads by name. From the S-57 attribute catalogue.
namespace s57attribute {
inline constexpr int CATCOV = 18, CATLIT = 37, CATOBS = 42, CATSLC = 60, CATWAT = 69, CATWRK = 71;
inline constexpr int COLOUR = 75, CONDTN = 81, DRVAL1 = 87, DRVAL2 = 88, ELEVAT = 90, HEIGHT = 95;
inline constexpr int INFORM = 102, LITCHR = 107, NATSUR = 113, NATQUA = 114, OBJNAM = 116;
inline constexpr int ORIENT = 117, RADIUS = 127, RESTRN = 131, SCAMIN = 133, SECTR1 = 136;
inline constexpr int SECTR2 = 137, SIGGRP = 141, SIGPER = 142, TOPSHP = 171, VALDCO = 174;
inline constexpr int VALNMR = 178, VALSOU = 179, WATLEV = 187, NINFOM = 300, NOBJNM = 301;
} // namespace s57attribute

/// The object and attribute catalogue: codes to acronyms, names and readable values.
class S57ObjectCatalogue {
public:
    /// The readable name of a class that the display knows, e.g. "Depth Area"; empty for others.
    [[nodiscard]] static std::string_view renderableName(int classCode);
    /// Empty for an unknown code.
    [[nodiscard]] static std::string_view classAcronym(int classCode);
    [[nodiscard]] static std::string_view className(int classCode);
    [[nodiscard]] static std::string_view attributeAcronym(int attributeCode);
    [[nodiscard]] static std::string_view attributeName(int attributeCode);
    /// The meaning of one listed value, e.g. "mud"; empty when the catalogue has none.
    [[nodiscard]] static std::string_view valueMeaning(int attributeCode, int value);
    /// A value as words: the meanings of its numbers joined by ", " for enumerations and lists, the
    /// text itself for all other attributes. Numbers without a meaning stand as they are.
    [[nodiscard]] static std::string readableValue(int attributeCode, std::string_view value);

    /// Makes the feature's display object; the cell's structures are told later, once all its
    /// features are known.
    static void s57ObjectCreateForFeature(S57Feature& feature, S57ChartItems& cell);
};

} // namespace kelvox
