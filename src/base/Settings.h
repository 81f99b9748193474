#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace kelvox {

/// The user's settings by key. Read when needed, never cached by modules. Main thread.
class Settings {
public:
    using Value = std::variant<bool, long long, double, std::string>;

    virtual ~Settings() = default;
    /// Null when the key was never set.
    [[nodiscard]] virtual const Value* find(std::string_view key) const = 0;
    virtual void set(std::string_view key, Value value) = 0;

    /// Each converts between the kinds where that makes sense, else gives the fall-back.
    [[nodiscard]] bool boolean(std::string_view key, bool fallback = false) const;
    [[nodiscard]] long long integer(std::string_view key, long long fallback = 0) const;
    [[nodiscard]] double number(std::string_view key, double fallback = 0) const;
    [[nodiscard]] std::string text(std::string_view key, std::string fallback = {}) const;
};

/// Settings that live as long as the object.
class MemorySettings final : public Settings {
public:
    [[nodiscard]] const Value* find(std::string_view key) const override;
    void set(std::string_view key, Value value) override;

private:
    std::map<std::string, Value, std::less<>> m_values;
};

} // namespace kelvox
