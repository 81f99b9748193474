#include "presentation/CodeTables.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvox {

namespace {
// IHO S-57 edition 3.1, Appendix A, in code order.
constexpr auto objectClasses = std::to_array<std::string_view>({
    "XXXXXX", "ADMARE", "AIRARE", "ACHBRT", "ACHARE", "BCNCAR", "BCNISD", "BCNLAT", "BCNSAW",
    "BCNSPP", "BERTHS", "BRIDGE", "BUISGL", "BUAARE", "BOYCAR", "BOYINB", "BOYISD", "BOYLAT",
    "BOYSAW", "BOYSPP", "CBLARE", "CBLOHD", "CBLSUB", "CANALS", "CANBNK", "CTSARE", "CAUSWY",
    "CTNARE", "CHKPNT", "CGUSTA", "COALNE", "CONZNE", "COSARE", "CTRPNT", "CONVYR", "CRANES",
    "CURENT", "CUSZNE", "DAMCON", "DAYMAR", "DWRTCL", "DWRTPT", "DEPARE", "DEPCNT", "DISMAR",
    "DOCARE", "DRGARE", "DRYDOC", "DMPGRD", "DYKCON", "EXEZNE", "FAIRWY", "FNCLNE", "FERYRT",
    "FSHZNE", "FSHFAC", "FSHGRD", "FLODOC", "FOGSIG", "FORSTC", "FRPARE", "GATCON", "GRIDRN",
    "HRBARE", "HRBFAC", "HULKES", "ICEARE", "ICNARE", "ISTZNE", "LAKARE", "LAKSHR", "LNDARE",
    "LNDELV", "LNDRGN", "LNDMRK", "LIGHTS", "LITFLT", "LITVES", "LOCMAG", "LOKBSN", "LOGPON",
    "MAGVAR", "MARCUL", "MIPARE", "MORFAC", "NAVLNE", "OBSTRN", "OFSPLF", "OSPARE", "OILBAR",
    "PILPNT", "PILBOP", "PIPARE", "PIPOHD", "PIPSOL", "PONTON", "PRCARE", "PRDARE", "PYLONS",
    "RADLNE", "RADRNG", "RADRFL", "RADSTA", "RTPBCN", "RDOCAL", "RDOSTA", "RAILWY", "RAPIDS",
    "RCRTCL", "RECTRC", "RCTLPT", "RSCSTA", "RESARE", "RETRFL", "RIVERS", "RIVBNK", "ROADWY",
    "RUNWAY", "SNDWAV", "SEAARE", "SPLARE", "SBDARE", "SLCONS", "SISTAT", "SISTAW", "SILTNK",
    "SLOTOP", "SLOGRD", "SMCFAC", "SOUNDG", "SPRING", "SQUARE", "STSLNE", "SUBTLN", "SWPARE",
    "TESARE", "TS_PRH", "TS_PNH", "TS_PAD", "TS_TIS", "T_HMON", "T_NHMN", "T_TIMS", "TIDEWY",
    "TOPMAR", "TSELNE", "TSSBND", "TSSCRS", "TSSLPT", "TSSRON", "TSEZNE", "TUNNEL", "TWRTPT",
    "UWTROC", "UNSARE", "VEGATN", "WATTUR", "WATFAL", "WEDKLP", "WRECKS", "TS_FEB",
});
static_assert(objectClasses.size() == 161);

constexpr auto attributes = std::to_array<std::string_view>({
    "",       "AGENCY", "BCNSHP", "BUISHP", "BOYSHP", "BURDEP", "CALSGN", "CATAIR", "CATACH",
    "CATBRG", "CATBUA", "CATCBL", "CATCAN", "CATCAM", "CATCHP", "CATCOA", "CATCTR", "CATCON",
    "CATCOV", "CATCRN", "CATDAM", "CATDIS", "CATDOC", "CATDPG", "CATFNC", "CATFRY", "CATFIF",
    "CATFOG", "CATFOR", "CATGAT", "CATHAF", "CATHLK", "CATICE", "CATINB", "CATLND", "CATLMK",
    "CATLAM", "CATLIT", "CATMFA", "CATMPA", "CATMOR", "CATNAV", "CATOBS", "CATOFP", "CATOLB",
    "CATPLE", "CATPIL", "CATPIP", "CATPRA", "CATPYL", "CATQUA", "CATRAS", "CATRTB", "CATROS",
    "CATTRK", "CATRSC", "CATREA", "CATROD", "CATRUN", "CATSEA", "CATSLC", "CATSIT", "CATSIW",
    "CATSIL", "CATSLO", "CATSCF", "CATSPM", "CATTSS", "CATVEG", "CATWAT", "CATWED", "CATWRK",
    "CATZOC", "$SPACE", "$CHARS", "COLOUR", "COLPAT", "COMCHA", "$CSIZE", "CPDATE", "CSCALE",
    "CONDTN", "CONRAD", "CONVIS", "CURVEL", "DATEND", "DATSTA", "DRVAL1", "DRVAL2", "DUNITS",
    "ELEVAT", "ESTRNG", "EXCLIT", "EXPSOU", "FUNCTN", "HEIGHT", "HUNITS", "HORACC", "HORCLR",
    "HORLEN", "HORWID", "ICEFAC", "INFORM", "JRSDTN", "$JUSTH", "$JUSTV", "LIFCAP", "LITCHR",
    "LITVIS", "MARSYS", "MLTYLT", "NATION", "NATCON", "NATSUR", "NATQUA", "NMDATE", "OBJNAM",
    "ORIENT", "PEREND", "PERSTA", "PICREP", "PILDST", "PRCTRY", "PRODCT", "PUBREF", "QUASOU",
    "RADWAL", "RADIUS", "RECDAT", "RECIND", "RYRMGV", "RESTRN", "SCAMAX", "SCAMIN", "SCVAL1",
    "SCVAL2", "SECTR1", "SECTR2", "SHIPAM", "SIGFRQ", "SIGGEN", "SIGGRP", "SIGPER", "SIGSEQ",
    "SOUACC", "SDISMX", "SDISMN", "SORDAT", "SORIND", "STATUS", "SURATH", "SUREND", "SURSTA",
    "SURTYP", "$SCALE", "$SCODE", "TECSOU", "$TXSTR", "TXTDSC", "TS_TSP", "TS_TSV", "T_ACWL",
    "T_HWLW", "T_MTOD", "T_THDF", "T_TINT", "T_TSVL", "T_VAHC", "TIMEND", "TIMSTA", "$TINTS",
    "TOPSHP", "TRAFIC", "VALACM", "VALDCO", "VALLMA", "VALMAG", "VALMXR", "VALNMR", "VALSOU",
    "VERACC", "VERCLR", "VERCCL", "VERCOP", "VERCSA", "VERDAT", "VERLEN", "WATLEV", "CAT_TS",
});
static_assert(attributes.size() == 189);

template <std::size_t size>
int codeOf(const std::array<std::string_view, size>& table, std::string_view acronym)
{
    const auto it = std::find(table.begin() + 1, table.end(), acronym);
    return it == table.end() ? 0 : static_cast<int>(it - table.begin());
}
} // namespace

std::string_view objectCodeAcronym(int code)
{
    return code > 0 && code < static_cast<int>(objectClasses.size()) ? objectClasses[code]
                                                                     : objectClasses[0];
}

std::string_view attributeCodeAcronym(int code)
{
    return code > 0 && code < static_cast<int>(attributes.size()) ? attributes[code]
                                                                  : attributes[0];
}

int objectCode(std::string_view acronym)
{
    return codeOf(objectClasses, acronym);
}

int attributeCode(std::string_view acronym)
{
    return codeOf(attributes, acronym);
}

} // namespace kelvox
