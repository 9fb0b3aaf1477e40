#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "catalog/DatabaseList.h"
#include "catalog/DatabaseProperties.h"
#include "catalog/ObjectLists.h"
#include "catalog/ServerLists.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using testing::WorkbenchFixture;
using Cells = std::vector<std::string>;

class CatalogTest : public ::testing::Test, protected WorkbenchFixture {
 protected:
  std::vector<Cells> Rows() const {
    std::vector<Cells> rows;
    for (const ListItem& item : list.Items()) {
      Cells cells;
      for (std::size_t i = 0; i < item.CellCount(); ++i) cells.emplace_back(item.Cell(i));
      rows.push_back(cells);
    }
    return rows;
  }
};

TEST(DatabaseStatus, DecodesGreedilyInItsFixedOrder) {
  struct Case {
    std::int32_t status;
    const char* words;
  };
  const Case cases[] = {
      {0, ""},
      {16, ""},
      {512, "offline,"},
      {1024 + 4096, "ｼﾝｸﾞﾙﾕｰｻﾞｰ,読取専用,"},
      {64 + 128, "復旧中,復旧準備中,"},
      {0x40000000 + 0x400000 + 24, ""},
      {2048 + 256, "管理者専用,障害,"},
      {65536, "緊急ﾓｰﾄﾞ,ｼﾝｸﾞﾙﾕｰｻﾞｰ,管理者専用,読取専用,offline,障害,復旧中,復旧準備中,"},
      {std::numeric_limits<std::int32_t>::min(), ""},
  };
  for (const Case& c : cases) EXPECT_EQ(DecodeDatabaseStatus(c.status), c.words) << c.status;
}

class DatabaseListTest : public CatalogTest {
 protected:
  DatabaseListTest() {
    connection.Answer("sysdatabases",
                      {{{.name = "dbid", .kind = FieldKind::kInteger},
                        {.name = "name"},
                        {.name = "status", .kind = FieldKind::kInteger},
                        {.name = "status2", .kind = FieldKind::kInteger},
                        {.name = "crdate", .kind = FieldKind::kDateTime},
                        {.name = "filename"}},
                       {{"1", "master", "8", "1090519040", "2000-08-06 01:29:12.250", "m.mdf"},
                        {"7", "売上", "512", "0", {}, "u.mdf"}}});
    node = &tree.AddRoot("SQL Server").AddChild("Database");
    tree.Select(node);
  }
  TreeNode* node;
};

TEST_F(DatabaseListTest, ListsDatabasesAndGrowsTheTreeByTheUsableOnesOnce) {
  ListDatabases(workbench, {});
  EXPECT_EQ(Rows(), (std::vector<Cells>{
                        {"1", "master", "", "8", "1090519040", "2000/08/06 1:29:12", "m.mdf"},
                        {"7", "売上", "offline,", "512", "0", "", "u.mdf"}}));
  ASSERT_EQ(node->Children().size(), 1U);
  TreeNode& master = *node->Children()[0];
  Cells kinds;
  for (const auto& child : master.Children()) kinds.push_back(child->Text());
  EXPECT_EQ(master.Text(), "master");
  EXPECT_EQ(kinds, (Cells{"Table", "View", "Procedure", "User", "Role", "Backup"}));
  ListDatabases(workbench, {});
  EXPECT_EQ(node->Children().size(), 1U);
}

TEST_F(DatabaseListTest, WithoutASelectedNodeOnlyTheListIsFilled) {
  tree.Select(nullptr);
  ListDatabases(workbench, {});
  EXPECT_EQ(list.Items().size(), 2U);
  EXPECT_FALSE(node->HasChildren());
}

TEST_F(CatalogTest, DescriptionsGoToEveryRowOfTheirNameAndNowhereElse) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}),
                                   {{"t1", "U", "a"}, {"T1", "U", "b"}, {"t1", "U", "c"}}});
  connection.Answer("fn_listextendedproperty", {TextFields({"objname", "name", "value"}),
                                                {{"t1", "MS_Description", "説明"},
                                                 {"t1", "Note", "old"},
                                                 {"t1", "Note", "備考"},
                                                 {"t1", "Other", "x"},
                                                 {"gone", "Note", "y"}}});
  options = {.Advanced = true, .ShowSystemTables = false};
  ListTables(workbench, "sales");
  EXPECT_EQ(Rows(), (std::vector<Cells>{{"1", "t1", "説明", "備考", "U", "a"},
                                        {"2", "T1", "", "", "U", "b"},
                                        {"3", "t1", "説明", "備考", "U", "c"}}));
  EXPECT_EQ(
      connection.statements,
      (Cells{"select * from [sales].dbo.sysobjects where (xtype='U') order by name", "use [sales]",
             "select * from ::fn_listextendedproperty(default, 'user', 'dbo', 'table', "
             "default,default,default)"}));
}

TEST_F(CatalogTest, CapacityAsksForEachTableAndKeepsRowsWithoutAnAnswerShort) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}),
                                   {{"a b", "U", "x"}, {"s", "S", "y"}}});
  connection.Answer("sp_spaceused  [a b]",
                    {TextFields({"name", "rows", "reserved", "data", "index_size", "unused"}),
                     {{"a b", "11", "80 KB", "40 KB", "8 KB", "32 KB"}}});
  ListCapacity(workbench, "sales");
  EXPECT_EQ(Rows(),
            (std::vector<Cells>{{"1", "a b", "U", "x", "11", "80 KB", "40 KB", "8 KB", "32 KB"},
                                {"2", "s", "S", "y"}}));
  EXPECT_EQ(connection.statements[1], "EXEC [sales].dbo.sp_spaceused  [a b]");
}

TEST_F(CatalogTest, JobsAreDecoded) {
  connection.Answer(
      "sp_help_job",
      {TextFields({"job_id", "name", "enabled", "current_execution_status", "last_run_outcome",
                   "description", "next_run_date", "next_run_time", "last_run_date",
                   "last_run_time", "date_created", "date_modified"}),
       {{"ID1", "夜間", "1", "4", "1", "d", "20040105", "10000", "0", "0", "c", "m"},
        {"ID2", "x", "0", "7", "5", "", "0", "0", "0", "0", "c", "m"}}});
  ListJobs(workbench, {});
  EXPECT_EQ(Rows(),
            (std::vector<Cells>{
                {"ID1", "夜間", "1", "ｱｲﾄﾞﾙ", "成功", "d", "20040105 10000", "0 0", "c", "m"},
                {"ID2", "x", "0", "不明", "不明", "", "0 0", "0 0", "c", "m"}}));
}

TEST_F(CatalogTest, BackupHistoryShowsTheNewestBackupOfEachMediaSet) {
  connection.Answer(
      "from backupset",
      {TextFields({"backup_set_id", "media_set_id", "name", "description", "backup_start_date",
                   "backup_finish_date", "type", "backup_size", "database_name"}),
       {{"3", "1", "n3", "d", "s", "f", "D", "1535", "db"},
        {"1", "1", "n1", "d", "s", "f", "D", "1", "db"},
        {"4", "2", "n4", "d", "s", "f", "D", "1536", "db"},
        {"2", "2", "n2", "d", "s", "f", "D", "1", "db"}}});
  ListBackupHistory(workbench, "db");
  EXPECT_EQ(Rows(), (std::vector<Cells>{{"3", "1", "n3", "d", "s", "1KB"},
                                        {"4", "2", "n4", "d", "s", "2KB"}}));
}

TEST(Kilobytes, RoundHalvesToEvenAlsoForLargeSizes) {
  struct Case {
    std::int64_t bytes;
    const char* text;
  };
  const Case cases[] = {
      {0, "0KB"},    {512, "0KB"},  {513, "1KB"},  {1535, "1KB"},
      {1536, "2KB"}, {2560, "2KB"}, {3584, "4KB"}, {(5LL << 32) + 512, "20971520KB"}};
  for (const Case& c : cases) EXPECT_EQ(KilobytesText(c.bytes), c.text);
}

TEST_F(CatalogTest, DatabaseOptionsBecomeRowsWithoutGaps) {
  connection.Answer("sysdatabases", {TextFields({"name", "crdate"}), {{"db", "c"}}});
  connection.Answer("sp_spaceused",
                    {TextFields({"database_size", "unallocated space"}), {{"2.00 MB", "0.50 MB"}}});
  connection.Answer("sp_helpdb",
                    {TextFields({"name", "status"}),
                     {{"db",
                       "Status=ONLINE, Updateability=READ_ONLY, Collation=Japanese_CI_AS, "
                       "IsTornPageDetectionEnabled, IsAutoUpdateStatistics"}}});
  ListDatabaseProperties(workbench, "db");
  EXPECT_EQ(Rows(), (std::vector<Cells>{{"1", "名前", "db"},
                                        {"2", "作成日", "c"},
                                        {"3", "使用サイズ", "2.00 MB"},
                                        {"4", "未使用領域", "0.50 MB"},
                                        {"5", "照合順序名", "Japanese_CI_AS"},
                                        {"6", "Status", "ONLINE"},
                                        {"7", "READ_WRITE", "READ_ONLY"},
                                        {"8", "不完全な I/O 操作を検出", "True"},
                                        {"9", "統計の自動更新", "True"}}));
}

TEST_F(CatalogTest, UnknownDatabaseStartsAtRowThree) {
  connection.Answer("sysdatabases", {TextFields({"name", "crdate"}), {}});
  connection.Answer("sp_spaceused",
                    {TextFields({"database_size", "unallocated space"}), {{"1", "2"}}});
  connection.Answer("sp_helpdb", {TextFields({"status"}), {}});
  ListDatabaseProperties(workbench, "db");
  ASSERT_EQ(list.Items().size(), 2U);
  EXPECT_EQ(list.Items()[0].Caption(), "3");
}

}  // namespace
}  // namespace dbkeeper
