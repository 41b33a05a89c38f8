// What is asked of the system's threads beyond the standard library: a stack size and a plain join.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vrx::platform {

using ThreadHandle = std::uint64_t;
using ThreadBody = void (*)(void* argument);

/// Starts a thread with at least `stackSize` bytes of stack, 0 for the default. False if the system refuses.
bool StartThread(ThreadBody body, void* argument, std::size_t stackSize, ThreadHandle& handle);
/// Waits for its end and frees the handle. Once per handle, instead of DetachThread.
void JoinThread(ThreadHandle handle);
/// Frees the handle; the thread continues to run.
void DetachThread(ThreadHandle handle);

}  // namespace vrx::platform
