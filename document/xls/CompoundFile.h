// The container of the workbook: a compound file, which is a small file system in one file.
#pragma once

#include <functional>
#include <span>
#include <string_view>

namespace dbkeeper::xls {

// Takes the bytes of a file piece by piece, in order. May throw, which ends the writing.
using ByteSink = std::function<void(std::string_view bytes)>;

// Writes a compound file with the one stream "Workbook", which consists of the pieces. Throws
// std::length_error when it is longer than the format allows, before anything is written.
void WriteCompoundFile(std::span<const std::string_view> pieces, const ByteSink& sink);

}  // namespace dbkeeper::xls
