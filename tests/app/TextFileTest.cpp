#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "app/support/AnsiTextFile.h"
#include "app/support/Errors.h"
#include "app/support/FileReplacement.h"
#include "app/support/TextLines.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

namespace fs = std::filesystem;
using testing::FakeHost;
using testing::FileBytes;
using testing::PutFile;
using testing::TemporaryFolder;

class AnsiTextFileTest : public ::testing::TestWithParam<Writing> {
 protected:
  // The words of the failure of an action; empty without one.
  template <class Action>
  static std::string FailureOf(const Action& action) {
    try {
      action();
    } catch (const FileError& error) {
      return error.what();
    }
    return "";
  }
  std::size_t FilesInFolder() const {
    const fs::directory_iterator all(folder.Path());
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  TemporaryFolder folder;
  FakeHost fake;
  fs::path path = folder / "out.txt";
};

INSTANTIATE_TEST_SUITE_P(BothWays, AnsiTextFileTest,
                         ::testing::Values(Writing::kWhole, Writing::kAsItGoes));

TEST_P(AnsiTextFileTest, WritesLinesInTheCodePageAndBringsThemToTheMedium) {
  PutFile(path, "what stood there before, and longer than the new text");
  AnsiTextFile file(fake.host, path, GetParam());
  file.Line("日本");
  file.Add("a");
  file.Add(",b");
  file.EndLine();
  file.Line("");
  file.Finish();
  EXPECT_EQ(FileBytes(path), "\x93\xfa\x96\x7b\r\na,b\r\n\r\n");
  EXPECT_EQ(fake.disk.synced, 1);
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_P(AnsiTextFileTest, ManyLinesGoOutPieceByPiece) {
  std::string expected;
  AnsiTextFile file(fake.host, path, GetParam());
  for (int i = 0; i < 30'000; ++i) {
    file.Line("line " + std::to_string(i));
    expected += "line " + std::to_string(i) + "\r\n";
  }
  file.Finish();
  EXPECT_EQ(FileBytes(path), expected);
}

TEST_P(AnsiTextFileTest, WhatIsNotFinishedLeavesTheOldFileOrTheLinesSoFar) {
  PutFile(path, "old");
  {
    AnsiTextFile file(fake.host, path, GetParam());
    file.Line("new");
    const std::string failure = FailureOf([&] { file.Line("a😀b"); });
    EXPECT_NE(failure.find("😀"), std::string::npos) << failure;
  }
  EXPECT_EQ(FileBytes(path), GetParam() == Writing::kWhole ? "old" : "new\r\n");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_P(AnsiTextFileTest, AFullDiskIsTheReasonThatIsTold) {
  PutFile(path, "old");
  fake.disk.room = 6;
  {
    AnsiTextFile file(fake.host, path, GetParam());
    file.Line("1234567890");
    EXPECT_EQ(FailureOf([&] { file.Finish(); }), "ファイルに書き込めません: " + path.string() +
                                                     "\r\nディスクの空き容量がありません。");
  }
  EXPECT_EQ(FileBytes(path), GetParam() == Writing::kWhole ? "old" : "123456");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_P(AnsiTextFileTest, AFolderThatIsNotThereIsTheReasonThatIsTold) {
  EXPECT_EQ(FailureOf([&] { AnsiTextFile(fake.host, folder / "none/out.txt", GetParam()); }),
            "ファイルに書き込めません: " + (folder / "none/out.txt").string() +
                "\r\nフォルダーがありません。");
}

TEST(FileReplacement, KeepsALinkAndThePermissionsOfWhatItLeadsTo) {
  const TemporaryFolder folder;
  FakeHost fake;
  fs::create_directory(folder / "far");
  const auto secret = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  PutFile(folder / "far/real.txt", "old");
  fs::permissions(folder / "far/real.txt", secret);
  fs::create_symlink("far/real.txt", folder / "first");
  fs::create_symlink(folder / "first", folder / "second");
  FileReplacement file(fake.disk, folder / "second");
  file.Write("new");
  file.Commit();
  EXPECT_TRUE(fs::is_symlink(folder / "first"));
  EXPECT_TRUE(fs::is_symlink(folder / "second"));
  EXPECT_EQ(FileBytes(folder / "far/real.txt"), "new");
  EXPECT_EQ(fs::status(folder / "far/real.txt").permissions(), secret);
}

TEST(FileReplacement, ALinkToNothingMakesWhatItNames) {
  const TemporaryFolder folder;
  FakeHost fake;
  fs::create_symlink("later.txt", folder / "link");
  FileReplacement file(fake.disk, folder / "link");
  file.Write("new");
  file.Commit();
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(FileBytes(folder / "later.txt"), "new");
}

TEST(FileReplacement, NeighboursAreNeitherUsedNorFollowed) {
  const TemporaryFolder folder;
  FakeHost fake;
  PutFile(folder / "out.txt.new", "a neighbour");
  PutFile(folder / "out.txt", "old");
  FileReplacement file(fake.disk, folder / "out.txt");
  file.Write("first");
  file.Restart();
  file.Write("second");
  EXPECT_EQ(FileBytes(folder / "out.txt"), "old");
  file.Commit();
  EXPECT_EQ(FileBytes(folder / "out.txt"), "second");
  EXPECT_EQ(FileBytes(folder / "out.txt.new"), "a neighbour");
}

}  // namespace
}  // namespace dbkeeper
