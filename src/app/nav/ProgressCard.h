#pragma once

#include <QString>
#include <QWidget>

#include <chrono>
#include <functional>

namespace kelvox {

/// Work that is done sooner shows no card.
inline constexpr auto progressDelay = std::chrono::milliseconds(400);

/// The content of a card for work that goes on: what it is, a bar and a button.
/// @param context the button does nothing any more once it is gone
[[nodiscard]] QWidget* makeProgressCard(const QString& label, const QObject* context,
                                        const std::function<void()>& cancel);

} // namespace kelvox
