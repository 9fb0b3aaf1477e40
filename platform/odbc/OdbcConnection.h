// The connection to a real server: unixODBC with FreeTDS as the driver.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/Connection.h"
#include "platform/odbc/LocalEndpoint.h"

namespace dbkeeper {

namespace odbc {
class Link;
}

struct OdbcOptions {
  // A registered driver, or the path of its library. Empty: "FreeTDS" when it is registered, else
  // the library where it usually lies.
  std::string driver{};
  // 7.1 is what SQL Server 2000 speaks; newer servers want 7.4. 7.0 is refused.
  std::string tds_version = "7.1";
  int login_timeout_seconds = 15;
  // Told of every call of the driver manager: its name and return code.
  std::function<void(std::string_view call, int code)> log{};
};

// One open result per connection is all that the server carries. So when a statement runs while a
// reader is in the middle of its rows, these are first read into memory; the reader goes on from
// there and notices nothing.
class OdbcConnection : public Connection {
 public:
  // `local` says where a connection string without a data source leads, and must outlive this.
  OdbcConnection(OdbcOptions options, LocalEndpoint& local);
  ~OdbcConnection() override;
  OdbcConnection(const OdbcConnection&) = delete;
  OdbcConnection& operator=(const OdbcConnection&) = delete;

  // Throws SessionError for a string that cannot be used, ServerError when the server cannot be
  // reached or refuses.
  void Open(const std::string& connection_string) override;
  // Readers and cursors that are still there throw SessionError from now on.
  void Close() override;
  bool IsOpen() const override;

  // After a failure the statements behind it that give no rows still run before it is thrown; but
  // when the very first statement of the batch fails, the driver manager cuts the batch off there.
  std::unique_ptr<RowReader> Query(const std::string& sql) override;
  // Rows are skipped. The first failure is thrown after the batch has ended; later ones are then
  // found among the messages.
  std::int64_t Execute(const std::string& sql) override;
  ScrolledRows OpenCursor(const std::string& sql) override;
  std::vector<ServerMessage> TakeMessages() override;

 private:
  std::string DriverName() const;
  std::string Translate(const std::string& connection_string) const;

  OdbcOptions options_;
  LocalEndpoint& local_;
  std::shared_ptr<odbc::Link> link_;
};

}  // namespace dbkeeper
