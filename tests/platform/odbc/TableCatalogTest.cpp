// What the catalog tells of tables, over the real wire.
#include "catalog/TableCatalog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/odbc/OdbcConnection.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

using Texts = std::vector<std::string>;

// Counts what goes over the wire.
class Counting : public Connection {
 public:
  explicit Counting(Connection& server) : server_(server) {}
  int statements = 0;

  void Open(const std::string& connection_string) override { server_.Open(connection_string); }
  void Close() override { server_.Close(); }
  bool IsOpen() const override { return server_.IsOpen(); }
  std::unique_ptr<RowReader> Query(const std::string& sql) override {
    ++statements;
    return server_.Query(sql);
  }
  std::int64_t Execute(const std::string& sql) override {
    ++statements;
    return server_.Execute(sql);
  }
  ScrolledRows OpenCursor(const std::string& sql) override {
    ++statements;
    return server_.OpenCursor(sql);
  }
  std::vector<ServerMessage> TakeMessages() override { return server_.TakeMessages(); }

 private:
  Connection& server_;
};

class TableCatalogTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { server = std::make_unique<LocalServer>(); }
  static void TearDownTestSuite() { server.reset(); }

  TableCatalogTest() { wire.Open(server->ConnectionString()); }

  void InDatabase(const std::string& name, const Texts& statements) {
    constexpr int kStandsAlready = 1801;
    std::string bracketed = name;
    for (std::size_t at = 0; (at = bracketed.find(']', at)) != std::string::npos; at += 2) {
      bracketed.insert(at, "]");
    }
    try {
      wire.Execute("create database [" + bracketed + "]");
    } catch (const ServerError& error) {
      if (error.Number() != kStandsAlready) throw;
    }
    wire.Execute("use [" + bracketed + "]");
    for (const std::string& statement : statements) wire.Execute(statement);
    wire.Execute("use master");
  }
  TableDefinition Read(const std::string& database, const std::string& table) {
    const auto found = ReadTable(query, database, table);
    EXPECT_TRUE(found.has_value()) << table;
    return found.value_or(TableDefinition{});
  }

  static std::unique_ptr<LocalServer> server;
  testing::FakeLocale locale;
  OdbcConnection wire{OdbcOptions{}, server->Endpoint()};
  Counting connection{wire};
  Query query{connection, locale, {}};
};

std::unique_ptr<LocalServer> TableCatalogTest::server;

TEST_F(TableCatalogTest, ColumnsHaveTypeSizeNullIdentityDefaultAndProperties) {
  InDatabase("型", {R"(create table 全部 (
    番号 bigint identity(100,-5) not null, 名前 nvarchar(20) not null default (N'あ''い'),
    符号 char(6) null, 長文 text null, 金額 money not null constraint DF_金額 default (0),
    率 decimal(10,2) null, 日時 datetime null default (getdate()), 印 bit not null,
    生 varbinary(30) null, 実数 float null, 識別 uniqueidentifier not null, 版 timestamp))",
                    "execute sp_addextendedproperty 'MS_Description', '表の説明', 'user', 'dbo', "
                    "'table', '全部'",
                    "execute sp_addextendedproperty 'Note', '表の備考', 'user', 'dbo', 'table', "
                    "'全部'",
                    "execute sp_addextendedproperty 'MS_Description', '率の説明', 'user', 'dbo', "
                    "'table', [全部], 'column', '率'",
                    "execute sp_addextendedproperty 'Note', '率の備考', 'user', 'dbo', 'table', "
                    "[全部], 'column', '率'"});
  const TableDefinition table = Read("型", "全部");
  EXPECT_EQ(table.owner, "dbo");
  EXPECT_EQ(table.Description(), "表の説明");
  EXPECT_EQ(table.Note(), "表の備考");
  EXPECT_EQ(table.file_group, "PRIMARY");
  EXPECT_EQ(table.created.substr(0, 2), "20");
  EXPECT_EQ(table.changed, table.created);

  struct Case {
    const char *name, *type, *size;
    bool nullable;
    const char *identity, *default_text, *description, *note;
  };
  const Case cases[] = {
      {"番号", "bigint", "0", false, "100,-5", "", "", ""},
      {"名前", "nvarchar", "40", false, "", "(N'あ''い')", "", ""},
      {"符号", "char", "6", true, "", "", "", ""},
      {"長文", "text", "0", true, "", "", "", ""},
      {"金額", "money", "19.4", false, "", "(0)", "", ""},
      {"率", "decimal", "10.2", true, "", "", "率の説明", "率の備考"},
      {"日時", "datetime", "0", true, "", "(getdate())", "", ""},
      {"印", "bit", "0", false, "", "", "", ""},
      {"生", "varbinary", "0", true, "", "", "", ""},
      {"実数", "float", "0", true, "", "", "", ""},
      {"識別", "uniqueidentifier", "0", false, "", "", "", ""},
      {"版", "timestamp", "0", false, "", "", "", ""},
  };
  ASSERT_EQ(table.columns.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].name);
    const TableColumn& column = table.columns[i];
    EXPECT_EQ(column.name, cases[i].name);
    EXPECT_EQ(column.type, cases[i].type);
    EXPECT_EQ(column.SizeText(), cases[i].size);
    EXPECT_EQ(column.nullable, cases[i].nullable);
    EXPECT_EQ(column.IdentityText(), cases[i].identity);
    EXPECT_EQ(column.default_text, cases[i].default_text);
    EXPECT_EQ(column.Description(), cases[i].description);
    EXPECT_EQ(column.Note(), cases[i].note);
  }
  EXPECT_EQ(table.columns[4].default_name, "DF_金額");
  EXPECT_FALSE(table.columns[4].default_is_bound);
  EXPECT_EQ(table.columns[1].collation, "Japanese_CI_AS");
  EXPECT_EQ(table.columns[4].collation, "");
}

TEST_F(TableCatalogTest, KeysIndexesChecksTriggersAndForeignKeysAreThere) {
  const TableDefinition orders = Read("販売管理", "受注");
  ASSERT_EQ(orders.indexes.size(), 2U);
  EXPECT_TRUE(orders.indexes[0].PrimaryKey());
  EXPECT_EQ(orders.indexes[0].name, "PK_受注");
  EXPECT_EQ(orders.indexes[0].Description(), "clustered, unique, primary key located on PRIMARY");
  EXPECT_EQ(orders.indexes[1].KeyText(), "受注日(-), 得意先コード");
  EXPECT_EQ(orders.indexes[1].Description(), "nonclustered located on PRIMARY");
  ASSERT_EQ(orders.foreign_keys.size(), 2U);
  EXPECT_EQ(orders.foreign_keys[1].name, "FK_受注_社員");
  EXPECT_EQ(orders.foreign_keys[1].columns, Texts{"社員番号"});
  EXPECT_EQ(orders.foreign_keys[1].parent_table, "社員");
  EXPECT_EQ(orders.foreign_keys[1].parent_owner, "dbo");
  EXPECT_FALSE(orders.foreign_keys[1].delete_cascade);

  const TableDefinition lines = Read("販売管理", "受注明細");
  ASSERT_EQ(lines.checks.size(), 1U);
  EXPECT_EQ(lines.checks[0].name, "CK_受注明細_数量");
  EXPECT_NE(lines.checks[0].text.find("数量"), std::string::npos);
  EXPECT_FALSE(lines.checks[0].disabled);
  ASSERT_EQ(lines.triggers.size(), 1U);
  EXPECT_EQ(lines.triggers[0].name, "TR_受注明細_更新");
  EXPECT_TRUE(lines.triggers[0].module.text.starts_with("create trigger TR_受注明細_更新"));
  ASSERT_EQ(lines.foreign_keys.size(), 2U);
  EXPECT_TRUE(lines.foreign_keys[0].delete_cascade);
  EXPECT_FALSE(lines.foreign_keys[1].delete_cascade);
}

// What sp_helpindex tells of a table is what the catalog's indexes tell.
TEST_F(TableCatalogTest, IndexesAreToldAsTheServerTellsThem) {
  for (const char* name : {"得意先", "商品", "受注", "受注明細"}) {
    std::vector<Texts> told;
    const auto rows = wire.Query(std::string("exec [販売管理].dbo.sp_helpindex '") + name + "'");
    while (rows->Next()) {
      told.push_back(
          {std::string(rows->Text(0)), std::string(rows->Text(1)), std::string(rows->Text(2))});
    }
    std::vector<Texts> read;
    for (const TableIndex& index : Read("販売管理", name).indexes) {
      read.push_back({index.name, index.Description(), index.KeyText()});
    }
    std::sort(told.begin(), told.end());
    std::sort(read.begin(), read.end());
    EXPECT_EQ(read, told) << name;
  }
}

TEST_F(TableCatalogTest, WhatIsSwitchedOffIsTold) {
  InDatabase("切替", {"create table p (a int not null primary key)",
                      "create table t (a int null constraint f references p (a) on update cascade, "
                      "constraint c check (a > 0))",
                      "alter table t nocheck constraint c", "alter table t nocheck constraint f"});
  const TableDefinition table = Read("切替", "t");
  ASSERT_EQ(table.checks.size(), 1U);
  EXPECT_TRUE(table.checks[0].disabled);
  ASSERT_EQ(table.foreign_keys.size(), 1U);
  EXPECT_TRUE(table.foreign_keys[0].disabled);
  EXPECT_TRUE(table.foreign_keys[0].update_cascade);
  EXPECT_FALSE(table.foreign_keys[0].delete_cascade);
}

TEST_F(TableCatalogTest, NamesMayHoldWhatEndsThemAndTheCurrentDatabaseStays) {
  InDatabase("a]b'c", {"create table [t]]1'2] ([x]]y'z] int not null constraint [p]]q] primary key "
                       "default (1))"});
  wire.Execute("use tempdb");
  const TableDefinition table = Read("a]b'c", "t]1'2");
  ASSERT_EQ(table.columns.size(), 1U);
  EXPECT_EQ(table.columns[0].name, "x]y'z");
  EXPECT_EQ(table.columns[0].default_text, "(1)");
  ASSERT_EQ(table.indexes.size(), 1U);
  EXPECT_EQ(table.indexes[0].name, "p]q");
  const auto current = wire.Query("select db_name()");
  ASSERT_TRUE(current->Next());
  EXPECT_EQ(current->Text(0), "tempdb");
}

TEST_F(TableCatalogTest, WhatIsNotThereIsAbsent) {
  EXPECT_FALSE(ReadTable(query, "販売管理", "no such table").has_value());
  EXPECT_FALSE(ReadTable(query, "販売管理", "受注一覧").has_value()) << "a view is no table";
  EXPECT_TRUE(ReadModule(query, "販売管理", "受注", "V").empty());
  EXPECT_THROW(ReadTables(query, "no such database"), ServerError);
}

TEST_F(TableCatalogTest, AllTablesAreReadInAsManyStatementsAsOne) {
  connection.statements = 0;
  Read("販売管理", "受注");
  const int for_one = connection.statements;
  connection.statements = 0;
  const std::vector<TableDefinition> tables = ReadTables(query, "販売管理");
  EXPECT_EQ(connection.statements, for_one);
  ASSERT_EQ(tables.size(), 5U);
  for (const TableDefinition& table : tables) {
    const TableDefinition one = Read("販売管理", table.name);
    EXPECT_EQ(table.columns.size(), one.columns.size()) << table.name;
    EXPECT_EQ(table.indexes.size(), one.indexes.size()) << table.name;
    EXPECT_EQ(table.checks.size(), one.checks.size()) << table.name;
    EXPECT_EQ(table.triggers.size(), one.triggers.size()) << table.name;
    EXPECT_EQ(table.foreign_keys.size(), one.foreign_keys.size()) << table.name;
    EXPECT_EQ(table.Description(), one.Description()) << table.name;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      EXPECT_EQ(table.columns[i].default_text, one.columns[i].default_text);
      EXPECT_EQ(table.columns[i].IdentityText(), one.columns[i].IdentityText());
      EXPECT_EQ(table.columns[i].Description(), one.columns[i].Description());
    }
  }
}

// Every row of a long text is cut at another character; nothing may be lost or added there.
TEST_F(TableCatalogTest, ALongTextJoinsWithoutASeam) {
  std::string text = "create procedure 長い as\r\nselect 1 -- ";
  for (int i = 0; i < 3'000; ++i) text += "あ " + std::to_string(i);
  text += "\r\nselect 2   ";
  InDatabase("長文", {text});
  const std::vector<ModuleText> modules = ReadModule(query, "長文", "長い", "P");
  ASSERT_EQ(modules.size(), 1U);
  EXPECT_EQ(modules[0].text, text);
  EXPECT_FALSE(modules[0].encrypted);
}

}  // namespace
}  // namespace dbkeeper
