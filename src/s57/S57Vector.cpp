#include "s57/S57Vector.h"

#include <fmt/format.h>

namespace kelvox {

std::string S57VectorPointer::key() const
{
    return fmt::format("{} {}", recordName, recordID);
}

std::string S57Vector::key() const
{
    return fmt::format("{} {}", m_recordName, m_recordID);
}

S57Depth S57Vector::s57Depth(std::size_t index) const
{
    return {m_coordinates[index], index < m_depths.size() ? m_depths[index] : 0.0F};
}

void S57Vector::addPointers(std::span<const S57VectorPointer> pointers)
{
    applyUpdate(m_pointers, pointers, m_pointerControl.instruction, m_pointerControl.index);
}

void S57Vector::addCoordinates(std::span<const S57Coordinate> coordinates)
{
    if (m_hasDepth) {
        const std::vector<float> none(coordinates.size());
        addSoundings(coordinates, none);
        return;
    }
    applyUpdate(m_coordinates, coordinates, m_coordinateControl.instruction,
                m_coordinateControl.index);
}

void S57Vector::addSoundings(std::span<const S57Coordinate> coordinates,
                             std::span<const float> depths)
{
    m_hasDepth = true;
    m_depths.resize(m_coordinates.size());
    auto index = m_coordinateControl.index; // both lists take the same steps
    applyUpdate(m_depths, depths, m_coordinateControl.instruction, index);
    applyUpdate(m_coordinates, coordinates, m_coordinateControl.instruction,
                m_coordinateControl.index);
}

void S57Vector::shrinkToFit()
{
    m_coordinates.shrink_to_fit();
    m_depths.shrink_to_fit();
    m_pointers.shrink_to_fit();
}

} // namespace kelvox
