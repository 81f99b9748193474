#pragma once

#include "presentation/S52Model.h"

#include <QImage>

#include <string>
#include <utility>
#include <vector>

namespace kelvox::preslib {

/// Draws every definition of a library with its name in the three schemes: enlarged on deep water
/// with the pivot marked, and at its true size on shallow water and on land.
class ContactSheet {
public:
    explicit ContactSheet(S52Model& model)
        : m_model(model)
    {
    }
    /// The pages with the stem of a file name for each, e.g. "symbols-01".
    [[nodiscard]] std::vector<std::pair<std::string, QImage>> pages() const;

private:
    [[nodiscard]] std::vector<QImage> pages(const std::vector<const S52Item*>& items,
                                            bool isLine) const;

    S52Model& m_model;
};

} // namespace kelvox::preslib
