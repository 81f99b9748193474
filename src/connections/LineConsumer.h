#pragma once

#include <span>
#include <string_view>

namespace kelvox {

/// Who takes the lines that a connection reads. Called on the connection's thread.
class LineConsumer {
public:
    virtual ~LineConsumer() = default;
    /// Lines in the order they came, each from its start character on, line end included; returns
    /// when all are dealt with.
    virtual void processLines(std::span<const std::string_view> lines) = 0;
    /// Whether the command ("RMC") is one the consumer decodes.
    [[nodiscard]] virtual bool knowsCommand(std::string_view command) const = 0;
    /// Whether the sentence may go on to others.
    [[nodiscard]] virtual bool shouldRepeat(std::string_view /*sentence*/) const { return true; }
};

} // namespace kelvox
