// A server killed in the middle of a backup, a restore, an attach or a detach leaves the state
// before it or the state after it.
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

using std::chrono::milliseconds;

constexpr int kRounds = 12;

class DatabaseKill : public testing::Test {
 protected:
  DatabaseKill() { Start(); }

  std::filesystem::path File(const std::string& name) const { return folder_.path() / name; }
  std::string Path(const std::string& name) const { return "'" + File(name).string() + "'"; }
  std::string Value(const std::string& query) const { return *client_->Query(query)[0][0]; }
  // Makes the database "work" with a table of `rows` rows, a power of two, that all say 1.
  void MakeDatabase(int rows) const {
    client_->Execute("create database work on(name = d, filename = " + Path("w.mdf") +
                     ") log on(name = l, filename = " + Path("w_log.ldf") + ")");
    client_->Execute(
        "create table work.dbo.t (id int not null primary key, mark int, text "
        "nvarchar(1000))");
    client_->Execute("insert work.dbo.t values (1, 1, replicate(N'x', 1000))");
    for (int done = 1; done < rows; done *= 2) {
      client_->Execute("insert work.dbo.t select id + " + std::to_string(done) +
                       ", mark, text from work.dbo.t");
    }
  }
  // What all rows say; fails when some are lost or they are not of one mind.
  int Mark(int rows) const {
    EXPECT_EQ(Value("select count(*) from work.dbo.t"), std::to_string(rows)) << failure_;
    EXPECT_EQ(Value("select count(distinct mark) from work.dbo.t"), "1");
    return std::stoi(Value("select max(mark) from work.dbo.t"));
  }
  // Runs the statements again and again until the server is killed, and starts it anew. Gives how
  // many were carried out.
  int RunUntilKilled(const std::vector<std::string>& statements, int longest_ms) {
    const milliseconds delay(1 + random_() % longest_ms);
    std::thread killer([&] {
      std::this_thread::sleep_for(delay);
      server_->Kill();
    });
    int done = 0;
    try {
      for (;; ++done) client_->Execute(statements[done % statements.size()]);
    } catch (const OdbcError& error) {
      failure_ = error.what();
    }
    killer.join();
    Start();
    return done;
  }
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

 private:
  void Start() {
    client_.reset();
    server_.emplace(folder_.path() / "data");
    client_.emplace(server_->port(), "tester", "Secret_1");
  }

 protected:
  const TemporaryFolder folder_;
  std::optional<ServerProcess> server_;
  std::optional<OdbcClient> client_;
  std::mt19937 random_{11};
  std::string failure_;  // what ended the last run
};

TEST_F(DatabaseKill, OfABackupOrARestoreLeavesAWholeDatabaseAndAWholeMedium) {
  constexpr int kRows = 2048;
  const std::string to = "backup database work to disk = " + Path("b.bak") + " with format";
  const std::string from = "restore database work from disk = " + Path("b.bak");
  MakeDatabase(kRows);
  client_->Execute(to);
  client_->Execute("update work.dbo.t set mark = 2");
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    RunUntilKilled({round % 2 == 0 ? from : to}, 250);
    Mark(kRows);
    client_->Execute("restore verifyonly from disk = " + Path("b.bak"));
    EXPECT_LE(Files().size(), 6U) << "what was unfinished is removed at the start";
    client_->Execute("update work.dbo.t set mark = " + std::to_string(round + 3));
  }
}

TEST_F(DatabaseKill, OfAnAttachOrADetachLeavesAListedDatabaseOrItsFilesFree) {
  constexpr int kRows = 64;
  const std::string attach[] = {
      "exec sp_attach_db work, " + Path("w.mdf") + ", " + Path("w_log.ldf"),
      "exec sp_attach_single_file_db work, " + Path("w.mdf"),
  };
  MakeDatabase(kRows);
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    const int before = Mark(kRows);
    // As long as another session has the file open, its log is not folded in by itself.
    const OdbcClient reader(server_->port(), "tester", "Secret_1");
    reader.Query("select count(*) from work.dbo.t");
    const int done = RunUntilKilled({"update work.dbo.t set mark = mark + 1",
                                     "exec sp_detach_db work, 'true'", attach[round % 2]},
                                    80);
    const int updates = (done + 2) / 3;
    const bool listed =
        Value("select count(*) from master.dbo.sysdatabases where name = 'work'") == "1";
    ASSERT_TRUE(exists(File("w.mdf")));
    if (!listed) {
      // A database that is let go is whole in its own file.
      for (const char* beside : {"w.mdf-wal", "w.mdf-shm"}) std::filesystem::remove(File(beside));
      client_->Execute(attach[0]);
    }
    const int after = Mark(kRows);
    EXPECT_GE(after, before + updates) << failure_;
    EXPECT_LE(after, before + updates + 1);
    EXPECT_LE(Files().size(), 5U) << testing::PrintToString(Files());
  }
}

}  // namespace
}  // namespace dbkeeper::server
