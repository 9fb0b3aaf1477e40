#include "platform/host/PosixDisk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>
#include <string>
#include <system_error>

#include "app/support/Errors.h"
#include "app/support/FileReplacement.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::host {
namespace {

namespace fs = std::filesystem;
using testing::FileBytes;
using testing::PutFile;
using testing::TemporaryFolder;

TEST(PosixDisk, FreshFilesHaveNamesOfTheirOwnAndThePermissionsAskedForLessTheMask) {
  const TemporaryFolder folder;
  PosixDisk disk;
  const mode_t mask = umask(022);
  std::set<fs::path> names;
  for (int i = 0; i < 100; ++i) {
    const auto file = disk.CreateFresh(folder.Path(), static_cast<fs::perms>(0666));
    file->Write("x");
    names.insert(file->Path());
  }
  umask(mask);
  EXPECT_EQ(names.size(), 100U);
  for (const fs::path& name : names) {
    EXPECT_EQ(name.parent_path(), folder.Path());
    EXPECT_EQ(fs::status(name).permissions(), static_cast<fs::perms>(0644));
  }
}

TEST(PosixDisk, OverwritingEmptiesTheFileAndFollowsALink) {
  const TemporaryFolder folder;
  PutFile(folder / "real", "long old text");
  fs::create_symlink("real", folder / "link");
  const auto file = PosixDisk().Overwrite(folder / "link");
  file->Write("new");
  file->Sync();
  EXPECT_EQ(FileBytes(folder / "real"), "new");
}

TEST(PosixDisk, AFullDiskIsToldByItsCode) {
  const auto file = PosixDisk().Overwrite("/dev/full");
  try {
    file->Write("x");
    FAIL() << "written";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_space_on_device);
  }
}

TEST(PosixDisk, AFolderThatCannotBeWrittenIsToldInWords) {
  PosixDisk disk;
  try {
    const FileReplacement file(disk, "/proc/out.txt");
    FAIL() << "begun";
  } catch (const FileError& error) {
    EXPECT_TRUE(
        std::string(error.what()).starts_with("ファイルに書き込めません: /proc/out.txt\r\n"))
        << error.what();
  }
}

}  // namespace
}  // namespace dbkeeper::host
