#pragma once

#include "app/ChartLayer.h"
#include "library/ChartRecord.h"

#include <functional>

namespace kelvox {

/// The borders of the charts in the library, and one of them brought out.
class ChartOutlineLayer final : public ChartLayer {
public:
    /// @param records those to be outlined, asked at each painting; empty for none
    explicit ChartOutlineLayer(std::function<ChartRecords()> records)
        : m_records(std::move(records))
    {
    }
    void setPointed(std::shared_ptr<const ChartRecord> chart) { m_pointed = std::move(chart); }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

private:
    static void outline(QPainter& painter, const ChartRecord& chart, const ViewFrame& frame);

    std::function<ChartRecords()> m_records;
    std::shared_ptr<const ChartRecord> m_pointed;
};

} // namespace kelvox
