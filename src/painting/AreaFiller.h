#pragma once

#include "base/Path.h"
#include "presentation/DisplayColor.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kelvox {

/// A block of pixels, premultiplied ARGB in native byte order, row after row.
struct PixelBuffer {
    std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0; ///< pixels from one row to the next
};

/// Fills areas even-odd without smoothing: a pixel is inside when its centre is. Two areas with a
/// common edge share no pixel and leave none. Keeps its working memory from one call to the next.
class AreaFiller {
public:
    /// @param top the row of the picture that is the buffer's first
    void fill(const PixelBuffer& buffer, const Path& rings, DisplayColor color, int top);

private:
    std::vector<std::uint32_t> m_rowStart;
    std::vector<float> m_crossings;
};

} // namespace kelvox
