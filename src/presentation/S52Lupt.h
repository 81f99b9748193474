#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelvox {

/// One look-up entry: for features of a class that meet the conditions, these instructions.
struct S52Lupt {
    std::string modnString;
    int rcidNumber = 0;
    std::string statString;
    std::string obclString; ///< object class acronym
    std::string ftypString; ///< "P", "L" or "A"
    int drpiNumber = 0; ///< display priority; kept, plays no part in drawing
    std::string rpriString; ///< radar flag; kept only
    std::string tnamString; ///< name of the look-up table
    std::vector<std::string> attcArray; ///< acronym and required value in one, e.g. "CATLMK1"
    std::vector<std::string> instArray; ///< e.g. "SY(BOYLAT13)"
    std::string discString; ///< display category; kept only
    std::string lucmString; ///< viewing group; kept only

    [[nodiscard]] const std::string& obcl() const { return obclString; }
    [[nodiscard]] const std::vector<std::string>& attc() const { return attcArray; }
    [[nodiscard]] const std::vector<std::string>& inst() const { return instArray; }
};

/// The entries of one look-up table by class acronym, in file order.
using S52LuptTable = std::map<std::string, std::vector<std::shared_ptr<S52Lupt>>, std::less<>>;

} // namespace kelvox
