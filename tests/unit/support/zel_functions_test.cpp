#include "support/zel_functions.h"

#include "zelFunctions.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace zel {
namespace {

// Leaves every plug empty for the next test.
class Plugs : public testing::Test {
protected:
  void TearDown() override {
    setDebugStringSink(nullptr);
    setMessageSink(nullptr);
    setParamBoolSource(nullptr);
  }
};

TEST_F(Plugs, AreSilentAndFalseUntilSetAndAfterRemoval) {
  std::string received;
  for (const bool isPlugged : {false, true, false}) {
    received.clear();
    if (isPlugged) {
      setDebugStringSink([&](const std::string& text) { received += "debug " + text; });
      setMessageSink(
          [&](const std::string& text, std::uint32_t colour) { received += text + std::to_string(colour); });
      setParamBoolSource([](const std::string& name) { return name == "on"; });
    }
    outPutDebugString("a, ");
    APPshowMessage("b in ", 0xFF0000);
    EXPECT_EQ(APPgetParamBool("on"), isPlugged);
    EXPECT_FALSE(APPgetParamBool("off"));
    EXPECT_EQ(received, isPlugged ? "debug a, b in 16711680" : "");
    TearDown();
  }
}

TEST_F(Plugs, CallUnderWayFinishesWithWhatWasSet) {
  const auto owned = std::make_shared<std::string>("first");
  std::string received;
  setDebugStringSink([owned, &received](const std::string& text) {
    setDebugStringSink([&](const std::string&) { received = "second"; });
    received = *owned + text;
  });
  outPutDebugString("!");
  EXPECT_EQ(received, "first!");
  EXPECT_EQ(owned.use_count(), 1) << "the function set before is gone";
  outPutDebugString("!");
  EXPECT_EQ(received, "second");
}

TEST_F(Plugs, MayBeSetWhileOtherThreadsCall) {
  std::atomic<bool> isDone{false};
  std::atomic<int> calls{0};
  std::atomic<int> tornCalls{0};
  std::thread caller([&] {
    while (!isDone) APPgetParamBool("switch");
  });
  const auto change = [&] {
    for (int i = 0; i < 2000; ++i) {
      const auto alive = std::make_shared<std::string>(40, 'x');
      setParamBoolSource([&, alive](const std::string& name) {
        ++calls;
        if (*alive != std::string(40, 'x') || name != "switch") ++tornCalls;
        return true;
      });
      if (i % 3 == 0) setParamBoolSource(nullptr);
    }
  };
  std::thread other(change);
  change();
  other.join();
  setParamBoolSource([&](const std::string&) { return ++calls > 0; });
  while (calls == 0) std::this_thread::yield();
  isDone = true;
  caller.join();
  EXPECT_EQ(tornCalls, 0);
}

}  // namespace
}  // namespace zel
