#include "base/Background.h"

#include <sys/resource.h>
#include <unistd.h>

namespace kelvox {

void workInBackground()
{
    constexpr int weight = 10; // a tenth of the processor beside a thread that wants it, too
    // On Linux a thread has a nice value of its own; when it is refused the old one does.
    (void)setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), weight);
}

} // namespace kelvox
