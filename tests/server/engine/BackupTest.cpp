// Databases backed up, restored, attached, let go.
#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>
#include <utility>

#include "server/storage/sqlite.h"
#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {
namespace {

class BackupTest : public EngineTest {
 protected:
  BackupTest() : client_(Operator()) {}

  // A path within the test's folder as the tool writes it.
  std::string Path(const std::string& name) const { return files_.path().string() + "\\" + name; }
  std::filesystem::path File(const std::string& name) const { return files_.path() / name; }
  // Makes the database with its files in the test's folder and one table of 100 rows.
  void Make(const std::string& name) {
    ASSERT_EQ(client_.Run("create database [" + name + "]\r\n on(name = [" + name +
                          "_dat], filename = '" + Path(name + "_dat.mdf") +
                          "', size = 10, filegrowth = 10%)\r\nlog on(name = [" + name +
                          "_log], filename = '" + Path(name + "_log.ldf") + "', size = 10)"),
              "");
    ASSERT_EQ(client_.Run("create table [" + name +
                          "].dbo.t (id int not null primary key, v "
                          "nvarchar(50))"),
              "");
    std::string rows = "set nocount on ";
    for (int i = 1; i <= 100; ++i) {
      rows += "insert [" + name + "].dbo.t values (" + std::to_string(i) + ", N'値') ";
    }
    ASSERT_EQ(client_.Run(rows + " set nocount off"), "");
  }
  std::string Count(const std::string& name) {
    return client_.Run("select count(*), min(v) from [" + name + "].dbo.t");
  }
  std::string BackUp(const std::string& name, const std::string& file) {
    return client_.Run("backup database [" + name + "]\r\n    to DISK = '" + Path(file) +
                       "'\r\n  with description      = 'PC:" + name +
                       "の手動Backup',\r\n       format");
  }

  const TemporaryFolder files_;
  Client client_;
};

constexpr const char* kTwoFiles = "message 4035\nmessage 4035\nmessage 3014";

TEST_F(BackupTest, ABackupHoldsTheDatabaseAndARestoreBringsItBack) {
  Make("保存");
  EXPECT_EQ(BackUp("保存", "a.bak"), kTwoFiles);
  EXPECT_EQ(client_.Run("update 保存.dbo.t set v = N'' where id > 50 drop table 保存.dbo.t"),
            "(50)");
  EXPECT_EQ(
      client_.Run("use master\r\nrestore database [保存]\r\n from disk = '" + Path("a.bak") + "'"),
      std::string("now master\n") + kTwoFiles);
  EXPECT_EQ(Count("保存"), "100|値");
  EXPECT_EQ(client_.Run("restore verifyonly  from disk = '" + Path("a.bak") + "'"), "message 3262");
  EXPECT_EQ(client_.Run("drop database [保存]"), "");
  EXPECT_FALSE(std::filesystem::exists(File("保存_dat.mdf")));
  EXPECT_FALSE(std::filesystem::exists(File("保存_log.ldf")));
  EXPECT_EQ(client_.Run("restore database [保存] from disk = '" + Path("a.bak") + "'"), kTwoFiles);
  EXPECT_EQ(Count("保存"), "100|値");
  client_.Run("drop database 保存");
}

TEST_F(BackupTest, TheHeaderTheFileListAndTheHistoryTellOfIt) {
  Make("履歴");
  ASSERT_EQ(BackUp("履歴", "h.bak"), kTwoFiles);
  client_.Run("restore headeronly from DISK = '" + Path("h.bak") + "'");
  const RecordingSink header = client_.last();
  ASSERT_EQ(header.rows, 1);
  EXPECT_EQ(header.columns.at(9).name, "DatabaseName");
  EXPECT_NE(header.text.find("PC:履歴の手動Backup|1|NULL|0|1|2|HOST\\operator|LOCALTEST|履歴|"),
            std::string::npos)
      << header.text;
  const std::string list = client_.Run("restore filelistonly from DISK = '" + Path("h.bak") + "'");
  EXPECT_NE(list.find("履歴_dat|" + Path("履歴_dat.mdf") + "|D|PRIMARY|"), std::string::npos)
      << list;
  EXPECT_NE(list.find("履歴_log|" + Path("履歴_log.ldf") + "|L|NULL|"), std::string::npos) << list;
  EXPECT_EQ(client_.Run("select name, description, type, position from msdb.dbo.backupset where "
                        "database_name = N'履歴'"),
            "NULL|PC:履歴の手動Backup|D|1");
  EXPECT_EQ(client_.Run("select m.physical_device_name, f.file_type, f.logical_name, "
                        "f.physical_name from msdb.dbo.backupset s left join "
                        "msdb.dbo.backupmediafamily m on s.media_set_id = m.media_set_id join "
                        "msdb.dbo.backupfile f on f.backup_set_id = s.backup_set_id where "
                        "database_name = N'履歴' order by file_number"),
            Path("h.bak") + "|D|履歴_dat|" + Path("履歴_dat.mdf") + "\n" + Path("h.bak") +
                "|L|履歴_log|" + Path("履歴_log.ldf"));
  client_.Run("drop database 履歴");
}

TEST_F(BackupTest, BackupsGatherOnAMediumUntilItIsFormatted) {
  Make("媒体");
  ASSERT_EQ(client_.Run("exec sp_addumpdevice 'disk', [媒体 device], '" + Path("m.bak") + "'"),
            "says 'Disk' device added.");
  const std::string statement = "backup database [媒体] to [媒体 device] with ";
  EXPECT_EQ(client_.Run(statement + "name = 'one'"), kTwoFiles);
  client_.Run("delete 媒体.dbo.t where id > 10");
  EXPECT_EQ(client_.Run(statement + "name = 'two'"), kTwoFiles);
  client_.Run("restore headeronly from [媒体 device]");
  EXPECT_EQ(client_.last().rows, 2);
  EXPECT_EQ(client_.Run("select count(distinct media_set_id), max(position) from "
                        "msdb.dbo.backupset where database_name = N'媒体'"),
            "1|2");
  EXPECT_EQ(client_.Run("restore database 媒体 from [媒体 device] with file = 2"), kTwoFiles);
  EXPECT_EQ(Count("媒体"), "10|値");
  EXPECT_EQ(client_.Run("restore database 媒体 from [媒体 device]"), kTwoFiles);
  EXPECT_EQ(Count("媒体"), "100|値");
  EXPECT_EQ(client_.Run(statement + " format, name = 'three'"), kTwoFiles);
  client_.Run("restore headeronly from [媒体 device]");
  EXPECT_EQ(client_.last().rows, 1);
  client_.Run("drop database 媒体 exec sp_dropdevice [媒体 device]");
}

TEST_F(BackupTest, ARestoreUnderAnotherNameTakesItsDataFileFromTheBracketsAsAName) {
  Make("元");
  ASSERT_EQ(BackUp("元", "n.bak"), kTwoFiles);
  const std::string from = "restore database [写し]\r\n   from disk = '" + Path("n.bak") + "'\r\n";
  const std::string moves = "   with move '元_dat' to '[" + Path("写し_dat.mdf") + "]',\r\n" +
                            "        move '元_log' to '" + Path("写し_log.ldf") + "'";
  // Before "with" the word is the name of a second device, which there is none of.
  EXPECT_EQ(client_.Run(from + ", replace" + moves), "error 3206\nerror 3013");
  EXPECT_EQ(client_.Run(from + moves), kTwoFiles);
  EXPECT_EQ(Count("写し"), "100|値");
  EXPECT_EQ(client_.Run("select filename from master.dbo.sysdatabases where name = N'写し'"),
            "[" + Path("写し_dat.mdf") + "]");
  // The brackets make it a name below the instance's own folder, not the path within them.
  EXPECT_FALSE(std::filesystem::exists(File("写し_dat.mdf")));
  EXPECT_TRUE(std::filesystem::exists(File("写し_log.ldf")));
  client_.Run("drop database 写し drop database 元");
}

TEST_F(BackupTest, WhatDoesNotFitIsRefusedAndTheDatabaseStaysAsItIs) {
  Make("甲");
  Make("乙");
  ASSERT_EQ(BackUp("甲", "k.bak"), kTwoFiles);
  std::ofstream(File("no.bak")) << "no backup";
  const std::string k = "'" + Path("k.bak") + "'";
  const struct {
    std::string batch;
    std::string expected;
  } cases[] = {
      {"restore database 乙 from disk = " + k, "error 3154\nerror 3013"},
      {"restore database 乙 from disk = " + k + " with replace, move '甲_dat' to '" +
           Path("甲_dat.mdf") + "'",
       "error 3156\nerror 3013"},
      {"restore database 丙 from disk = " + k, "error 3156\nerror 3013"},
      {"restore database 丙 from disk = " + k + " with move 'x' to 'y'", "error 3234\nerror 3013"},
      {"restore database 丙 from disk = " + k + " with file = 2", "error 3287\nerror 3013"},
      {"restore database 甲 from disk = '" + Path("none.bak") + "'", "error 3201\nerror 3013"},
      {"restore headeronly from disk = '" + Path("none.bak") + "'", "error 3201\nerror 3013"},
      {"restore headeronly from disk = '" + Path("no.bak") + "'", "error 3241\nerror 3013"},
      {"restore database 甲 from nothing", "error 3206\nerror 3013"},
      {"backup database 無 to disk = " + k, "error 911\nerror 3013"},
      {"backup database tempdb to disk = " + k, "error 3147\nerror 3013"},
      {"backup database 甲 to disk = '" + Path("none\\x.bak") + "'", "error 3201\nerror 3013"},
      {"backup database 甲 to disk = '" + Path("乙_dat.mdf") + "' with format",
       "error 3201\nerror 3013"},
      {"backup database 甲 to disk = '" + Path("no.bak") + "'", "error 3241\nerror 3013"},
      {"backup database 甲 to disk = " + k + " with differential", "error 50001"},
      {"begin tran backup database 甲 to disk = " + k + " commit", "error 3021\nerror 3013"},
      {"use 甲 restore database 甲 from disk = " + k + " use master",
       "now 甲\nerror 3102\nerror 3013\nnow master"},
  };
  for (const auto& [batch, expected] : cases) {
    SCOPED_TRACE(batch);
    EXPECT_EQ(client_.Run(batch), expected);
  }
  Client other = Operator();
  other.Run("use 甲");
  EXPECT_EQ(client_.Run("restore database 甲 from disk = " + k), "error 3101\nerror 3013");
  other.Run("use master");
  EXPECT_EQ(Count("甲"), "100|値");
  EXPECT_EQ(Count("乙"), "100|値");
  EXPECT_EQ(client_.Run("restore database 乙 from disk = " + k + " with replace"), kTwoFiles);
  client_.Run("drop database 甲 drop database 乙");
}

TEST_F(BackupTest, ABackupIsOfOneMomentWhileOthersReadAndWrite) {
  constexpr int kRows = 10'000;
  Make("瞬間");
  client_.Run("create table 瞬間.dbo.a (id int not null primary key, n int, pad char(300))");
  client_.Run(
      "insert 瞬間.dbo.a select (x.id - 1) * 100 + y.id, 0, '' from 瞬間.dbo.t x, 瞬間.dbo.t y");
  std::atomic<bool> stop = false;
  // Moves something from one end of the file to the other, so that the sum stays, and has the log
  // folded in.
  std::thread writer([&] {
    Client other = Operator();
    other.Run("use 瞬間");
    for (int i = 0; !stop; i = (i + 1) % 100) {
      other.Run("begin tran update a set n = n - 1 where id = " + std::to_string(1 + i) +
                " update a set n = n + 1 where id = " + std::to_string(kRows - i) +
                " commit checkpoint");
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  int pad = 0;
  for (const bool earlier_state_is_read : {false, true}) {
    SCOPED_TRACE(earlier_state_is_read);
    SqliteConnection reader(File("瞬間_dat.mdf").string());
    if (earlier_state_is_read) reader.Execute("begin");
    reader.IntegerOf(0, "select count(*) from sqlite_schema");
    for (int round = 0; round < 5; ++round) {
      const std::string number = std::to_string(++pad);
      ASSERT_EQ(client_.Run("update 瞬間.dbo.a set pad = " + number + " where id = 5000"), "(1)");
      ASSERT_EQ(BackUp("瞬間", "c.bak"), kTwoFiles);
      ASSERT_EQ(client_.Run("restore database 写 from disk = '" + Path("c.bak") +
                            "' with replace, move '瞬間_dat' to '" + Path("写.mdf") +
                            "', move '瞬間_log' to '" + Path("写.ldf") + "'"),
                kTwoFiles);
      EXPECT_EQ(client_.Run("select count(*), sum(n) from 写.dbo.a"), std::to_string(kRows) + "|0");
      EXPECT_EQ(client_.Run("select rtrim(pad) from 写.dbo.a where id = 5000"), number);
    }
  }
  stop = true;
  writer.join();
  client_.Run("drop database 写 drop database 瞬間");
}

TEST_F(BackupTest, NobodyGetsIntoADatabaseThatIsBeingRestored) {
  Make("復元");
  ASSERT_EQ(BackUp("復元", "r.bak"), kTwoFiles);
  const std::string restore = "restore database 復元 from disk = '" + Path("r.bak") + "'";
  // A writer that is in another database keeps the restore waiting at its last step.
  Client writer = Operator();
  writer.Run("begin tran update 復元.dbo.t set v = N''");
  std::string restored;
  std::thread thread([&] {
    Client restoring = Operator();
    restored = restoring.Run("set lock_timeout 60000 " + restore);
  });
  while (Count("復元") == "100|値") std::this_thread::yield();
  const struct {
    std::string batch;
    std::string expected;
  } cases[] = {
      {"select * from 復元.dbo.t", "error 927"},
      {"use 復元", "error 927"},
      {"backup database 復元 to disk = '" + Path("x.bak") + "'", "error 927\nerror 3013"},
      {restore, "error 3101\nerror 3013"},
      {"drop database 復元", "error 3702"},
      {"exec sp_detach_db 復元", "error 3703"},
      {"alter database 復元 set offline", "error 5070"},
      {"select count(*) from master.dbo.sysdatabases where name = N'復元'", "1"},
  };
  for (const auto& [batch, expected] : cases) {
    SCOPED_TRACE(batch);
    EXPECT_EQ(client_.Run(batch), expected);
  }
  EXPECT_EQ(RefusalOf(kOperator, kSecret, "復元"), 4060);
  writer.Run("rollback");
  thread.join();
  EXPECT_EQ(restored, kTwoFiles);
  EXPECT_EQ(client_.Run("use 復元 use master"), "now 復元\nnow master");
  EXPECT_EQ(Count("復元"), "100|値");
  client_.Run("drop database 復元");
}

TEST_F(BackupTest, ARestoreThatFailsOrMovesLeavesNoFileMissingAndNoneOver) {
  Make("引越");
  Make("隣");
  ASSERT_EQ(BackUp("引越", "v.bak"), kTwoFiles);
  const auto moved = [&](const std::string& data, const std::string& log) {
    return client_.Run("restore database 引越 from disk = '" + Path("v.bak") +
                       "' with replace, move '引越_dat' to '" + Path(data) +
                       "', move '引越_log' to '" + Path(log) + "'");
  };
  const auto files = [&] {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(files_.path())) {
      const std::string name = entry.path().filename().string();
      if (!name.ends_with("-wal") && !name.ends_with("-shm")) names.insert(name);
    }
    return names;
  };
  std::set<std::string> expected = files();
  // Not onto a file of another database, nor the data onto the log.
  for (const auto& [data, log] :
       {std::pair{"隣_dat.mdf", "引越_log.ldf"}, std::pair{"引越_log.ldf", "引越_log.ldf"},
        std::pair{"new.mdf", "引越_dat.mdf"}, std::pair{"new.mdf", "隣_log.ldf"}}) {
    EXPECT_EQ(moved(data, log), "error 3156\nerror 3013") << data << log;
  }
  std::filesystem::copy_file(File("v.bak"), File("hurt.bak"));
  std::fstream(File("hurt.bak"), std::ios::in | std::ios::out | std::ios::binary)
      .seekp(static_cast<std::streamoff>(std::filesystem::file_size(File("hurt.bak")) / 2))
      .put('?');
  EXPECT_EQ(client_.Run("restore database 引越 from disk = '" + Path("hurt.bak") +
                        "' with move '引越_dat' to '" + Path("new.mdf") + "'"),
            "error 3241\nerror 3013");
  expected.insert("hurt.bak");
  EXPECT_EQ(files(), expected);
  EXPECT_EQ(moved("new.mdf", "引越_log.ldf"), kTwoFiles);
  expected.erase("引越_dat.mdf");
  expected.insert("new.mdf");
  EXPECT_EQ(files(), expected);
  EXPECT_EQ(moved("new.mdf", "new.ldf"), kTwoFiles);
  expected.erase("引越_log.ldf");
  expected.insert("new.ldf");
  EXPECT_EQ(files(), expected);
  EXPECT_EQ(Count("引越"), "100|値");
  EXPECT_EQ(Count("隣"), "100|値");
  client_.Run("drop database 引越 drop database 隣");
}

TEST_F(BackupTest, ACutOrChangedBackupIsRefusedAndNothingIsTouched) {
  Make("傷");
  ASSERT_EQ(BackUp("傷", "whole.bak"), kTwoFiles);
  std::ifstream whole(File("whole.bak"), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
  client_.Run("delete 傷.dbo.t where id > 7");
  const auto refused = [&](const std::string& content) {
    std::ofstream(File("hurt.bak"), std::ios::binary) << content;
    return client_.Run("restore database 傷 from disk = '" + Path("hurt.bak") + "'");
  };
  for (std::size_t i = 0; i < bytes.size(); i += bytes.size() / 40) {
    SCOPED_TRACE(i);
    std::string flipped = bytes;
    flipped[i] = static_cast<char>(flipped[i] ^ 4);
    EXPECT_EQ(refused(flipped), "error 3241\nerror 3013");
    EXPECT_EQ(refused(bytes.substr(0, i)), "error 3241\nerror 3013");
  }
  EXPECT_EQ(refused(bytes.substr(0, bytes.size() - 1)), "error 3241\nerror 3013");
  EXPECT_EQ(refused(bytes + "x"), "error 3241\nerror 3013");
  EXPECT_EQ(Count("傷"), "7|値");
  const auto left = std::distance(std::filesystem::directory_iterator(files_.path()), {});
  EXPECT_LE(left, 6) << "unfinished files are removed";
  client_.Run("drop database 傷");
}

TEST_F(BackupTest, ADamagedSetKeepsNobodyFromAnotherAndAddingToItsMediumDoesNotHideIt) {
  Make("複数");
  const std::string medium = " disk = '" + Path("d.bak") + "'";
  const auto restore = [&](int set) {
    return client_.Run("restore database 複数 from" + medium +
                       " with file = " + std::to_string(set));
  };
  client_.Run("update 複数.dbo.t set v = N'第一の印' where id = 1");
  ASSERT_EQ(client_.Run("backup database 複数 to" + medium + " with name = '初めの説明'"),
            kTwoFiles);
  client_.Run("update 複数.dbo.t set v = N'第二の印' where id = 1");
  ASSERT_EQ(client_.Run("backup database 複数 to" + medium), kTwoFiles);
  const auto spoil = [&](const std::string& text) {
    std::ifstream whole(File("d.bak"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(whole), {}};
    ASSERT_NE(bytes.find(text), std::string::npos);
    std::fstream(File("d.bak"), std::ios::in | std::ios::out | std::ios::binary)
        .seekp(static_cast<std::streamoff>(bytes.find(text)))
        .put('?');
  };
  spoil("第一の印");
  EXPECT_EQ(restore(1), "error 3241\nerror 3013");
  EXPECT_EQ(restore(2), kTwoFiles);
  EXPECT_EQ(client_.Run("backup database 複数 to" + medium), kTwoFiles);
  EXPECT_EQ(restore(1), "error 3241\nerror 3013");
  EXPECT_EQ(restore(3), kTwoFiles);
  EXPECT_EQ(client_.Run("select v from 複数.dbo.t where id = 1"), "第二の印");
  // What a medium says of its sets is not believed when it has changed.
  spoil("初めの説明");
  EXPECT_EQ(client_.Run("restore headeronly from" + medium), "error 3241\nerror 3013");
  client_.Run("drop database 複数");
}

TEST_F(BackupTest, AFileThatIsNoMediumIsRefusedAndStaysAsItIs) {
  Make("他人");
  {
    SqliteConnection foreign(File("foreign.bak").string());
    foreign.Execute("create table t(a); insert into t values (1)");
  }
  std::ofstream(File("text.bak")) << "no medium";
  std::ofstream(File("empty.bak")).close();
  for (const char* name : {"foreign.bak", "text.bak", "empty.bak", "他人_log.ldf"}) {
    SCOPED_TRACE(name);
    const auto content = [&] {
      std::ifstream file(File(name), std::ios::binary);
      return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    const std::string before = content();
    const std::string at = " disk = '" + Path(name) + "'";
    EXPECT_EQ(client_.Run("restore headeronly from" + at), "error 3241\nerror 3013");
    EXPECT_EQ(client_.Run("restore database 新 from" + at), "error 3241\nerror 3013");
    EXPECT_EQ(client_.Run("backup database 他人 to" + at), std::string(name).ends_with(".ldf")
                                                               ? "error 3201\nerror 3013"
                                                               : "error 3241\nerror 3013");
    EXPECT_EQ(content(), before);
  }
  EXPECT_EQ(client_.Run("restore headeronly from disk = '" + Path("nothing.bak") + "'"),
            "error 3201\nerror 3013");
  client_.Run("drop database 他人");
}

TEST_F(BackupTest, ADatabaseIsLetGoAndTakenInAgain) {
  Make("移動");
  Client other = Operator();
  other.Run("use 移動");
  EXPECT_EQ(client_.Run("exec sp_detach_db [移動], 'true'"), "error 3703");
  other.Run("use master");
  // Nobody is in the way, so there is nothing to wait for.
  EXPECT_EQ(client_.Run("use master set lock_timeout 0 exec sp_detach_db [移動], 'true' "
                        "set lock_timeout 10000"),
            "now master\nsays Successfully detached database '移動'.");
  EXPECT_EQ(client_.Run("use 移動"), "error 911");
  std::filesystem::rename(File("移動_dat.mdf"), File("別.mdf"));
  const std::string attach = "exec sp_attach_db @dbname    = [移動先], @filename1 = N'";
  const std::string log = "', @filename2 = N'" + Path("移動_log.ldf") + "'";
  EXPECT_EQ(client_.Run(attach + Path("移動_dat.mdf") + log), "error 5105\nerror 1813");
  EXPECT_EQ(client_.Run(attach + Path("移動_log.ldf") + log), "error 5171\nerror 1813");
  EXPECT_EQ(client_.Run(attach + Path("別.mdf") + "', @filename2 = N'" + Path("none") + "'"),
            "error 5105\nerror 1813");
  EXPECT_EQ(client_.Run(attach + Path("別.mdf") + log), "");
  EXPECT_EQ(Count("移動先"), "100|値");
  EXPECT_EQ(client_.Run(attach + Path("別.mdf") + log), "error 1801");
  EXPECT_EQ(client_.Run("exec sp_attach_db 二重, '" + Path("別.mdf") + "'"),
            "error 5105\nerror 1813");
  EXPECT_EQ(client_.Run("exec sp_detach_db master"), "error 7940");
  EXPECT_EQ(client_.Run("exec sp_detach_db 無"), "error 15010");
  client_.Run("drop database 移動先");
}

TEST_F(BackupTest, ALogFileGoesWithItsDatabaseAlone) {
  Make("一");
  ASSERT_EQ(BackUp("一", "l.bak"), kTwoFiles);
  ASSERT_EQ(client_.Run("restore database 二 from disk = '" + Path("l.bak") +
                        "' with move '一_dat' to '" + Path("二.mdf") + "', move '一_log' to '" +
                        Path("二.ldf") + "'"),
            kTwoFiles);
  // The two are copies of each other, yet neither takes the other's log.
  client_.Run("exec sp_detach_db 二");
  const std::string attach = "exec sp_attach_db 二, '" + Path("二.mdf") + "'";
  EXPECT_EQ(client_.Run(attach + ", '" + Path("一_log.ldf") + "'"), "error 5105\nerror 1813");
  // A file of somebody's that has the name of the log is not written over.
  std::ofstream(File("二_log.ldf")) << "notes";
  EXPECT_EQ(client_.Run(attach), "error 5105\nerror 1813");
  EXPECT_EQ(std::filesystem::file_size(File("二_log.ldf")), 5U);
  std::filesystem::remove(File("二_log.ldf"));
  EXPECT_EQ(client_.Run(attach), "");
  EXPECT_EQ(Count("二"), "100|値");
  EXPECT_TRUE(std::filesystem::exists(File("二_log.ldf")));
  client_.Run("drop database 一 drop database 二");
  EXPECT_FALSE(std::filesystem::exists(File("二_log.ldf")));
}

TEST_F(BackupTest, CreateRefusesFilesThatCannotBe) {
  const auto create = [&](const std::string& data, const std::string& log) {
    return client_.Run("create database 不可 on(name = d, " + data + ") log on(name = l, " + log +
                       ")");
  };
  const std::string d = "filename = '" + Path("d.mdf") + "'";
  const std::string l = "filename = '" + Path("l.ldf") + "'";
  std::ofstream(File("there")) << "x";
  EXPECT_EQ(create(d + ", size = 10, maxsize = 5", l), "error 5103\nerror 1802");
  EXPECT_EQ(create(d + ", size = 1, maxsize = 5, filegrowth = 9", l), "error 5169\nerror 1802");
  EXPECT_EQ(create(d + ", size = 100KB", l), "error 5174\nerror 1802");
  EXPECT_EQ(create(d, d), "error 5104\nerror 1802");
  EXPECT_EQ(create("filename = '" + Path("no\\d.mdf") + "'", l), "error 5105\nerror 1802");
  EXPECT_EQ(create("filename = '" + Path("there") + "'", l), "error 5170\nerror 1802");
  EXPECT_EQ(client_.Run("alter database 販売管理 modify file (name = none, size = 20)"),
            "error 5009");
  EXPECT_EQ(client_.Run("use 不可"), "error 911");
}

TEST_F(BackupTest, ShrinkingGivesRoomBackAndOldHistoryCanBeDropped) {
  Make("縮小");
  const auto size = [&] {
    client_.Run("use 縮小 checkpoint use master");
    return std::filesystem::file_size(File("縮小_dat.mdf"));
  };
  client_.Run("update 縮小.dbo.t set v = replicate(N'字', 50)");
  client_.Run("insert 縮小.dbo.t select a.id * 1000 + b.id, a.v from 縮小.dbo.t a, 縮小.dbo.t b");
  client_.Run("delete 縮小.dbo.t where id > 100");
  const auto before = size();
  EXPECT_EQ(client_.Run("dbcc shrinkdatabase([縮小], 10)"), "message 2528");
  EXPECT_LT(size(), before / 2);
  ASSERT_EQ(BackUp("縮小", "s.bak"), kTwoFiles);
  const std::string history =
      "select count(*) from msdb.dbo.backupset where database_name = N'縮小'";
  client_.Run("use msdb exec sp_delete_backuphistory @oldest_date = '2005/03/01' use master");
  EXPECT_EQ(client_.Run(history), "1");
  client_.Run("use msdb exec sp_delete_backuphistory @oldest_date = '9999/01/01' use master");
  EXPECT_EQ(client_.Run(history), "0");
  EXPECT_EQ(client_.Run("select count(*) from msdb.dbo.backupmediafamily"), "0");
  client_.Run("drop database 縮小");
}

}  // namespace
}  // namespace dbkeeper::server
