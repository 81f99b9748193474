#pragma once

#include "base/File.h"
#include "exchange/GPXImport.h"
#include "exchange/ModelImport.h"
#include "support/TemporaryFolder.h"

#include "navigation/Scene.h"

#include <string>

namespace kelvox {

/// The user's models and a folder for files.
struct ExchangeScene : Scene {
    TemporaryFolder temporary;
    ImportOptions options{.key = 1000, .timeZoneOffset = {}, .trackColor = {}};

    [[nodiscard]] std::filesystem::path path(const std::string& name) const
    {
        return temporary.path() / name;
    }
    [[nodiscard]] std::string written(const std::string& name) const
    {
        return readFile(path(name)).value_or("");
    }
    ImportSummary importGPX(const std::string& text)
    {
        ModelImport target(waypoints, routes, tracks);
        fault = GPXImport(options).parse(text, target);
        return target.finish();
    }
    Result<void> fault; ///< of the last import
};

inline std::string gpx(const std::string& body)
{
    return "<?xml version=\"1.0\"?>\n<gpx version=\"1.1\">\n" + body + "</gpx>\n";
}

} // namespace kelvox
