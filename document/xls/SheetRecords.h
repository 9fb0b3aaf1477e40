// One sheet of the model as the records of the file.
#pragma once

#include <string>

#include "document/xls/SharedStrings.h"
#include "document/xls/StyleTable.h"
#include "document/xls/Workbook.h"

namespace dbkeeper::xls {

// Whether the sheet is the one in front when the workbook is opened.
enum class Place { kFront, kBehind };

// The sheet's part of the stream. It has at most kMaxRows rows.
std::string SheetRecords(const Sheet& sheet, Place place, SharedStrings& texts,
                         const StyleTable& styles);

}  // namespace dbkeeper::xls
