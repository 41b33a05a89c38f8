#include "foundation/platform/Threads.h"

#include <pthread.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <new>

namespace vrx::platform {
namespace {

static_assert(sizeof(pthread_t) <= sizeof(ThreadHandle));

struct Start {
  ThreadBody body;
  void* argument;
};

void* Trampoline(void* pointer) {
  const std::unique_ptr<Start> start(static_cast<Start*>(pointer));
  start->body(start->argument);
  return nullptr;
}

}  // namespace

bool StartThread(ThreadBody body, void* argument, std::size_t stackSize, ThreadHandle& handle) {
  std::unique_ptr<Start> start(new (std::nothrow) Start{body, argument});
  pthread_attr_t attributes;
  if (!start || pthread_attr_init(&attributes) != 0) return false;
  pthread_t thread{};
  bool started = true;
  if (stackSize != 0) {
    started =
        pthread_attr_setstacksize(&attributes, std::max<std::size_t>(stackSize, PTHREAD_STACK_MIN)) == 0;
  }
  started = started && pthread_create(&thread, &attributes, Trampoline, start.get()) == 0;
  pthread_attr_destroy(&attributes);
  if (!started) return false;
  start.release();
  handle = static_cast<ThreadHandle>(thread);
  return true;
}

void JoinThread(ThreadHandle handle) { pthread_join(static_cast<pthread_t>(handle), nullptr); }
void DetachThread(ThreadHandle handle) { pthread_detach(static_cast<pthread_t>(handle)); }

}  // namespace vrx::platform
