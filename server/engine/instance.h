// A running instance: the folder of databases, the clients that are in, who may come in.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "server/engine/job_agent.h"
#include "server/engine/session.h"

namespace dbkeeper::server {

struct InstanceOptions {
  std::filesystem::path folder;  // made, with the sample databases, when it does not exist
  std::string server_name;       // what @@servername says
  std::string machine_name;
  // How long a statement waits for another client's write before error 1222.
  std::chrono::milliseconds lock_timeout{10'000};
};

// Thread safe. Sessions refer to the instance and must be gone before it.
class Instance : public SessionFactory {
 public:
  // Lets the operator in as a system administrator: who logs in as `windows_name`
  // ("DOMAIN\name" or "name", in any case) with `secret` as the password. An empty secret lets
  // nobody in. Holds until the process ends; nothing of it is stored.
  virtual void SetOperator(const std::string& windows_name, const std::string& secret) = 0;

  // Sets the password of an SQL login; makes the login, as a system administrator, when there is
  // none of that name.
  virtual void SetLoginPassword(const std::string& name, const std::string& password) = 0;

  // Lets in whom the instance trusts without a password: its agent, in a login's name. Throws
  // SqlError when the login cannot use the database.
  virtual std::unique_ptr<Session> Admit(const std::string& login, const ClientInfo& client,
                                         const std::string& database) = 0;

  // Who runs the jobs; null: nobody. It is set while no client is in.
  virtual void SetAgent(JobAgent* agent) = 0;

  // `callback` runs, on the thread of the client that asked, when a client runs SHUTDOWN.
  virtual void OnShutdown(std::function<void()> callback) = 0;

  // `callback` runs, on the thread of the client that asked, when a client kills session `spid`;
  // it closes that session's connection. The session's running statement is interrupted before.
  virtual void OnKill(std::function<void(int spid)> callback) = 0;
};

}  // namespace dbkeeper::server
