#include "directory/bounded_lookup.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/os.h"

namespace vl::directory {
namespace {

int g_testSeconds = 0;

struct Completion {
  std::mutex mutex;
  std::condition_variable done;
  bool finished = false;
};

}  // namespace

void SetLookupDeadlineForTests(int seconds) { g_testSeconds = seconds; }

bool RunWithinDeadline(std::function<void()> lookup) {
  auto completion = std::make_shared<Completion>();
  std::thread worker([completion, lookup = std::move(lookup)] {
    lookup();
    std::lock_guard<std::mutex> lock(completion->mutex);
    completion->finished = true;
    completion->done.notify_one();
  });
  std::unique_lock<std::mutex> lock(completion->mutex);
  const int seconds = g_testSeconds > 0 ? g_testSeconds : kLookupSeconds;
  if (completion->done.wait_for(lock, std::chrono::seconds(seconds),
                                [&] { return completion->finished; })) {
    lock.unlock();
    worker.join();
    return true;
  }
  // The stuck lookup keeps running; the module stays loaded for it.
  os::KeepModuleLoaded();
  worker.detach();
  return false;
}

}  // namespace vl::directory
