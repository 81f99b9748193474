#pragma once

#include "base/StringCatalog.h"

#include <QString>

#include <initializer_list>

namespace kelvox {

/// The texts of the program in the user's language, from its own folder and then the user's.
/// Main thread.
[[nodiscard]] StringCatalog& textCatalog();

/// Takes up a language, also for the toolkit's own dialogs; empty takes the user's environment.
/// What is shown by then keeps its texts until it asks again.
Result<void> setTextLanguage(const QString& language);

/// The user's text for a key; {0}, {1} … become the arguments.
[[nodiscard]] QString text(std::string_view key);
[[nodiscard]] QString text(std::string_view key, std::initializer_list<QString> arguments);
/// The text for a count: {0} is the count in the user's figures, {1} the first argument.
[[nodiscard]] QString countedText(std::string_view key, std::size_t count,
                                  std::initializer_list<QString> arguments = {});

} // namespace kelvox
