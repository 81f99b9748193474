#pragma once

#include <tl/expected.hpp>

#include <cstddef>
#include <string>
#include <utility>

namespace kelvox {

/// Why an operation failed: a code to test, words for the user or the log, a place to look.
struct Error {
    enum class Code { CannotOpen, Truncated, BadSyntax, OutOfRange, Unsupported, Cancelled };

    Code code = Code::BadSyntax;
    std::string message; ///< names the thing and the value found
    std::size_t offset = 0; ///< byte of the input at which reading stopped, where there is one
};

/// A value, or the Error that stands in its place.
template <typename T> using Result = tl::expected<T, Error>;

[[nodiscard]] inline tl::unexpected<Error> failure(Error::Code code, std::string message,
                                                   std::size_t offset = 0)
{
    return tl::unexpected<Error>(Error{code, std::move(message), offset});
}

} // namespace kelvox
