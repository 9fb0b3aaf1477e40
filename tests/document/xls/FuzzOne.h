// A workbook made of any bytes at all, written and read back.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dbkeeper::xls {

// Throws std::runtime_error when the reader does not accept the file, or finds other cells in it
// than were written.
void FuzzOne(const std::uint8_t* data, std::size_t size);

}  // namespace dbkeeper::xls
