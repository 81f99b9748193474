#include "presentation/ProgramNames.h"

#include <array>

namespace kelvox {

namespace {
constexpr auto procedures =
    std::to_array<std::string_view>({"DEPARE02", "LIGHTS05", "OBSTRN05", "SLCONS03", "QUAPOS01",
                                     "RESTRN01", "RESARE03", "TOPMAR01", "WRECKS03"});

constexpr auto symbols = std::to_array<std::string_view>(
    {"LIGHTS81", "LIGHTS82", "LIGHTS11", "LIGHTS12", "LIGHTS13", "LITDEF11", // lights
     "OBSTRN11", "OBSTRN03", "OBSTRN01", "UWTROC03", "UWTROC04", "FOULGND1", "FSHHAV01", "FLTHAZ02",
     "DANGER02", // obstructions
     "WRECKS01", "WRECKS04", "WRECKS05", // wrecks
     "ACHRES51", "FSHRES51", "ENTRES51", // restricted areas
     "LNDARE01", // land too small for an area
     "TOPMAR02", "TOPMAR04", "TOPMAR05", "TOPMAR06", "TOPMAR07", "TOPMAR08", "TOPMAR10", "TOPMAR12",
     "TOPMAR13", "TOPMAR14", "TOPMAR16", "TOPMAR17", "TOPMAR18", "TOPMAR65",
     "TMARDEF2", // topmarks of floating marks
     "TOPMAR22", "TOPMAR24", "TOPMAR25", "TOPMAR26", "TOPMAR27", "TOPMAR28", "TOPMAR30", "TOPMAR32",
     "TOPMAR33", "TOPMAR34", "TOPMAR36", "TOPMAR85", "TOPMAR86", "TOPMAR87", "TOPMAR88", "TOPMAR89",
     "TMARDEF1"}); // topmarks of fixed marks

constexpr auto patterns = std::to_array<std::string_view>({"DRGARE01"});

constexpr auto colors = std::to_array<std::string_view>(
    {"CHBLK", "CHGRN", "CHMGD", "CSTLN", "DEPCN", "DEPDW", "DEPIT", "DEPVS", "DNGHL", "LANDA",
     "LITGN", "LITRD", "LITYW", "NODTA", "SNDG2", "UINFD"});

constexpr auto colorTables = std::to_array<std::string_view>({"DAY", "DUSK", "NIGHT"});
} // namespace

std::span<const std::string_view> conditionalProcedureNames()
{
    return procedures;
}

std::span<const std::string_view> routineSymbolNames()
{
    return symbols;
}

std::span<const std::string_view> routinePatternNames()
{
    return patterns;
}

std::span<const std::string_view> routineColorTokens()
{
    return colors;
}

std::span<const std::string_view> colorTableNames()
{
    return colorTables;
}

} // namespace kelvox
