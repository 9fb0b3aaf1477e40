// An instance in a folder of its own and clients of it that write down what they are told.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/instance/open_instance.h"

namespace dbkeeper::server {

// Writes rows as "a|b" lines, errors as "error N", other messages as "message N", changes of rows
// as "(N)"; null is "NULL". Dates are written as the engine keeps them.
class RecordingSink : public ResultSink {
 public:
  void OnColumns(const std::vector<ResultColumn>& columns) override;
  bool OnRow(const RowView& row) override;
  void OnMissingRow() override;
  void OnStatementEnd(const StatementEnd& end) override;
  void OnMessage(const ServerMessage& message) override;
  void OnDatabaseChanged(const std::string& from, const std::string& to) override;
  void OnReturnStatus(int status) override;

  std::string text;
  std::vector<ServerMessage> messages;
  std::vector<ResultColumn> columns;
  std::int64_t rows = 0;
  std::int64_t stop_after = -1;  // rows after which the client wants no more

 private:
  void Line(const std::string& line);
};

class Client {
 public:
  explicit Client(std::unique_ptr<Session> session) : session_(std::move(session)) {}
  // What the batch gave, in the recorder's words.
  std::string Run(std::string_view batch);
  // The text of the first message of the last batch.
  std::string FirstMessage() const;
  Session& session() { return *session_; }
  const RecordingSink& last() const { return last_; }

 private:
  std::unique_ptr<Session> session_;
  RecordingSink last_;
};

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// One sample instance for all tests of the program; tests that change it keep to databases of
// their own.
class EngineTest : public testing::Test {
 public:
  static void SetUpTestSuite();
  static void TearDownTestSuite();

 protected:
  static Instance& instance() { return *instance_; }
  static Client Operator();
  static Client LogIn(const std::string& user, const std::string& password,
                      const std::string& database = {});
  // The number of the refusal; 0 when the login is let in.
  static int RefusalOf(const std::string& user, const std::string& password,
                       const std::string& database = {});
  // Copies the sample instance to another folder, as it would be after a crash.
  static void CopyTo(const std::filesystem::path& folder);

  static constexpr const char* kOperator = "HOST\\operator";
  static constexpr const char* kSecret = "one-time secret";

 private:
  static std::unique_ptr<TemporaryFolder> folder_;
  static std::unique_ptr<Instance> instance_;
};

// Options for an instance in `folder` with a short lock timeout.
InstanceOptions OptionsFor(const std::filesystem::path& folder);

}  // namespace dbkeeper::server
