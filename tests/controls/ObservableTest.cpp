#include "controls/Observable.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dbkeeper {
namespace {

TEST(Property, TellsANewObserverThePresentValueAndThenOnlyChanges) {
  Property<int> value{1};
  std::vector<int> told;
  const Subscription subscription = value.Observe([&](int now) { told.push_back(now); });
  value = 1;
  value = 2;
  value = 2;
  EXPECT_EQ(told, (std::vector<int>{1, 2}));
}

TEST(Property, LastCallOfEveryObserverCarriesThePresentValueWhenOneSetsItWhileBeingTold) {
  Property<int> value{0};
  int first = -1;
  int last = -1;
  const Subscription a = value.Observe([&](int now) { first = now; });
  const Subscription b = value.Observe([&](int now) {
    if (now == 1) value = 2;
  });
  const Subscription c = value.Observe([&](int now) { last = now; });
  value = 1;
  EXPECT_EQ(first, 2);
  EXPECT_EQ(last, 2);
}

TEST(Signal, ObserverDisconnectedWhileTellingIsNotToldAnyMore) {
  Signal<> signal;
  int told = 0;
  std::optional<Subscription> later;
  const Subscription first = signal.Connect([&] { later.reset(); });
  later = signal.Connect([&] { ++told; });
  signal.Emit();
  EXPECT_EQ(told, 0);
}

TEST(Signal, ObserverMayDisconnectItself) {
  Signal<> signal;
  int told = 0;
  std::optional<Subscription> self;
  self = signal.Connect([&] {
    ++told;
    self.reset();
  });
  signal.Emit();
  signal.Emit();
  EXPECT_EQ(told, 1);
}

TEST(Signal, ObserverConnectedWhileTellingIsToldFromTheNextTimeOn) {
  Signal<> signal;
  int told = 0;
  std::vector<Subscription> added;
  const Subscription first =
      signal.Connect([&] { added.push_back(signal.Connect([&] { ++told; })); });
  signal.Emit();
  EXPECT_EQ(told, 0);
  signal.Emit();
  EXPECT_EQ(told, 1);
}

TEST(Signal, SubscriptionMayOutliveTheSignal) {
  auto signal = std::make_unique<Signal<>>();
  Subscription subscription = signal->Connect([] {});
  signal.reset();
  subscription.Disconnect();
}

TEST(Signal, ObserverMayDestroyTheSignalThatTellsIt) {
  auto signal = std::make_unique<Signal<>>();
  int told = 0;
  const Subscription first = signal->Connect([&] { signal.reset(); });
  const Subscription second = signal->Connect([&] { ++told; });
  signal->Emit();
  EXPECT_EQ(told, 0);
}

TEST(Signal, ObserverThatDiedIsNotTold) {
  Signal<> signal;
  int told = 0;
  {
    const Subscription subscription = signal.Connect([&] { ++told; });
  }
  signal.Emit();
  EXPECT_EQ(told, 0);
}

TEST(Signal, GoesOnWorkingAfterAnObserverThrew) {
  Signal<> signal;
  bool fail = true;
  int told = 0;
  std::optional<Subscription> first = signal.Connect([&] {
    if (fail) throw std::string("no");
  });
  const Subscription second = signal.Connect([&] { ++told; });
  EXPECT_THROW(signal.Emit(), std::string);
  fail = false;
  first.reset();
  signal.Emit();
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace dbkeeper
