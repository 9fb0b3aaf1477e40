#include "platform/odbc/OdbcConnection.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <utility>

#include "app/support/Messages.h"
#include "platform/odbc/ConnectionString.h"
#include "platform/odbc/Driver.h"
#include "platform/odbc/Pages.h"
#include "platform/odbc/Reader.h"

namespace dbkeeper {

using odbc::Statement;
using odbc::Step;

namespace {

constexpr const char* kRegisteredDriver = "FreeTDS";

constexpr std::array kDriverLibraries = {
    "/usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so",
    "/usr/lib/aarch64-linux-gnu/odbc/libtdsodbc.so",
    "/usr/lib64/libtdsodbc.so.0",
    "/usr/lib/libtdsodbc.so.0",
    "/usr/lib/odbc/libtdsodbc.so",
    "/usr/local/lib/libtdsodbc.so",
};

// Runs a batch up to its first rows; kEnd when it gives none. When a statement fails, the rest of
// the batch still runs.
Step RunToRows(Statement& statement, const std::string& sql) {
  try {
    Step step = statement.Execute(sql);
    while (step == Step::kCount) step = statement.NextResult();
    return step;
  } catch (const ServerError&) {
    odbc::RunOut(statement);
    throw;
  }
}

}  // namespace

OdbcConnection::OdbcConnection(OdbcOptions options, LocalEndpoint& local)
    : options_(std::move(options)),
      local_(local),
      link_(std::make_shared<odbc::Link>(options_.log)) {}

OdbcConnection::~OdbcConnection() { link_->Disconnect(); }

std::string OdbcConnection::DriverName() const {
  if (!options_.driver.empty()) return options_.driver;
  const std::vector<std::string> registered = link_->Drivers();
  if (std::find(registered.begin(), registered.end(), kRegisteredDriver) != registered.end()) {
    return kRegisteredDriver;
  }
  for (const char* library : kDriverLibraries) {
    std::error_code ignored;
    if (std::filesystem::exists(library, ignored)) return library;
  }
  throw SessionError(std::string(messages::kNoDriver));
}

std::string OdbcConnection::Translate(const std::string& connection_string) const {
  ConnectionRequest request = ParseConnectionString(connection_string);
  if (IsLocalDefault(request.data_source)) {
    LocalTarget target = local_.Locate();
    request.data_source = std::move(target.data_source);
    if (request.windows_authentication && !target.user.empty()) {
      request.windows_authentication = false;
      request.user = std::move(target.user);
      request.password = std::move(target.secret);
    }
  }
  const DriverSettings settings{.driver = DriverName(), .tds_version = options_.tds_version};
  return OdbcConnectionString(request, ParseDataSource(request.data_source), settings);
}

void OdbcConnection::Open(const std::string& connection_string) {
  Close();
  RequireUsableTdsVersion(options_.tds_version);
  link_->Connect(Translate(connection_string), options_.login_timeout_seconds);
}

void OdbcConnection::Close() { link_->Disconnect(); }

bool OdbcConnection::IsOpen() const { return link_->Usable(); }

std::unique_ptr<RowReader> OdbcConnection::Query(const std::string& sql) {
  link_->ClearWire();
  const auto statement = std::make_shared<Statement>(link_);
  if (RunToRows(*statement, sql) != Step::kRows) return nullptr;
  return std::make_unique<odbc::Reader>(statement);
}

std::int64_t OdbcConnection::Execute(const std::string& sql) {
  link_->ClearWire();
  Statement statement(link_);
  std::int64_t affected = -1;
  std::optional<ServerError> first_failure;
  bool begun = false;
  for (Step step = Step::kCount; step != Step::kEnd;) {
    try {
      step = begun ? statement.NextResult() : (begun = true, statement.Execute(sql));
      if (step != Step::kCount) continue;
      if (const std::int64_t rows = statement.RowCount(); rows >= 0) affected = rows;
    } catch (const ServerError& failure) {
      if (!link_->Usable()) throw;
      if (first_failure) {
        link_->Keep(failure.Messages());
      } else {
        first_failure = failure;
      }
    }
  }
  if (first_failure) throw ServerError(*first_failure);
  return affected;
}

ScrolledRows OdbcConnection::OpenCursor(const std::string& sql) {
  link_->ClearWire();
  const auto statement = std::make_shared<Statement>(link_);
  statement->SetAttribute(SQL_ATTR_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN);
  if (RunToRows(*statement, sql) != Step::kRows) return {};
  auto pages = std::make_unique<odbc::Pages>(statement);
  if (pages->IsReallyCursor()) return {.cursor = std::move(pages)};
  return {.reader = std::make_unique<odbc::Reader>(statement)};
}

std::vector<ServerMessage> OdbcConnection::TakeMessages() { return link_->TakeMessages(); }

}  // namespace dbkeeper
