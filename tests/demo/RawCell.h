#pragma once

#include "iso8211/ISOTree.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kelvox {

/// A cell's records as they stand in the file, in whole units: read without the cell model, which
/// rounds places and leaves out what the display does not know.
struct RawCell {
    using Place = std::pair<std::int64_t, std::int64_t>; ///< x, y
    using Row = std::map<std::string, std::int64_t>;
    struct Pointer {
        std::pair<int, std::uint32_t> name;
        int orient = 0;
        int usage = 0;
    };
    struct Vector {
        std::vector<Place> places;
        std::vector<Pointer> pointers;
    };
    struct Feature {
        Row identifier;
        std::map<int, std::string> attributes;
        std::vector<Pointer> spatials;
    };
    std::map<std::pair<int, std::uint32_t>, Vector> vectors;
    std::vector<Feature> features;
    Row structure; ///< DSSI

    [[nodiscard]] static RawCell read(const std::filesystem::path& path)
    {
        RawCell cell;
        const auto file = ISOFile::read(path);
        EXPECT_TRUE(file.has_value()) << path;
        for (const auto& record : file ? file->records() : std::vector<ISORecord>{}) {
            Vector* vector = nullptr;
            Feature* feature = nullptr;
            for (const auto& field : record.fields())
                for (const auto& row : field.rows()) {
                    Row values;
                    Pointer pointer;
                    std::string text;
                    for (const auto& data : row.datas()) {
                        const auto& value = data.value();
                        if (const auto* whole = std::get_if<std::int32_t>(&value))
                            values[data.name()] = *whole;
                        else if (const auto* number = std::get_if<std::uint32_t>(&value))
                            values[data.name()] = *number;
                        else if (const auto* name = std::get_if<ISODataRecord>(&value))
                            pointer.name = {name->rcnm, name->rcid};
                        else if (const auto* words = std::get_if<std::string>(&value))
                            text = *words;
                    }
                    pointer.orient = static_cast<int>(values["ORNT"]);
                    pointer.usage = static_cast<int>(values["USAG"]);
                    const std::string& tag = field.name();
                    if (tag == "DSSI")
                        cell.structure = values;
                    else if (tag == "VRID")
                        vector = &cell.vectors[{static_cast<int>(values["RCNM"]),
                                                static_cast<std::uint32_t>(values["RCID"])}];
                    else if (tag == "FRID")
                        feature = &cell.features.emplace_back(Feature{values, {}, {}});
                    else if (tag == "SG2D" || tag == "SG3D")
                        vector->places.emplace_back(values["XCOO"], values["YCOO"]);
                    else if (tag == "VRPT")
                        vector->pointers.push_back(pointer);
                    else if (tag == "ATTF")
                        feature->attributes[static_cast<int>(values["ATTL"])] = text;
                    else if (tag == "FSPT")
                        feature->spatials.push_back(pointer);
                }
        }
        return cell;
    }

    /// The places of an edge with its nodes, as the pointer walks it.
    [[nodiscard]] std::vector<Place> walk(const Pointer& pointer) const
    {
        const Vector& edge = vectors.at(pointer.name);
        EXPECT_EQ(edge.pointers.size(), 2U);
        std::vector<Place> places{vectors.at(edge.pointers[0].name).places.at(0)};
        places.insert(places.end(), edge.places.begin(), edge.places.end());
        places.push_back(vectors.at(edge.pointers[1].name).places.at(0));
        if (pointer.orient == 2)
            return {places.rbegin(), places.rend()};
        return places;
    }

    /// The rings of an area, each closed.
    [[nodiscard]] std::vector<std::vector<Place>> rings(const Feature& feature) const
    {
        std::vector<std::vector<Place>> all;
        bool open = false;
        for (const Pointer& pointer : feature.spatials) {
            const auto places = walk(pointer);
            if (!open)
                all.push_back({places.front()});
            EXPECT_EQ(all.back().back(), places.front()) << "a ring has a gap";
            all.back().insert(all.back().end(), places.begin() + 1, places.end());
            open = all.back().front() != all.back().back();
        }
        EXPECT_FALSE(open) << "a ring does not close";
        return all;
    }

    /// Twice the signed area, clockwise positive: holes count against their outer ring.
    [[nodiscard]] static std::int64_t twiceArea(const std::vector<Place>& ring)
    {
        std::int64_t sum = 0;
        const auto [x0, y0] = ring.front();
        for (std::size_t i = 0; i + 1 < ring.size(); ++i)
            sum -= (ring[i].first - x0) * (ring[i + 1].second - y0)
                - (ring[i + 1].first - x0) * (ring[i].second - y0);
        return sum;
    }
    [[nodiscard]] std::int64_t twiceArea(const Feature& feature) const
    {
        std::int64_t sum = 0;
        for (const auto& ring : rings(feature))
            sum += twiceArea(ring);
        return sum;
    }
};

} // namespace kelvox
