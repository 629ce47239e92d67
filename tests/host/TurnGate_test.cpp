// The server's searches take turns: no more at once than the gate's width, in the order they
// came.
#include "host/TurnGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

TEST(TurnGateTest, CallersGoInTheOrderTheyCame) {
  TurnGate gate(1);
  std::mutex orderLock;
  std::vector<int> order;
  std::vector<std::thread> callers;
  {
    const TurnGate::Turn held(gate);
    for (int i = 0; i < 6; ++i) {
      callers.emplace_back([&, i] {
        const TurnGate::Turn turn(gate);
        const std::lock_guard<std::mutex> hold(orderLock);
        order.push_back(i);
      });
      // Each caller in line before the next one comes.
      std::this_thread::sleep_for(milliseconds(20));
    }
    const std::lock_guard<std::mutex> hold(orderLock);
    EXPECT_TRUE(order.empty());
  }
  for (std::thread &caller : callers)
    caller.join();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST(TurnGateTest, NoMoreAtOnceThanItsWidth) {
  TurnGate gate(2);
  std::atomic<int> inside{0}, most{0};
  std::vector<std::thread> callers;
  for (int i = 0; i < 6; ++i)
    callers.emplace_back([&] {
      const TurnGate::Turn turn(gate);
      const int now = ++inside;
      for (int seen = most.load(); now > seen && !most.compare_exchange_weak(seen, now);)
        ;
      std::this_thread::sleep_for(milliseconds(20));
      --inside;
    });
  for (std::thread &caller : callers)
    caller.join();
  EXPECT_EQ(most.load(), 2);
}

} // namespace
