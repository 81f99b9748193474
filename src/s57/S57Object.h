#pragma once

#include "s57/S57Feature.h"
#include "s57/S57ObjectCatalogue.h"

#include <limits>

namespace kelvox {

/// The display object of a feature: what portrayal and the user's queries ask of its attributes.
///
/// Numbers of listed attributes are their first element, 0 when there is none. Texts are UTF-8.
class S57Object {
public:
    /// scale() of a feature that no minimum scale hides.
    static constexpr int anyScale = std::numeric_limits<int>::max();

    S57Object(const S57Feature& feature, const S57ChartItems& cell)
        : m_feature(&feature)
        , m_cell(&cell)
    {
    }
    [[nodiscard]] const S57Feature& feature() const { return *m_feature; }
    [[nodiscard]] const S57ChartItems& cell() const { return *m_cell; }

    [[nodiscard]] std::string_view name() const { return text(s57attribute::OBJNAM); }
    [[nodiscard]] std::string_view nationalName() const { return text(s57attribute::NOBJNM); }
    [[nodiscard]] std::string_view information() const { return text(s57attribute::INFORM); }
    /// The scale denominator from which on the feature may be left out; anyScale without one.
    [[nodiscard]] int scale() const
    {
        const auto value = m_feature->featureAttributeIntValue(s57attribute::SCAMIN);
        return value && *value > 0 ? *value : anyScale;
    }
    /// The structure that carries this light, topmark or signal; null when it stands alone.
    [[nodiscard]] const S57Feature* parent() const { return m_parent; }
    void setParent(const S57Feature* structure) { m_parent = structure; }

    [[nodiscard]] int watlev() const { return number(s57attribute::WATLEV); }
    [[nodiscard]] int condtn() const { return number(s57attribute::CONDTN); }
    [[nodiscard]] int catslc() const { return number(s57attribute::CATSLC); }
    [[nodiscard]] int catobs() const { return number(s57attribute::CATOBS); }
    [[nodiscard]] int catwrk() const { return number(s57attribute::CATWRK); }
    [[nodiscard]] int restrn() const { return number(s57attribute::RESTRN); }
    [[nodiscard]] int topshp() const { return number(s57attribute::TOPSHP); }
    [[nodiscard]] int catlit() const { return number(s57attribute::CATLIT); }
    [[nodiscard]] int catcov() const { return number(s57attribute::CATCOV); }
    [[nodiscard]] std::vector<int> colour() const
    {
        return m_feature->featureAttributeIntValues(s57attribute::COLOUR);
    }
    // Metres and degrees; nothing when not stated.
    [[nodiscard]] std::optional<double> valsou() const { return real(s57attribute::VALSOU); }
    [[nodiscard]] std::optional<double> drval1() const { return real(s57attribute::DRVAL1); }
    [[nodiscard]] std::optional<double> drval2() const { return real(s57attribute::DRVAL2); }
    [[nodiscard]] std::optional<double> sectr1() const { return real(s57attribute::SECTR1); }
    [[nodiscard]] std::optional<double> sectr2() const { return real(s57attribute::SECTR2); }
    [[nodiscard]] std::optional<double> orient() const { return real(s57attribute::ORIENT); }
    [[nodiscard]] std::optional<double> elevation() const { return real(s57attribute::ELEVAT); }
    [[nodiscard]] std::optional<double> radius() const { return real(s57attribute::RADIUS); }

    /// An attribute's value in words.
    [[nodiscard]] std::string readable(int attributeCode) const
    {
        return S57ObjectCatalogue::readableValue(attributeCode, text(attributeCode));
    }

private:
    [[nodiscard]] std::string_view text(int code) const
    {
        return m_feature->featureAttributeStringValue(code);
    }
    [[nodiscard]] int number(int code) const
    {
        return m_feature->featureAttributeIntValue(code).value_or(0);
    }
    [[nodiscard]] std::optional<double> real(int code) const
    {
        return m_feature->featureAttributeFloatValue(code);
    }

    const S57Feature* m_feature;
    const S57ChartItems* m_cell;
    const S57Feature* m_parent = nullptr;
};

} // namespace kelvox
