// Any bytes as a base cell and an update of it: two bytes with the length of the first, then both.

#include "iso8211/ISOModule.h"
#include "presentation/ViewPathBuilder.h"
#include "s57/CellGeometry.h"
#include "s57/S57Object.h"
#include "s57/S57RecordReader.h"

#include <algorithm>

using namespace kelvox;

namespace {
void read(std::span<const char> bytes, S57ChartItems& cell)
{
    ISOModule module;
    if (!module.openBytes(bytes))
        return;
    S57RecordReader reader(module, std::make_shared<S57CatalogRecord>(), cell);
    while (const ISORawRecord* record = module.readRecord())
        reader.read(*record);
    reader.finish();
}

void ask(const S57Object& object)
{
    (void)object.scale();
    (void)object.colour();
    (void)object.valsou();
    for (const auto& attribute : object.feature().s57FeatureAttributes())
        (void)object.readable(attribute.code());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::span<const char> all(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::size_t first = std::min<std::size_t>(data[0] + 256U * data[1], all.size());
    const auto cell = std::make_shared<S57ChartItems>();
    read(all.first(first), *cell);
    read(all.subspan(first), *cell);
    cell->assemble();

    const CellGeometry geometry(cell);
    const Rect box = geometry.bounds();
    const Rect around = box.isEmpty() ? Rect{0, 0, 1, 1} : cell->bounds();
    const ViewFrame frame = ViewFrame::fitting(around, 320, 200, 1, 66);
    ViewPathBuilder builder(frame, 0);
    for (std::size_t i = 0; i < cell->s57Features().size(); ++i) {
        const S57Feature& feature = *cell->s57Features()[i];
        ask(*feature.s57Object());
        (void)feature.buildEdgePath(*cell, frame.view);
        (void)builder.areaPath(geometry, i);
        (void)builder.linePath(geometry, i);
    }
    (void)geometry.featuresIn(frame.coveredBox(10));
    (void)cell->coveragePath(frame.view);
    return 0;
}
