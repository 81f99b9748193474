#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// One line of the library: tag, length and body, up to the unit separator that ends it.
struct S52Field {
    static constexpr char unitSeparator = '\x1f';

    std::string fieldString;

    [[nodiscard]] std::string_view fieldIdentification() const; ///< the tag, e.g. "LUPT"
    [[nodiscard]] std::string_view fieldValue() const; ///< the body
};

/// The lines from one "0001" to the next "****".
struct S52Module {
    std::vector<S52Field> s52FieldsArray;

    [[nodiscard]] const S52Field* moduleS52Field() const
    {
        return s52FieldsArray.empty() ? nullptr : &s52FieldsArray.front();
    }
    /// Reads the modules from lines; lines whose stated length is wrong are left out.
    [[nodiscard]] static std::vector<S52Module> modules(const std::vector<std::string>& lines);
};

} // namespace kelvox
