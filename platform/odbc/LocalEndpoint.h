// Where "(local)" leads: the default instance of this machine.
#pragma once

#include <string>

namespace dbkeeper {

struct LocalTarget {
  // "host", "host\instance" or "host,port".
  std::string data_source;
  // Who logs in under Windows authentication, and with which secret. An empty user leaves it to
  // the driver.
  std::string user;
  std::string secret;
};

// Asked each time a connection without a data source is opened; it may have to start the server
// first.
class LocalEndpoint {
 public:
  virtual ~LocalEndpoint() = default;
  // Throws SessionError when there is no local server and none can be started.
  virtual LocalTarget Locate() = 0;
};

}  // namespace dbkeeper
