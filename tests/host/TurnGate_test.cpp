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

// Until `done` holds, for at most ten seconds.
template <typename Done> bool waitFor(Done done) {
  for (int tries = 0; tries < 10000 && !done(); ++tries)
    std::this_thread::sleep_for(milliseconds(1));
  return done();
}

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
      if (!waitFor([&] { return gate.waiting() == static_cast<size_t>(i) + 1; })) {
        ADD_FAILURE() << "caller " << i << " never waited";
        break;
      }
    }
  }
  for (std::thread &caller : callers)
    caller.join();
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST(TurnGateTest, NoMoreAtOnceThanItsWidth) {
  TurnGate gate(2);
  std::atomic<int> inside{0}, most{0};
  std::atomic<bool> released{false};
  std::vector<std::thread> callers;
  for (int i = 0; i < 4; ++i)
    callers.emplace_back([&] {
      const TurnGate::Turn turn(gate);
      const int now = ++inside;
      for (int seen = most.load(); now > seen && !most.compare_exchange_weak(seen, now);)
        ;
      waitFor([&] { return released.load(); });
      --inside;
    });
  // Two are in and stay; the others wait however long it takes.
  EXPECT_TRUE(waitFor([&] { return inside.load() == 2 && gate.waiting() == 2; }));
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_EQ(inside.load(), 2);
  released = true;
  for (std::thread &caller : callers)
    caller.join();
  EXPECT_EQ(most.load(), 2);
}

} // namespace
