// How a data type stands in syscolumns, and back.
#pragma once

#include <cstdint>

#include "server/engine/sqlite.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

inline constexpr int kSysnameType = 256;
// The number under which the catalog keeps Japanese_CI_AS.
inline constexpr std::int64_t kJapaneseCollationId = 53265;
inline constexpr const char* kDefaultCollation = "Japanese_CI_AS";

struct StoredType {
  int xtype = 0;
  int xusertype = 0;
  int length = 0;  // bytes
  int xprec = 0;
  int xscale = 0;
  int type = 0;
  int usertype = 0;
  Cell prec;
  Cell scale;
};

StoredType StoredTypeOf(const SqlType& type, bool is_sysname);
SqlType TypeOfStored(int xtype, int length, int xprec, int xscale);

}  // namespace dbkeeper::server
