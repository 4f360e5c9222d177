#include "support/zel_functions.h"

#include "zelFunctions.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace zel {

namespace {

// One function that the application plugs in. Reading an empty plug costs one atomic load.
template <typename TFunction>
class TPlug {
public:
  void set(TFunction function) {
    const std::lock_guard<std::mutex> lock(guard);
    current.swap(function);
    isSet.store(static_cast<bool>(current), std::memory_order_release);
    // The function set before is destroyed after the lock, so that its destructor may use the plug again.
  }

  // A copy: the call goes on with it even when another thread unplugs it meanwhile.
  TFunction get() const {
    if (!isSet.load(std::memory_order_acquire)) return nullptr;
    const std::lock_guard<std::mutex> lock(guard);
    return current;
  }

private:
  std::atomic<bool> isSet{false};
  mutable std::mutex guard;
  TFunction current;
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
  if (const TDebugStringSink sink = debugStringSink.get()) sink(text);
}

void APPshowMessage(const std::string& text, std::uint32_t colour) {
  if (const TMessageSink sink = messageSink.get()) sink(text, colour);
}

bool APPgetParamBool(const std::string& name) {
  const TParamBoolSource source = paramBoolSource.get();
  return source && source(name);
}

}  // namespace zel
