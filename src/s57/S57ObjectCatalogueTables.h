#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvox::s57tables {

struct ClassRow {
    std::uint16_t code;
    std::string_view acronym;
    std::string_view name;
    bool shown; ///< whether the display knows the class
};

struct AttributeRow {
    std::uint16_t code;
    std::string_view acronym;
    std::string_view name;
    char type; ///< E enumerated, L list, F float, I integer, A coded string, S free text
};

struct ValueRow {
    std::uint16_t attribute;
    std::uint16_t value;
    std::string_view meaning;
};

extern const std::array<ClassRow, 185> classes;
extern const std::array<AttributeRow, 200> attributes;
extern const std::array<ValueRow, 1086> values;

} // namespace kelvox::s57tables
