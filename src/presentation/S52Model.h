#pragma once

#include "base/Result.h"
#include "presentation/CieColor.h"
#include "presentation/S52Item.h"
#include "presentation/S52Lupt.h"
#include "presentation/S52Module.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// A name used by the library that the program does not have, or needed by the program and not in
/// the library. What bears it is not drawn, so the user is told.
struct S52UnknownName {
    enum class Kind {
        Procedure,
        Symbol,
        LineStyle,
        Pattern,
        Color,
        ColorScheme,
        Instruction, ///< the two letters of a drawing instruction
        Attribute, ///< of a condition, which then never holds
        Class, ///< bears entries, but the display does not know it
        NoEntry ///< a class that the display knows, without an entry in the table of usedBy
    };

    Kind kind = Kind::Symbol;
    std::string name;
    std::string usedBy; ///< class acronym of the first entry that names it, or "program"

    /// A sentence that tells the user what is missing and what comes of it.
    [[nodiscard]] std::string sentence() const;

    friend bool operator==(const S52UnknownName&, const S52UnknownName&) = default;
};

/// What was loaded from where.
struct S52LoadReport {
    std::filesystem::path library; ///< empty when no library was found or it came from memory
    std::filesystem::path calibration; ///< empty when the standard conversion is used
    bool isUsersOwn = false; ///< the library is the user's, in place of the program's
    std::vector<Error> problems; ///< files that could not be read or used
    std::vector<S52UnknownName> unknownNames;

    /// All that the user should know, a sentence each: whose library it is when it is not the
    /// program's, what could not be read, what will not be drawn. Empty when all is well.
    [[nodiscard]] std::vector<std::string> sentences() const;
};

/// The presentation library in memory: look-up tables, definitions, colour tables.
///
/// Read once; the paths of the definitions are built again for each change of colours. Lives on
/// the main thread; between changes any thread may read it.
class S52Model {
public:
    /// Where the resources "PresLib_e4.0.3.dai" and "CIE2RGB.ini" are looked for. A file in the
    /// user's folder takes the place of the program's file of that name.
    struct Folders {
        std::filesystem::path application;
        std::filesystem::path user;
    };
    static constexpr const char* libraryName = "PresLib_e4.0.3.dai";
    static constexpr const char* calibrationName = "CIE2RGB.ini";

    S52Model() = default; ///< empty
    explicit S52Model(Folders folders); ///< loads

    /// The shared model, loaded at the first call from the folders set before.
    static S52Model& s52();
    static void setFolders(Folders folders);

    /// Reads the files anew. Without a library every table is empty.
    void loadPresentationLibrary();
    /// The same from memory; an empty calibration stands for none.
    void loadPresentationLibrary(std::string_view library, std::string_view calibration);
    [[nodiscard]] const S52LoadReport& report() const { return m_report; }

    void setSymbols(bool symbolizedBoundaries, bool paperChartPoints);
    [[nodiscard]] const S52LuptTable& luptForAreas() const;
    [[nodiscard]] const S52LuptTable& luptForPoints() const;
    [[nodiscard]] const S52LuptTable& luptForLines() const { return m_s52LuptLinesDictionary; }

    using Symbols = std::map<std::string, S52Symb, std::less<>>;
    using LineStyles = std::map<std::string, S52Lnst, std::less<>>;
    using Patterns = std::map<std::string, S52Patt, std::less<>>;
    using ColorTables = std::map<std::string, S52Cols, std::less<>>;
    [[nodiscard]] Symbols& symb() { return m_s52SymbDictionary; }
    [[nodiscard]] const Symbols& symb() const { return m_s52SymbDictionary; }
    [[nodiscard]] LineStyles& lnst() { return m_s52LnstDictionary; }
    [[nodiscard]] const LineStyles& lnst() const { return m_s52LnstDictionary; }
    [[nodiscard]] Patterns& patt() { return m_s52PattDictionary; }
    [[nodiscard]] const Patterns& patt() const { return m_s52PattDictionary; }
    [[nodiscard]] const ColorTables& cols() const { return m_s52ColsDictionary; }

    /// Builds the drawable paths of all symbols and line styles; patterns are not built.
    void buildSymbolPaths(const S52CcieMap& colors);
    /// Forgets the cached colours. Those of patterns too: they come from the same colour table.
    void resetS52Ccie();

private:
    [[nodiscard]] std::vector<std::string> readPresentationLibrary();
    void readCalibration();
    void load(const std::vector<std::string>& lines);
    void createModules(const std::vector<std::string>& lines);
    void processModules();
    void processColors(const S52Module& module);
    void processLookUp(const S52Module& module);
    void processSymbol(const S52Module& module);
    void processLineStyle(const S52Module& module);
    void processPattern(const S52Module& module);
    [[nodiscard]] S52LuptTable* luptTable(std::string_view name);
    [[nodiscard]] DisplayColor displayColor(const CieColor& color) const;
    [[nodiscard]] std::vector<S52UnknownName> findUnknownNames() const;

    Folders m_folders;
    S52LoadReport m_report;
    std::optional<MonitorCalibration> m_calibration;
    std::vector<S52Module> m_s52ModulesArray; ///< while loading
    ColorTables m_s52ColsDictionary;
    S52LuptTable m_s52LuptLinesDictionary;
    S52LuptTable m_s52LuptPaperChartPointsDictionary;
    S52LuptTable m_s52LuptSimplifiedPointsDictionary;
    S52LuptTable m_s52LuptPlainAreasBoundariesDictionary;
    S52LuptTable m_s52LuptSymbolizedAreasBoundariesDictionary;
    LineStyles m_s52LnstDictionary;
    Patterns m_s52PattDictionary;
    Symbols m_s52SymbDictionary;
    bool m_useSymbolizedAreaBoundaries = false;
    bool m_usePaperChartSymbols = true;
};

} // namespace kelvox
