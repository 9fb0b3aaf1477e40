#include "server/engine/instance_state.h"

#include <algorithm>

#include "server/catalog/catalog.h"
#include "server/catalog/login_store.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// The server keeps the first numbers for its own tasks; clients come from 51 on.
constexpr int kFirstClient = 51;

}  // namespace

InstanceState::InstanceState(InstanceOptions options)
    : options_(std::move(options)), places_(options_.folder) {}

FileState InstanceState::FileStateOf(int dbid) const {
  const std::scoped_lock lock(mutex_);
  const auto found = files_.find(dbid);
  return found == files_.end() ? FileState{} : found->second;
}

void InstanceState::NewGeneration(int dbid) {
  const std::scoped_lock lock(mutex_);
  ++files_[dbid].generation;
}

bool InstanceState::BeginRestore(int dbid, int spid) {
  const std::scoped_lock lock(mutex_);
  if (InUseUnlocked(dbid, spid)) return false;
  files_[dbid].restoring = true;
  return true;
}

void InstanceState::EndRestore(int dbid) {
  const std::scoped_lock lock(mutex_);
  files_[dbid].restoring = false;
}

std::string InstanceState::NextTimestamp() {
  const std::scoped_lock lock(mutex_);
  // The clock keeps the numbers rising from one run of the server to the next.
  const auto now =
      static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
  last_timestamp_ = std::max(last_timestamp_ + 1, now);
  std::string bytes;
  for (int shift = 56; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(last_timestamp_ >> shift & 0xFF);
  }
  return bytes;
}

int InstanceState::Enter(Session& session, const std::string& login, const ClientInfo& client,
                         int dbid, const std::string& database) {
  const std::scoped_lock lock(mutex_);
  int spid = kFirstClient;
  while (sessions_.contains(spid)) ++spid;
  SessionRecord& record = sessions_[spid];
  record.spid = spid;
  record.login = login;
  record.client = client;
  record.login_time = record.last_batch = CurrentTime();
  record.dbid = dbid;
  record.database = database;
  record.session = &session;
  return spid;
}

void InstanceState::Leave(int spid) {
  const std::scoped_lock lock(mutex_);
  sessions_.erase(spid);
}

void InstanceState::Update(int spid, const std::function<void(SessionRecord&)>& change) {
  const std::scoped_lock lock(mutex_);
  const auto found = sessions_.find(spid);
  if (found != sessions_.end()) change(found->second);
}

std::vector<SessionRecord> InstanceState::Sessions() const {
  const std::scoped_lock lock(mutex_);
  std::vector<SessionRecord> records;
  for (const auto& [spid, record] : sessions_) records.push_back(record);
  return records;
}

std::optional<SessionRecord> InstanceState::Find(int spid) const {
  const std::scoped_lock lock(mutex_);
  const auto found = sessions_.find(spid);
  return found == sessions_.end() ? std::nullopt : std::optional(found->second);
}

bool InstanceState::InUse(int dbid, int spid) const {
  const std::scoped_lock lock(mutex_);
  return InUseUnlocked(dbid, spid);
}

bool InstanceState::InUseUnlocked(int dbid, int spid) const {
  const auto file = files_.find(dbid);
  if (file != files_.end() && file->second.restoring) return true;
  return std::ranges::any_of(sessions_, [&](const auto& entry) {
    const SessionRecord& record = entry.second;
    return record.spid != spid && record.dbid == dbid;
  });
}

int InstanceState::WriterOf(int dbid) const {
  const std::scoped_lock lock(mutex_);
  for (const auto& [spid, record] : sessions_) {
    for (const LockRecord& held : record.locks) {
      if (held.dbid == dbid && !held.waiting) return spid;
    }
  }
  return 0;
}

void InstanceState::Kill(int spid, int killer) {
  constexpr int kHighestProcess = 32767;
  if (spid == killer) Fail(6104);
  if (spid < 1 || spid > kHighestProcess) {
    Fail(6101, {std::to_string(spid), std::to_string(kHighestProcess)});
  }
  std::function<void(int)> close;
  {
    const std::scoped_lock lock(mutex_);
    const auto found = sessions_.find(spid);
    if (found == sessions_.end()) Fail(6106, {std::to_string(spid)});
    found->second.killed = true;
    found->second.session->Interrupt();
    close = on_kill_;
  }
  if (close) close(spid);
}

void InstanceState::RequestShutdown() {
  std::function<void()> callback;
  {
    const std::scoped_lock lock(mutex_);
    callback = on_shutdown_;
  }
  if (callback) callback();
}

void InstanceState::SetOperator(const std::string& windows_name, const std::string& secret) {
  const std::scoped_lock lock(mutex_);
  operator_name_ = windows_name;
  operator_secret_ = secret;
}

bool InstanceState::IsOperator(const std::string& name, const std::string& secret) const {
  const std::scoped_lock lock(mutex_);
  return !operator_secret_.empty() && SameName(name, operator_name_) &&
         SecretEquals(secret, operator_secret_);
}

void InstanceState::OnShutdown(std::function<void()> callback) {
  const std::scoped_lock lock(mutex_);
  on_shutdown_ = std::move(callback);
}

void InstanceState::OnKill(std::function<void(int)> callback) {
  const std::scoped_lock lock(mutex_);
  on_kill_ = std::move(callback);
}

}  // namespace dbkeeper::server
