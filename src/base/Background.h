#pragma once

namespace kelvox {

/// Lets the calling thread give way to those that the user waits for. It works on as fast when
/// nobody else wants the processor. Does nothing where the system has no such thing.
void workInBackground();

} // namespace kelvox
