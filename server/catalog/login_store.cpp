#include "server/catalog/login_store.h"

#include <crypt.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

#include "server/catalog/catalog.h"
#include "server/storage/host_file.h"

namespace dbkeeper::server {

namespace {

// The hash of the password; `setting` is a salt, or a hash whose salt is taken.
std::string Hash(const std::string& password, const std::string& setting) {
  const auto data = std::make_unique<crypt_data>();
  const char* hash = crypt_r(password.c_str(), setting.c_str(), data.get());
  if (hash == nullptr || hash[0] == '*') throw std::runtime_error("the password cannot be hashed");
  return hash;
}

std::string NewSalt() {
  const std::string random = RandomBytes();
  std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> salt{};
  if (crypt_gensalt_rn("$6$", 0, random.data(), static_cast<int>(random.size()), salt.data(),
                       static_cast<int>(salt.size())) == nullptr) {
    throw std::runtime_error("no salt for a password");
  }
  return salt.data();
}

}  // namespace

bool SecretEquals(const std::string& left, const std::string& right) {
  unsigned char difference = left.size() == right.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
    difference |= static_cast<unsigned char>(left[i] ^ right[i]);
  }
  return difference == 0;
}

void StoreLogin(SqliteConnection& connection, const NewLogin& login) {
  const std::int64_t now = CurrentTime();
  const bool is_sa = SameName(login.name, "sa");
  const std::string sid = is_sa ? std::string("\x01") : RandomBytes();
  connection.Run(
      "insert into main.syslogins values (?1, 9, ?2, ?2, ?2, 0, 0, 0, 0, 0, ?3, ?4, null, ?5, 0, "
      "1, ?6, ?7, ?8, ?9, 0, 0, 0, 0, 0, 0, 0, ?3)",
      Cell(Blob{sid}), now, login.name, login.database, login.language,
      login.kind == LoginKind::kSql ? 0 : 1, login.kind == LoginKind::kWindowsGroup ? 1 : 0,
      login.kind == LoginKind::kWindowsUser ? 1 : 0, login.sysadmin ? 1 : 0);
}

void StorePassword(SqliteConnection& connection, const std::string& name,
                   const std::string& password) {
  connection.Execute(
      "create table if not exists main.\"#passwords\"(name text collate MSTEXT primary key, hash "
      "text)");
  connection.Run("delete from main.\"#passwords\" where name = ?1", name);
  if (password.empty()) return;
  connection.Run("insert into main.\"#passwords\" values (?1, ?2)", name,
                 Hash(password, NewSalt()));
}

bool HasPassword(SqliteConnection& connection, const std::string& name) {
  return !connection.TextOf("select hash from main.\"#passwords\" where name = ?1", name).empty();
}

bool PasswordFits(SqliteConnection& connection, const std::string& name,
                  const std::string& password) {
  const std::string hash =
      connection.TextOf("select hash from main.\"#passwords\" where name = ?1", name);
  return !hash.empty() && SecretEquals(Hash(password, hash), hash);
}

}  // namespace dbkeeper::server
