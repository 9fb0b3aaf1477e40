// Servers that cannot be reached. No server is needed for these.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "platform/odbc/OdbcConnection.h"

namespace dbkeeper {
namespace {

class NoLocalServer : public LocalEndpoint {
 public:
  LocalTarget Locate() override { throw SessionError("There is no local server."); }
};

// A port of this machine that lets clients connect, and never says a word.
class SilentPort {
 public:
  SilentPort() : descriptor_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(descriptor_, generic, size), 0);
    EXPECT_EQ(getsockname(descriptor_, generic, &size), 0);
    number_ = ntohs(address.sin_port);
  }
  ~SilentPort() { close(descriptor_); }
  SilentPort(const SilentPort&) = delete;
  SilentPort& operator=(const SilentPort&) = delete;

  void Listen() const { EXPECT_EQ(listen(descriptor_, 5), 0); }
  std::string DataSource() const { return "127.0.0.1," + std::to_string(number_); }

 private:
  int descriptor_;
  std::uint16_t number_ = 0;
};

class Reaching : public testing::Test {
 protected:
  // The error of opening with that data source.
  ServerError OpenError(const std::string& data_source) {
    try {
      connection_.Open("Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;Data Source=" +
                       data_source);
    } catch (const ServerError& error) {
      EXPECT_FALSE(connection_.IsOpen());
      return error;
    }
    ADD_FAILURE() << "opened " << data_source;
    return ServerError({});
  }

  NoLocalServer local_;
  OdbcConnection connection_{{.login_timeout_seconds = 1}, local_};
};

TEST_F(Reaching, APortThatNeverAnswersEndsInATimeout) {
  SilentPort port;
  port.Listen();
  EXPECT_NE(std::string(OpenError(port.DataSource()).what()).find("imeout"), std::string::npos);
}

TEST_F(Reaching, ARefusedPortIsTold) {
  const SilentPort port;  // taken, but without a listener
  constexpr int kUnableToConnect = 20009;
  EXPECT_EQ(OpenError(port.DataSource()).Number(), kUnableToConnect);
}

TEST_F(Reaching, AnUnknownHostIsTold) {
  constexpr int kUnknownHost = 20013;
  EXPECT_EQ(OpenError("no-such-host.invalid").Number(), kUnknownHost);
}

TEST_F(Reaching, WithoutADataSourceTheLocalServerIsAskedFor) {
  EXPECT_THROW(connection_.Open("Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;"),
               SessionError);
  EXPECT_FALSE(connection_.IsOpen());
}

TEST_F(Reaching, AnUnregisteredDriverIsTold) {
  OdbcConnection connection({.driver = "no such driver"}, local_);
  EXPECT_THROW(connection.Open("Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;"
                               "Data Source=127.0.0.1,1"),
               ServerError);
}

TEST_F(Reaching, AClosedConnectionRunsNothing) {
  EXPECT_THROW(connection_.Query("select 1"), SessionError);
  EXPECT_THROW(connection_.Execute("select 1"), SessionError);
  EXPECT_THROW(connection_.OpenCursor("select 1"), SessionError);
  EXPECT_NO_THROW(connection_.Close());
}

}  // namespace
}  // namespace dbkeeper
