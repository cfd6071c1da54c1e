// Lets a target survive the ends that the filter's fatal errors put to its process. The program is linked with
// --wrap for exit, calloc and free; the standard streams go to /dev/null.
#pragma once

namespace fuzz {

// Run the call; false when it ended the process.
bool survives(void (*call)(void *), void *argument);

template <typename Call>
bool survives(Call &call)
{
    return survives([](void *argument) { (*static_cast<Call *>(argument))(); }, &call);
}

// Send standard output and standard error nowhere. The fuzzer keeps its own messages.
void silence();

}  // namespace fuzz
