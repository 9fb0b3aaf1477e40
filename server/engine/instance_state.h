// What the sessions of an instance share: its options, who is in, who holds and waits for what.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "server/engine/database_places.h"
#include "server/engine/instance.h"
#include "server/engine/session.h"
#include "server/engine/system_procedures.h"

namespace dbkeeper::server {

// A write lock as sp_lock shows it.
struct LockRecord {
  int dbid = 0;
  std::int64_t object_id = 0;  // 0: no table of its own
  bool waiting = false;
};

// One session as the others see it.
struct SessionRecord {
  int spid = 0;
  std::string login;
  ClientInfo client;
  std::int64_t login_time = 0;
  std::int64_t last_batch = 0;
  int dbid = 1;
  std::string status = "sleeping";
  std::string command = "AWAITING COMMAND";
  int blocked_by = 0;
  int open_transactions = 0;
  std::vector<LockRecord> locks;  // beside the shared lock on the current database
  Session* session = nullptr;
};

// The file of a database id.
struct FileState {
  // Counts the files it has had: a session that still has an earlier one attached sees by it that
  // it must let go.
  int generation = 0;
  bool restoring = false;
};

class FolderLock;
struct LoginInfo;

class InstanceState : public Instance {
 public:
  InstanceState(InstanceOptions options, SystemProcedures run);
  ~InstanceState() override;
  // Keeps other processes out of the folder. Throws std::runtime_error.
  void LockFolder();
  // Reads where the databases of an instance that is there are.
  void LoadPlaces();

  void SetOperator(const std::string& windows_name, const std::string& secret) override;
  void SetLoginPassword(const std::string& name, const std::string& password) override;
  std::unique_ptr<Session> Admit(const std::string& login, const ClientInfo& client,
                                 const std::string& database) override;
  void SetAgent(JobAgent* agent) override { agent_ = agent; }
  void OnShutdown(std::function<void()> callback) override;
  void OnKill(std::function<void(int)> callback) override;
  std::string server_name() const override { return options_.server_name; }
  std::unique_ptr<Session> Login(const LoginRequest& request) override;

  const InstanceOptions& options() const { return options_; }
  SystemProcedures run_procedure() const { return run_procedure_; }
  // Null: nobody runs the jobs.
  JobAgent* agent() const { return agent_; }
  DatabasePlaces& places() { return places_; }
  std::filesystem::path FileOf(int dbid) const { return places_.Of(dbid).data; }
  FileState FileStateOf(int dbid) const;
  void NewGeneration(int dbid);
  // Keeps every session out of the database until EndRestore; false when one other than `spid` is
  // in it or restores it.
  bool BeginRestore(int dbid, int spid);
  void EndRestore(int dbid);

  // Held by who makes, takes in, lets go or drops a database: one at a time.
  std::unique_lock<std::mutex> LockDatabases() { return std::unique_lock(databases_mutex_); }

  // Eight bytes for a column of type timestamp, higher with each call.
  std::string NextTimestamp();

  // Gives the lowest free process id above those of the server's own tasks.
  int Enter(Session& session, const std::string& login, const ClientInfo& client, int dbid);
  void Leave(int spid);
  void Update(int spid, const std::function<void(SessionRecord&)>& change);
  std::vector<SessionRecord> Sessions() const;
  std::optional<SessionRecord> Find(int spid) const;
  // True when another session than `spid` has the database as its current one, or one restores it.
  bool InUse(int dbid, int spid) const;
  // The session that holds a write lock in the database; 0 when none does.
  int WriterOf(int dbid) const;

  // Interrupts the session and has its connection closed; throws SqlError 6104, 6106.
  void Kill(int spid, int killer);
  void RequestShutdown();

 private:
  std::unique_ptr<Session> Enter(const LoginInfo& login, const ClientInfo& client,
                                 const std::string& database);
  bool InUseUnlocked(int dbid, int spid) const;
  bool IsOperator(const std::string& name, const std::string& secret) const;

  const InstanceOptions options_;
  const SystemProcedures run_procedure_;
  std::unique_ptr<FolderLock> lock_;
  DatabasePlaces places_;
  mutable std::mutex mutex_;
  std::map<int, SessionRecord> sessions_;
  std::map<int, FileState> files_;
  std::mutex databases_mutex_;
  std::uint64_t last_timestamp_ = 0;
  std::string operator_name_;
  std::string operator_secret_;
  JobAgent* agent_ = nullptr;
  std::function<void()> on_shutdown_;
  std::function<void(int)> on_kill_;
};

}  // namespace dbkeeper::server
