// Built only where ecCodes is installed: every value of real files against that decoder.

#include "base/File.h"
#include "base/NoValue.h"
#include "support/RealData.h"
#include "weather/GribMessage.h"

#include <eccodes.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace kelvox {
namespace {
struct Agreement {
    int messages = 0;
    std::size_t values = 0;
    double worst = 0; ///< difference in units of the packing's resolution
};

/// Theirs in the order of the file; only files whose order is ours already are compared.
void compare(const GribMessage& message, codes_handle* handle, Agreement& agreement)
{
    const auto ours = unpackGribValues(message);
    ASSERT_TRUE(ours);
    std::size_t count = 0;
    ASSERT_EQ(codes_get_size(handle, "values", &count), 0);
    ASSERT_EQ(count, ours->size());
    std::vector<double> theirs(count);
    ASSERT_EQ(codes_set_double(handle, "missingValue", 1e30), 0);
    ASSERT_EQ(codes_get_double_array(handle, "values", theirs.data(), &count), 0);
    const double resolution = message.binaryScale * message.decimalScale;
    for (std::size_t i = 0; i < count; ++i) {
        const float value = (*ours)[i];
        ASSERT_EQ(isMissing(value), theirs[i] == 1e30);
        if (!isMissing(value))
            agreement.worst = std::fmax(agreement.worst, std::fabs(value - theirs[i]) / resolution);
    }
    agreement.values += count;
    ++agreement.messages;
}

void compareFile(const std::filesystem::path& path, Agreement& agreement)
{
    const auto bytes = readFile(path);
    ASSERT_TRUE(bytes);
    const std::span octets(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size());
    std::size_t offset = 0;
    while (const auto message = readGribMessage(octets, offset)) {
        if (!*message || (*message)->fromEast || (*message)->columnsFirst)
            continue;
        const std::size_t start = (*message)->offset;
        codes_handle* handle =
            codes_handle_new_from_message(nullptr, bytes->data() + start, offset - start);
        ASSERT_TRUE(handle);
        compare(**message, handle, agreement);
        codes_handle_delete(handle);
    }
}
} // namespace

TEST(EcCodesAgreement, EveryValueOfTheRealFiles)
{
    const auto folder = realData("grib");
    if (!folder)
        GTEST_SKIP() << "KELVOX_DATA names no folder with grib/";
    Agreement agreement;
    for (const auto& entry : std::filesystem::directory_iterator(*folder))
        compareFile(entry.path(), agreement);
    EXPECT_GT(agreement.messages, 0);
    EXPECT_LT(agreement.worst, 0.5); // pressure of 20 bits is rounded to single precision
    std::printf("%d messages, %zu values, worst difference %.2g of the resolution\n",
                agreement.messages, agreement.values, agreement.worst);
}

} // namespace kelvox
