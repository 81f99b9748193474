#pragma once

#include <functional>

class QLineEdit;

namespace kelvox {

/// A cross at the end of a field that empties it, in the colours of the theme: the toolkit's own
/// stays white at night.
/// @param clear what it does; empties the field when left out
void addClearAction(QLineEdit& field, std::function<void()> clear = {});

} // namespace kelvox
