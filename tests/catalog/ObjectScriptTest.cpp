#include "catalog/ObjectScript.h"

#include <gtest/gtest.h>

#include <string>

#include "app/support/Errors.h"

namespace dbkeeper {
namespace {

TableColumn Column(const std::string& name, const std::string& type, int length, int precision,
                   int scale, bool nullable) {
  return {.name = name,
          .type = type,
          .base_type = type,
          .length = length,
          .precision = precision,
          .scale = scale,
          .nullable = nullable};
}

TEST(TableScript, HasColumnsKeysAndConstraintsInOneStatement) {
  TableDefinition table{
      .owner = "dbo", .name = "受注 a]b", .file_group = "PRIMARY", .text_file_group = "TEXTS"};
  table.columns = {Column("番号", "int", 4, 10, 0, false),
                   Column("名前", "nvarchar", 40, 20, 0, true),
                   Column("符号", "char", 6, 6, 0, false),
                   Column("率", "decimal", 9, 10, 2, true),
                   Column("金額", "money", 8, 19, 4, false),
                   Column("生", "varbinary", 30, 30, 0, true),
                   Column("識別", "uniqueidentifier", 16, 0, 0, false),
                   Column("型", "my type", 12, 12, 0, true),
                   Column("合計", "int", 4, 10, 0, true)};
  table.columns[0].identity = TableIdentity{"100", "-5"};
  table.columns[1].collation = "Japanese_CI_AS";
  table.columns[2].collation = "Japanese_CI_AS";
  table.columns[4].default_name = "DF_金額";
  table.columns[4].default_text = "(0)";
  table.columns[6].row_guid = true;
  table.columns[7].base_type = "varchar";
  table.columns[7].collation = "Japanese_CI_AS";
  table.columns[8].formula = "([番号] * 2)";
  constexpr int kClusteredPrimaryKey = 2 + 16 + 2048;
  constexpr int kUniqueKey = 2 + 4096;
  table.indexes = {{.id = 1,
                    .name = "PK_受注",
                    .status = kClusteredPrimaryKey,
                    .fill_factor = 90,
                    .file_group = "PRIMARY",
                    .keys = {{"番号", false}, {"名前", true}}},
                   {.id = 2,
                    .name = "UQ",
                    .status = kUniqueKey,
                    .file_group = "PRIMARY",
                    .keys = {{"符号", false}}}};
  table.foreign_keys = {{.name = "FK",
                         .columns = {"番号", "名前"},
                         .parent_owner = "dbo",
                         .parent_table = "親",
                         .parent_columns = {"a", "b"},
                         .delete_cascade = true,
                         .update_cascade = true}};
  table.checks = {{.name = "CK", .text = "([率] > 0)"}};
  EXPECT_EQ(TableScript(table),
            "CREATE TABLE [dbo].[受注 a]]b] (\r\n"
            "\t[番号] [int] IDENTITY (100, -5) NOT NULL ,\r\n"
            "\t[名前] [nvarchar] (20) COLLATE Japanese_CI_AS NULL ,\r\n"
            "\t[符号] [char] (6) COLLATE Japanese_CI_AS NOT NULL ,\r\n"
            "\t[率] [decimal](10, 2) NULL ,\r\n"
            "\t[金額] [money] NOT NULL CONSTRAINT [DF_金額] DEFAULT (0),\r\n"
            "\t[生] [varbinary] (30) NULL ,\r\n"
            "\t[識別] [uniqueidentifier] ROWGUIDCOL  NOT NULL ,\r\n"
            "\t[型] [my type] NULL ,\r\n"
            "\t[合計] AS ([番号] * 2) ,\r\n"
            "\tCONSTRAINT [PK_受注] PRIMARY KEY  CLUSTERED \r\n"
            "\t(\r\n"
            "\t\t[番号],\r\n"
            "\t\t[名前] DESC \r\n"
            "\t) WITH  FILLFACTOR = 90  ON [PRIMARY] ,\r\n"
            "\tCONSTRAINT [UQ] UNIQUE  NONCLUSTERED \r\n"
            "\t(\r\n"
            "\t\t[符号]\r\n"
            "\t)  ON [PRIMARY] ,\r\n"
            "\tCONSTRAINT [FK] FOREIGN KEY \r\n"
            "\t(\r\n"
            "\t\t[番号],\r\n"
            "\t\t[名前]\r\n"
            "\t) REFERENCES [dbo].[親] (\r\n"
            "\t\t[a],\r\n"
            "\t\t[b]\r\n"
            "\t) ON DELETE CASCADE  ON UPDATE CASCADE ,\r\n"
            "\tCONSTRAINT [CK] CHECK ([率] > 0)\r\n"
            ") ON [PRIMARY] TEXTIMAGE_ON [TEXTS]\r\n"
            "GO\r\n");
}

TEST(TableScript, WhatIsMadeByStatementsOfItsOwnComesBehind) {
  TableDefinition table{.owner = "dbo", .name = "t", .file_group = "PRIMARY"};
  table.columns = {Column("a", "int", 4, 10, 0, true), Column("b", "bit", 1, 1, 0, false)};
  table.columns[0].default_name = "zero";
  table.columns[0].default_text = "create default zero as 0";
  table.columns[0].default_is_bound = true;
  table.columns[0].rule_name = "positive";
  table.columns[1].properties = {{"MS_Description", "it's 印"}};
  table.properties = {{"Note", "n"}};
  constexpr int kEverything = 1 + 2 + 16 + 256 + 16777216;
  table.indexes = {{.id = 1,
                    .name = "ix",
                    .status = kEverything,
                    .fill_factor = 80,
                    .file_group = "PRIMARY",
                    .keys = {{"a", true}, {"b", false}}},
                   {.id = 2, .name = "iy", .file_group = "", .keys = {{"b", false}}}};
  table.checks = {{.name = "ck", .text = "(a > 0)", .disabled = true, .not_for_replication = true}};
  table.triggers = {{.name = "tr",
                     .module = {.text = "create trigger tr on t for insert as\nreturn",
                                .quoted_identifier = false},
                     .disabled = true}};
  EXPECT_EQ(TableScript(table),
            "CREATE TABLE [dbo].[t] (\r\n"
            "\t[a] [int] NULL ,\r\n"
            "\t[b] [bit] NOT NULL ,\r\n"
            "\tCONSTRAINT [ck] CHECK NOT FOR REPLICATION (a > 0)\r\n"
            ") ON [PRIMARY]\r\nGO\r\n"
            " CREATE  UNIQUE  CLUSTERED  INDEX [ix] ON [dbo].[t]([a] DESC , [b]) WITH  PAD_INDEX "
            " ,FILLFACTOR = 80 ,IGNORE_DUP_KEY  ,STATISTICS_NORECOMPUTE  ON [PRIMARY]\r\nGO\r\n"
            " CREATE  INDEX [iy] ON [dbo].[t]([b])\r\nGO\r\n"
            "EXEC sp_bindefault N'[dbo].[zero]', N'[t].[a]'\r\nGO\r\n"
            "EXEC sp_bindrule N'[dbo].[positive]', N'[t].[a]'\r\nGO\r\n"
            "ALTER TABLE [dbo].[t] NOCHECK CONSTRAINT [ck]\r\nGO\r\n"
            "exec sp_addextendedproperty N'Note', N'n', N'user', N'dbo', N'table', N't'\r\nGO\r\n"
            "exec sp_addextendedproperty N'MS_Description', N'it''s 印', N'user', N'dbo', "
            "N'table', N't', N'column', N'b'\r\nGO\r\n"
            "SET QUOTED_IDENTIFIER OFF \r\nGO\r\nSET ANSI_NULLS ON \r\nGO\r\n"
            "create trigger tr on t for insert as\r\nreturn\r\nGO\r\n"
            "SET QUOTED_IDENTIFIER ON \r\nGO\r\nSET ANSI_NULLS ON \r\nGO\r\n"
            "ALTER TABLE [dbo].[t] DISABLE TRIGGER [tr]\r\nGO\r\n");
}

TEST(ModuleScript, AnEncryptedTextIsToldByItsName) {
  try {
    ModuleScript("秘密", {.encrypted = true});
    FAIL() << "scripted";
  } catch (const SessionError& error) {
    EXPECT_NE(std::string(error.what()).find("秘密"), std::string::npos);
  }
}

}  // namespace
}  // namespace dbkeeper
