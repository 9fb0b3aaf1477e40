#include "platform/odbc/ConnectionString.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

#include "app/support/Errors.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

constexpr std::string_view kPasswordMark = ";Password=";
constexpr std::string_view kDataSourceMark = ";Data Source=";

[[noreturn]] void Refuse(std::string_view message, std::string_view what) {
  throw SessionError(messages::Fill(message, what));
}

void TakeProvider(ConnectionRequest& /*request*/, const std::string& value) {
  // "SQLOLEDB.1" names a version of the same provider.
  if (!EqualsIgnoringCase(value.substr(0, value.find('.')), "SQLOLEDB")) {
    Refuse(messages::kNotForConnection, value);
  }
}

void TakeSecurity(ConnectionRequest& request, const std::string& value) {
  if (!EqualsIgnoringCase(value, "SSPI")) {
    Refuse(messages::kNotForConnection, value);
  }
  request.windows_authentication = true;
}

struct Key {
  std::string_view name;
  void (*take)(ConnectionRequest&, const std::string&);
};

constexpr std::array kKeys = {
    Key{"Provider", TakeProvider},
    Key{"Integrated Security", TakeSecurity},
    Key{"Database", [](ConnectionRequest& r, const std::string& v) { r.database = v; }},
    Key{"Initial Catalog", [](ConnectionRequest& r, const std::string& v) { r.database = v; }},
    Key{"User ID", [](ConnectionRequest& r, const std::string& v) { r.user = v; }},
    Key{"Data Source", [](ConnectionRequest& r, const std::string& v) { r.data_source = v; }},
    Key{"Persist Security Info", [](ConnectionRequest&, const std::string&) {}},
};

void TakePart(ConnectionRequest& request, const std::string& part) {
  const std::size_t equals = part.find('=');
  if (equals == std::string::npos) Refuse(messages::kNotForConnection, part);
  const std::string name = Trim(part.substr(0, equals));
  const auto key = std::find_if(kKeys.begin(), kKeys.end(), [&name](const Key& candidate) {
    return EqualsIgnoringCase(candidate.name, name);
  });
  if (key == kKeys.end()) Refuse(messages::kNotForConnection, part);
  key->take(request, Trim(part.substr(equals + 1)));
}

int ParsePort(std::string_view text, std::string_view data_source) {
  int port = 0;
  const char* end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, port);
  if (problem != std::errc() || stop != end || port < 1 || port > 65535) {
    Refuse(messages::kNoPort, data_source);
  }
  return port;
}

// The value in braces. The driver looks for "};" as its end and knows no other way to write it.
std::string Braced(const std::string& value, const char* what) {
  if (value.find("};") != std::string::npos) Refuse(messages::kNotForDriver, what);
  return "{" + value + "}";
}

}  // namespace

ConnectionRequest ParseConnectionString(std::string_view text) {
  ConnectionRequest request;
  std::string plain(text);
  if (const std::size_t mark = text.find(kPasswordMark); mark != std::string_view::npos) {
    const std::size_t start = mark + kPasswordMark.size();
    std::size_t end = text.rfind(kDataSourceMark);
    if (end == std::string_view::npos || end < start) {
      end = text.size() > start && text.back() == ';' ? text.size() - 1 : text.size();
    }
    request.password = std::string(text.substr(start, end - start));
    plain = std::string(text.substr(0, mark)) + std::string(text.substr(end));
  }
  for (const std::string& part : Split(plain, ';')) {
    if (!Trim(part).empty()) TakePart(request, part);
  }
  return request;
}

bool IsLocalDefault(std::string_view data_source) {
  return data_source.empty() || data_source == "." || EqualsIgnoringCase(data_source, "(local)");
}

ServerAddress ParseDataSource(std::string_view text) {
  ServerAddress address;
  std::string rest = Trim(text);
  if (const std::size_t colon = rest.find(':'); colon != std::string::npos) {
    const std::string protocol = rest.substr(0, colon);
    if (EqualsIgnoringCase(protocol, "tcp")) {
      rest.erase(0, colon + 1);
    } else if (EqualsIgnoringCase(protocol, "np") || EqualsIgnoringCase(protocol, "lpc")) {
      Refuse(messages::kOnlyTcp, text);
    }
  }
  if (const std::size_t comma = rest.find(','); comma != std::string::npos) {
    address.port = ParsePort(Trim(rest.substr(comma + 1)), text);
    rest = Trim(rest.substr(0, comma));
  }
  const std::size_t backslash = rest.find('\\');
  address.host = rest.substr(0, backslash);
  if (backslash != std::string::npos) address.instance = rest.substr(backslash + 1);
  if (IsLocalDefault(address.host)) address.host = "localhost";
  const bool odd = rest.empty() || (backslash != std::string::npos && address.instance.empty()) ||
                   rest.front() == '\\' ||
                   rest.find_first_of(";{}=\"'\r\n\t ") != std::string::npos;
  if (odd) Refuse(messages::kNoServerName, text);
  return address;
}

void RequireUsableTdsVersion(std::string_view version) {
  constexpr std::array<std::string_view, 4> kUsable = {"7.1", "7.2", "7.3", "7.4"};
  if (std::find(kUsable.begin(), kUsable.end(), version) != kUsable.end()) return;
  Refuse(messages::kBadTdsVersion, version);
}

std::string OdbcConnectionString(const ConnectionRequest& request, const ServerAddress& address,
                                 const DriverSettings& settings) {
  RequireUsableTdsVersion(settings.tds_version);
  std::string text =
      "DRIVER=" + Braced(settings.driver, "ドライバー名") + ";SERVER=" + address.host;
  // With a port the driver ignores the instance, and as part of the name it would look it up.
  if (address.port) {
    text += ";PORT=" + std::to_string(*address.port);
  } else if (!address.instance.empty()) {
    text += "\\" + address.instance;
  } else {
    text += ";PORT=1433";
  }
  if (request.windows_authentication) {
    text += ";Trusted_Connection=Yes";
  } else {
    text += ";UID=" + Braced(request.user, "ログイン名");
    text += ";PWD=" + Braced(request.password, "パスワード");
  }
  if (!request.database.empty()) text += ";DATABASE=" + Braced(request.database, "データベース名");
  return text + ";APP=DB Keeper;TDS_Version=" + settings.tds_version + ";ClientCharset=UTF-8";
}

}  // namespace dbkeeper
