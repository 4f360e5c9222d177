#include "support/zel_functions.h"

#include "zelFunctions.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

namespace zel {

namespace {

// One function that the application plugs in. Reading an empty plug costs one atomic load.
template <typename TFunction>
class TPlug {
public:
  void set(TFunction function) {
    std::shared_ptr<const TFunction> next;
    if (function) next = std::make_shared<const TFunction>(std::move(function));
    {
      const std::lock_guard<std::mutex> lock(mutex);
      current.swap(next);
      isSet.store(current != nullptr, std::memory_order_release);
    }
    // The function set before goes here, outside the lock, where its destructor may use the plug again.
  }

  // Keeps the function alive for the call, even when another thread unplugs it meanwhile.
  std::shared_ptr<const TFunction> get() const {
    if (!isSet.load(std::memory_order_acquire)) return nullptr;
    const std::lock_guard<std::mutex> lock(mutex);
    return current;
  }

private:
  std::atomic<bool> isSet{false};
  mutable std::mutex mutex;
  std::shared_ptr<const TFunction> current;
};

TPlug<TDebugStringSink> debugStringSink;
TPlug<TMessageSink> messageSink;
TPlug<TParamBoolSource> paramBoolSource;

}  // namespace

void setDebugStringSink(TDebugStringSink sink) {
  debugStringSink.set(std::move(sink));
}
void setMessageSink(TMessageSink sink) {
  messageSink.set(std::move(sink));
}
void setParamBoolSource(TParamBoolSource source) {
  paramBoolSource.set(std::move(source));
}

void outPutDebugString(const std::string& text) {
  if (const auto sink = debugStringSink.get()) (*sink)(text);
}

void APPshowMessage(const std::string& text, std::uint32_t colour) {
  if (const auto sink = messageSink.get()) (*sink)(text, colour);
}

bool APPgetParamBool(const std::string& name) {
  const auto source = paramBoolSource.get();
  return source != nullptr && (*source)(name);
}

}  // namespace zel
