#include "server/sql/parser.h"

#include <gtest/gtest.h>

#include "server/sql/lexer.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

template <typename Node>
Node Parse(std::string_view text) {
  std::vector<Statement> statements = ParseBatch(text);
  EXPECT_EQ(statements.size(), 1U) << text;
  return std::move(std::get<Node>(statements.at(0).node));
}

std::string LiteralText(const ExpressionPtr& expression) {
  return expression->kind == ExpressionKind::kLiteral ? expression->text : "?";
}

TEST(Lexer, TokensKeepTheirContentPlaceAndLine) {
  const std::vector<Token> tokens = Tokenize(
      "[a]]b] \"c\"\"d\" N'x''y'\n0xABC 1.5e-3 $2.5 @p @@x #t a.b 日本", QuotedIdentifiers::kOn);
  const std::string_view expected[] = {"a]b", "c\"d", "x'y", "\x0A\xBC", "1.5e-3", "2.5",  "@p",
                                       "@@x", "#t",   "a",   ".",        "b",      "日本", ""};
  ASSERT_EQ(tokens.size(), std::size(expected));
  for (std::size_t i = 0; i < tokens.size(); ++i) EXPECT_EQ(tokens[i].text, expected[i]);
  EXPECT_EQ(tokens[2].line, 1);
  EXPECT_EQ(tokens[3].line, 2);
  EXPECT_EQ(Tokenize("\"x\"", QuotedIdentifiers::kOff)[0].kind, TokenKind::kString);
}

TEST(Parser, StatementsFollowEachOtherWithAndWithoutSemicolons) {
  EXPECT_EQ(ParseBatch("use [a b] select 1; select 2 print 'x' exec p 1, 2 select 3").size(), 6U);
  EXPECT_EQ(ParseBatch(" -- nothing\n /* at all */ ;").size(), 0U);
  EXPECT_EQ(ParseBatch("use [db]\r\nbegin \r\n grant select on [t] to [u]\r\n deny insert on [t] "
                       "to [u]\r\nend;")
                .size(),
            3U);
}

TEST(Parser, ProcedureCallsTakeNamesPositionsAndBareWords) {
  const auto call = Parse<ExecuteStatement>(
      "exec [db].dbo.sp_x  @a = [b c], @d = 'e', @f = -1, @g = null output");
  EXPECT_EQ(call.procedure.Text(), "db.dbo.sp_x");
  ASSERT_EQ(call.arguments.size(), 4U);
  EXPECT_EQ(call.arguments[0].name, "@a");
  EXPECT_EQ(LiteralText(call.arguments[0].value), "b c");
  EXPECT_EQ(LiteralText(call.arguments[1].value), "e");
  EXPECT_TRUE(call.arguments[3].output);

  const auto bare = Parse<ExecuteStatement>("sp_helpdb [a]");
  EXPECT_EQ(bare.procedure.name, "sp_helpdb");
  EXPECT_EQ(LiteralText(bare.arguments.at(0).value), "a");
  EXPECT_THROW(ParseBatch("select 1\nsp_helpdb 2, 3"), SqlError);
}

TEST(Parser, TablesCarryTheirColumnsAndConstraints) {
  const auto table = Parse<CreateTableStatement>(
      "create table [t](\r\n    [id                              ] int              not null  "
      "identity(10,5)\r\n,   [c] decimal(10,2) null      default (0)\r\n, constraint pk primary "
      "key clustered (c desc, id), d sysname not null default 'x' check (d > 'a'), e char(3) "
      "references other (k) on delete cascade)");
  ASSERT_EQ(table.columns.size(), 4U);
  EXPECT_EQ(table.columns[0].identity->seed, "10");
  EXPECT_FALSE(table.columns[0].type.nullable);
  EXPECT_EQ(table.columns[1].type.scale, 2);
  EXPECT_EQ(table.columns[1].constraints.at(0).text, "(0)");
  EXPECT_EQ(table.columns[2].type_name, "sysname");
  EXPECT_EQ(table.columns[2].constraints.at(0).text, "('x')");
  EXPECT_EQ(table.columns[2].constraints.at(1).text, "(d > 'a')");
  const Constraint& reference = table.columns[3].constraints.at(0);
  EXPECT_TRUE(reference.delete_cascade);
  EXPECT_EQ(reference.columns.at(0).name, "e");
  EXPECT_TRUE(table.constraints.at(0).columns.at(0).descending);
  EXPECT_EQ(table.constraints.at(0).clustered, true);
}

TEST(Parser, TablesAreAlteredInEveryWayThatTheDesignerAsksFor) {
  const auto added = Parse<AlterTableStatement>(
      "alter table [T]  add c varchar\r\n(20\r\n)\r\n null \r\n default ('x') \r\n identity(1,1)");
  const auto& columns = std::get<AddColumns>(added.action).columns;
  EXPECT_EQ(columns.at(0).type.length, 20);
  EXPECT_EQ(columns.at(0).constraints.at(0).default_column, "c");
  const auto changed = Parse<AlterTableStatement>("alter table [t] alter column c int not null");
  EXPECT_FALSE(std::get<AlterColumn>(changed.action).column.type.nullable);
  const auto dropped = Parse<AlterTableStatement>("alter table t drop constraint a, column b");
  EXPECT_EQ(std::get<DropParts>(dropped.action).columns, std::vector<std::string>{"b"});
  const auto check = Parse<AlterTableStatement>(
      "alter table [t]\r\n  add constraint ck\r\n check(\r\nqty > 0\r\n )");
  EXPECT_EQ(std::get<AddColumns>(check.action).constraints.at(0).text, "(qty > 0)");
  const auto key = Parse<AlterTableStatement>(
      "alter table t  add constraint pk      primary key(a  , b  desc )");
  EXPECT_EQ(std::get<AddColumns>(key.action).constraints.at(0).columns.size(), 2U);
  EXPECT_TRUE(Parse<CreateIndexStatement>("create clustered unique index i on [t](a)").unique);
  EXPECT_EQ(Parse<DropIndexStatement>("drop index [t].i").items.at(0).table.name, "t");
}

TEST(Parser, DatabasesAreCreatedWithTheirFilesAndOptions) {
  const auto created = Parse<CreateDatabaseStatement>(
      "create database [n]\r\n    on(name       = [n_dat],\r\n       filename   = 'C:\\d.mdf',\r\n"
      "       size       = 10,\r\n       maxsize    = 20,\r\n       filegrowth = 10%)\r\nlog "
      "on(name       = [n_log],\r\n       filename   = 'C:\\l.ldf',\r\n       size       = 5MB)");
  EXPECT_EQ(created.data_files.at(0).growth, "10%");
  EXPECT_EQ(created.data_files.at(0).maximum_size, "20");
  EXPECT_EQ(created.log_files.at(0).size, "5MB");
  const auto altered =
      Parse<AlterDatabaseStatement>("alter database [n] set ONLINE,MULTI_USER,READ_WRITE");
  EXPECT_EQ(altered.options, (std::vector<std::string>{"ONLINE", "MULTI_USER", "READ_WRITE"}));
  const auto recovery = Parse<AlterDatabaseStatement>(
      "alter database n set recovery simple, auto_shrink on with rollback immediate");
  EXPECT_EQ(recovery.options, (std::vector<std::string>{"RECOVERY SIMPLE", "AUTO_SHRINK ON"}));
}

TEST(Parser, BackupsAndRestoresNameTheirDevicesAndOptions) {
  const auto backup = Parse<BackupStatement>(
      "backup database [n]\r\n    to DISK = 'C:\\a.bak'\r\n  with description      = "
      "'PC:nの手動Backup',\r\n       format");
  EXPECT_EQ(backup.devices.at(0).kind, "DISK");
  EXPECT_EQ(backup.devices.at(0).name, "C:\\a.bak");
  EXPECT_EQ(backup.options.at(0).value, "PC:nの手動Backup");
  EXPECT_EQ(backup.options.at(1).name, "FORMAT");
  const auto device = Parse<BackupStatement>(
      "backup database [n] to BKM_DAY_n with  format, name = 'BK_DAY_n' , description = 'x'");
  EXPECT_EQ(device.devices.at(0).name, "BKM_DAY_n");
  const auto restore = Parse<RestoreStatement>(
      "restore database [n]\r\n   from disk = 'a'\r\n   with move 'd' to '[C:\\d.mdf]',\r\n        "
      "move 'l' to 'C:\\l.ldf'");
  EXPECT_EQ(restore.options.at(0).target, "[C:\\d.mdf]");
  EXPECT_EQ(Parse<RestoreStatement>("restore headeronly from DISK = 'a'").kind,
            RestoreKind::kHeaderOnly);
  EXPECT_EQ(Parse<RestoreStatement>("restore verifyonly  from disk = 'a'").kind,
            RestoreKind::kVerifyOnly);
}

TEST(Parser, AdministrationIsReadWhole) {
  EXPECT_EQ(Parse<KillStatement>("kill [53]").process, "53");
  EXPECT_EQ(Parse<DbccStatement>("dbcc shrinkdatabase([n m], 10)").arguments,
            (std::vector<std::string>{"n m", "10"}));
  EXPECT_EQ(Parse<SetStatement>("set transaction isolation level read committed").value,
            "READ COMMITTED");
  EXPECT_EQ(Parse<SetStatement>("set ansi_nulls, quoted_identifier on").options.size(), 2U);
  EXPECT_EQ(Parse<SetStatement>("set identity_insert dbo.t off").table.name, "t");
  EXPECT_EQ(Parse<SetStatement>("set lock_timeout -1").value, "-1");
  EXPECT_EQ(Parse<SetStatement>("set rowcount 10").value, "10");
  EXPECT_EQ(Parse<DropStatement>("drop Table [d].dbo.[a b]").names.at(0).name, "a b");
  Parse<ShutdownStatement>("shutdown with nowait");
  EXPECT_EQ(Parse<TransactionStatement>("begin tran t1").name, "t1");
  EXPECT_EQ(Parse<RaiseErrorStatement>("raiserror('%s %d', 16, 1, 'a', 5)").arguments.size(), 2U);
  const auto revoke = Parse<PermissionStatement>("revoke execute on [p] to [u]");
  EXPECT_EQ(revoke.verb, PermissionVerb::kRevoke);
  EXPECT_EQ(revoke.permissions.at(0), "EXECUTE");
  const auto bulk = Parse<InsertBulkStatement>(
      "insert bulk dbo.t ([a] int, [b] nvarchar(20) collate Japanese_CI_AS) with (tablock, "
      "check_constraints)");
  EXPECT_EQ(bulk.columns.at(1).type.length, 20);
}

TEST(Parser, ModulesAreKeptAsTextWithWhatTheirHeadSays) {
  const std::string_view text =
      "create trigger [tr] on t after insert, delete as\n if @@rowcount = 0 return\n select 'x'";
  const auto trigger = Parse<CreateModuleStatement>(text);
  EXPECT_EQ(trigger.text, text);
  EXPECT_EQ(trigger.table.name, "t");
  EXPECT_EQ(trigger.trigger_events, (std::vector<std::string>{"insert", "delete"}));
  const auto procedure =
      Parse<CreateModuleStatement>("alter proc p @a int = 5 as declare @b int set @b = @a");
  EXPECT_TRUE(procedure.alter);
  EXPECT_EQ(Parse<CreateViewStatement>("create view v (a) as select 1 with check option").columns,
            std::vector<std::string>{"a"});
}

TEST(Parser, ParameterListsDeclareTheirTypes) {
  const Parameters parameters =
      ParseParameterDeclarations("@P1 int, @P2 nvarchar(20) output,@P3 decimal(10,2)");
  ASSERT_EQ(parameters.size(), 3U);
  EXPECT_TRUE(parameters[1].is_output);
  EXPECT_EQ(DeclarationOf(parameters[2].type), "decimal(10,2)");
  EXPECT_TRUE(ParseParameterDeclarations("").empty());
}

TEST(Parser, DeepNestingIsRefusedBeforeTheStackEnds) {
  const auto repeated = [](std::string_view piece, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += piece;
    return text;
  };
  const std::string cases[] = {
      "select " + repeated("(", 50000) + "1" + repeated(")", 50000),
      "select " + repeated("- ", 50000) + "1",
      "select 1" + repeated(" + 1", 50000),
      "select 1 where " + repeated("not ", 50000) + "1 = 1",
      "select 1 where 1 = 1" + repeated(" or 1 = 1", 50000),
      "select * from " + repeated("(select * from ", 50000) + "t",
      "select 1" + repeated(" union select 1", 50000),
      "select " + repeated("case when 1 = 1 then ", 50000) + "1",
  };
  for (const std::string& text : cases) {
    try {
      ParseBatch(text);
      ADD_FAILURE() << text.substr(0, 60);
    } catch (const SqlError& error) {
      EXPECT_EQ(error.message().number, 191) << text.substr(0, 60);
    }
  }
}

}  // namespace
}  // namespace dbkeeper::server
