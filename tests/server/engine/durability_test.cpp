// What was committed is there after the process was killed at any moment.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

using DurabilityTest = EngineTest;

constexpr const char* kOperatorName = "HOST\\operator";
constexpr const char* kOperatorSecret = "secret";

Client OpenClient(Instance& instance) {
  instance.SetOperator(kOperatorName, kOperatorSecret);
  LoginRequest request;
  request.user = kOperatorName;
  request.password = kOperatorSecret;
  return Client(instance.Login(request));
}

// Inserts numbers from `next` on, each committed, and tells each one after its commit.
[[noreturn]] void WriteForEver(const std::filesystem::path& folder, int next, int tell) {
  const auto instance = OpenInstance(OptionsFor(folder));
  Client client = OpenClient(*instance);
  client.Run("use 耐久");
  for (;; ++next) {
    const std::string number = std::to_string(next);
    const std::string batch = next % 2 == 0 ? "insert t values (" + number + ")"
                                            : "begin tran insert t values (" + number + ") commit";
    if (client.Run(batch) != "(1)" || write(tell, &next, sizeof next) != sizeof next) _exit(1);
  }
}

}  // namespace

TEST_F(DurabilityTest, NoCommittedRowIsLostWhenTheServerIsKilledWhileItWrites) {
  const TemporaryFolder copy;
  CopyTo(copy.path());
  {
    const auto instance = OpenInstance(OptionsFor(copy.path()));
    Client client = OpenClient(*instance);
    ASSERT_EQ(client.Run("create database 耐久 use 耐久 create table t (a int primary key)"),
              "now 耐久");
  }
  int last = 0;
  for (int round = 0; round < 6; ++round) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t writer = fork();
    if (writer == 0) WriteForEver(copy.path(), last + 1, ends[1]);
    close(ends[1]);
    int told = last;
    for (int i = 0; i < 10 + 7 * round && read(ends[0], &told, sizeof told) > 0; ++i) {
    }
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    while (read(ends[0], &told, sizeof told) > 0) {
    }
    close(ends[0]);
    ASSERT_GT(told, last);
    const auto instance = OpenInstance(OptionsFor(copy.path()));
    Client client = OpenClient(*instance);
    ASSERT_EQ(client.Run("use 耐久"), "now 耐久");
    // The one row that was committed but not told yet may be there too.
    const std::string found = client.Run("select count(*), max(a) from t");
    const std::string at_least = std::to_string(told);
    const std::string at_most = std::to_string(told + 1);
    EXPECT_TRUE(found == at_least + "|" + at_least || found == at_most + "|" + at_most) << found;
    last = std::stoi(found);
  }
}

}  // namespace dbkeeper::server
