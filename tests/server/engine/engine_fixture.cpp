#include "tests/server/engine/engine_fixture.h"

#include <unistd.h>

#include <cstdlib>

#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

std::string CellText(const RowView& row, std::size_t column, const SqlType& type) {
  if (row.IsNull(column)) return "NULL";
  switch (FamilyOf(type.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kDateTime:
      return std::to_string(row.Integer(column));
    case TypeFamily::kReal: {
      std::string text = std::to_string(row.Real(column));
      text.erase(text.find_last_not_of('0') + 1);
      return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
    }
    case TypeFamily::kBinary:
    case TypeFamily::kGuid:
      return std::to_string(row.Bytes(column).size()) + " bytes";
    default:
      return std::string(row.Bytes(column));
  }
}

}  // namespace

void RecordingSink::Line(const std::string& line) { text += (text.empty() ? "" : "\n") + line; }

void RecordingSink::OnColumns(const std::vector<ResultColumn>& told) { columns = told; }

bool RecordingSink::OnRow(const RowView& row) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    line += (i == 0 ? "" : "|") + CellText(row, i, columns[i].type);
  }
  Line(line);
  ++rows;
  return rows != stop_after;
}

void RecordingSink::OnMissingRow() { Line("missing"); }

void RecordingSink::OnStatementEnd(const StatementEnd& end) {
  if (!end.is_select && end.rows >= 0) Line("(" + std::to_string(end.rows) + ")");
}

void RecordingSink::OnMessage(const ServerMessage& message) {
  messages.push_back(message);
  if (message.number == 0) {
    Line("says " + message.text);
  } else {
    Line((message.IsError() ? "error " : "message ") + std::to_string(message.number));
  }
}

void RecordingSink::OnDatabaseChanged(const std::string&, const std::string& to) {
  Line("now " + to);
}

void RecordingSink::OnReturnStatus(int status) { Line("status " + std::to_string(status)); }

std::string Client::Run(std::string_view batch) {
  last_ = RecordingSink();
  session_->RunBatch(batch, last_);
  return last_.text;
}

std::string Client::FirstMessage() const {
  return last_.messages.empty() ? std::string() : last_.messages.front().text;
}

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "dbkeeper-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

InstanceOptions OptionsFor(const std::filesystem::path& folder) {
  return {.folder = folder,
          .server_name = "LOCALTEST",
          .machine_name = "LOCALTEST",
          .lock_timeout = std::chrono::milliseconds(200)};
}

std::unique_ptr<TemporaryFolder> EngineTest::folder_;
std::unique_ptr<Instance> EngineTest::instance_;

void EngineTest::SetUpTestSuite() {
  folder_ = std::make_unique<TemporaryFolder>();
  instance_ = OpenInstance(OptionsFor(folder_->path()));
  instance_->SetOperator(kOperator, kSecret);
}

void EngineTest::TearDownTestSuite() {
  instance_.reset();
  folder_.reset();
}

Client EngineTest::Operator() { return LogIn(kOperator, kSecret); }

Client EngineTest::LogIn(const std::string& user, const std::string& password,
                         const std::string& database) {
  LoginRequest request;
  request.user = user;
  request.password = password;
  request.database = database;
  request.client.host_name = "CLIENT";
  request.client.program_name = "tests";
  return Client(instance_->Login(request));
}

int EngineTest::RefusalOf(const std::string& user, const std::string& password,
                          const std::string& database) {
  try {
    LogIn(user, password, database);
    return 0;
  } catch (const LoginRefused& refused) {
    return refused.message.number;
  }
}

void EngineTest::CopyTo(const std::filesystem::path& folder) {
  std::filesystem::copy(
      folder_->path(), folder,
      std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
}

}  // namespace dbkeeper::server
