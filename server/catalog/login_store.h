// The logins of an instance in master: their rows in syslogins and their hashed passwords.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "server/storage/sqlite.h"

namespace dbkeeper::server {

inline constexpr const char* kDefaultLanguage = "us_english";

// Name (also the flag of syslogins) and description.
inline constexpr std::pair<std::string_view, std::string_view> kServerRoles[] = {
    {"sysadmin", "System Administrators"},      {"securityadmin", "Security Administrators"},
    {"serveradmin", "Server Administrators"},   {"setupadmin", "Setup Administrators"},
    {"processadmin", "Process Administrators"}, {"diskadmin", "Disk Administrators"},
    {"dbcreator", "Database Creators"},         {"bulkadmin", "Bulk Insert Administrators"},
};

enum class LoginKind { kSql, kWindowsUser, kWindowsGroup };

struct NewLogin {
  std::string name;
  std::string database = "master";
  std::string language = kDefaultLanguage;
  LoginKind kind = LoginKind::kSql;
  bool sysadmin = false;
};

// All of these write in the connection's main database, which is master.
void StoreLogin(SqliteConnection& connection, const NewLogin& login);
// An empty password removes the one that is there: the login cannot log in then.
void StorePassword(SqliteConnection& connection, const std::string& name,
                   const std::string& password);

// Takes as long wherever two secrets of one length differ.
bool SecretEquals(const std::string& left, const std::string& right);

bool HasPassword(SqliteConnection& connection, const std::string& name);
// False for a login without a password, whatever is given.
bool PasswordFits(SqliteConnection& connection, const std::string& name,
                  const std::string& password);

}  // namespace dbkeeper::server
