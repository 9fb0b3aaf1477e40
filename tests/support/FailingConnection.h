// A connection on which one statement fails, whichever a test wants.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper::testing {

// Hands everything to another connection, but for the statement that is to fail.
class FailingConnection : public Connection {
 public:
  explicit FailingConnection(Connection& server) : server_(server) {}

  // The `place`-th statement from now on (from 1) fails and does not reach the server.
  void FailAt(int place) {
    left_ = place;
    failed.clear();
  }

  ServerMessage failure = {.number = 50000, .severity = 16, .text = "この文は失敗します。"};
  std::string failed;  // the statement that failed

  void Open(const std::string& connection_string) override { server_.Open(connection_string); }
  void Close() override { server_.Close(); }
  bool IsOpen() const override { return server_.IsOpen(); }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    Count(sql);
    return server_.Query(sql);
  }
  std::int64_t Execute(const std::string& sql) override {
    Count(sql);
    return server_.Execute(sql);
  }
  ScrolledRows OpenCursor(const std::string& sql) override {
    Count(sql);
    return server_.OpenCursor(sql);
  }
  std::vector<ServerMessage> TakeMessages() override { return server_.TakeMessages(); }

 private:
  void Count(const std::string& sql) {
    if (left_ == 0 || --left_ > 0) return;
    failed = sql;
    throw ServerError({failure});
  }

  Connection& server_;
  int left_ = 0;  // statements up to the one that fails, with it; 0: none fails
};

// Runs a flow once for each of its statements, with that one failing. `Fixture` is a test fixture
// with a member `failing`, made anew each time. `prepare(fixture)` does what comes before the flow,
// `flow(fixture)` is the flow, and `check(fixture, place)` looks at what is left after the failure
// of statement `place`. Gives the number of statements.
template <class Fixture, class Prepare, class Flow, class Check>
int FailAtEveryStatement(const Prepare& prepare, const Flow& flow, const Check& check) {
  struct Fresh : Fixture {
    using Fixture::failing;
    void TestBody() override {}
  };
  for (int place = 1;; ++place) {
    SCOPED_TRACE("statement " + std::to_string(place) + " fails");
    Fresh fresh;
    prepare(fresh);
    fresh.failing.FailAt(place);
    flow(fresh);
    if (fresh.failing.failed.empty()) return place - 1;
    check(fresh, place);
  }
}

}  // namespace dbkeeper::testing
